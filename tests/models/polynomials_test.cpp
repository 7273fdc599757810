#include <cmath>
#include <limits>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("polynomials")
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    TEST_CASE("value and derivative steps sum in their own order")
    {
        // At this point Horner's rule and the sum of powers round differently.
        Call call("Cubic", {0.1, 0.2, 0.3, 0.7}, {0.3});
        const double x = 0.3, x2 = x * x, x3 = x2 * x;
        CHECK(call.run(EVAL_VALUE) == 0);
        CHECK(call.y[1] == ((0.7 * x + 0.3) * x + 0.2) * x + 0.1);
        CHECK(call.dy_untouched());
        CHECK(call.run(EVAL_DERIVS) == 0);
        CHECK(call.y[1] == ((0.2 * x + 0.1) + 0.3 * x2) + 0.7 * x3);
        CHECK(call.dy[4] == x3);
        CHECK(call.dy_untouched(5));
        CHECK(call.run(0) == 0);
        CHECK(call.nothing_written());
    }

    TEST_CASE("PolyN keeps a zero coefficient from meeting an overflowed power in its value only")
    {
        Call call("PolyN", {1, 0, 0}, {1e200});
        CHECK(call.run(EVAL_VALUE) == 0);
        CHECK(call.y[1] == 1);
        CHECK(call.run(EVAL_DERIVS) == 0);
        CHECK((call.dy[2] == 1e200 && call.dy[3] == infinity));
        CHECK(std::isnan(call.y[1]));

        Call nan_coefficient("PolyN", {1, std::nan("")}, {2});
        CHECK(nan_coefficient.run(EVAL_VALUE) == 0);
        CHECK(std::isnan(nan_coefficient.y[1]));
    }

    TEST_CASE("PolyN without parameters: the value fails, the derivative step does not")
    {
        Call call("PolyN", {5}, {2});
        for (const int16_t n : {int16_t{0}, int16_t{-3}}) {
            call.nParams = n;
            CHECK(call.run(both, 33, 34) == 1);
            CHECK(is_missing(call.y[1]));
            CHECK(call.dy_untouched());
            CHECK((call.runtime_code == 0 && call.caller_code == 34));
            CHECK(call.run(EVAL_VALUE | EVAL_USE_ERRPTR, 33, 34) == 1);
            CHECK((call.runtime_code == 33 && call.caller_code == 0));
            CHECK(call.run(EVAL_DERIVS) == 0);
            CHECK((call.y[1] == 5 && call.dy[1] == 1));
            CHECK(call.dy_untouched(2));
        }
    }

    TEST_CASE("PolyCtr5 has a value only and never answers anything but 0")
    {
        Call call("PolyCtr5", {1, 2, 3, 4, 5, 6, 7}, {2.5});
        CHECK(call.run(EVAL_DERIVS) == 0);
        CHECK(call.nothing_written());
        CHECK(call.run(both) == 0);
        CHECK(call.y[1] == 1 + 3 * 0.5 + 4 * 0.25 + 5 * 0.125 + 6 * 0.0625 + 7 * 0.03125);
        CHECK(call.dy_untouched());
    }
}
