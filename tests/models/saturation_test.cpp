#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("saturation")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("enzyme kinetics: exact partials; the strict form answers for what errno holds on entry")
    {
        check_call("MicMent", {1, -1}, 1, D | E, {12, 12}, M, {12, 0}, {M, M});
        check_call("MichaelisMenten", {4, 1}, 1, V | D, {12, 33}, 2, {12, 33});
        check_call("MichaelisMenten", {4, 1}, 0, D | E, {34, 33}, 0, {34, 33}, {0, 0});
        check_call("MichaelisMenten", {4, 1}, 1, D | E, {34, 33}, 0, {0, 33}, {0, 0});
        check_call("MichaelisMenten", {4, 1}, 1, V | E, {33, 12}, M, {33, 0});
        check_call("MichaelisMenten", {4, 1}, -1, D, {12, 0}, M, {0, 0}, {M, M});
    }

    TEST_CASE("MWChang: the power is a test alone, and only for its domain")
    {
        check_call("MWChang", {2, 0, 1, 1, 1}, 1, V | D | E, {12, 33}, 1, {0, 33});
        check_call("MWChang", {2, 0, 1, 2e200, 2}, 1, V, {0, 0}, 1, {0, 0});
        check_call("MWChang", {2, 0, 1, -1, 0.5}, 1, V | E, {0, 12}, M, {33, 0});
        check_call("MWChang", {0, 0, 1, -1, 0.5}, 1, V, {33, 0}, 0, {33, 0});
        check_call("MWChang", {0, 0, -1, 1, 1}, 1, V, {12, 0}, M, {0, 0});
    }

    TEST_CASE("two variables: values, zeros and failures; no derivatives")
    {
        check_call("BatesWatts", {-0.5, 1, 0}, 2, V | D, {12, 0}, M, {0, 0});
        check_call("BatesWatts", {0, INFINITY, 6}, 2, V, {12, 0}, 0, {12, 0});
        check_call("Cole", {0.5, 0, 1}, -1, V | E, {33, 33}, 0, {33, 33});
        check_call("Cole", {0.5, 1, 1}, -1, V | D, {12, 0}, M, {0, 0});
        Call bates_watts("BatesWatts", {1, 1, 6}, {2, 3}), cole("Cole", {2, 1, 1}, {3, 1});
        CHECK((bates_watts.run(V) == 0 && bates_watts.y[1] == 2 && cole.run(V) == 0 && cole.y[1] == 18));
        CHECK((cole.run(D) == 0 && cole.nothing_written()));
    }

    TEST_CASE("photosynthesis: exact partials; a zero maximum fails, and nothing else does")
    {
        check_call("PIPlatt", {0, 1}, 1, V | D | E, {12, 12}, M, {12, 0}, {M, M});
        check_call("PIPlatt2", {0, 1, 1}, 1, D, {12, 12}, M, {0, 12}, {M, M, M});
        check_call("PIPlatt2", {2, 0, 0}, 3, D | E, {34, 33}, 0, {34, 33}, {0, 3, -0.0});
        check_call("PIWebb", {1, 1}, -1000, V, {0, 0}, -INFINITY, {34, 0});
        CHECK(Call("PIWebb", {0, 1}, {1}).run(0) == 0);
    }
}
