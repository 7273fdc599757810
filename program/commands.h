// The commands of the program, each printing to stdout. All throw Error.

#pragma once

#include <string>

namespace curvebank::program {

constexpr int exit_error = 1, exit_not_converged = 2, exit_too_few_digits = 3, exit_unexplained = 4;

/// The models with that text in name or title, a line each, and how many they are.
void list(const std::string &filter);

/// All about one model.
void show(const std::string &name);

struct EvalOptions {
    std::string model, parameters, x, y, z, table, columns, plot;
    int nparams = 0;
    bool derivatives = false, csv = false;
};

/// Value, shares of terms and derivatives at given points.
void eval(const EvalOptions &options);

struct FitCommand {
    std::string model, table, columns, weights, start, fix, free, lower, upper, plot, csv, certified;
    int nparams = 0, max_iterations = 500;
    double confidence = 0.95, digits = 0;
};

/// A least-squares fit to a table. Returns the program's exit code.
int fit(const FitCommand &command);

struct CheckCommand {
    std::string model, table, parameters, column;
    bool all = false;
};

/// A model's own derivatives beside forward differences, as the library's diagnostic command finds them over a
/// column of a table.
void check(const CheckCommand &command);

/// A table, in Markdown, of all derivative entries that are not the exact partials, found by comparison at every
/// model's sample. Returns the program's exit code.
int check_all();

}  // namespace curvebank::program
