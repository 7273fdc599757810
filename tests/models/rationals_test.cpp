#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("rationals")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    TEST_CASE("Rational4 as defined")
    {
        Call call("Rational4", {1, 2, 3}, {1});
        CHECK(call.run(EVAL_DERIVS) == 0);
        CHECK((call.y[1] == 4 && call.dy[1] == -1 && call.dy[2] == 0.5 && call.dy[3] == 1));
    }

    TEST_CASE("a zero denominator: what is marked, and whether the error variable is cleared")
    {
        struct Case {
            std::string name;
            std::initializer_list<double> p;
            int derivatives;      // marked on a derivative call
            bool marked_on_both;  // also when the value was asked for
            bool clears;
        };
        const Case cases[] = {
            {"Rational", {1, 2, 1, -1}, 4, false, true},  {"Rational0", {-1, 2, 3}, 3, false, false},
            {"Rational1", {1, -1, 3}, 3, false, false},   {"Rational2", {-1, 2, 3}, 3, false, false},
            {"Rational3", {1, 2, -1}, 3, false, false},   {"Rational4", {-1, 2, 3}, 3, false, false},
            {"Rational5", {1, 2, -3, 2}, 4, true, false},
        };
        for (const Case &c : cases) {
            CAPTURE(c.name);
            Call call(c.name, c.p, {1});
            for (const int flags : {int{EVAL_VALUE}, int{EVAL_DERIVS}, both}) {
                CAPTURE(flags);
                CHECK(call.run(flags, 34, 33) == 1);
                CHECK(is_missing(call.y[1]));
                const bool marked = flags == EVAL_DERIVS || (flags == both && c.marked_on_both);
                CHECK((marked ? call.dy_missing_only(1, c.derivatives) : call.dy_untouched()));
                CHECK((call.runtime_code == (c.clears ? 0 : 34) && call.caller_code == 33));
                call.run(flags | EVAL_USE_ERRPTR, 34, 33);
                CHECK((call.runtime_code == 34 && call.caller_code == (c.clears ? 0 : 33)));
            }
        }
    }

    TEST_CASE("a NaN or tiny denominator is divided by")
    {
        Call nan_denominator("Rational2", {std::nan(""), 2, 3}, {1});
        CHECK(nan_denominator.run(EVAL_VALUE) == 0);
        CHECK(std::isnan(nan_denominator.y[1]));
        Call tiny("Rational", {1, 0, 1e-310, 0}, {1});
        CHECK(tiny.run(EVAL_VALUE) == 0);
        CHECK(std::isinf(tiny.y[1]));
    }

    TEST_CASE("only Rational looks at nParams")
    {
        Call rational("Rational", {1, 2, 3, 4}, {1});
        rational.nParams = 0;
        CHECK(rational.run(both) == 1);
        CHECK(rational.dy_untouched());
        CHECK(rational.run(EVAL_DERIVS) == 0);

        Call rational0("Rational0", {1, 2, 3}, {1});
        rational0.nParams = 0;
        CHECK(rational0.run(both) == 0);
        CHECK((rational0.y[1] == 2.5 && rational0.dy_untouched()));
    }

    TEST_CASE("Rational5 writes the value on derivative calls")
    {
        Call call("Rational5", {1, 2, 3, 4}, {2});
        CHECK(call.run(EVAL_DERIVS) == 0);
        CHECK(call.y[1] == 5.0 / 23);
        CHECK(call.dy[4] == -5.0 * 4 / (23 * 23));
    }
}
