#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("logistic")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("logistic in a power: domains and error variables that differ between the steps")
    {
        check_call("Logistic", {1, 5, -2, 1}, -2, V | D, {0, 0}, 3, {0, 0});
        check_call("Logistic", {1, 5, -2, 1}, -2, D | E, {12, 33}, M, {12, 0}, {M, M, M, M});
        check_call("Logistic", {1, 5, 2, 1}, 0, D, {0, 0}, 1, {0, 0}, {1, 0, -0.0, 0.0});
        check_call("Logistic", {1, 5, 2, 1}, 2, V | E, {34, 33}, 5, {0, 33});
        check_call("Logistic", {1, 5, 2, 1}, 2, D | E, {33, 12}, M, {33, 0}, {M, M, M, M});
        check_call("Logistic", {1, 5, 2, 1}, 2, D | E, {0, 34}, M, {0, 0}, {0.5, 0.5, -0.5, M});
        check_call("Logistic5", {1, 5, 2, 2.5, 0.6}, -1, V | D, {0, 34}, M, {0, 34});
        check_call("Logistic5", {1, 5, 2, 2.5, 0.6}, -1, D, {0, 34}, M, {0, 34}, {NAN, NAN, NAN, NAN, NAN});
    }

    TEST_CASE("logistic growth: saturation is looked for in errno alone, a NaN is out of some domains only")
    {
        check_call("SLogistic1", {3, 2, 1}, 2, D | E, {34, 33}, 0, {0, 33}, {0, 0, 0});
        check_call("SLogistic1", {NAN, 2, 1}, 1, V, {0, 0}, NAN, {0, 0});
        check_call("SLogistic1", {0, 2, 1}, 1, D | E, {12, 34}, M, {12, 0});
        check_call("SLogistic2", {1, 4, 1}, -1000, V | D, {0, 33}, 0, {0, 33});
        check_call("SLogistic2", {1, 4, 1}, -1000, D, {0, 0}, 0, {34, 0}, {NAN, NAN, NAN});
        check_call("SLogistic2", {1, 4, NAN}, 1, D | E, {12, 33}, M, {12, 0}, {M, M, M});
        check_call("SLogistic3", {4, NAN, 1}, 1, D, {33, 12}, M, {0, 12}, {M, M, M});
        check_call("Slogistic4", {1, 5, 2, 1}, 2, V | D, {33, 34}, 3, {33, 34});
        check_call("Slogistic4", {1, 5, 2, 1}, -1000, D | E, {0, 34}, 5, {0, 34}, {0, 1, 0, 0});
    }
}
