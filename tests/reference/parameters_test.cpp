// What the reference tables say of parameters and peaks, held against the formulas: units by scaling the variables,
// kinds by shifting them, half widths by looking for them on the curve.

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include "reference/reference.h"
#include "tests/support/transformed.h"

using namespace curvebank;
using reference::Kind;
using reference::ModelReference;
using reference::UnitReference;

namespace {

using Numbers = std::vector<double>;

double uniform(double low, double high)
{
    static std::mt19937_64 generator;
    return std::uniform_real_distribution(low, high)(generator);
}

Numbers near(const Numbers &p, double share)
{
    Numbers moved = p;
    for (double &number : moved) number *= 1 + share * uniform(-1, 1);
    return moved;
}

/// How far the curve of other parameters, at places that a change of variables leads to, is off what that change
/// makes of the values: at most, relative to the largest of these. Begins at the sample, then goes near it.
template <typename Change>
double worst_error(const DescribedModel &model, Change change)
{
    double worst = 0;
    for (int trial = 0; trial < 4; ++trial) {
        const Numbers p = trial == 0 ? model.sample : near(model.sample, 0.05);
        const auto [new_p, new_place, new_value] = change(p);
        for (size_t output = 0; output < model.outputs; ++output) {
            double largest = 0, off = 0;
            int usable = 0;
            for (int point = 0; point < 40; ++point) {
                Values at;
                for (size_t i = 0; i < model.variables.size(); ++i)
                    at[model.variables[i]] =
                        uniform(model.entry.sample_ranges[i].low, model.entry.sample_ranges[i].high);
                const double before = new_value(formula_value(model.entry, p, at, output), output);
                for (auto &[name, number] : at) number = new_place(name, number);
                const double after = formula_value(model.entry, new_p, at, output);
                if (!std::isfinite(before) && !std::isfinite(after)) continue;
                ++usable;
                largest = std::max(largest, std::fabs(before));
                off = std::max(off, std::isnan(after - before) ? HUGE_VAL : std::fabs(after - before));
            }
            if (trial == 0) CHECK_MESSAGE(usable >= 20, "values at its sample");
            if (usable > 0) worst = std::max(worst, off / std::max(largest, 1e-300));
        }
    }
    return worst;
}

/// The error of the scaling law: every variable takes a factor, the parameters what their units make of it.
double scaling_error(const DescribedModel &model, std::span<const UnitReference> ties)
{
    return worst_error(model, [&](const Numbers &p) {
        Values wished;
        for (const auto &names : {model.variables, model.values})
            for (const std::string &name : names) wished[name] = std::exp(uniform(-1.2, 1.2));
        const Scaling scaling(model, ties, wished);
        const auto place = [scaling](const std::string &name, double number) {
            return number * scaling.factors.at(name);
        };
        const auto value = [scaling](double number, size_t output) { return scaling.value(number, output); };
        return std::tuple(scaling.parameters(p), place, value);
    });
}

/// The error of the law of shifts along a variable.
double shift_error(const DescribedModel &model, const std::string &variable)
{
    const bool of_value = std::find(begin(model.values), end(model.values), variable) != end(model.values);
    return worst_error(model, [&](const Numbers &p) {
        const double by = uniform(0.3, 0.9);
        Numbers shifted = p;
        for (size_t i = 0; i < p.size(); ++i) shifted[i] += by * share_of_shift(model, variable, i);
        const auto place = [=](const std::string &name, double number) {
            return number + (name == variable ? by : 0);
        };
        const auto value = [=, &model](double number, size_t output) {
            return number + (of_value && model.values[output] == variable ? by : 0);
        };
        return std::tuple(shifted, place, value);
    });
}

template <typename Function>
double bisect(double inside, double outside, Function is_inside)
{
    for (int i = 0; i < 80; ++i) {
        const double middle = inside + (outside - inside) / 2;
        (is_inside(middle) ? inside : outside) = middle;
    }
    return inside;
}

/// The full width at half maximum of the highest peak in the sample range, found on the curve of one term without
/// its baseline.
double width_on_curve(const DescribedModel &model, Numbers p, size_t output)
{
    p.resize(model.entry.parameters.size() + model.entry.repeated.size());
    for (size_t i = 0; i < p.size(); ++i)
        if (model.parameters[i].about->kind == Kind::level) p[i] = 0;
    const auto curve = [&](double x) {
        const double y = formula_value(model.entry, p, {{"x", x}}, output);
        return std::isfinite(y) ? y : 0.0;
    };
    const auto [low, high] = model.entry.sample_ranges[0];
    const double step = (high - low) / 1000;
    double top = low;
    for (int i = 0; i <= 1000; ++i)
        if (curve(low + step * i) > curve(top)) top = low + step * i;
    double left = top - step, right = top + step;
    for (int i = 0; i < 100; ++i) {
        const double a = left + (right - left) / 3, b = right - (right - left) / 3;
        (curve(a) < curve(b) ? left : right) = curve(a) < curve(b) ? a : b;
    }
    const double half = std::max(curve(left), curve(top)) / 2;
    const auto above = [&](double x) { return curve(x) > half; };
    double ends[2];
    for (const int side : {0, 1}) {
        double end = top;
        for (int i = 0; i < 10000 && above(end); ++i) end += side == 0 ? -step : step;
        ends[side] = bisect(top, end, above);
    }
    return ends[1] - ends[0];
}

}  // namespace

TEST_CASE("units: scaled variables and parameters give the scaled curve")
{
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        CAPTURE(entry.name);
        const DescribedModel model(entry);
        CHECK(scaling_error(model, entry.units) < 1e-9);
        CHECK(entry.implicit == std::any_of(begin(entry.units), end(entry.units),
                                            [](const auto &tie) { return tie.variable == "residual"; }));
        for (size_t i = 0; i < entry.units.size(); ++i) {
            const auto &[variable, expression] = entry.units[i];
            if (variable == "residual") continue;
            CHECK(!entry.units_why.empty());
            if (fixed_unit(expression)) continue;
            std::vector<UnitReference> fewer(begin(entry.units), end(entry.units));
            fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
            CHECK_MESSAGE(scaling_error(model, fewer) > 1e-6, variable << " is tied without need");
        }
    }
}

TEST_CASE("kinds: the curve shifts with its positions and levels along the variables listed, and no others")
{
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        CAPTURE(entry.name);
        const DescribedModel model(entry);
        for (const auto &names : {model.variables, model.values})
            for (const std::string &name : names) {
                const bool listed = std::find(begin(entry.shifts), end(entry.shifts), name) != end(entry.shifts);
                CHECK_MESSAGE((shift_error(model, name) < 1e-9) == listed, name);
            }
    }
}

TEST_CASE("ranges hold at the sample")
{
    for (const ModelReference &entry : reference::models) {
        const DescribedModel model(entry);
        for (size_t i = 0; i < entry.sample_parameters.size(); ++i) {
            const auto [low, high] = model.parameters[i].about->range;
            const double number = entry.sample_parameters[i];
            const bool inside = std::isfinite(high) ? low <= number && number <= high : low < number;
            CHECK_MESSAGE(inside, entry.name << ": " << model.parameters[i].about->name);
        }
    }
}

TEST_CASE("full widths at half maximum are those of the curve")
{
    for (const ModelReference &entry : reference::models) {
        CAPTURE(entry.name);
        const DescribedModel model(entry);
        const std::pair<std::string_view, size_t> widths[] = {{entry.fwhm, 0}, {entry.fwhm_second, 1}};
        for (const auto &[width, output] : widths) {
            if (width.empty()) continue;
            if (width == "numeric") {
                CHECK(width_on_curve(model, model.sample, output) > 0);
                continue;
            }
            for (int trial = 0; trial < (entry.fwhm_approximate ? 1 : 5); ++trial) {
                const Numbers p = trial == 0 ? model.sample : near(model.sample, 0.2);
                CHECK(evaluate(width, scope(entry, p, entry.repeated.empty() ? 0 : 1)) ==
                      doctest::Approx(width_on_curve(model, p, output))
                          .scale(0)
                          .epsilon(entry.fwhm_approximate ? 0.05 : 1e-7));
            }
        }
    }
}
