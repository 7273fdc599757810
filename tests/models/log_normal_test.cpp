#include <cmath>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("log-normal")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE, q = 1 / (2 * 2.506628274631);

    TEST_CASE("shares, domain and stale codes")
    {
        check_call("LogNormal", {0, 2, 1, 1, 5, 0, 0}, 2, D, {34, 33}, q, {34, 33}, {1, 0, 0, q, 0, 0, 0});
        Call call("LogNormal", {1, 2, 1, 3, 5, 0, 0, 2, 1, 6}, {2});
        CHECK((call.run(V | D) == 0 && call.dy_untouched() && call.y[3] == untouched && call.y[1] == 1 + 9 * q));
        // positions and widths that are not positive fail; stale codes fail value calls alone
        check_call("LogNormal", {1, 2, 1, 0, 2, 0, 1}, 2, D | E, {34, 33}, M, {34, 0}, {1, 0, 0, 0, M, M, M});
        check_call("LogNormal", {1, -2, 1, 1}, 2, D, {12, 33}, M, {0, 33}, {1, M, M, M});
        check_call("LogNormal", {1, NAN, 1, 1}, 2, V, {12, 33}, NAN, {12, 33});
        check_call("LogNormal", {1, 2, 1, 1}, 2, V | E, {12, 33}, M, {12, 0});
    }
}
