// Evaluation of a model at many points, through the calling contract.

#pragma once

#include <span>
#include <vector>

#include "fit/library.h"
#include "fit/rows.h"

namespace curvebank::fit {

/// The independent variables of a set of points: one column of equal length each.
using Variables = std::vector<std::vector<double>>;

/// Calls one model with a given number of parameters. Its arrays are allocated once.
class Evaluator {
public:
    /// nParams is the count passed in every call, parameters the number of parameters the model reads.
    Evaluator(const Model &model, int nParams, int parameters);

    int parameters() const { return parameters_; }
    int variables() const { return model_.nIndep; }
    int outputs() const { return model_.nDep; }

    /// The value at every point, outputs() numbers a point; NaN where the model gives none. Returns the number of
    /// NaN.
    size_t values(std::span<const double> p, const Variables &x, std::span<double> y);

    /// The model's own derivatives: rows[r][i] at point r with respect to p[i]. NaN where the model gives none, as
    /// models of two outputs never do.
    void derivatives(std::span<const double> p, const Variables &x, Rows &rows);

    /// The shares of the first terms, as many as the rows are wide; NaN where a term is not written.
    void contributions(std::span<const double> p, const Variables &x, Rows &rows);

private:
    int call(int flags, const Variables &x, size_t point);
    void set_parameters(std::span<const double> p);

    Model model_;
    int nParams_, parameters_;
    std::vector<double> p_, x_, y_, dy_;
};

}  // namespace curvebank::fit
