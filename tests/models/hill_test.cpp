#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("Hill curves")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    TEST_CASE("limits: at X = 0 and at an overflow, which only the value step clears from errno")
    {
        const struct {
            Call call;
            double level;
        } cases[] = {{{"Hill", {5, 2, 0}, {0}}, 0},
                     {{"Hill", {5, 2, std::nan("")}, {0}}, 5},
                     {{"Hill", {5, 1e200, 2}, {1}}, 0},
                     {{"Hill1", {1, 6, 2, -2}, {0}}, 1},
                     {{"Hill1", {1, 6, 1e200, 2}, {1}}, 1}};
        for (auto [call, level] : cases) {
            CHECK(call.run(both | EVAL_USE_ERRPTR, 0, 34) == 0);
            CHECK((call.y[1] == level && call.dy_untouched() && call.runtime_code == 0));
            CHECK(call.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 0, 34) == 0);
            CHECK((call.y[1] == level && call.dy[1] == 0 && call.dy[2] == 0 && call.dy[3] == 0));
            CHECK((call.runtime_code == (call.x[1] > 0 ? 34 : 0) && call.caller_code == 34));
        }
    }

    TEST_CASE("a zero constant: Hill's derivative step refuses it, Hill1's loses its last entry")
    {
        Call hill("Hill", {5, 0, 2}, {3}), hill1("Hill1", {1, 6, 0, 2}, {3});
        CHECK(hill.run(both | EVAL_USE_ERRPTR, 0, 33) == 1);
        CHECK((is_missing(hill.y[1]) && hill.dy_missing_only(1, 3) && hill.caller_code == 0));
        CHECK((hill1.run(both) == 1 && hill1.y[1] == 6 && is_missing(hill1.dy[4]) && hill1.runtime_code == 0));
    }

    TEST_CASE("BiHill reads and clears no error variable, and forms its powers on every call")
    {
        Call call("BiHill", {5, 1, 8, 1, 1}, {0});
        CHECK((call.run(both, 34) == 1 && is_missing(call.y[1]) && call.dy_missing_only(1, 5) &&
               call.runtime_code == 34));
        call.x[1] = -1;  // the factor of the activation is 0
        CHECK((call.run(both) == 1 && is_missing(call.y[1]) && call.dy_untouched()));
        call.p[4] = 0.5;
        CHECK((call.run(0) == 0 && call.nothing_written() && call.runtime_code == 33));
        CHECK((call.run(both) == 0 && is_missing(call.y[1]) && std::isnan(call.dy[1])));
    }
}
