// One line a call of a surface: what goes in, and all that comes out.

#pragma once

#include <cmath>
#include <initializer_list>
#include <string>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

namespace curvebank::test {

/// Makes one call at (X, Y) and checks its result, x[2] (marked where the result is 1), both error variables, and
/// the outputs: the listed entries from y[1] and dy[1] on, and that the others are untouched. Any NaN equals any
/// other.
inline void check_surface(const std::string &name, std::initializer_list<double> p, double X, double Y, int flags,
                          Codes before, int result, Codes after, std::initializer_list<double> y,
                          std::initializer_list<double> dy = {})
{
    Call call(name, p, {X, Y});
    const int answer = call.run(flags, before.first, before.second);
    const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
    INFO(name << " at " << X << ", " << Y << ", flags " << flags << ": " << answer << ", y = " << call.y[1]);
    CHECK((answer == result && same(call.x[2], result == 1 ? MISSING_VALUE : Y) && call.x[1] == X));
    CHECK((call.runtime_code == after.first && call.caller_code == after.second));
    CHECK((std::equal(y.begin(), y.end(), &call.y[1], same) && call.y[y.size() + 1] == untouched));
    CHECK((std::equal(dy.begin(), dy.end(), &call.dy[1], same) &&
           call.dy_untouched(static_cast<int>(dy.size()) + 1)));
}

}  // namespace curvebank::test
