#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("two outputs")
{
    constexpr int I = EVAL_INIT, V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("an error in the chosen variable costs both values and resets errno; helix and lines look for none")
    {
        for (const std::string name : {"GaussianLorentz", "HillBurk", "LineExp", "Helix", "Line3"}) {
            const bool lost = name != "Helix" && name != "Line3";
            Call call(name, {1, 2, 3, 4, 5, 6}, {1, 2});
            CAPTURE(name);
            CHECK((call.run(V | D | E, 12, 33) == lost && is_missing(call.y[1]) == lost && call.dy_untouched()));
            CHECK(
                (is_missing(call.y[2]) == lost && call.runtime_code == (lost ? 0 : 12) && call.caller_code == 33));
            CHECK((call.run(D) == 0 && call.nothing_written() && call.run(V | I) == 0 && call.nothing_written()));
        }
        Call line("LineExp", {1, 2, 3, 4, 1}, {1000});
        CHECK((line.run(V) == 1 && is_missing(line.y[1]) && is_missing(line.y[2]) && line.runtime_code == 0));
        CHECK((line.run(V | E) == 0 && line.y[1] == 3001 && line.y[2] == INFINITY && line.runtime_code == 34));
    }
}
