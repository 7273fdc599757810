#include <doctest/doctest.h>

#include "tests/support/check_call.h"
#include "tests/support/derivatives.h"

using namespace curvebank::test;

TEST_SUITE("reciprocal")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE, inf = INFINITY;

    TEST_CASE("derivatives are the exact partials, but for that of Reciprocal0")
    {
        check_derivatives("Reciprocal", {1.5, 0.4}, {-1, 0, 4});
        check_derivatives("ReciprocalMod", {3, 0.4}, {-1, 0, 4});
        check_derivatives("ReciprocalEVP", {1, 2, 8, 0.5}, {0, 1, 4, 8});
        check_derivatives("Reciprocal0", {0.4}, {-1, 0, 4}, {1});
        check_derivatives("Reciprocal0EVP", {3, 0.4}, {-1, 0, 3, 4});
        check_derivatives("Reciprocal1", {1.5}, {-1, 0, 4});
        check_derivatives("Reciprocal1EVP", {3, 0.4}, {1, 3, 4});
        check_call("Reciprocal0", {1}, 1, D, {0, 0}, 0.5, {0, 0}, {-4});
    }

    TEST_CASE("zero denominators: what derivative calls mark; the error variable is left alone")
    {
        check_call("Reciprocal", {-2, 1}, 2, D, {34, 33}, M, {34, 33});
        check_call("ReciprocalMod", {3, -0.5}, 2, D | E, {34, 33}, M, {34, 33});
        check_call("Reciprocal0", {-0.5}, 2, D, {34, 33}, M, {34, 33}, {M});
        check_call("Reciprocal0EVP", {3, 0}, 2, D | E, {34, 33}, M, {34, 33}, {M, M});
        check_call("Reciprocal0EVP", {-1, 0.5}, 1, V | D, {34, 33}, M, {34, 33});
        check_call("Reciprocal1", {-2}, 2, D, {34, 33}, M, {34, 33}, {M});
        check_call("Reciprocal1EVP", {3, 1}, 2, D, {34, 33}, M, {34, 33}, {M, M});
    }

    TEST_CASE("ReciprocalEVP divides by a zero denominator on derivative calls")
    {
        check_call("ReciprocalEVP", {1, 1, 3, -1}, 2, V | D, {34, 0}, M, {34, 0});
        check_call("ReciprocalEVP", {1, 1, 3, -1}, 2, D, {34, 0}, -inf, {34, 0}, {-inf, inf, -inf, inf});
    }

    TEST_CASE("stale codes do not matter, and both flags give the value alone")
    {
        check_call("Reciprocal", {1, 1}, 1, V | D, {34, 0}, 0.5, {34, 0});
        check_call("Reciprocal1EVP", {3, 2}, 4, V | D | E, {0, 33}, 2.0 / 3, {0, 33});
    }
}
