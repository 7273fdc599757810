// What becomes of a model's parameters when its variables take other units, or begin elsewhere.

#pragma once

#include <algorithm>
#include <cmath>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/model_formula.h"

namespace curvebank {

/// A model as its entry describes it, with two terms where they repeat.
struct DescribedModel {
    explicit DescribedModel(const reference::ModelReference &about, int terms = 2)
        : entry(about), sample(sample_of(about, terms)), parameters(about.names(static_cast<int>(sample.size())))
    {
        outputs = entry.second.empty() ? 1 : 2;
        const auto independent = static_cast<size_t>(entry.variable_count());
        for (size_t i = 0; i < independent; ++i) variables.emplace_back(reference::ModelReference::variables[i]);
        for (size_t i = 0; i < outputs && !entry.implicit; ++i)
            values.emplace_back(reference::ModelReference::variables[independent + i]);
    }

    /// The number of the term that parameter i is of, from 1; 0 for those that are there once.
    size_t term_of(size_t i) const
    {
        const size_t once = entry.parameters.size();
        return i < once ? 0 : (i - once) / entry.repeated.size() + 1;
    }

    const reference::ModelReference &entry;
    std::vector<double> sample;
    std::vector<reference::NamedParameter> parameters;
    std::vector<std::string> variables, values;
    size_t outputs;
};

struct Unit {
    enum Form { product, logarithm, decadic_logarithm, exponential, sum } form = product;
    std::string factor, summand;  ///< the summand with its sign

    explicit Unit(std::string_view text) : factor(text)
    {
        const auto inside = [&](std::string_view function, Form wrapped) {
            if (!text.starts_with(function) || !text.ends_with(')')) return;
            form = wrapped;
            factor = text.substr(function.size(), text.size() - function.size() - 1);
        };
        inside("ln(", logarithm);
        inside("log10(", decadic_logarithm);
        inside("exp(", exponential);
        const size_t sign = std::min(text.find(" + "), text.find(" - "));
        if (sign == text.npos) return;
        form = sum;
        factor = text.substr(0, sign);
        summand = std::string(text.substr(sign + 1, 1)) + std::string(text.substr(sign + 3));
        if (summand[0] == '+') summand.erase(0, 1);
    }

    /// The quantity after its variables took the factors.
    double apply(double quantity, const Values &factors) const
    {
        const double by = evaluate(factor, factors);
        switch (form) {
            case product:
                return quantity * by;
            case logarithm:
                return quantity + std::log(by);
            case decadic_logarithm:
                return quantity + std::log10(by);
            case exponential:
                return std::pow(quantity, by);
            case sum:
                break;
        }
        return quantity * by + evaluate(summand, factors);
    }
};

bool fixed_unit(std::string_view text)
{
    return text == "kelvin" || text == "volt" || text == "concentration";
}

/// Every variable takes a factor, the parameters what their units make of it.
struct Scaling {
    /// The factors wished for, but where the formula ties a variable's.
    Scaling(const DescribedModel &scaled, std::span<const reference::UnitReference> ties, Values wished)
        : model(&scaled), factors(std::move(wished))
    {
        for (const char *fixed : {"kelvin", "volt", "concentration"}) factors[fixed] = 1;
        for (const auto &[variable, expression] : ties) {
            const Unit unit(expression);
            if (unit.form != Unit::product)
                factors[std::string(variable)] = 1;
            else if (variable != "residual")
                factors[std::string(variable)] = evaluate(unit.factor, factors);
            units.emplace(variable, unit);
        }
    }

    std::vector<double> parameters(const std::vector<double> &p) const
    {
        const auto seen = [&](const std::vector<double> &numbers, size_t i) {
            Values names = scope(model->entry, numbers, model->term_of(i));
            for (const auto &[name, factor] : factors) names[name] = factor;
            return names;
        };
        // Sums see the other parameters as they have become.
        std::vector<double> scaled = p;
        for (const bool sums : {false, true}) {
            const std::vector<double> seen_numbers = scaled;
            for (size_t i = 0; i < p.size(); ++i)
                if (const Unit unit(model->parameters[i].about->unit); (unit.form == Unit::sum) == sums)
                    scaled[i] = unit.apply(p[i], seen(seen_numbers, i));
        }
        return scaled;
    }

    double value(double number, size_t output) const
    {
        const std::string name = model->entry.implicit ? "residual" : model->values[output];
        const auto tie = units.find(name);
        return (tie == units.end() ? Unit(name) : tie->second).apply(number, factors);
    }

    const DescribedModel *model;
    Values factors;
    std::map<std::string, Unit> units;
};

/// How much of a shift along a variable parameter i takes: 1, -1 or 0.
inline double share_of_shift(const DescribedModel &model, const std::string &variable, size_t i)
{
    using reference::Kind;
    const reference::ParameterReference &about = *model.parameters[i].about;
    if (about.unit.substr(0, about.unit.find(' ')) != variable) return 0;
    if (std::find(model.values.begin(), model.values.end(), variable) != model.values.end())
        return about.kind == Kind::level && model.term_of(i) <= 1 ? 1 : 0;
    if (about.kind == Kind::position || about.kind == Kind::abscissa) return 1;
    return about.kind == Kind::reversed_position ? -1 : 0;
}

}  // namespace curvebank
