#include <doctest/doctest.h>

#include "tests/support/check_call.h"
#include "tests/support/derivatives.h"

using namespace curvebank::test;

TEST_SUITE("power curves of two parameters")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("derivatives are the exact partials")
    {
        check_derivatives("Pow2P1", {3, 0.7}, {0.5, 1, 4});
        check_derivatives("Pow2P2", {3, 0.7}, {-0.5, 0, 4});
        check_derivatives("Pow2P3", {0.4, 1.7}, {-1, 0, 4});
        check_derivatives("Ratkowsky2P1EVP", {3, 0.6, 0.4}, {-1, 0, 3, 5});
        check_derivatives("Ratkowsky2P2EVP", {3, 2, 0.7}, {0.5, 1, 4});
        check_derivatives("Ratkowsky2P3EVP", {3, 2, 0.7}, {-0.5, 0, 4});
    }

    TEST_CASE("export names are crossed with catalogue names; both flags give the value alone")
    {
        check_call("Ratkowsky2P2", {3, 1}, 4, V | D, {0, 0}, 2.25, {0, 0});
        check_call("Ratkowsky2P3", {3, 2}, 1, V | D, {0, 0}, 12, {0, 0});
        check_call("Ratkowsky2P1", {1, 1}, 1, V | D, {0, 0}, 0.5, {0, 0});
        check_call("Ratkowsky2P2EVP", {2, 3, 1}, 4, V | D, {0, 0}, 1.125, {0, 0});
    }

    TEST_CASE("domain failures leave the error variable alone")
    {
        check_call("Pow2P1", {3, 1}, 0, D | E, {33, 34}, M, {33, 34}, {M, M});
        check_call("Pow2P2", {3, 1}, -1, D, {33, 34}, M, {33, 34}, {M, M});
        check_call("Pow2P3", {1, 1}, -2, V | D, {34, 0}, M, {34, 0});
        for (const int out : {0, 1, 2}) {  // no slope, a value of 1, a negative base at the point
            const double xr = out == 2 ? -4 : 3, yr = out == 1 ? 1 : 0.5, a = out == 0 ? 0 : 0.4;
            check_call("Ratkowsky2P1EVP", {xr, yr, a}, 1, V | E, {33, 34}, M, {33, 34});
            check_call("Ratkowsky2P1EVP", {xr, yr, a}, 1, D, {34, 33}, M, {34, 33}, {M, M, M});
        }
        check_call("Ratkowsky2P1EVP", {NAN, 0.5, 0.4}, 1, V, {0, 0}, NAN, {0, 0});
        check_call("Ratkowsky2P2EVP", {0, 3, 1}, 4, D, {34, 33}, M, {34, 33}, {M, M, M});
        check_call("Ratkowsky2P3EVP", {-1, 3, 1}, 4, D, {34, 33}, M, {34, 33}, {M, M, M});
        check_call("Ratkowsky2P3EVP", {-2, 3, 1}, 4, V, {34, 33}, M, {34, 33});
    }

    TEST_CASE("errors of the power clear it; the value of Ratkowsky2P3EVP does not look")
    {
        check_call("Pow2P1", {3, -200}, 1e3, D, {0, 33}, M, {0, 33}, {M, M});
        check_call("Pow2P2", {3, 200}, 1e3, V | D, {0, 33}, M, {0, 33});
        check_call("Pow2P3", {1, 1}, 1, D | E, {0, 33}, M, {0, 0}, {M, M});
        check_call("Ratkowsky2P1EVP", {3, 0.5, 0.4}, 1, D, {34, 33}, M, {0, 33}, {M, M, M});
        check_call("Ratkowsky2P2EVP", {1e3, 3, -200}, 4, D, {0, 33}, M, {0, 33}, {M, M, M});
        check_call("Ratkowsky2P3EVP", {0, 3, 200}, 1e3, V, {33, 0}, INFINITY, {34, 0});
        check_call("Ratkowsky2P3EVP", {0, 3, 200}, 1e3, D, {0, 33}, M, {0, 33}, {M, M, M});
    }
}
