// A model at many points: its value, and what its calls give besides.

#pragma once

#include <span>
#include <vector>

#include "curvebank/fit/model.h"
#include "program/known_model.h"

namespace curvebank::program {

/// Columns of equal length: the independent variables of a set of points, or what a model gives there.
using Columns = std::vector<std::vector<double>>;

/// A model with a given number of parameters.
class Evaluator {
public:
    Evaluator(const KnownModel &known, const Shape &shape);

    const reference::ModelReference &about() const { return *known_.about; }
    const fit::Model &model() const { return model_; }  ///< for the engine

    /// A column an output. NaN where the model gives none, here and in the others.
    Columns values(std::span<const double> p, const Columns &x) const;

    /// The model's own derivatives, a column a parameter. Models of two outputs have none.
    Columns derivatives(std::span<const double> p, const Columns &x);

    /// The share of each term in the value, a column a term; none for models that do not tell it.
    Columns shares(std::span<const double> p, const Columns &x);

private:
    bool call(int flags, const Columns &x, size_t point);

    KnownModel known_;
    fit::Model model_;
    int nParams_;
    size_t parameters_;
    std::vector<double> p_, x_, y_, dy_;
};

}  // namespace curvebank::program
