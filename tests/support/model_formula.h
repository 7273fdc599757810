// A model as its reference entry states it: its sample, and the value of its formulas.

#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "formula/evaluate.h"
#include "reference/reference.h"

namespace curvebank {

using Values = std::map<std::string, double>;

/// The value of an expression, which is read once.
inline double evaluate(std::string_view text, const Values &values)
{
    struct Read {
        std::vector<std::string> names;
        formula::Evaluator<double> evaluator;
    };
    static std::map<std::string, Read, std::less<>> known;
    auto found = known.find(text);
    if (found == known.end()) {
        const auto read = formula::Formula::parse(text);
        found = known.emplace(text, Read{read.names(), {{read}, read.names()}}).first;
    }
    std::vector<double> numbers;
    for (const std::string &name : found->second.names) numbers.push_back(values.at(name));
    return found->second.evaluator(numbers);
}

/// The sample's parameters, with further terms like the last one up to so many.
inline std::vector<double> sample_of(const reference::ModelReference &entry, int terms)
{
    std::vector<double> p(entry.sample_parameters.begin(), entry.sample_parameters.end());
    const size_t size = entry.repeated.size();
    while (size > 0 && entry.terms(static_cast<int>(p.size())) < terms)
        for (size_t i = 0; i < size; ++i) p.push_back(1.1 * p[p.size() - size]);
    return p;
}

/// What the expressions of a term from 1 on, or for 0 those of the whole, see of the parameters.
inline Values scope(const reference::ModelReference &entry, const std::vector<double> &p, size_t term)
{
    Values seen;
    const size_t once = entry.parameters.size(), size = entry.repeated.size();
    for (size_t i = 0; i < once; ++i) seen[std::string(entry.parameters[i].name)] = p[i];
    if (term == 0) return seen;
    seen["k"] = static_cast<double>(term);
    for (size_t i = 0; i < size; ++i) seen[std::string(entry.repeated[i].name)] = p[once + (term - 1) * size + i];
    return seen;
}

/// The value of output k (from 0) where the variables are `at`.
inline double formula_value(const reference::ModelReference &entry, const std::vector<double> &p, const Values &at,
                            size_t output)
{
    const auto part = [&](std::string_view text, size_t term) {
        Values seen = scope(entry, p, term);
        for (const auto &[name, number] : at) seen[name] = number;
        return text.empty() ? 0.0 : evaluate(text, seen);
    };
    if (output > 0) return part(entry.second, 0);
    double sum = part(entry.formula, 0);
    const auto terms = static_cast<size_t>(entry.terms(static_cast<int>(p.size())));
    for (size_t k = 1; k <= terms; ++k) sum += part(entry.term, k);
    return sum;
}

}  // namespace curvebank
