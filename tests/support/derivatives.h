// Analytic derivatives against central differences.

#pragma once

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include <doctest/doctest.h>

#include "tests/support/call.h"

namespace curvebank::test {

/// Checks that a derivative call gives the exact partials of the value, at every x, but for the listed entries,
/// which the model defines otherwise: those must differ somewhere, or they would not belong in the list.
inline void check_derivatives(const std::string &name, std::initializer_list<double> parameters,
                              std::initializer_list<double> xs, std::initializer_list<int> not_exact = {})
{
    const auto listed = [&](int i) { return std::find(not_exact.begin(), not_exact.end(), i) != not_exact.end(); };
    std::array<bool, Call::room> differs{};

    for (const double x : xs) {
        Call at(name, parameters, {x});
        REQUIRE(at.run(EVAL_DERIVS) == 0);
        for (int i = 1; i <= at.nParams; ++i) {
            const auto slot = static_cast<size_t>(i);
            const double step = 6e-6 * std::max(1.0, std::fabs(at.p[slot]));
            Call low = at, high = at;
            low.p[slot] -= step;
            high.p[slot] += step;
            REQUIRE((low.run(EVAL_VALUE) == 0 && high.run(EVAL_VALUE) == 0));
            const double difference = (high.y[1] - low.y[1]) / (high.p[slot] - low.p[slot]);
            const bool close =
                std::fabs(at.dy[slot] - difference) <= 1e-7 * (std::fabs(difference) + std::fabs(at.y[1]) + 1);
            if (listed(i)) {
                differs[slot] = differs[slot] || !close;
            } else {
                CHECK_MESSAGE(close, name << " at x = " << x << ": dy[" << i << "] = " << at.dy[slot]
                                          << ", difference quotient " << difference);
            }
        }
    }
    for (const int i : not_exact)
        CHECK_MESSAGE(differs[static_cast<size_t>(i)], name << " dy[" << i << "] is exact");
}

}  // namespace curvebank::test
