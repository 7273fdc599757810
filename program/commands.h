// The commands of the program, each printing to stdout. All throw Error.

#pragma once

#include <string>

#include "fit/library.h"

namespace curvebank::program {

constexpr int exit_not_converged = 2, exit_too_few_digits = 3, exit_unexplained = 4;

/// The models with that text in name or title, a line each, and how many they are.
void list(const fit::Library &library, const std::string &filter);

/// All about one model.
void show(const fit::Library &library, const std::string &name);

struct EvalOptions {
    std::string model, parameters, x, y, z, table, columns, plot;
    int nparams = 0;
    bool derivatives = false, csv = false;
};

/// Value, shares of terms and derivatives at given points.
void eval(const fit::Library &library, const EvalOptions &options);

struct FitCommand {
    std::string model, table, columns, weights, start, fix, lower, upper, plot, csv, certified;
    int nparams = 0, max_iterations = 1000;
    double confidence = 0.95, digits = 0;
};

/// A least-squares fit to a table. Returns the program's exit code.
int fit(const fit::Library &library, const FitCommand &command);

struct CheckCommand {
    std::string model, table, parameters, column;
    bool all = false;
};

/// A model's own derivatives beside forward differences, as the library's diagnostic command finds them over a
/// column of a table.
void check(const fit::Library &library, const CheckCommand &command);

/// A table, in Markdown, of all derivative entries that are not the exact partials, found by comparison at every
/// model's sample. Returns the program's exit code.
int check_all(const fit::Library &library);

}  // namespace curvebank::program
