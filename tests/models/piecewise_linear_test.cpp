#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("piecewise linear")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS;

    TEST_CASE(
        "a breakpoint belongs to the piece on its right; at a step only the derivative by its place is missing")
    {
        check_call("PWL2", {1, 2, 3, -1}, 3, D, {34, 33}, 7, {34, 33}, {1, 3, 3, 0});
        check_call("PWL3", {1, 2, 3, -1, 5, 4}, 5, V | D, {0, 0}, 5, {0, 0}, {1, 3, 3, 2, -5, 0});
        check_call("PWL3", {1, 2, 3, -1, 2, 4}, 4, D, {0, 0}, 16, {0, 0}, {1, 3, 3, -1, -5, 2});
        check_call("Step", {5, 7, 2}, 2, D, {34, 0}, 7, {34, 0}, {0, 1, MISSING_VALUE});
        check_call("Step", {5, 7, 2}, 1, V | D, {0, 0}, 5, {0, 0}, {1, 0, 0});
    }
}
