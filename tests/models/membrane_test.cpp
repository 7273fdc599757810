#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("membrane")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("Goldman: partials, marks in y[2], and results of calls that compute nothing")
    {
        Call call("Goldman", {0.5, 2, 4, 1, 300}, {-1});
        CHECK((call.run(0) == 1 && call.nothing_written()));
        for (const int flags : {V, D, V | D}) {
            CHECK((call.run(flags | E, 34, 33) == 1 && call.y[1] == 0 && is_missing(call.y[2])));
            CHECK((call.runtime_code == 34 && call.caller_code == 33 && call.dy_untouched()));
        }
        call.nParams = 4;
        CHECK((call.run(V | D) == 1 && call.y[1] == 0 && same_bits(call.y[2], untouched)));
    }
}
