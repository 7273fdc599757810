#include <cmath>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("Schulz-Flory")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("peaks of amplitude 0 are left out")
    {
        const double slope = (-3.0 / 10 + 3) * 10 * std::log(10.0);
        check_call("SchulzFlory", {1, 1, 1, 3, 9, 9, 0}, 1, D, {12, 33}, 4, {12, 33}, {1, slope, -0.0, 1});
    }

    TEST_CASE("powers: capped, out of range in errno or beside the caller's variable, and a ratio of 0")
    {
        check_call("SchulzFlory", {5, 2.5, 0, 3}, 5, V | D, {0, 34}, 5, {0, 34});
        check_call("SchulzFlory", {5, 1, 1, 3}, 400, V, {0, 0}, M, {0, 0});
        check_call("SchulzFlory", {5, 1, 1, 3}, 400, V | E, {0, 12}, 5, {34, 12});
        check_call("SchulzFlory", {5, 1, 1, 3}, 1, D | E, {0, 33}, M, {0, 0}, {M, M, M, M});
        check_call("SchulzFlory", {5, 200, 200, 3, 1, 1, 1}, -200, D, {0, 9}, M, {0, 9}, {M, NAN, NAN, 0, M, M, M});
    }
}
