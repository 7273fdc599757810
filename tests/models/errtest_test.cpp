#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_CASE("errtest leaves every report where it was made, on value calls too")
{
    check_call("errtest", {2, 4, 0.5}, 0, EVAL_DERIVS, {0, 12}, 0.5, {33, 12}, {std::log(2), NAN, std::exp(2)});
    check_call("errtest", {1000, 1, 0.5}, 0, EVAL_VALUE, {0, 0}, 1000, {34, 0}, {std::log(1000), NAN, INFINITY});
}
