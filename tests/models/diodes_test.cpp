#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("diodes")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("an exponent above 300 is no failure; a code from before the call is one, and stays")
    {
        Call diode("ModDiode", {300, 1e-3, 0, 1, 100}, {10, 0.25});
        Call cell("SolarCellIV", {300, 1e-3, 0, 1, 100, 2}, {10, 0.25});
        CHECK((diode.run(V | D) == 0 && diode.y[1] == -1e-3 + 10.0 / 100 - 0.25 && diode.dy[2] == -1));
        CHECK((cell.run(D) == 0 && cell.y[1] == -1e-3 + 10.0 / 100 + 0.25 - 2 && cell.dy[6] == -1));
        CHECK((diode.run(V | D, 34) == 1 && diode.runtime_code == 34 && diode.dy_untouched()));
        CHECK((cell.run(D | E, 12, 33) == 1 && cell.caller_code == 33 && is_missing(cell.y[1])));
    }
}
