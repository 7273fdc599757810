#include <cmath>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("extreme")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("peaks add up; amplitudes of 0 are skipped, widths that are not positive fail")
    {
        check_call("Extreme", {1, 2, 1.5, 3, 0, 1}, 2, V | D | EVAL_QUERY | E, {33, 34}, 4, {33, 34});
        check_call("Extreme", {5, 9, 0, 0, 9, -1, 1}, 2, D | E, {34, 12}, MISSING_VALUE, {34, 0}, {1, 0, 0, 0});
        check_call("Extreme", {5, 9, NAN, 1}, 2, V | D, {33, 0}, NAN, {33, 0});
    }

    TEST_CASE("an overflow or a stale range error in errno drops the peak, or ends a derivative call with 0")
    {
        Call call("Extreme", {1, 2, 1.5, 3, 2e3, 1, 5, 2, 1, 2}, {2});
        CHECK((call.run(D | E, 12, 34) == 0 && call.y[1] == 0 && call.dy[7] == 0 && call.runtime_code == 0));
        CHECK((call.run(V) == 0 && call.y[1] == 6 && call.y[2] == 3 && call.y[3] == untouched && call.y[4] == 2));
        check_call("Extreme", {1, 2, 1.5, 3, 2, 1, 2}, 2, V | E, {34, 12}, 3, {0, 12});
    }
}
