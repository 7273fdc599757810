#include "program/commands.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "fit/fit.h"
#include "fit/known_model.h"
#include "platform/error.h"
#include "program/arguments.h"
#include "program/check.h"
#include "program/plot.h"
#include "report/report.h"
#include "table/table.h"

namespace curvebank::program {
namespace {

std::string aligned_text(const table::Table &table)
{
    std::string text;
    for (const std::string &name : table.names) text += fmt::format("{:>18} ", name);
    text += '\n';
    for (size_t row = 0; row < table.rows(); ++row) {
        for (const auto &column : table.columns)
            text += std::isnan(column[row]) ? fmt::format("{:>18} ", "missing")
                                            : fmt::format("{:>18.12g} ", column[row]);
        text += '\n';
    }
    return text;
}

/// Takes the usable rows of the table: all cells there and, where weights are given, positive ones. The columns are
/// those of the independent variables, then of the dependent ones; an implicit model has only the former.
fit::Data read_data(const FitCommand &command, const fit::KnownModel &known, report::ReportContext &context)
{
    const table::Table table = table::read_table(command.table);
    const auto variables = static_cast<size_t>(known.model.nIndep);
    const size_t outputs = known.about->implicit ? 0 : static_cast<size_t>(known.model.nDep);
    std::vector<std::string> names;
    if (command.columns.empty())
        for (size_t i = 1; i <= variables + outputs; ++i) names.push_back(std::to_string(i));
    else
        names = split(command.columns, ',');
    if (names.size() != variables + outputs)
        throw Error(
            fmt::format("--columns takes {} names for {}: the independent variables, then the dependent ones",
                        variables + outputs, known.about->name));
    std::vector<size_t> columns;
    for (const std::string &name : names) columns.push_back(table.column(name));
    context.data_file = command.table;
    for (size_t i = 0; i < columns.size(); ++i)
        (i < variables ? context.x_names : context.y_names).push_back(table.names[columns[i]]);
    if (!command.weights.empty()) {
        columns.push_back(table.column(command.weights));
        context.weights_name = table.names[columns.back()];
    }

    fit::Data data;
    data.x.resize(variables);
    for (size_t row = 0; row < table.rows(); ++row) {
        const auto cell = [&](size_t i) { return table.columns[columns[i]][row]; };
        bool usable = command.weights.empty() || cell(variables + outputs) > 0;
        for (size_t i = 0; i < variables + outputs; ++i) usable = usable && !std::isnan(cell(i));
        if (!usable) {
            ++context.skipped_rows;
            continue;
        }
        for (size_t i = 0; i < variables; ++i) data.x[i].push_back(cell(i));
        for (size_t i = variables; i < variables + outputs; ++i) data.y.push_back(cell(i));
        if (known.about->implicit) data.y.push_back(0.0);
        if (!command.weights.empty()) data.weights.push_back(cell(variables + outputs));
    }
    return data;
}

fit::FitOptions read_options(const FitCommand &command, const reference::ModelReference &about,
                             const std::vector<reference::NamedParameter> &parameters)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    fit::FitOptions options;
    options.max_iterations = command.max_iterations;
    options.confidence = command.confidence;
    options.start.assign(parameters.size(), 0.0);
    options.fixed.assign(parameters.size(), false);
    options.lower.assign(parameters.size(), -infinity);
    options.upper.assign(parameters.size(), infinity);

    // A linear model finds its parameters from anywhere; others begin at their sample.
    const bool sample_starts = !about.linear && about.sample_parameters.size() >= parameters.size();
    if (sample_starts) std::copy_n(about.sample_parameters.begin(), parameters.size(), options.start.begin());
    const std::vector<bool> set = assign(command.start, "--start", parameters, options.start);
    if (!about.linear && !sample_starts && std::find(set.begin(), set.end(), false) != set.end())
        throw Error(fmt::format("--start must give all {} parameters of this fit", parameters.size()));
    if (!command.fix.empty())
        for (const std::string &part : split(command.fix, ',')) {
            const size_t equals = part.find('=');
            const size_t i = find_parameter(parameters, part.substr(0, equals), "--fix");
            if (equals != std::string::npos) options.start[i] = parse_number(part.substr(equals + 1), "--fix");
            options.fixed[i] = true;
        }
    assign(command.lower, "--lower", parameters, options.lower);
    assign(command.upper, "--upper", parameters, options.upper);
    return options;
}

/// Two columns, a parameter's name and its value, in the order of the model's parameters.
std::vector<double> read_certified(const std::string &file, size_t count)
{
    const table::Table table = table::read_table(file);
    const std::vector<double> &values = table.columns[table.column("value")];
    if (values.size() != count)
        throw Error(fmt::format("{} has {} values, but there are {} parameters", file, values.size(), count));
    return values;
}

/// The data with the fitted values, the residuals and each term's share.
table::Table fit_table(const fit::FitResult &result, const report::ReportContext &context, const fit::Data &data,
                       const report::Shares &shares)
{
    table::Table table;
    const auto add = [&table](const std::string &name, const std::vector<double> &column) {
        table.names.push_back(name);
        table.columns.push_back(column);
    };
    for (size_t i = 0; i < data.x.size(); ++i) add(context.x_names[i], data.x[i]);
    const size_t outputs = data.y.size() / data.x[0].size();
    for (size_t k = 0; k < context.y_names.size(); ++k) add(context.y_names[k], report::every(data.y, outputs, k));
    if (!data.weights.empty()) add(context.weights_name, data.weights);
    for (size_t k = 0; k < outputs; ++k) {
        const std::string number = outputs > 1 ? std::to_string(k + 1) : "";
        add("fitted" + number, report::every(result.fitted, outputs, k));
        add("residual" + number, report::every(result.residuals, outputs, k));
    }
    for (int k = 0; k < shares.terms; ++k) add(fmt::format("term{}", k + 1), shares.of_term(k));
    return table;
}

/// Evenly spaced points from the smallest to the largest value.
std::vector<double> span_of(const std::vector<double> &values, size_t points, double margin = 0)
{
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    const double width = *high - *low, start = *low - margin * width, length = (1 + 2 * margin) * width;
    std::vector<double> x;
    for (size_t i = 0; i < points; ++i)
        x.push_back(start + length * static_cast<double>(i) / static_cast<double>(points - 1));
    return x;
}

/// Every combination of the values of the axes, the first axis running fastest.
fit::Variables grid_of(const std::vector<std::vector<double>> &axes)
{
    size_t points = 1;
    for (const auto &axis : axes) points *= axis.size();
    fit::Variables grid(axes.size(), std::vector<double>(points));
    size_t stride = 1;
    for (size_t i = 0; i < axes.size(); stride *= axes[i].size(), ++i)
        for (size_t point = 0; point < points; ++point) grid[i][point] = axes[i][point / stride % axes[i].size()];
    return grid;
}

std::vector<double> evaluate(fit::Evaluator &evaluator, const std::vector<double> &p, const fit::Variables &x)
{
    std::vector<double> y(x[0].size() * static_cast<size_t>(evaluator.outputs()));
    evaluator.values(p, x, y);
    return y;
}

report::Shares evaluate_shares(fit::Evaluator &evaluator, const reference::ModelReference &about,
                               const std::vector<double> &p, const fit::Variables &x)
{
    report::Shares shares;
    if (!about.contributions) return shares;
    shares.terms = about.terms(static_cast<int>(p.size()));
    shares.rows.resize(x[0].size() * static_cast<size_t>(shares.terms));
    evaluator.contributions(p, x, shares.terms, shares.rows);
    return shares;
}

/// The model's curves of one variable and, where there are several, its terms.
CurvePlot curve_plot(fit::Evaluator &evaluator, const reference::ModelReference &about,
                     const std::vector<double> &p, const std::vector<double> &x,
                     const std::vector<std::string> &titles)
{
    CurvePlot plot;
    const std::vector<double> y = evaluate(evaluator, p, {x});
    const auto outputs = static_cast<size_t>(evaluator.outputs());
    for (size_t k = 0; k < outputs; ++k) plot.curves.push_back({titles[k], x, report::every(y, outputs, k)});
    const report::Shares shares = evaluate_shares(evaluator, about, p, {x});
    for (int k = 0; shares.terms > 1 && k < shares.terms; ++k)
        plot.terms.push_back({fmt::format("term {}", k + 1), x, shares.of_term(k)});
    return plot;
}

void plot_fit(const FitCommand &command, fit::Evaluator &evaluator, const std::vector<double> &p,
              const fit::FitResult &result, const report::ReportContext &context, const fit::Data &data)
{
    const reference::ModelReference &about = *context.model;
    const std::string title =
        fmt::format("{} fitted to {}", about.name, std::filesystem::path(context.data_file).filename().string());
    if (data.x.size() == 1) {
        const size_t outputs = context.y_names.size();
        std::vector<std::string> titles;
        for (const std::string &name : context.y_names) titles.push_back(outputs > 1 ? "fit of " + name : "fit");
        CurvePlot plot = curve_plot(evaluator, about, p, span_of(data.x[0], 400), titles);
        plot.title = title;
        plot.x_name = context.x_names[0];
        plot.y_name = fmt::format("{}", fmt::join(context.y_names, ", "));
        for (size_t k = 0; k < outputs; ++k) {
            plot.data.push_back(
                {outputs > 1 ? context.y_names[k] : "data", data.x[0], report::every(data.y, outputs, k)});
            plot.residuals.push_back({"", data.x[0], report::every(result.residuals, outputs, k)});
        }
        draw(plot, command.plot);
    } else if (data.x.size() == 2) {
        const double margin = about.implicit ? 0.1 : 0;
        SurfacePlot plot{title,
                         context.x_names[0],
                         context.x_names[1],
                         about.implicit ? "" : context.y_names[0],
                         span_of(data.x[0], 60, margin),
                         span_of(data.x[1], 60, margin),
                         {},
                         data.x[0],
                         data.x[1],
                         data.y};
        plot.z = evaluate(evaluator, p, grid_of({plot.x, plot.y}));
        (about.implicit ? draw_zero_curve : draw_surface)(plot, command.plot);
    } else {
        throw Error("there are plots for one and for two independent variables only");
    }
}

/// The independent variables of eval: a grid of the given axes, or columns of a table.
table::Table points_to_evaluate(const EvalOptions &options, const fit::KnownModel &known)
{
    const auto variables = static_cast<size_t>(known.model.nIndep);
    const std::array axes = {options.x, options.y, options.z};
    const auto given = static_cast<size_t>(
        std::count_if(axes.begin(), axes.end(), [](const auto &axis) { return !axis.empty(); }));
    table::Table points;
    if (given > 0) {
        if (given != variables ||
            std::any_of(axes.begin(), axes.begin() + given, [](const auto &axis) { return axis.empty(); }))
            throw Error(fmt::format("{} has {} independent variables: give as many of --x, --y, --z",
                                    known.about->name, variables));
        std::vector<std::vector<double>> ranges;
        for (size_t i = 0; i < variables; ++i) {
            points.names.emplace_back(reference::ModelReference::variables[i]);
            ranges.push_back(parse_range(axes[i], fmt::format("--{}", points.names.back())));
        }
        points.columns = grid_of(ranges);
        return points;
    }
    const table::Table table = table::read_table(options.table);
    const std::vector<std::string> names =
        options.columns.empty() ? std::vector<std::string>() : split(options.columns, ',');
    if (!names.empty() && names.size() != variables)
        throw Error(fmt::format("--columns takes {} names for {}", variables, known.about->name));
    for (size_t i = 0; i < variables; ++i) {
        const size_t column = table.column(names.empty() ? std::to_string(i + 1) : names[i]);
        points.names.push_back(table.names[column]);
        points.columns.push_back(table.columns[column]);
    }
    return points;
}

/// Draws a model over the span of the evaluated points.
void plot_model(const EvalOptions &options, fit::Evaluator &evaluator, const reference::ModelReference &about,
                const std::vector<double> &p, const table::Table &points)
{
    if (evaluator.variables() == 1) {
        CurvePlot plot = curve_plot(evaluator, about, p, span_of(points.columns[0], 400), {"y", "y2"});
        plot.title = about.name;
        plot.x_name = points.names[0];
        plot.y_name = "y";
        draw(plot, options.plot);
    } else if (evaluator.variables() == 2 && evaluator.outputs() == 1) {
        SurfacePlot plot;
        plot.title = about.name;
        plot.x_name = points.names[0];
        plot.y_name = points.names[1];
        plot.z_name = "z";
        plot.x = span_of(points.columns[0], 60);
        plot.y = span_of(points.columns[1], 60);
        plot.z = evaluate(evaluator, p, grid_of({plot.x, plot.y}));
        (about.implicit ? draw_zero_curve : draw_surface)(plot, options.plot);
    } else {
        throw Error("there are plots for one and for two independent variables only");
    }
}

/// Formulas as text of a Markdown table.
std::string markdown(const std::string &text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '*' || c == '|') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

}  // namespace

void list(const fit::Library &library, const std::string &filter)
{
    const auto contains = [&filter](std::string_view text) {
        return std::search(text.begin(), text.end(), filter.begin(), filter.end(),
                           [](char a, char b) { return std::tolower(a) == std::tolower(b); }) != text.end();
    };
    fmt::print("{:<16}  {:>4} {:>4} {:>6}  {:<19} {:>7}  {}\n", "Model", "x", "y", "params", "Export", "Ordinal",
               "Title");
    int catalogued = 0, by_export = 0, placeholders = 0;
    for (const reference::ModelReference &about : reference::models) {
        if (!contains(about.name) && !contains(about.title)) continue;
        ++(about.export_only ? by_export : catalogued);
        placeholders += about.placeholder;
        const fit::Model model = fit::find_model(library, about.name).model;
        const fit::ExportedModel *exported = fit::find_export(about.name);
        fmt::print("{:<16}  {:>4} {:>4} {:>6}  {:<19} {:>7}  {}\n", about.name, model.nIndep, model.nDep,
                   model.nParams, exported ? exported->name : "-",
                   exported ? std::to_string(exported->ordinal) : "-", about.title);
    }
    fmt::print("\n{} models of the catalogue", catalogued);
    if (placeholders > 0) fmt::print(", {} of them placeholders", placeholders);
    if (by_export > 0) fmt::print("; {} more by its export alone", by_export);
    fmt::print("\n");
}

void eval(const fit::Library &library, const EvalOptions &options)
{
    const fit::KnownModel known = fit::find_model(library, options.model);
    const auto count = static_cast<int>(split(options.parameters, ',').size());
    const bool by_name = options.parameters.find('=') != std::string::npos;
    const fit::Shape called = fit::shape(known, by_name ? options.nparams : count);
    const std::vector<reference::NamedParameter> &parameters = called.parameters;
    std::vector<double> p(parameters.size());
    const std::vector<bool> set = assign(options.parameters, "--params", parameters, p);
    for (size_t i = 0; i < set.size(); ++i)
        if (!set[i]) throw Error("--params: no value for " + parameters[i].name);

    table::Table result = points_to_evaluate(options, known);
    const fit::Variables x = result.columns;
    const size_t points = x[0].size(), width = p.size();
    const auto add_columns = [&](const std::vector<double> &rows, size_t columns, const auto &name) {
        for (size_t i = 0; i < columns; ++i) {
            result.names.push_back(name(i));
            result.columns.push_back(report::every(rows, columns, i));
        }
    };

    fit::Evaluator evaluator(known.model, called.nParams, static_cast<int>(width));
    const auto outputs = static_cast<size_t>(evaluator.outputs());
    const std::string value = x.size() == 1 ? "y" : x.size() == 2 && outputs == 1 ? "z" : "value";
    const auto output_name = [&](size_t k) { return outputs > 1 ? value + std::to_string(k + 1) : value; };
    add_columns(evaluate(evaluator, p, x), outputs, output_name);
    const report::Shares shares = evaluate_shares(evaluator, *known.about, p, x);
    add_columns(shares.rows, static_cast<size_t>(shares.terms),
                [](size_t i) { return fmt::format("term{}", i + 1); });
    if (options.derivatives) {
        std::vector<double> rows(points * width);
        evaluator.derivatives(p, x, rows);
        add_columns(rows, width, [&](size_t i) { return "dy/d" + parameters[i].name; });
    }
    fmt::print("{}", options.csv ? table::csv_text(result) : aligned_text(result));
    if (!options.plot.empty()) plot_model(options, evaluator, *known.about, p, result);
}

int fit(const fit::Library &library, const FitCommand &command)
{
    const fit::KnownModel known = fit::find_model(library, command.model);
    const auto [nParams, parameters] = fit::shape(known, command.nparams);
    report::ReportContext context;
    context.model = known.about;
    context.parameters = parameters;
    const fit::Data data = read_data(command, known, context);
    const fit::FitOptions options = read_options(command, *known.about, parameters);
    fit::Evaluator evaluator(known.model, nParams, static_cast<int>(parameters.size()));

    const fit::FitResult result = fit(evaluator, *known.about, data, options);
    std::vector<double> p;
    for (const auto &estimate : result.parameters) p.push_back(estimate.value);
    const report::Shares shares = evaluate_shares(evaluator, *known.about, p, data.x);
    fmt::print("{}", report::fit_report(result, context, data, shares));
    if (!command.csv.empty()) table::write_table(command.csv, fit_table(result, context, data, shares));
    if (!command.plot.empty()) plot_fit(command, evaluator, p, result, context, data);
    if (!result.converged) {
        fmt::print(stderr, "curvebank: the fit did not converge\n");
        return exit_not_converged;
    }
    if (!command.certified.empty()) {
        const report::Comparison comparison =
            compare(result, context, read_certified(command.certified, parameters.size()));
        fmt::print("\n{}", comparison.text);
        if (comparison.fewest_digits < command.digits) {
            fmt::print(stderr, "curvebank: fewer than {:g} certified digits were found\n", command.digits);
            return exit_too_few_digits;
        }
    }
    return 0;
}

void check(const fit::Library &library, const CheckCommand &command)
{
    const fit::KnownModel known = fit::find_model(library, command.model);
    const table::Table table = table::read_table(command.table);
    const size_t column = table.column(command.column.empty() ? "1" : command.column);
    DerivativeCheck result = check_derivatives(library, known, command.parameters, table.columns[column]);
    result.table.names[0] = table.names[column];
    fmt::print("{}\n{:<12} {:>18} {:>18} {:>18}\n", aligned_text(result.table), "Parameter", "value",
               "max. disagreement", "at " + table.names[column]);
    for (const auto &[name, value, disagreement, at] : result.parameters) {
        fmt::print("{:<12} {:>18.12g} ", name, value);
        if (std::isnan(disagreement))
            fmt::print("{:>18}\n", "not compared");
        else
            fmt::print("{:>18.3g} {:>18.12g}\n", disagreement, at);
    }
}

int check_all(const fit::Library &library)
{
    std::vector<std::string_view> value_only;
    size_t compared = 0, unexplained = 0;
    fmt::print("| model | entry of dy | holds | relative disagreement |\n| --- | --- | --- | --- |\n");
    for (const reference::ModelReference &about : reference::models) {
        if (about.placeholder) continue;
        if (!about.derivatives) {
            value_only.push_back(about.name);
            continue;
        }
        ++compared;
        std::vector<std::vector<double>> axes;
        for (const auto &[low, high] : about.sample_ranges)
            axes.push_back(span_of({low, high}, about.sample_ranges.size() == 1 ? 21 : 7));
        for (const InexactEntry &entry : inexact_entries(fit::find_model(library, about.name), grid_of(axes))) {
            unexplained += entry.holds.empty();
            fmt::print("| {} | {} (d/d{}) | {} | {} |\n", about.name, entry.entry, entry.parameter,
                       entry.holds.empty() ? "unexplained" : markdown(entry.holds),
                       !entry.written       ? "not written"
                       : !entry.has_partial ? "exact is 0"
                                            : fmt::format("{:.2g}", entry.disagreement));
        }
    }
    fmt::print("\n{} models compared at their samples; {} more give no derivatives: {}.\n", compared,
               value_only.size(), fmt::join(value_only, ", "));
    if (unexplained == 0) return 0;
    fmt::print(stderr, "curvebank: {} derivative entries differ without an explanation in the reference\n",
               unexplained);
    return exit_unexplained;
}

}  // namespace curvebank::program
