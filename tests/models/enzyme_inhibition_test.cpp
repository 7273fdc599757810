#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("enzyme inhibition")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("exact partials, refused rate constants, and no error test")
    {
        for (const std::string name : {"CompInhib", "UncompInhib", "NoncompInhib"}) {
            Call idle(name, {5, 2, 1.5, 0.8}, {1});
            CHECK((idle.run(0, 34, 33) == 0 && is_missing(idle.y[1]) && idle.runtime_code == 34));
            check_call(name, {5, 0, 1.5, 0.8}, 1, V | D | E, {12, 33}, M, {12, 0});
            check_call(name, {5, 2, NAN, 0.8}, 1, V, {34, 33}, NAN, {34, 33});
        }
        check_call("SubstrateInhib", {0, 2, 1}, 4, V | D | E, {12, 34}, M, {12, 0});
    }

    TEST_CASE("a denominator of 0 resets errno, or in the last two models the error variable of the call")
    {
        check_call("CompInhib", {5, 1, 1, 0}, -1, V | D | E, {33, 34}, M, {0, 34});
        Call infinite("UncompInhib", {5, 1, 1, 1}, {-0.5});
        CHECK((infinite.run(V | D) == 1 && infinite.y[1] == -INFINITY && infinite.dy_missing_only(1, 4)));
        check_call("MixedModelInhib", {5, 1, 1, 1, 1}, -1, V | D | E, {33, 34}, M, {33, 0}, {M, M, M, M, M});
        // Rounding lets the value's form of this denominator pass.
        check_call("SubstrateInhib", {5, 1, 5}, -3.618033988749895, V | D | E, {12, 34}, M, {12, 0}, {M, M, M});
    }
}
