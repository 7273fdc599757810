#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("implicit")
{
    constexpr int I = EVAL_INIT, V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("an error costs the residual, but the call succeeds and the code stays")
    {
        for (const std::string name : {"Circle", "Ellipse", "PlaneMod"}) {
            Call call(name, {0, 2, 5, 3}, {5, 2, -5});
            CAPTURE(name);
            CHECK((call.run(V | D | E, 34, 12) == 0 && call.y[1] == 0 && call.dy_untouched()));
            CHECK((call.run(V | E, 0, 33) == 0 && is_missing(call.y[1]) && call.caller_code == 33));
            CHECK((call.run(D) == 0 && call.nothing_written() && call.run(V | I) == 0 && call.nothing_written()));
        }
        Call plane("PlaneMod", {INFINITY, 0, 1}, {1, 2, 3});
        CHECK((plane.run(V) == 0 && is_missing(plane.y[1]) && plane.runtime_code == 33));
    }
}
