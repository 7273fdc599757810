// The command-line program: reads the command line and runs one command.

#include <cstdio>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "platform/error.h"
#include "program/commands.h"

namespace curvebank::program {
namespace {

int run(int argc, char **argv)
{
    CLI::App app("Lists, shows, evaluates and fits the models of a Curvebank library.", "curvebank");
    app.require_subcommand(1);
    app.footer(
        "Exits with 0 on success, 1 after an error, 2 when a fit did not converge, 3 when --digits were not reached.");

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
    eval_app->add_option("--y", eval_options.y, "the same for the second independent variable; all combinations")
        ->needs(x);
    eval_app->add_option("--z", eval_options.z, "the same for the third")->needs(x);
    eval_app->add_option("--plot", eval_options.plot, "a .png or .svg picture of the curve or surface");
    eval_app->add_option("--columns", eval_options.columns, "the table's columns (default: the first)")
        ->needs(table);
    eval_app->add_flag("--derivatives", eval_options.derivatives, "the model's derivatives too");
    eval_app->add_flag("--csv", eval_options.csv, "CSV instead of aligned text");
    x->excludes(table);

    FitCommand fit_options;
    CLI::App *fit_app = app.add_subcommand("fit", "Least-squares fit to a table");
    fit_app->add_option("model", fit_options.model)->required();
    fit_app->add_option("table", fit_options.table, "the data: a CSV file")->required();
    fit_app->add_option("--columns", fit_options.columns, "x,y by name or number (default: the first ones)");
    fit_app->add_option("--weights", fit_options.weights, "a column of weights (1/variance)");
    fit_app->add_option("--nparams", fit_options.nparams, "number of parameters, for models of repeated terms")
        ->check(CLI::Range(1, 1000));
    fit_app->add_option("--start", fit_options.start, "1,2,3 or name=value,... (default: the model's sample)");
    fit_app->add_option("--fix", fit_options.fix, "name or name=value,...");
    fit_app->add_option("--free", fit_options.free, "name,...: constants that the model keeps unless asked");
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

    CheckCommand check_options;
    CLI::App *check_app = app.add_subcommand("check", "A model's derivatives beside differences");
    CLI::Option *checked = check_app->add_option("model", check_options.model);
    check_app->add_option("table", check_options.table, "a table to take x from: a CSV file");
    check_app->add_option("--params", check_options.parameters, "1,2,3");
    check_app->add_option("--column", check_options.column, "the table's column (default: the first)");
    check_app->add_flag("--all", check_options.all, "all models at their samples: a table of the inexact entries")
        ->excludes(checked);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : exit_error;
    }
    if (list_app->parsed()) list(filter);
    if (show_app->parsed()) show(name);
    if (eval_app->parsed()) {
        if (eval_options.x.empty() && eval_options.table.empty()) throw Error("eval needs --x or --table");
        eval(eval_options);
    }
    if (check_options.all) return check_all();
    if (check_app->parsed()) {
        if (check_options.table.empty() || check_options.parameters.empty())
            throw Error("check needs a model, a table and --params, or --all");
        check(check_options);
    }
    return fit_app->parsed() ? fit(fit_options) : 0;
}

}  // namespace
}  // namespace curvebank::program

int main(int argc, char **argv)
{
    try {
        return curvebank::program::run(argc, argv);
    } catch (const std::exception &error) {
        fmt::print(stderr, "curvebank: {}\n", error.what());
        return curvebank::program::exit_error;
    }
}
