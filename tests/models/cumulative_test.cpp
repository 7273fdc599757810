#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("cumulative")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;
    const std::string models[] = {"NormalCDF", "LognormalCDF", "ExponentialCDF", "GammaCDF", "WeibullCDF"};

    TEST_CASE("the value comes with the derivatives, no error is looked for, stale codes stay")
    {
        for (const std::string &name : models) {
            Call call(name, {1, 3, 2, 1.5}, {2}), value = call;
            INFO(name);
            CHECK((call.run(D | E, 34, 33) == 0 && value.run(V, 33, 34) == 0 && call.y[1] == value.y[1]));
            CHECK((call.runtime_code == 34 && call.caller_code == 33 && value.dy_untouched()));
            CHECK((value.runtime_code == 33 && value.caller_code == 34));
            CHECK((call.run(E, 34, 33) == 0 && call.nothing_written() && call.caller_code == 33));
        }
        check_call("NormalCDF", {1, 2, 1e200, 1}, 0, D, {0, 0}, 1, {34, 0}, {1, 0, -0.0, 0.0});
        check_call("ExponentialCDF", {1, 2, -0.001}, 1, V, {0, 0}, -INFINITY, {34, 0});
    }

    TEST_CASE("domains: a failing value ends a derivative call, too")
    {
        check_call("LognormalCDF", {1, 2, 3, 0}, 3, D, {34, 33}, M, {0, 33});
        check_call("LognormalCDF", {1, 2, 3, 1}, 0, V | D, {12, 33}, M, {0, 33});
        check_call("LognormalCDF", {1, 2, 0, 1}, NAN, V, {34, 0}, NAN, {34, 0});
        check_call("ExponentialCDF", {1, 2, 0}, 0, D, {34, 0}, M, {0, 0});
        check_call("ExponentialCDF", {1, 2, 4}, 0, D, {0, 0}, 1, {0, 0}, {1, 0, 0.5});
        check_call("GammaCDF", {1, 2, 0, 4}, 1, D, {33, 0}, NAN, {33, 0}, {1, NAN, NAN, NAN});
        check_call("WeibullCDF", {1, 2, 0, 1}, -1, V, {34, 12}, M, {0, 12});
        check_call("WeibullCDF", {1, 2, 1, -1}, 1, D | E, {34, 12}, M, {34, 0});
        check_call("WeibullCDF", {1, 2, 1, 1}, -0.0, D, {33, 0}, 1, {33, 0}, {1, 0, 0, 0});
    }
}
