// Points of a model's domain: parameters spread around its sample, places where the curve then has shape.

#pragma once

#include <cmath>
#include <cstdint>
#include <map>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "formula/evaluate.h"
#include "reference/reference.h"

namespace curvebank::test {

class Domain {
public:
    /// One term where terms repeat. The same points in every run: they depend on the model's name alone.
    explicit Domain(const reference::ModelReference &about) : about_(about), names_(about.names(count(about)))
    {
        uint64_t seed = 0xcbf29ce484222325;
        for (const char c : about.name) seed = (seed ^ static_cast<unsigned char>(c)) * 0x100000001b3;
        bits_.seed(seed);
        sample_.assign(about.sample_parameters.begin(),
                       about.sample_parameters.begin() + static_cast<std::ptrdiff_t>(names_.size()));
    }

    const std::vector<reference::NamedParameter> &names() const { return names_; }

    /// A set of parameters that lie up to so many orders of magnitude on either side of the sample. First the units
    /// of the variables change, half of the time, which carries all parameters along in proportion; then every
    /// parameter moves on its own, by little in most sets and by much in some. Exponents, shapes and angles move a
    /// third as far, and everything stays in its range.
    std::vector<double> parameters(double orders)
    {
        rescale(orders);
        const double own = orders * std::pow(fraction(), 3);
        std::vector<double> p(sample_.size());
        for (size_t i = 0; i < p.size(); ++i) {
            const reference::ParameterReference &about = *names_[i].about;
            const double reach = own * (narrow(about.kind) ? 1.0 / 3 : 1.0);
            p[i] = moved(sample_[i] * unit_factor(about.unit), reach, about.range);
        }
        return p;
    }

    /// A place for these parameters, the last made: half of the time within the ranges of the sample in the units
    /// of this set, else around a position or the origin at the distance of a width, a scale or the inverse of a
    /// rate.
    std::vector<double> place(std::span<const double> p)
    {
        std::vector<double> x(about_.sample_ranges.size());
        for (size_t i = 0; i < x.size(); ++i) {
            const auto [low, high] = about_.sample_ranges[i];
            const std::string variable = reference::ModelReference::variables[i];
            x[i] = (low + (high - low) * fraction()) * factors_.at(variable);
            if (fraction() < 0.5) continue;
            std::vector<double> centres = {0}, lengths = {std::fabs(x[i])};
            for (size_t k = 0; k < p.size(); ++k) {
                const reference::ParameterReference &about = *names_[k].about;
                if (about.unit == variable && about.kind == reference::Kind::position) centres.push_back(p[k]);
                if (about.unit == variable) lengths.push_back(std::fabs(p[k]));
                if (about.unit == "1/" + variable && p[k] != 0) lengths.push_back(std::fabs(1 / p[k]));
            }
            const double length = lengths[below(lengths.size())] * std::pow(10.0, 3 * fraction() - 2);
            x[i] = centres[below(centres.size())] + (low < 0 && fraction() < 0.5 ? -length : length);
        }
        return x;
    }

    /// Brings some of it nearly together: a parameter with another of its unit, the place with a parameter, a pure
    /// number with 0.
    void coincide(std::vector<double> &p, double &x)
    {
        const auto near = [this](double to) {
            return to * (1 + (below(2) ? 1 : -1) * std::pow(10.0, -1 - 11 * fraction()));
        };
        for (size_t i = 0; i < p.size(); ++i) {
            const std::string_view unit = names_[i].about->unit;
            const size_t other = below(p.size());
            if (unit == "1" && below(3) == 0) p[i] *= std::pow(10.0, -6 * fraction());
            if (other != i && unit != "1" && unit == names_[other].about->unit && below(3) == 0)
                p[i] = near(p[other]);
            if (unit == "x" && below(3) == 0) x = near(p[i]);
        }
    }

private:
    static int count(const reference::ModelReference &about)
    {
        return static_cast<int>(about.parameters.size() + about.repeated.size());
    }

    static bool narrow(reference::Kind kind)
    {
        using enum reference::Kind;
        return kind == exponent || kind == shape || kind == angle || kind == base || kind == logarithm;
    }

    double fraction() { return static_cast<double>(bits_() >> 11) * 0x1p-53; }
    size_t below(size_t limit) { return bits_() % limit; }
    double order(double reach) { return std::pow(10.0, reach * (2 * fraction() - 1)); }

    void rescale(double orders)
    {
        const bool same = fraction() < 0.5;
        for (const char *variable : reference::ModelReference::variables)
            factors_[variable] = same ? 1 : order(orders);
        for (const auto &[variable, expression] : about_.units) {
            const double factor = value(expression);
            factors_[std::string(variable)] = std::isfinite(factor) && factor > 0 ? factor : 1;
        }
        for (size_t i = 0; i < names_.size(); ++i) factors_[std::string(names_[i].about->name)] = sample_[i];
    }

    /// Of a unit that multiplies; 1 of those that do otherwise.
    double unit_factor(std::string_view unit)
    {
        const double factor = unit.find("ln(") == unit.npos && unit.find("log10(") == unit.npos ? value(unit) : 1;
        return std::isfinite(factor) && factor > 0 ? factor : 1;
    }

    double value(std::string_view expression)
    {
        try {
            factors_["k"] = 1;
            return formula::evaluate(formula::Formula::parse(expression), factors_);
        } catch (const formula::FormulaError &) {
            return 1;  // a unit that no variable scales
        }
    }

    double moved(double from, double reach, const reference::RangeReference &range)
    {
        const auto [low, high] = range;
        if (std::isfinite(low) && std::isfinite(high)) {
            if (reach > 0.3 && fraction() < 0.3) return low + (high - low) * fraction();
            const double to = low + (from - low) * order(reach);
            return to >= low && to <= high ? to : low + (high - low) * fraction();
        }
        if (std::isfinite(low)) return low + (from - low) * order(reach);
        // Either sign occurs: at 0 the sample shows no size, and far from it the sign may be the other one.
        if (from == 0) return below(2) ? 0 : (2 * fraction() - 1) * order(reach);
        return from * order(reach) * (reach > 1 && below(4) == 0 ? -1 : 1);
    }

    const reference::ModelReference &about_;
    std::vector<reference::NamedParameter> names_;
    std::vector<double> sample_;
    std::map<std::string, double> factors_;  ///< of the variables, and the sample for units that name parameters
    std::mt19937_64 bits_;
};

}  // namespace curvebank::test
