#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("binding")
{
    TEST_CASE("stale codes saturate; only Binding1 turns an infinite value into the missing value")
    {
        Call one("Binding1", {5, -2}, {2}), two("Binding2", {5, 3, 1, -2}, {2});
        CHECK((one.run(EVAL_VALUE | EVAL_USE_ERRPTR, 34, 33) == 0 && one.y[1] == 5 && one.runtime_code == 0));
        CHECK((one.run(EVAL_DERIVS) == 0 && is_missing(one.y[1]) && std::isinf(one.dy[2])));
        CHECK((two.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 34) == 0 && two.y[1] == 8 && two.dy[3] == 1));
        CHECK((two.run(EVAL_VALUE) == 0 && std::isinf(two.y[1])));
    }
}
