// The command-line program: list, show, evaluate and fit the models of a Curvebank library.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <glog/logging.h>
#include <CLI/CLI.hpp>

#include "host/error.h"
#include "host/fit.h"
#include "host/library.h"
#include "host/plot.h"
#include "host/reference.h"
#include "host/report.h"
#include "host/table.h"

namespace curvebank::host {
namespace {

constexpr int exit_not_converged = 2, exit_too_few_digits = 3;

/// A model together with what the reference says of it.
struct KnownModel {
    Model model;
    const ModelReference *about;
};

KnownModel find_model(const Library &library, const std::string &name)
{
    const ModelReference *about = find_reference(name);
    Model model = library.find(name);
    if (!model.function && about && about->export_only)
        model = {library.exported(about->name), 1, 1, static_cast<int>(about->parameters.size())};
    if (!model.function || !about) {
        const std::vector<std::string> nearest = nearest_names(name);
        throw Error(fmt::format("no model is called {}{}{}", name,
                                nearest.empty() ? "; try curvebank list" : "; did you mean ",
                                fmt::join(nearest, ", ")));
    }
    return {model, about};
}

const ExportedModel *find_export(const std::string &catalogue_name)
{
    for (const ExportedModel &entry : exported_models())
        if ((entry.catalogue_name.empty() ? entry.name : entry.catalogue_name) == catalogue_name) return &entry;
    return nullptr;
}

double parse_number(const std::string &text, const std::string &what)
{
    double value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || stop != text.data() + text.size())
        throw Error(fmt::format("{}: {} is no number", what, text));
    return value;
}

std::vector<std::string> split(const std::string &text, char separator)
{
    std::vector<std::string> parts;
    size_t begin = 0;
    for (size_t end = 0; end != std::string::npos; begin = end + 1) {
        end = text.find(separator, begin);
        parts.push_back(CLI::detail::trim_copy(text.substr(begin, end - begin)));
    }
    return parts;
}

size_t find_parameter(const std::vector<ParameterReference> &parameters, const std::string &name,
                      const std::string &option)
{
    for (size_t i = 0; i < parameters.size(); ++i)
        if (parameters[i].name == name) return i;
    std::vector<std::string> names;
    for (const auto &parameter : parameters) names.push_back(parameter.name);
    throw Error(fmt::format("{}: no parameter {}; the parameters are {}", option, name, fmt::join(names, ", ")));
}

/// Reads "1,2,3" (one value a parameter) or "name=value,..." into values. Says which were set.
std::vector<bool> assign(const std::string &text, const std::string &option,
                         const std::vector<ParameterReference> &parameters, std::vector<double> &values)
{
    std::vector<bool> set(parameters.size(), false);
    if (text.empty()) return set;
    const std::vector<std::string> parts = split(text, ',');
    if (text.find('=') == std::string::npos) {
        if (parts.size() != parameters.size())
            throw Error(fmt::format("{}: {} values given, but there are {} parameters", option, parts.size(),
                                    parameters.size()));
        for (size_t i = 0; i < parts.size(); ++i) values[i] = parse_number(parts[i], option);
        set.assign(parameters.size(), true);
        return set;
    }
    for (const std::string &part : parts) {
        const size_t equals = part.find('=');
        if (equals == std::string::npos) throw Error(fmt::format("{}: {} is no name=value", option, part));
        const size_t i = find_parameter(parameters, part.substr(0, equals), option);
        values[i] = parse_number(part.substr(equals + 1), option);
        set[i] = true;
    }
    return set;
}

/// How a model is called: the count it is passed, and the parameters it then reads.
struct Shape {
    int nParams;
    std::vector<ParameterReference> parameters;
};

/// The shape for a wanted number of parameters (0: the usual one). Only models of repeated terms have a choice.
Shape shape(const KnownModel &known, int wanted)
{
    const ModelReference &about = *known.about;
    if (about.placeholder) throw Error(about.name + " is a placeholder: it computes nothing");
    const int usual = std::max(static_cast<int>(about.sample_parameters.size()), known.model.nParams);
    const int count = wanted > 0 ? wanted : usual;
    const auto names = about.names(count);
    if (about.repeated.empty() ? count != usual : static_cast<int>(names.size()) != count) {
        throw Error(about.repeated.empty()
                        ? fmt::format("{} takes {} parameters, not {}", about.name, usual, count)
                        : fmt::format("{} takes {} parameters and {} for every term; {} do not fit", about.name,
                                      about.parameters.size(), about.repeated.size(), count));
    }
    return {about.repeated.empty() ? known.model.nParams : count, names};
}

void list(const std::string &filter)
{
    const auto contains = [&filter](const std::string &text) {
        return std::search(text.begin(), text.end(), filter.begin(), filter.end(),
                           [](char a, char b) { return std::tolower(a) == std::tolower(b); }) != text.end();
    };
    const Library library = Library::standard();
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

void show(const std::string &name)
{
    const Library library = Library::standard();
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

/// Reads "start:end:step" or "x1,x2,...".
std::vector<double> parse_range(const std::string &text)
{
    const std::vector<std::string> parts = split(text, ':');
    std::vector<double> x;
    if (parts.size() == 1) {
        for (const std::string &part : split(text, ',')) x.push_back(parse_number(part, "--x"));
        return x;
    }
    if (parts.size() != 3) throw Error("--x takes start:end:step or a list of numbers, not " + text);
    const double start = parse_number(parts[0], "--x"), end = parse_number(parts[1], "--x"),
                 step = parse_number(parts[2], "--x");
    const double count = std::floor((end - start) / step * (1 + 1e-12) + 1e-9) + 1;
    if (!(count >= 1 && count <= 1e7)) throw Error("--x: " + text + " is no range of 1 to 10 million points");
    for (double i = 0; i < count; ++i) x.push_back(start + i * step);
    return x;
}

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

struct EvalOptions {
    std::string model, parameters, x, table, columns;
    int nparams = 0;
    bool derivatives = false, csv = false;
};

void eval(const EvalOptions &options)
{
    const Library library = Library::standard();
    const KnownModel known = find_model(library, options.model);
    const auto count = static_cast<int>(split(options.parameters, ',').size());
    const bool by_name = options.parameters.find('=') != std::string::npos;
    const auto [nParams, parameters] = shape(known, by_name ? options.nparams : count);
    std::vector<double> p(parameters.size());
    const std::vector<bool> set = assign(options.parameters, "--params", parameters, p);
    for (size_t i = 0; i < set.size(); ++i)
        if (!set[i]) throw Error("--params: no value for " + parameters[i].name);

    Table result;
    if (!options.x.empty()) {
        result.names = {"x"};
        result.columns = {parse_range(options.x)};
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

    Evaluator evaluator(known.model, nParams, static_cast<int>(width));
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

struct FitCommand {
    std::string model, table, columns, weights, start, fix, lower, upper, plot, csv, certified;
    int nparams = 0, max_iterations = 1000;
    double confidence = 0.95, digits = 0;
};

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

void plot_fit(const FitCommand &command, Evaluator &evaluator, const FitResult &result,
              const ReportContext &context, const Data &data, int terms)
{
    std::vector<double> p;
    for (const auto &estimate : result.parameters) p.push_back(estimate.value);
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
        std::vector<double> rows(points * static_cast<size_t>(terms));
        evaluator.contributions(p, grid, terms, rows);
        for (size_t k = 0; k < static_cast<size_t>(terms); ++k) {
            Series &series = plot.terms.emplace_back(Series{fmt::format("term {}", k + 1), grid[0], {}});
            for (size_t i = 0; i < points; ++i) series.y.push_back(rows[i * static_cast<size_t>(terms) + k]);
        }
    }
    draw(plot, command.plot);
}

int fit_command(const FitCommand &command)
{
    const Library library = Library::standard();
    const KnownModel known = find_model(library, command.model);
    const auto [nParams, parameters] = shape(known, command.nparams);
    ReportContext context;
    context.model = known.about;
    context.parameters = parameters;
    const Data data = read_data(command, context);
    const FitOptions options = read_options(command, *known.about, parameters);
    Evaluator evaluator(known.model, nParams, static_cast<int>(parameters.size()));

    const FitResult result = fit(evaluator, *known.about, data, options);
    fmt::print("{}", fit_report(result, context));

    const int terms = known.about->contributions ? known.about->terms(static_cast<int>(parameters.size())) : 0;
    if (!command.csv.empty()) {
        std::vector<double> p, rows(data.y.size() * static_cast<size_t>(terms));
        for (const auto &estimate : result.parameters) p.push_back(estimate.value);
        if (terms > 0) evaluator.contributions(p, data.x, terms, rows);
        write_table(command.csv, fit_table(result, context, data, rows, terms));
    }
    if (!command.plot.empty()) plot_fit(command, evaluator, result, context, data, terms);
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

int run(int argc, char **argv)
{
    CLI::App app("Lists, shows, evaluates and fits the models of a Curvebank library.", "curvebank");
    app.require_subcommand(1);
    app.footer(
        "The library is the one built or installed with this program, or the file named by CURVEBANK_LIBRARY.");

    std::string filter, name;
    CLI::App *list_app = app.add_subcommand("list", "The models, a line each");
    list_app->add_option("text", filter, "only those with this text in name or title");

    CLI::App *show_app = app.add_subcommand("show", "All about one model");
    show_app->add_option("model", name)->required();

    EvalOptions eval_options;
    CLI::App *eval_app = app.add_subcommand("eval", "Value, shares of terms and derivatives at given points");
    eval_app->add_option("model", eval_options.model)->required();
    eval_app->add_option("--params", eval_options.parameters, "1,2,3 or name=value,...")->required();
    eval_app->add_option("--nparams", eval_options.nparams, "number of parameters, where they are given by name")
        ->check(CLI::Range(1, 1000));
    CLI::Option *x = eval_app->add_option("--x", eval_options.x, "start:end:step or a list of numbers");
    CLI::Option *table = eval_app->add_option("--table", eval_options.table, "a table to take x from");
    eval_app->add_option("--columns", eval_options.columns, "the table's column (default: the first)")
        ->needs(table);
    eval_app->add_flag("--derivatives", eval_options.derivatives, "the model's derivatives too");
    eval_app->add_flag("--csv", eval_options.csv, "CSV instead of aligned text");
    x->excludes(table);

    FitCommand fit_options;
    CLI::App *fit_app = app.add_subcommand("fit", "Least-squares fit to a table");
    fit_app->add_option("model", fit_options.model)->required();
    fit_app->add_option("table", fit_options.table, "the data: a CSV file")->required();
    fit_app->add_option("--columns", fit_options.columns, "x,y by name or number (default: the first two)");
    fit_app->add_option("--weights", fit_options.weights, "a column of weights (1/variance)");
    fit_app->add_option("--nparams", fit_options.nparams, "number of parameters, for models of repeated terms")
        ->check(CLI::Range(1, 1000));
    fit_app->add_option("--start", fit_options.start, "1,2,3 or name=value,... (default: the model's sample)");
    fit_app->add_option("--fix", fit_options.fix, "name or name=value,...");
    fit_app->add_option("--lower", fit_options.lower, "lower bounds: name=value,...");
    fit_app->add_option("--upper", fit_options.upper, "upper bounds: name=value,...");
    fit_app->add_option("--confidence", fit_options.confidence, "level of the intervals")
        ->check(CLI::Range(0.01, 0.9999))
        ->capture_default_str();
    fit_app->add_option("--max-iterations", fit_options.max_iterations)
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    fit_app->add_option("--plot", fit_options.plot, "a .png or .svg picture of data, curve and residuals");
    fit_app->add_option("--csv", fit_options.csv, "the data with fitted values and residuals");
    CLI::Option *certified = fit_app->add_option("--certified", fit_options.certified,
                                                 "a table of known parameters (column value) to compare with");
    fit_app->add_option("--digits", fit_options.digits, "fail below this many digits of agreement")
        ->needs(certified);

    CLI11_PARSE(app, argc, argv);
    if (list_app->parsed()) list(filter);
    if (show_app->parsed()) show(name);
    if (eval_app->parsed()) {
        if (eval_options.x.empty() && eval_options.table.empty()) throw Error("eval needs --x or --table");
        eval(eval_options);
    }
    return fit_app->parsed() ? fit_command(fit_options) : 0;
}

}  // namespace
}  // namespace curvebank::host

int main(int argc, char **argv)
{
    FLAGS_minloglevel = google::FATAL;  // the solver's own remarks are not for the user
    google::InitGoogleLogging(argv[0]);
    try {
        return curvebank::host::run(argc, argv);
    } catch (const std::exception &error) {
        fmt::print(stderr, "curvebank: {}\n", error.what());
        return 1;
    }
}
