#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("boltzmann")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("derivatives are the exact partials")
    {
        check_call("Boltzman1", {3, 7, 2}, 2, D, {33, 34}, 5, {33, 34}, {0.5, 0.5, 2.302585093});
    }

    TEST_CASE("saturation is a success that resets errno and leaves the caller's variable alone")
    {
        check_call("Boltzman", {3, 7, 0, 1}, 665.5, V | D, {0, 0}, 7, {0, 0});
        check_call("Boltzman", {3, 7, 0, 1}, 665.5, D | E, {34, 12}, 7, {0, 12}, {0, 1, 0, 0});
        check_call("Boltzman", {3, 7, 0, 1}, 0, V | D | E, {34, 12}, 5, {34, 12});
        check_call("BoltzIV", {0, 1, 3, 7}, 0, D | E, {33, 34}, 0, {0, 34}, {0, 0, 0, 0});
        check_call("Boltzman1", {3, 7, 2}, -400, D, {0, 0}, 7, {0, 0}, {0, 1, 0});
        check_call("Boltzman1", {3, 7, 2}, 2, V | D | E, {34, 33}, 7, {0, 33});
        check_call("Boltzman1", {3, 7, 2}, 2, D | E, {34, 12}, 7, {0, 12}, {0, 1, 0});
    }

    TEST_CASE("failures clear the chosen error variable")
    {
        check_call("Boltzman", {3, 7, 0, 0}, 1, V | D, {33, 34}, M, {0, 34});
        check_call("Boltzman", {3, 7, 0, -9e-19}, -1, D | E, {33, 34}, M, {33, 0});
        check_call("BoltzIV", {1, 1e-19, 3, 7}, 0, V | D, {0, 0}, -21, {0, 0});
        check_call("Boltzman1", {}, 0, V | D | E, {12, 34}, M, {12, 0});
        check_call("DoubleBoltzmann", {0.5, 4, 0.5, 0, 1, 1e-3, 1}, 1, V | D, {0, 33}, M, {0, 33});
        check_call("DoubleBoltzmann", {0.5, 4, 0.5, 1, 0, 1, 1e-3}, 1, D, {0, 33}, M, {0, 33}, {1});
    }
}
