#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("three exponentials")
{
    TEST_CASE("exact derivatives, and an overflow that fails whatever is asked for")
    {
        check_call("Lanczos3", {0, -1, 1, 0, 2, 0}, 1000, EVAL_USE_ERRPTR, {0, 33}, MISSING_VALUE, {34, 0});
        check_call("Lanczos3", {0, 1, 0, 1, 0, 1}, 0, EVAL_DERIVS, {33, 34}, MISSING_VALUE, {0, 34},
                   {1, -0.0, 1, -0.0, 1, -0.0});
    }
}
