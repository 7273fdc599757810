#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("electrical characteristics")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("diodes: an exponent above 300 is no failure; a code from before the call is one, and stays")
    {
        Call diode("ModDiode", {300, 1e-3, 0, 1, 100}, {10, 0.25});
        Call cell("SolarCellIV", {300, 1e-3, 0, 1, 100, 2}, {10, 0.25});
        CHECK((diode.run(V | D) == 0 && diode.y[1] == -1e-3 + 10.0 / 100 - 0.25 && diode.dy[2] == -1));
        CHECK((cell.run(D) == 0 && cell.y[1] == -1e-3 + 10.0 / 100 + 0.25 - 2 && cell.dy[6] == -1));
        CHECK((diode.run(V | D, 34) == 1 && diode.runtime_code == 34 && diode.dy_untouched()));
        CHECK((cell.run(D | E, 12, 33) == 1 && cell.caller_code == 33 && is_missing(cell.y[1])));
    }

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
