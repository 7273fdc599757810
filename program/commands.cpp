#include "program/commands.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <boost/algorithm/string/predicate.hpp>

#include "curvebank/fit/fit.h"
#include "platform/error.h"
#include "program/arguments.h"
#include "program/check.h"
#include "program/evaluator.h"
#include "program/known_model.h"
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

/// The points of a fit, a column a variable and an output; an implicit model has no outputs.
struct Points {
    Columns x, y;
    std::vector<double> weights;

    fit::Data view() const
    {
        return {{x.begin(), x.end()}, {y.begin(), y.end()}, weights, {}};
    }
};

/// Takes the usable rows of the table: all cells there and, where weights are given, positive ones. The columns are
/// those of the independent variables, then of the dependent ones; an implicit model has only the former.
Points read_points(const FitCommand &command, const KnownModel &known, report::ReportContext &context)
{
    const table::Table table = table::read_table(command.table);
    const auto variables = static_cast<size_t>(known.nIndep);
    const size_t outputs = known.about->implicit ? 0 : static_cast<size_t>(known.nDep);
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

    Points points{Columns(variables), Columns(outputs), {}};
    for (size_t row = 0; row < table.rows(); ++row) {
        const auto cell = [&](size_t i) { return table.columns[columns[i]][row]; };
        bool usable = command.weights.empty() || cell(variables + outputs) > 0;
        for (size_t i = 0; i < variables + outputs; ++i) usable = usable && !std::isnan(cell(i));
        if (!usable) {
            ++context.skipped_rows;
            continue;
        }
        for (size_t i = 0; i < variables; ++i) points.x[i].push_back(cell(i));
        for (size_t k = 0; k < outputs; ++k) points.y[k].push_back(cell(variables + k));
        if (!command.weights.empty()) points.weights.push_back(cell(variables + outputs));
    }
    return points;
}

fit::Options read_options(const FitCommand &command, const reference::ModelReference &about,
                          const std::vector<reference::NamedParameter> &parameters)
{
    fit::Options options;
    options.max_iterations = command.max_iterations;
    options.confidence = command.confidence;
    std::vector<double> values(parameters.size());
    const auto assign_named = [&](const std::string &text, const std::string &option, auto &named) {
        const std::vector<bool> set = assign(text, option, parameters, values);
        for (size_t i = 0; i < set.size(); ++i)
            if (set[i]) named.emplace_back(parameters[i].name, values[i]);
        return set;
    };
    assign_named(command.lower, "--lower", options.lower);
    assign_named(command.upper, "--upper", options.upper);
    std::vector<bool> set = assign_named(command.start, "--start", options.start);
    const auto each = [&](const std::string &text, const std::string &option, const auto &take) {
        for (const std::string &part : text.empty() ? std::vector<std::string>() : split(text, ',')) {
            const size_t equals = part.find('=');
            take(find_parameter(parameters, part.substr(0, equals), option),
                 equals == std::string::npos ? "" : part.substr(equals + 1));
        }
    };
    each(command.fix, "--fix", [&](size_t i, const std::string &value) {
        options.fixed.push_back(parameters[i].name);
        if (value.empty()) return;
        std::erase_if(options.start, [&](const auto &start) { return start.first == parameters[i].name; });
        options.start.emplace_back(parameters[i].name, parse_number(value, "--fix"));
        set[i] = true;
    });
    each(command.free, "--free",
         [&](size_t i, const std::string &) { options.free.push_back(parameters[i].name); });

    // Terms that begin alike stay alike: those beyond the sample need starts of their own, but in a linear model.
    std::vector<std::string> without;
    for (size_t i = about.sample_parameters.size(); i < parameters.size() && !about.linear; ++i)
        if (!set[i]) without.push_back(parameters[i].name);
    if (!without.empty())
        throw Error(fmt::format("--start must give a value to {}, which the sample of {} does not have",
                                fmt::join(without, ", "), about.name));
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

/// The data minus the fitted values; an implicit model's data are 0.
Columns residuals_of(const Points &points, Columns fitted)
{
    for (size_t k = 0; k < fitted.size(); ++k)
        for (size_t i = 0; i < fitted[k].size(); ++i)
            fitted[k][i] = (points.y.empty() ? 0 : points.y[k][i]) - fitted[k][i];
    return fitted;
}

/// The data with the fitted values, the residuals and each term's share.
table::Table fit_table(const report::ReportContext &context, const Points &points, const Columns &fitted,
                       const Columns &shares)
{
    table::Table table;
    const auto add = [&table](const std::string &name, const std::vector<double> &column) {
        table.names.push_back(name);
        table.columns.push_back(column);
    };
    for (size_t i = 0; i < points.x.size(); ++i) add(context.x_names[i], points.x[i]);
    for (size_t k = 0; k < points.y.size(); ++k) add(context.y_names[k], points.y[k]);
    if (!points.weights.empty()) add(context.weights_name, points.weights);
    const Columns residuals = residuals_of(points, fitted);
    for (size_t k = 0; k < fitted.size(); ++k) {
        const std::string number = fitted.size() > 1 ? std::to_string(k + 1) : "";
        add("fitted" + number, fitted[k]);
        add("residual" + number, residuals[k]);
    }
    for (size_t k = 0; k < shares.size(); ++k) add(fmt::format("term{}", k + 1), shares[k]);
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
Columns grid_of(const std::vector<std::vector<double>> &axes)
{
    size_t points = 1;
    for (const auto &axis : axes) points *= axis.size();
    Columns grid(axes.size(), std::vector<double>(points));
    size_t stride = 1;
    for (size_t i = 0; i < axes.size(); stride *= axes[i].size(), ++i)
        for (size_t point = 0; point < points; ++point) grid[i][point] = axes[i][point / stride % axes[i].size()];
    return grid;
}

/// The model's curves of one variable and, where there are several, its terms.
CurvePlot curve_plot(Evaluator &evaluator, const std::vector<double> &p, const std::vector<double> &x,
                     const std::vector<std::string> &titles)
{
    CurvePlot plot;
    const Columns y = evaluator.values(p, {x}), shares = evaluator.shares(p, {x});
    for (size_t k = 0; k < y.size(); ++k) plot.curves.push_back({titles[k], x, y[k]});
    for (size_t k = 0; shares.size() > 1 && k < shares.size(); ++k)
        plot.terms.push_back({fmt::format("term {}", k + 1), x, shares[k]});
    return plot;
}

void plot_fit(const FitCommand &command, Evaluator &evaluator, const std::vector<double> &p,
              const report::ReportContext &context, const Points &points, const Columns &fitted)
{
    const bool implicit = evaluator.model().implicit();
    const std::string title = fmt::format("{} fitted to {}", evaluator.about().name,
                                          std::filesystem::path(context.data_file).filename().string());
    const Columns &x = points.x;
    if (x.size() == 1) {
        const size_t outputs = points.y.size();
        std::vector<std::string> titles;
        for (const std::string &name : context.y_names) titles.push_back(outputs > 1 ? "fit of " + name : "fit");
        CurvePlot plot = curve_plot(evaluator, p, span_of(x[0], 400), titles);
        plot.title = title;
        plot.x_name = context.x_names[0];
        plot.y_name = fmt::format("{}", fmt::join(context.y_names, ", "));
        const Columns residuals = residuals_of(points, fitted);
        for (size_t k = 0; k < outputs; ++k) {
            plot.data.push_back({outputs > 1 ? context.y_names[k] : "data", x[0], points.y[k]});
            plot.residuals.push_back({"", x[0], residuals[k]});
        }
        draw(plot, command.plot);
    } else if (x.size() == 2) {
        const double margin = implicit ? 0.1 : 0;
        SurfacePlot plot{title,
                         context.x_names[0],
                         context.x_names[1],
                         implicit ? "" : context.y_names[0],
                         span_of(x[0], 60, margin),
                         span_of(x[1], 60, margin),
                         {},
                         x[0],
                         x[1],
                         implicit ? std::vector<double>() : points.y[0]};
        plot.z = evaluator.values(p, grid_of({plot.x, plot.y}))[0];
        (implicit ? draw_zero_curve : draw_surface)(plot, command.plot);
    } else {
        throw Error("there are plots for one and for two independent variables only");
    }
}

/// The independent variables of eval: a grid of the given axes, or columns of a table.
table::Table points_to_evaluate(const EvalOptions &options, const KnownModel &known)
{
    const auto variables = static_cast<size_t>(known.nIndep);
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
void plot_model(const EvalOptions &options, Evaluator &evaluator, const std::vector<double> &p,
                const table::Table &points)
{
    const size_t variables = evaluator.model().variables().size();
    if (variables == 1) {
        CurvePlot plot = curve_plot(evaluator, p, span_of(points.columns[0], 400), {"y", "y2"});
        plot.title = evaluator.about().name;
        plot.x_name = points.names[0];
        plot.y_name = "y";
        draw(plot, options.plot);
    } else if (variables == 2 && evaluator.model().outputs() == 1) {
        SurfacePlot plot;
        plot.title = evaluator.about().name;
        plot.x_name = points.names[0];
        plot.y_name = points.names[1];
        plot.z_name = "z";
        plot.x = span_of(points.columns[0], 60);
        plot.y = span_of(points.columns[1], 60);
        plot.z = evaluator.values(p, grid_of({plot.x, plot.y}))[0];
        (evaluator.model().implicit() ? draw_zero_curve : draw_surface)(plot, options.plot);
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

void list(const std::string &filter)
{
    fmt::print("{:<16}  {:>4} {:>4} {:>6}  {:<19} {:>7}  {}\n", "Model", "x", "y", "params", "Export", "Ordinal",
               "Title");
    int catalogued = 0, by_export = 0, placeholders = 0;
    for (const reference::ModelReference &about : reference::models) {
        if (!boost::icontains(about.name, filter) && !boost::icontains(about.title, filter)) continue;
        ++(about.export_only ? by_export : catalogued);
        placeholders += about.placeholder;
        const KnownModel model = find_model(about.name);
        const ExportedModel *exported = find_export(about.name);
        fmt::print("{:<16}  {:>4} {:>4} {:>6}  {:<19} {:>7}  {}\n", about.name, model.nIndep, model.nDep,
                   model.nParams, exported ? exported->name : "-",
                   exported ? std::to_string(exported->ordinal) : "-", about.title);
    }
    fmt::print("\n{} models of the catalogue", catalogued);
    if (placeholders > 0) fmt::print(", {} of them placeholders", placeholders);
    if (by_export > 0) fmt::print("; {} more by its export alone", by_export);
    fmt::print("\n");
}

void eval(const EvalOptions &options)
{
    const KnownModel known = find_model(options.model);
    const auto count = static_cast<int>(split(options.parameters, ',').size());
    const bool by_name = options.parameters.find('=') != std::string::npos;
    const Shape called = shape(known, by_name ? options.nparams : count);
    const std::vector<reference::NamedParameter> &parameters = called.parameters;
    std::vector<double> p(parameters.size());
    const std::vector<bool> set = assign(options.parameters, "--params", parameters, p);
    for (size_t i = 0; i < set.size(); ++i)
        if (!set[i]) throw Error("--params: no value for " + parameters[i].name);

    table::Table result = points_to_evaluate(options, known);
    const Columns x = result.columns;
    const auto add = [&result](const std::string &name, const std::vector<double> &column) {
        result.names.push_back(name);
        result.columns.push_back(column);
    };

    Evaluator evaluator(known, called);
    const Columns y = evaluator.values(p, x), shares = evaluator.shares(p, x);
    const std::string value = x.size() == 1 ? "y" : x.size() == 2 && y.size() == 1 ? "z" : "value";
    for (size_t k = 0; k < y.size(); ++k) add(y.size() > 1 ? value + std::to_string(k + 1) : value, y[k]);
    for (size_t k = 0; k < shares.size(); ++k) add(fmt::format("term{}", k + 1), shares[k]);
    if (options.derivatives) {
        const Columns derivatives = evaluator.derivatives(p, x);
        for (size_t i = 0; i < p.size(); ++i) add("dy/d" + parameters[i].name, derivatives[i]);
    }
    fmt::print("{}", options.csv ? table::csv_text(result) : aligned_text(result));
    if (!options.plot.empty()) plot_model(options, evaluator, p, result);
}

int fit(const FitCommand &command)
{
    const KnownModel known = find_model(command.model);
    const Shape called = shape(known, command.nparams);
    report::ReportContext context;
    context.model = known.about;
    const Points points = read_points(command, known, context);
    Evaluator evaluator(known, called);
    const fit::Result result =
        fit::fit(evaluator.model(), points.view(), read_options(command, *known.about, called.parameters));

    std::vector<double> p;
    for (const auto &estimate : result.parameters) p.push_back(estimate.value);
    const Columns fitted = evaluator.values(p, points.x), shares = evaluator.shares(p, points.x);
    fmt::print("{}", report::fit_report(result, context, points.x, shares));
    if (!command.csv.empty()) table::write_table(command.csv, fit_table(context, points, fitted, shares));
    if (!command.plot.empty()) plot_fit(command, evaluator, p, context, points, fitted);
    if (!is_success(result.verdict)) {
        fmt::print(stderr, "curvebank: the fit did not converge: {}\n", report::sentence(result.verdict));
        return exit_not_converged;
    }
    if (!command.certified.empty()) {
        const report::Comparison comparison = report::compare(result, read_certified(command.certified, p.size()));
        fmt::print("\n{}", comparison.text);
        if (comparison.fewest_digits < command.digits) {
            fmt::print(stderr, "curvebank: fewer than {:g} certified digits were found\n", command.digits);
            return exit_too_few_digits;
        }
    }
    return 0;
}

void check(const CheckCommand &command)
{
    const KnownModel known = find_model(command.model);
    const table::Table table = table::read_table(command.table);
    const size_t column = table.column(command.column.empty() ? "1" : command.column);
    DerivativeCheck result = check_derivatives(known, command.parameters, table.columns[column]);
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

int check_all()
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
        const std::vector<double> p(about.sample_parameters.begin(), about.sample_parameters.end());
        for (const InexactEntry &entry : inexact_entries(find_model(about.name), p, grid_of(axes))) {
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
