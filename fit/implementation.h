// What stands behind a Model.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "curvebank/fit/model.h"
#include "fit/source.h"
#include "formula/formula.h"
#include "reference/reference.h"

namespace curvebank::fit {

constexpr size_t max_outputs = 2;  // of any model

struct Model::Implementation {
    std::string name;
    std::vector<std::string> variables;
    std::vector<Parameter> parameters;
    size_t outputs = 1;
    bool implicit = false;

    const reference::ModelReference *about = nullptr;  ///< of a catalogue model
    int terms = 1;
    /// Repeated terms: so many of so many parameters each, from that parameter on.
    struct Terms {
        size_t first, size, count;
    };
    std::vector<Terms> repeated;
    std::vector<const reference::ParameterReference *> about_parameters;  ///< null for a formula's

    std::vector<formula::Formula> formulas;  ///< one an output
    bool formula_agrees = false;             ///< the formula stands for the model

    std::shared_ptr<const Source> fast;              ///< the formula where it stands for the model, else as exact
    std::shared_ptr<const Source> exact;             ///< values of the calling contract; null for a formula
    std::shared_ptr<const ExtendedSource> extended;  ///< null where the formula does not stand for the model

    std::vector<size_t> linear;      ///< parameters in which the value is linear, all together
    bool all_linear = false;         ///< those are all
    std::vector<size_t> constants;   ///< parameters that are added to the value as they are
};

}  // namespace curvebank::fit
