// One line a call: what goes in, and all that comes out.

#pragma once

#include <cmath>
#include <initializer_list>
#include <string>
#include <utility>

#include <doctest/doctest.h>

#include "tests/support/call.h"

namespace curvebank::test {

using Codes = std::pair<int, int>;  // errno and the caller's variable

/// Makes one call and checks its result (it is to fail where the value is missing), the value, both error
/// variables, and dy: the listed entries from dy[1] on, and that the others are untouched. Any NaN equals any
/// other.
inline void check_call(const std::string &name, std::initializer_list<double> p, double X, int flags, Codes before,
                       double value, Codes after, std::initializer_list<double> derivatives = {})
{
    const auto same = [](double a, double b) { return same_bits(a, b) || (std::isnan(a) && std::isnan(b)); };
    Call call(name, p, {X});
    const int result = call.run(flags, before.first, before.second);
    const int listed = static_cast<int>(derivatives.size());
    INFO(name << " at x = " << X << ", flags " << flags << ": result " << result << ", y = " << call.y[1]);
    CHECK((result == is_missing(value) && same(call.y[1], value)));
    CHECK((call.runtime_code == after.first && call.caller_code == after.second));
    CHECK((std::equal(derivatives.begin(), derivatives.end(), &call.dy[1], same) && call.dy_untouched(listed + 1)));
}

}  // namespace curvebank::test
