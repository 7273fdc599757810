// One line a call of a surface: a model of two independent variables, which marks a failure in the second one.

#pragma once

#include <cmath>
#include <utility>

#include <doctest/doctest.h>

#include "tests/support/call.h"

namespace curvebank::test {

constexpr double U = untouched;

/// Makes one call and checks its result, that x[2] is marked on a failure and only then, both error variables
/// (errno, the caller's), and that y and dy hold the listed entries from y[1] and dy[1] on and no others.
inline void check_at(const std::string &name, std::initializer_list<double> p, std::pair<double, double> at,
                     int flags, std::pair<int, int> before, int result, std::pair<int, int> after,
                     std::initializer_list<double> values, std::initializer_list<double> derivatives = {})
{
    const auto same = [](double a, double b) { return same_bits(a, b) || (std::isnan(a) && std::isnan(b)); };
    Call call(name, p, {at.first, at.second});
    const int answer = call.run(flags, before.first, before.second);
    INFO(name << " at " << at.first << ", " << at.second << ", flags " << flags << ": result " << answer);
    CHECK((answer == result && same(call.x[2], result == 1 ? MISSING_VALUE : at.second)));
    CHECK((call.runtime_code == after.first && call.caller_code == after.second));
    CHECK((std::equal(values.begin(), values.end(), &call.y[1], same) && same(call.y[values.size() + 1], U)));
    const int listed = static_cast<int>(derivatives.size());
    CHECK((std::equal(derivatives.begin(), derivatives.end(), &call.dy[1], same) && call.dy_untouched(listed + 1)));
}

}  // namespace curvebank::test
