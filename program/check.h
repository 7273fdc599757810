// A model's own derivatives against differences.

#pragma once

#include <string>
#include <vector>

#include "program/evaluator.h"
#include "program/known_model.h"
#include "table/table.h"

namespace curvebank::program {

/// What the diagnostic command finds for one model.
struct DerivativeCheck {
    struct Parameter {
        std::string name;
        double value;
        double disagreement;  ///< the largest one over all rows, NaN where there was nothing to compare
        double at;            ///< the x of it
    };

    table::Table table;  ///< x, the value, and for every parameter the model's derivative beside the difference
    std::vector<Parameter> parameters;
};

/// Runs the diagnostic command on a column of x, the way a host's command line would. It takes forward differences
/// with the step 1e-8, moves x alone where a model has more variables (the others are 0), and has room for the
/// differences of nine parameters. Throws Error where the parameters cannot be read.
DerivativeCheck check_derivatives(const KnownModel &known, const std::string &parameters,
                                  const std::vector<double> &x);

/// A derivative entry that is not the exact partial.
struct InexactEntry {
    int entry;  ///< its number in dy
    std::string parameter;
    std::string holds;          ///< what the reference says of it; empty where it says nothing
    double disagreement;        ///< relative to the largest difference
    bool written, has_partial;  ///< whether the model writes it, and whether the exact partial is not 0 throughout
};

/// The inexact entries of a model at these parameters and points. Central differences in steps fit for each parameter
/// tell: they see what a step of 1e-8 cannot.
std::vector<InexactEntry> inexact_entries(const KnownModel &known, const std::vector<double> &p, const Columns &x);

}  // namespace curvebank::program
