// What a person wants to know about a model: its formula, the names and meanings of its parameters, its domain.

#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace curvebank::host {

struct ParameterReference {
    std::string name, meaning;
};

/// One entry of the reference tables; reference/README.md says what each key means.
struct ModelReference {
    std::string name, title, formula, term, domain, source;
    std::string second;                          ///< the formula of the second output, where a model has two
    std::vector<ParameterReference> parameters;  ///< those that are there once, first in the parameter array
    std::vector<ParameterReference> repeated;    ///< those of every repeated term
    std::vector<std::pair<int, std::string>> inexact;
    bool contributions = false, linear = false, derivatives = true, placeholder = false, export_only = false;
    bool implicit = false;  ///< the value is the residual of an equation, 0 on the curve
    double tolerance = 1e-12;
    std::vector<double> sample_parameters;
    std::vector<std::array<double, 2>> sample_ranges;  ///< of x, y and z, as many as the model has variables

    /// Number of repeated terms in a call with that many parameters.
    int terms(int parameters) const;

    /// The names of that many parameters in order; those of repeated terms are numbered when there are several.
    std::vector<ParameterReference> names(int parameters) const;

    /// The whole formula as one line of text.
    std::string text() const;

    /// The names of the independent variables in the formulas.
    static constexpr std::array variables = {"x", "y", "z"};
};

/// All entries in alphabetical order.
const std::vector<ModelReference> &reference();

/// The entry of that name, ignoring case, or null.
const ModelReference *find_reference(const std::string &name);

/// Up to five names that a misspelt name may stand for, likeliest first.
std::vector<std::string> nearest_names(const std::string &name);

}  // namespace curvebank::host
