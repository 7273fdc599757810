// What a model should give: the formula of the reference and its partials with 50 digits, and their condition.

#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "formula/evaluate.h"
#include "program/evaluator.h"
#include "reference/reference.h"

namespace curvebank::test {

using Digits50 = boost::multiprecision::cpp_bin_float_50;

constexpr double unit_roundoff = 0x1p-52;  ///< the unit in which errors relative to the condition are counted

/// A model of the library, with one term where terms repeat.
inline program::Evaluator evaluator(const reference::ModelReference &about)
{
    const program::KnownModel known = program::find_model(about.name);
    const size_t count = about.parameters.size() + about.repeated.size();
    return {known, program::shape(known, about.repeated.empty() ? 0 : static_cast<int>(count))};
}

/// The names of the parameters, then those of the variables.
inline std::vector<std::string> inputs(const reference::ModelReference &about)
{
    std::vector<std::string> names;
    for (const auto &parameter : about.names(static_cast<int>(about.parameters.size() + about.repeated.size())))
        names.push_back(parameter.name);
    for (int i = 0; i < about.variable_count(); ++i)
        names.emplace_back(reference::ModelReference::variables[static_cast<size_t>(i)]);
    return names;
}

/// In one graph: the value and, where the model has them, its partials in all parameters; or two values.
inline std::vector<formula::Formula> outputs(const reference::ModelReference &about)
{
    using formula::Formula;
    if (!about.second.empty()) {
        const std::string both =
            "(" + std::string(about.formula) + ")*first_ + (" + std::string(about.second) + ")*second_";
        const auto parts = Formula::parse(both).with_derivatives({"first_", "second_"});
        return {parts[1], parts[2]};
    }
    std::string text(about.formula);
    if (!about.term.empty()) text += (text.empty() ? "" : " + ") + std::string(about.term);
    Formula value = Formula::parse(text);
    if (!about.term.empty()) value = value.substitute({{"k", Formula::parse("1")}});
    if (!about.derivatives) return {value};
    std::vector<std::string> parameters = inputs(about);
    parameters.resize(parameters.size() - static_cast<size_t>(about.variable_count()));
    return value.with_derivatives(parameters);
}

/// The outputs at points, each with its condition: its size and the sum over all inputs of |input * partial|, which
/// the rounding of the inputs and of the result alone makes uncertain by one unit.
class ExactModel {
public:
    explicit ExactModel(const reference::ModelReference &about) : evaluate_(outputs(about), inputs(about))
    {
        results.resize(outputs(about).size());
    }

    std::vector<Digits50> results, conditions;

    void compute(const std::vector<double> &point)
    {
        std::vector<Digits50> place(point.begin(), point.end()), moved(results.size());
        evaluate_(place, results);
        conditions.clear();
        for (const Digits50 &result : results) conditions.push_back(abs(result));
        for (Digits50 &input : place) {
            if (input == 0) continue;
            const Digits50 at = input;
            input *= 1 + Digits50(0x1p-50);
            evaluate_(place, moved);
            for (size_t k = 0; k < moved.size(); ++k) conditions[k] += abs(moved[k] - results[k]) * 0x1p50;
            input = at;
        }
    }

    /// Whether an output is a number that doubles hold. Where it and its condition are below 1e-100 the library
    /// gives 0: no exponential is computed below exp(-300).
    bool counts(size_t output) const
    {
        return isfinite(results[output]) && conditions[output] > 1e-100 && conditions[output] < 1e300;
    }

    /// The error of a number in units of the condition.
    double error(double value, size_t output) const
    {
        if (!std::isfinite(value)) return std::numeric_limits<double>::infinity();
        return static_cast<double>(abs(value - results[output]) / conditions[output]) / unit_roundoff;
    }

private:
    formula::Evaluator<Digits50> evaluate_;
};

}  // namespace curvebank::test
