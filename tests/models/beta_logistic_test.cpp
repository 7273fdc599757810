#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("beta logistic")
{
    TEST_CASE("beta and logistic peaks: shares, domains, and two ways to fail without the missing value")
    {
        constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
        Call beta("Beta", {1, 2, 3, 1, 2, 2, 0, 0, 0, 0, 0, 2, 5, 1, 2, 2}, {2});
        CHECK((beta.run(V | D) == 0 && beta.y[1] == 9 && beta.y[2] == 3 && beta.y[4] == 5 && beta.dy_untouched()));
        CHECK((beta.run(EVAL_INIT | V) == 0 && beta.run(D, 34) == 1 && beta.nothing_written()));
        check_call("Beta", {1, 2, -3, 1, 2, 2}, 2, V | E, {12, 34}, MISSING_VALUE, {12, 0});
        check_call("Beta", {1, 2, 3, 1, 2, NAN}, 2, V, {0, 34}, NAN, {0, 34});
        check_call("Beta", {1, 2, 3, 1, 2.5, 2.5}, 3, V, {0, 33}, MISSING_VALUE, {0, 33});

        Call logistic("LogistPK", {1, 2, 1, 3, 9, 0, 0, 2, -1, 5}, {2});
        CHECK((logistic.run(V, 33, 34) == 1 && logistic.y[1] == 4 && logistic.runtime_code == 33));
        CHECK((logistic.run(D | E, 34, 33) == 1 && logistic.dy_missing_only(1, 10) && logistic.caller_code == 33));
        check_call("LogistPK", {1, 2, 1, 3}, -1000, V | E, {33, 34}, 0, {0, 34});
        check_call("LogistPK", {1, 2, NAN, 3}, 2, V | D, {33, 34}, NAN, {33, 34});
    }
}
