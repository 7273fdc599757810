#include <cmath>

#include <limits>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("waves")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE, infinity = std::numeric_limits<double>::infinity();

    TEST_CASE("sines: an infinite argument counts where the test follows the sine, as does a stale code")
    {
        check_call("Sine", {1, 0, 2, 3}, infinity, V | D, {0, 34}, NAN, {33, 34}, {1, NAN, NAN, NAN});
        check_call("Sine", {1, 0, 0, 3}, 1, D | E, {34, 33}, M, {34, 0}, {M, M, M, M});
        check_call("SineSqr", {1, 0, 2, 3}, infinity, V | D, {0, 34}, M, {0, 34});
        check_call("SineSqr", {1, 0, 2, 3}, infinity, D, {0, 34}, M, {0, 34}, {M, M, M, M});
        check_call("SineSqr", {1, 0, 2, 3}, 1, D | E, {12, 34}, M, {12, 0}, {M, M, M, M});
        check_call("SineDamp", {1, 0, 2, 1, 3}, infinity, V, {0, 0}, M, {0, 0});
        check_call("SineDamp", {1, 0, 2, 1, 3}, infinity, D, {0, 0}, NAN, {33, 0}, {1, NAN, NAN, NAN, NAN});
        check_call("SineDamp", {1, 0, 2, 1, 3}, -800, D, {0, 33}, M, {0, 33}, {M, M, M, M, M});
        check_call("SineDamp", {1, 0, 2, 0, 3}, 1, V | D | E, {34, 12}, M, {34, 0});
    }

    TEST_CASE("folded waves repeat to the left, and their edges belong to one level each")
    {
        check_call("SawtoothWave", {1, 2, 3, 4}, -2, D, {34, 33}, 2.75, {34, 33}, {-0.75, 1, -0.5, 0.375});
        check_call("SawtoothWave", {1, 2, 3, 0}, 5, V | D | E, {34, 33}, M, {34, 0});
        check_call("SquareWave", {5, 7, 1, 4}, -3, D, {0, 0}, 5, {0, 0}, {1, 0, 0, 0});
        check_call("SquareWave", {5, 7, 1, 4}, 3, V | D, {0, 0}, 7, {0, 0}, {0, 1, 0, 0});
        check_call("SquareWave", {5, 7, 1, 0}, 3, D, {12, 33}, M, {0, 33});
        check_call("SquareWaveMod", {5, 7, 1, 0.25, 4}, -2, D, {0, 0}, 5, {0, 0}, {0, 1, 0, 0, 0});
    }
}
