#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("hyperbola")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("derivatives; zero denominators: what is marked, and whether the error variable is cleared")
    {
        struct Case {
            std::string name;
            std::initializer_list<double> p, p0;  // the latter for a zero denominator at X = 2
            int marked;
            bool clears, joint;  // joint: value and derivatives in one call
        };
        const Case cases[] = {
            {"Hyperbl", {3, 1.5}, {3, -2}, 2, true, true},
            {"Dhyperbl", {3, 1.5, 2, 6, 0.1}, {3, 1.5, 2, -2, 0.1}, 0, true, true},
            {"RectHyperbola", {3, 0.5}, {3, -0.5}, 2, true, false},
            {"HyperbolaMod", {0.5, 1.5}, {0.5, -1}, 0, false, false},
            {"HyperbolaEVP", {1, 0.8, 3, 2}, {1, 1, 1, 1}, 4, false, false},
        };
        for (const Case &c : cases) {
            CAPTURE(c.name);
            Call call(c.name, c.p, {2}), zero(c.name, c.p0, {2});
            CHECK(call.run(D, 34) == 0);
            const double value = call.y[1];
            CHECK((call.run(V | D, 34) == 0 && call.y[1] == doctest::Approx(value)));
            CHECK(call.dy_untouched() != c.joint);
            CHECK((zero.run(V | D | E, 34, 33) == 1 && is_missing(zero.y[1]) && zero.dy_untouched()));
            CHECK((zero.runtime_code == 34 && zero.caller_code == (c.clears ? 0 : 33)));
            CHECK((zero.run(D, 34, 33) == 1 && is_missing(zero.y[1]) && zero.dy_missing_only(1, c.marked)));
            CHECK((zero.runtime_code == (c.clears ? 0 : 34) && zero.caller_code == 33));
        }
        check_call("Hyperbl", {}, 1, V, {34, 0}, M, {0, 0});  // values need a parameter, derivatives do not
        check_call("Dhyperbl", {}, 1, D, {34, 0}, 0, {34, 0}, {1, -0.0, 1, -0.0, 1});
    }

    TEST_CASE("HyperbolaGen: the derivatives test little of what the value tests")
    {
        check_call("HyperbolaGen", {3, 2, -1, -2}, 1, V, {34, 0}, M, {34, 0});
        check_call("HyperbolaGen", {3, 2, 1, 0}, 1, D | E, {34, 33}, M, {34, 0}, {1, M, M, M});
        check_call("HyperbolaGen", {3, 2, -2, 2}, 1, V | D, {0, 0}, M, {0, 0});
        check_call("HyperbolaGen", {3, 2, -2, 2}, 1, D, {34, 0}, NAN, {33, 0}, {1, NAN, NAN, NAN});
        check_call("HyperbolaGen", {3, 2, 1, -1e-4}, 1, V | E, {34, 12}, M, {34, 0});  // the power is 0
    }
}
