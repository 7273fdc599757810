#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("piecewise")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    TEST_CASE("Kinetic: the start, the number of terms, their time constants and error tests")
    {
        Call call("Kinetic", {1, 2, 3, 1, 4, 1, 5, 1}, {1});
        CHECK((call.run(EVAL_VALUE, 34) == 0 && call.y[1] == 1));
        call.x[1] = 2;
        const double values[] = {4, 4, 4, 4, 8, 8, 13, 13};  // for 1 to 8 parameters
        for (call.nParams = 1; call.nParams <= 8; ++call.nParams)
            CHECK((call.run(both) == 0 && call.y[1] == values[call.nParams - 1] && call.dy_untouched()));
        for (const size_t t : {4u, 6u, 8u}) {
            call.p[t] = 0;
            CHECK((call.run(EVAL_VALUE, 7) == 1 && is_missing(call.y[1]) && call.runtime_code == 0));
            call.p[t] = std::nan("");
            CHECK((call.run(EVAL_VALUE) == 0 && call.run(EVAL_VALUE, 34) == (t == 8 ? 0 : 1)));
            call.p[t] = call.p[t - 1] = 0;
        }
        call.nParams = 0;
        CHECK((call.run(EVAL_VALUE) == 1 && call.run(EVAL_DERIVS) == 0));
    }

    TEST_CASE("growth and decay: only the time constants on the side of X count; error variables are left alone")
    {
        for (Call call : {Call("ExpGrowDec", {1, 4, 2, 1, 3, 0}, {3}), Call("ExpGrowDec", {1, 4, 2, 0, 3, 2}, {4}),
                          Call("ExpGrow3Dec2", {1, 4, 1, 2, 1, 3, 1, 4, 2, 0, 1, 5}, {3}),
                          Call("ExpGrow3Dec2", {1, 4, 1, 2, 1, 3, 1, 0, 2, 1, 1, 5}, {4})}) {
            CHECK(call.run(EVAL_INIT | both, 34, 33) == 0);
            CHECK((std::isfinite(call.y[1]) && call.runtime_code == 34 && call.dy_untouched(call.nParams + 1)));
            call.x[1] = call.x[1] == 3 ? std::nan("") : 3;  // a NaN is on the decaying side
            CHECK((call.run(EVAL_VALUE, 34) == 1 && call.dy_untouched() && call.runtime_code == 34));
            CHECK((call.run(both) == 1 && is_missing(call.y[1]) && call.dy_missing_only(1, call.nParams)));
        }
        Call other_side("ExpGrow3Dec2", {1, 4, 1, 1.5, 1, 2.5, 1, 4, 2, 1.2, 1, 1e-3}, {3});
        CHECK((other_side.run(EVAL_VALUE) == 0 && std::isfinite(other_side.y[1]) && other_side.runtime_code == 34));
    }
}
