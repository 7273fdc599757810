#include <doctest/doctest.h>

#include "tests/support/check_call.h"
#include "tests/support/derivatives.h"

using namespace curvebank::test;

TEST_SUITE("hyperbola")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("derivatives are the exact partials")
    {
        check_derivatives("Hyperbl", {3, 1.5}, {-1, 0, 4});
        check_derivatives("Dhyperbl", {3, 1.5, 2, 6, 0.1}, {-1, 0, 4});
        check_derivatives("RectHyperbola", {3, 0.7}, {-1, 0, 4});
        check_derivatives("HyperbolaMod", {0.4, 1.5}, {-1, 0, 4});
        check_derivatives("HyperbolaEVP", {1, 0.8, 8, 2}, {0, 1, 4, 8});
        check_derivatives("HyperbolaGen", {3, 2, 0.4, 1.5}, {-1, 0, 4});
    }

    TEST_CASE("zero denominators: what is marked, and whether the error variable is cleared")
    {
        check_call("Hyperbl", {3, -2}, 2, V | D | E, {33, 34}, M, {33, 0});
        check_call("Hyperbl", {3, -2}, 2, D, {33, 34}, M, {0, 34}, {M, M});
        check_call("Dhyperbl", {3, 1, 2, -2, 1}, 2, D | E, {33, 34}, M, {33, 0});
        check_call("RectHyperbola", {3, -0.5}, 2, D | E, {33, 34}, M, {33, 0}, {M, M});
        check_call("HyperbolaMod", {1, -2}, 2, D | E, {33, 34}, M, {33, 34});
        check_call("HyperbolaEVP", {1, 1, 1, 1}, 2, D | E, {33, 34}, M, {33, 34}, {M, M, M, M});
    }

    TEST_CASE("both flags, and nParams, which only values look at")
    {
        check_call("Hyperbl", {3, 1}, 1, V | D, {0, 0}, 1.5, {0, 0}, {0.5, -0.75});
        check_call("Hyperbl", {}, 1, V, {34, 0}, M, {0, 0});
        check_call("Dhyperbl", {}, 1, D, {34, 0}, 0, {34, 0}, {1, -0.0, 1, -0.0, 1});
    }

    TEST_CASE("HyperbolaGen: the derivatives test little of what the value tests")
    {
        check_call("HyperbolaGen", {3, 2, -1, -2}, 1, V, {34, 0}, M, {34, 0});
        check_call("HyperbolaGen", {3, 2, 1, 0}, 1, V | E, {34, 33}, M, {34, 33});
        check_call("HyperbolaGen", {3, 2, 1, 0}, 1, D | E, {34, 33}, M, {34, 0}, {1, M, M, M});
        check_call("HyperbolaGen", {3, 2, -2, 2}, 1, V | D, {0, 0}, M, {0, 0});
        check_call("HyperbolaGen", {3, 2, -2, 2}, 1, D, {34, 0}, NAN, {33, 0}, {1, NAN, NAN, NAN});
        check_call("HyperbolaGen", {3, 2, 1, -1e-4}, 1, V | E, {0, 12}, M, {34, 0});  // the power is 0
    }
}
