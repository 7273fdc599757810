#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("Langevin curves")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("exact partials; the function joins its series near 0 and tends to 1")
    {
        for (const double u : {0.0, 1e-50, -0.00009, 0.00009999, 0.0001, 354.0}) {
            Call call("Langevin", {0, 0, 1}, {u});
            REQUIRE(call.run(V) == 0);
            CHECK(call.y[1] == doctest::Approx(u < 1 ? u / 3 : 1 - 1 / u).epsilon(1e-7));
        }
    }

    TEST_CASE("Langevin: each term has its share; the derivatives end earlier than the value")
    {
        Call call("Langevin", {1, 0, 3, 2, 4}, {2});
        CHECK((call.run(V) == 0 && call.y[3] == 0 && call.y[1] == 1 + call.y[2]));
        CHECK((call.run(V | D) == 1 && is_missing(call.y[1]) && call.dy[3] > 0.5 && call.dy_untouched(4)));
        check_call("Langevin", {1, 0, 3}, 151, D | E, {12, 0}, M, {12, 0}, {1, untouched, 1 - 1.0 / 151});
    }

    TEST_CASE("LangevinMod: which elements the derivative step tests depends on the value step")
    {
        check_call("LangevinMod", {1, 2, 3, 0}, 5, D | E, {33, 12}, M, {33, 0});
        check_call("LangevinMod", {1, 2, 3, 5}, 2, D, {0, 0}, M, {0, 0});
        check_call("LangevinMod", {1, 2, 3, 2}, 2, V | D, {0, 0}, M, {0, 0});
        Call call("LangevinMod", {1, 2, 3, 0.5, 4, 8}, {3});
        CHECK((call.run(V | D) == 0 && call.y[1] == 1 + call.y[2] + call.y[3] && call.dy_untouched(7)));
        call.nParams = 2;
        CHECK((call.run(V | D, 34) == 0 && call.y[1] == 1 && call.dy_untouched()));
    }
}
