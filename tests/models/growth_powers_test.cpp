#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("growth powers")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("no failure clears; Belehradek fails for a derivative alone, Chapman marks it and succeeds")
    {
        check_call("Belehradek", {1, 0, 0.5}, -1, V | D, {0, 12}, M, {33, 12});
        check_call("Belehradek", {1, 0, 0.5}, 1, D | E, {34, 33}, M, {34, 33}, {M, M, M});
        check_call("Belehradek", {2, 0, 2}, -3, D, {0, 0}, M, {33, 0}, {M, M, M});
        check_call("Belehradek", {2, 0, 1}, 0, D, {0, 0}, 0, {0, 0}, {0, -2, 0});
        check_call("Belehradek", {2, 0, 0.5}, 0, D, {0, 0}, M, {34, 0}, {M, M, M});

        const double huge = std::ldexp(1.0, 1007);
        check_call("Chapman", {5, 1, 2}, -1000, V | D, {0, 12}, M, {34, 12});
        check_call("Chapman", {5, 1, 2}, 1, D | E, {34, 33}, M, {34, 33}, {M, M, M});
        check_call("Chapman", {5, 1, 0.5}, 0, D, {0, 0}, 0, {34, 0}, {0, M, M});
        check_call("Chapman", {5, -1, 2}, std::log(2), D, {0, 0}, 5, {0, 0}, {1, -20 * std::log(2), M});
        check_call("Chapman", {1, 1, -19}, 1.2e-16, D, {0, 0}, huge, {34, 0}, {huge, M, M});
    }
}
