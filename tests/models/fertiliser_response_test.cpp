#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("fertiliser response")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("powers: where the base ends, and what each pass clears")
    {
        check_call("Shah", {1, 2, 0, 1}, 3, V | D, {12, 0}, M, {0, 0});
        check_call("Shah", {1, 2, 3, 0}, 3, D | E, {12, 12}, M, {12, 0}, {M, M, M, M});
        check_call("Shah", {1, 2, 0, 0.5}, 3, V | D, {34, 0}, M, {0, 0}, {M, M, M, M});  // the value passes
        check_call("YldFert", {1, 2, 1}, 9, V | D, {0, 0}, 3, {0, 0}, {1, 1, 18});
        check_call("YldFert", {1, 2, 1.5}, 9, V | D, {12, 0}, M, {0, 0});
        check_call("YldFert", {1, 2, 1.5}, 9, D, {12, 12}, M, {12, 12}, {M, M, M});
    }

    TEST_CASE("exponentials: the derivatives of Stirling pass an overflow, Reich has none")
    {
        check_call("Stirling", {1, 2, 0}, 1, D | E, {12, 12}, M, {12, 0}, {1, M, M});
        check_call("Stirling", {1, 2, 1}, 1000, D, {0, 33}, INFINITY, {34, 33}, {1, INFINITY, NAN});
        check_call("YldFert1", {1, 2, 1}, -1000, D, {0, 33}, M, {0, 33}, {M, M, M});
        check_call("Reich", {1, 0, 2, -1}, 0, V | D | E, {33, 0}, 3, {33, 0});
        check_call("Reich", {1, 0, 2, -1}, 1000, V | E, {0, 33}, M, {0, 0});  // the second is not tried
        Call reich("Reich", {1, 1, 2, 1}, {0});
        CHECK((reich.run(D) == 0 && reich.nothing_written()));
    }
}
