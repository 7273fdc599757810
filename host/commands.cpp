#include "host/commands.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/arguments.h"
#include "host/error.h"
#include "host/fit.h"
#include "host/known_model.h"
#include "host/plot.h"
#include "host/report.h"
#include "host/table.h"

namespace curvebank::host {
namespace {

std::string aligned_text(const Table &table)
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

/// Takes the usable rows of the table: all cells there and, where weights are given, positive ones.
Data read_data(const FitCommand &command, ReportContext &context)
{
    const Table table = read_table(command.table);
    std::vector<std::string> names =
        command.columns.empty() ? std::vector<std::string>{"1", "2"} : split(command.columns, ',');
    if (names.size() != 2) throw Error("--columns takes two names, x and y");
    if (!command.weights.empty()) names.push_back(command.weights);
    std::vector<size_t> columns;
    for (const std::string &name : names) columns.push_back(table.column(name));
    context.data_file = command.table;
    context.x_name = table.names[columns[0]];
    context.y_name = table.names[columns[1]];
    if (!command.weights.empty()) context.weights_name = table.names[columns[2]];

    Data data;
    data.x.resize(1);
    for (size_t row = 0; row < table.rows(); ++row) {
        const bool complete = std::none_of(columns.begin(), columns.end(),
                                           [&](size_t c) { return std::isnan(table.columns[c][row]); });
        const bool usable = complete && (command.weights.empty() || table.columns[columns[2]][row] > 0);
        if (!usable) {
            ++context.skipped_rows;
            continue;
        }
        data.x[0].push_back(table.columns[columns[0]][row]);
        data.y.push_back(table.columns[columns[1]][row]);
        if (!command.weights.empty()) data.weights.push_back(table.columns[columns[2]][row]);
    }
    return data;
}

FitOptions read_options(const FitCommand &command, const ModelReference &about,
                        const std::vector<ParameterReference> &parameters)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    FitOptions options;
    options.max_iterations = command.max_iterations;
    options.confidence = command.confidence;
    options.start.assign(parameters.size(), 0.0);
    options.fixed.assign(parameters.size(), false);
    options.lower.assign(parameters.size(), -infinity);
    options.upper.assign(parameters.size(), infinity);

    // A linear model finds its parameters from anywhere; others begin at their sample.
    if (!about.linear && about.sample_parameters.size() == parameters.size())
        options.start = about.sample_parameters;
    const std::vector<bool> set = assign(command.start, "--start", parameters, options.start);
    if (!about.linear && about.sample_parameters.size() != parameters.size() &&
        std::find(set.begin(), set.end(), false) != set.end())
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
    const Table table = read_table(file);
    const std::vector<double> &values = table.columns[table.column("value")];
    if (values.size() != count)
        throw Error(fmt::format("{} has {} values, but there are {} parameters", file, values.size(), count));
    return values;
}

void plot_fit(const FitCommand &command, Evaluator &evaluator, const std::vector<double> &p,
              const FitResult &result, const ReportContext &context, const Data &data, int terms)
{
    const auto [low, high] = std::minmax_element(data.x[0].begin(), data.x[0].end());
    constexpr size_t points = 400;
    Variables grid(1);
    for (size_t i = 0; i < points; ++i)
        grid[0].push_back(*low + (*high - *low) * static_cast<double>(i) / (points - 1));
    FitPlot plot;
    plot.title = fmt::format("{} fitted to {}", context.model->name,
                             std::filesystem::path(context.data_file).filename().string());
    plot.x_name = context.x_name;
    plot.y_name = context.y_name;
    plot.data = {"data", data.x[0], data.y};
    plot.residuals = {"residual", data.x[0], result.residuals};
    plot.curve = {"fit", grid[0], std::vector<double>(points)};
    evaluator.values(p, grid, plot.curve.y);
    if (terms > 1) {
        Shares shares{terms, std::vector<double>(points * static_cast<size_t>(terms))};
        evaluator.contributions(p, grid, terms, shares.rows);
        for (int k = 0; k < terms; ++k)
            plot.terms.push_back({fmt::format("term {}", k + 1), grid[0], shares.of_term(k)});
    }
    draw(plot, command.plot);
}

}  // namespace

void list(const Library &library, const std::string &filter)
{
    const auto contains = [&filter](const std::string &text) {
        return std::search(text.begin(), text.end(), filter.begin(), filter.end(),
                           [](char a, char b) { return std::tolower(a) == std::tolower(b); }) != text.end();
    };
    fmt::print("{:<16}  {:>4} {:>4} {:>6}  {:<19} {:>7}  {}\n", "Model", "x", "y", "params", "Export", "Ordinal",
               "Title");
    for (const ModelReference &about : reference()) {
        if (!contains(about.name) && !contains(about.title)) continue;
        const Model model = find_model(library, about.name).model;
        const ExportedModel *exported = find_export(about.name);
        fmt::print("{:<16}  {:>4} {:>4} {:>6}  {:<19} {:>7}  {}\n", about.name, model.nIndep, model.nDep,
                   model.nParams, exported ? exported->name : "-",
                   exported ? std::to_string(exported->ordinal) : "-", about.title);
    }
}

void show(const Library &library, const std::string &name)
{
    const auto [model, about] = find_model(library, name);
    const ExportedModel *exported = find_export(about->name);
    const auto line = [](const char *label, const std::string &text) {
        if (!text.empty()) fmt::print("{:<14}{}\n", label, text);
    };
    fmt::print("{}: {}\n\n", about->name, about->title);
    line("Formula", (about->placeholder ? "" : "y = ") + about->text());
    line("Domain", about->domain);
    line("Source", about->source);
    line("Variables", fmt::format("{} independent, {} dependent", model.nIndep, model.nDep));
    line("Parameters",
         fmt::format("{}{}", model.nParams,
                     about->repeated.empty()
                         ? ""
                         : fmt::format(" as listed; {} more for every further term", about->repeated.size())));
    for (const auto &parameters : {about->parameters, about->repeated})
        for (const auto &[parameter, meaning] : parameters) fmt::print("    {:<10}{}\n", parameter, meaning);
    line("Export", exported ? fmt::format("{} (ordinal {})", exported->name, exported->ordinal)
                            : "only through the catalogue");
    if (!about->derivatives) line("Derivatives", "none: the model gives its value only");
    for (const auto &[entry, what] : about->inexact)
        line("Derivatives", fmt::format("entry {} is {}", entry, what));
    if (!about->sample_parameters.empty())
        line("Sample", fmt::format("{} for x from {} to {}", fmt::join(about->sample_parameters, ", "),
                                   about->sample_range[0], about->sample_range[1]));
}

void eval(const Library &library, const EvalOptions &options)
{
    const KnownModel known = find_model(library, options.model);
    const auto count = static_cast<int>(split(options.parameters, ',').size());
    const bool by_name = options.parameters.find('=') != std::string::npos;
    const Shape called = shape(known, by_name ? options.nparams : count);
    const std::vector<ParameterReference> &parameters = called.parameters;
    std::vector<double> p(parameters.size());
    const std::vector<bool> set = assign(options.parameters, "--params", parameters, p);
    for (size_t i = 0; i < set.size(); ++i)
        if (!set[i]) throw Error("--params: no value for " + parameters[i].name);

    Table result;
    if (!options.x.empty()) {
        result.names = {"x"};
        result.columns = {parse_range(options.x, "--x")};
    } else {
        const Table table = read_table(options.table);
        const size_t column = table.column(options.columns.empty() ? "1" : options.columns);
        result.names = {table.names[column]};
        result.columns = {table.columns[column]};
    }
    const Variables x = result.columns;
    const size_t points = x[0].size(), width = p.size();
    const auto add_columns = [&](const std::vector<double> &rows, size_t columns, const auto &name) {
        for (size_t i = 0; i < columns; ++i) {
            result.names.push_back(name(i));
            std::vector<double> &column = result.columns.emplace_back(points);
            for (size_t r = 0; r < points; ++r) column[r] = rows[r * columns + i];
        }
    };

    Evaluator evaluator(known.model, called.nParams, static_cast<int>(width));
    std::vector<double> y(points);
    evaluator.values(p, x, y);
    result.names.push_back("y");
    result.columns.push_back(y);
    if (known.about->contributions) {
        const int terms = known.about->terms(static_cast<int>(width));
        std::vector<double> rows(points * static_cast<size_t>(terms));
        evaluator.contributions(p, x, terms, rows);
        add_columns(rows, static_cast<size_t>(terms), [](size_t i) { return fmt::format("term{}", i + 1); });
    }
    if (options.derivatives) {
        std::vector<double> rows(points * width);
        evaluator.derivatives(p, x, rows);
        add_columns(rows, width, [&](size_t i) { return "dy/d" + parameters[i].name; });
    }
    fmt::print("{}", options.csv ? csv_text(result) : aligned_text(result));
}

int fit(const Library &library, const FitCommand &command)
{
    const KnownModel known = find_model(library, command.model);
    const auto [nParams, parameters] = shape(known, command.nparams);
    ReportContext context;
    context.model = known.about;
    context.parameters = parameters;
    const Data data = read_data(command, context);
    const FitOptions options = read_options(command, *known.about, parameters);
    Evaluator evaluator(known.model, nParams, static_cast<int>(parameters.size()));

    const FitResult result = fit(evaluator, *known.about, data, options);
    std::vector<double> p;
    for (const auto &estimate : result.parameters) p.push_back(estimate.value);
    Shares shares;
    if (known.about->contributions) {
        shares.terms = known.about->terms(static_cast<int>(p.size()));
        shares.rows.resize(data.y.size() * static_cast<size_t>(shares.terms));
        evaluator.contributions(p, data.x, shares.terms, shares.rows);
    }
    fmt::print("{}", fit_report(result, context, data, shares));
    if (!command.csv.empty()) write_table(command.csv, fit_table(result, context, data, shares));
    if (!command.plot.empty()) plot_fit(command, evaluator, p, result, context, data, shares.terms);
    if (!result.converged) {
        fmt::print(stderr, "curvebank: the fit did not converge\n");
        return exit_not_converged;
    }
    if (!command.certified.empty()) {
        const Comparison comparison =
            compare(result, context, read_certified(command.certified, parameters.size()));
        fmt::print("\n{}", comparison.text);
        if (comparison.fewest_digits < command.digits) {
            fmt::print(stderr, "curvebank: fewer than {:g} certified digits were found\n", command.digits);
            return exit_too_few_digits;
        }
    }
    return 0;
}

}  // namespace curvebank::host
