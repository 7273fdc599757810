// What stands behind a Model.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "curvebank/fit/model.h"
#include "fit/source.h"

namespace curvebank::fit {

constexpr size_t max_outputs = 2;  // of any model

struct Model::Implementation {
    std::string name;
    std::vector<std::string> variables;
    std::vector<Parameter> parameters;
    size_t outputs = 1;
    bool implicit = false;

    std::shared_ptr<const Source> fast;   ///< the formula where it stands for the model, else as exact
    std::shared_ptr<const Source> exact;  ///< values of the calling contract; null for a formula
    std::shared_ptr<const ExtendedSource> extended;  ///< null where the formula is not the model to the last digit

    std::vector<size_t> linear;  ///< parameters in which the value is linear, all together
    bool contains_constant = false;
};

}  // namespace curvebank::fit
