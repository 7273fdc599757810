#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("exponential decay and growth")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    TEST_CASE("value and derivatives have domains of their own, which differ over zero amplitudes and NaN")
    {
        struct Case {
            std::string name;
            int n;
            double A, t;             // of the last term, p[n - 1] and p[n]
            int value, derivatives;  // the results
        };
        const Case cases[] = {
            {"ExpDec1", 3, 0, 0, 0, 1},     {"ExpDec2", 5, 0, 0, 1, 1},       {"ExpGro1", 3, 0, 0, 0, 1},
            {"ExpGro3", 7, 0, NAN, 0, 0},   {"ExpDecay1", 4, 0, -1, 0, 1},    {"ExpDecay1", 4, 1, NAN, 0, 1},
            {"ExpDecay2", 6, 0, 0, 0, 1},   {"ExpDecay2", 6, NAN, NAN, 0, 0}, {"ExpDecay3", 8, 0, -1, 0, 1},
            {"ExpDecay3", 8, NAN, 0, 1, 1}, {"ExpDecay3", 8, 1, NAN, 0, 1},   {"ExpGrow1", 4, 1, -1, 1, 0},
            {"ExpGrow1", 4, 1, NAN, 0, 0},  {"ExpGrow2", 6, 1, NAN, 1, 0},    {"ExpGrow2", 6, 0, -1, 0, 0},
        };
        for (const Case &c : cases) {
            Call call(c.name, {1, 1, 1, 1, 1, 1, 1, 1}, {1});
            call.p[static_cast<size_t>(c.n - 1)] = c.A;
            call.p[static_cast<size_t>(c.n)] = c.t;
            CAPTURE(c.name);
            CHECK((call.run(EVAL_VALUE) == c.value && is_missing(call.y[1]) == (c.value == 1)));
            CHECK((call.run(both) == (c.value | c.derivatives) && (c.value == 0 || call.dy_untouched())));
            CHECK((call.run(EVAL_DERIVS) == c.derivatives && is_missing(call.y[1]) == (c.derivatives == 1)));
            CHECK((c.derivatives == 0 ||
                   call.dy_missing_only(1, c.name.find("Decay") != std::string::npos ? c.n : 0)));
            call.nParams = 0;  // refused by the values of ExpDecay* and ExpGrow*, whose n is even
            CHECK(call.run(EVAL_VALUE) == (c.n % 2 == 0 ? 1 : c.value));
        }
        Call flat("ExpDec2", {3, 0, 0, 0, 0}, {1});  // no exponential, no error test
        CHECK((flat.run(EVAL_VALUE, 34) == 0 && flat.y[1] == 3 && flat.runtime_code == 34));
        Call four("ExpGrow2", {3, 0, 1, 1}, {0});
        four.p[5] = four.p[6] = 1;  // not counted in nParams: left out of the value, not of the derivatives
        CHECK((four.run(EVAL_VALUE) == 0 && four.y[1] == 4 && four.run(both) == 0 && four.y[1] == 5));
    }

    TEST_CASE("overflow of the last exponential: where each step reads it, what counts there, what is cleared")
    {
        struct Case {
            std::string name;
            int n;
            double X;
            bool marks, in_errno;  // what the derivative step does: mark dy[1..n], read errno
        };
        const Case cases[] = {
            {"ExpDec1", 3, -800, false, false},    {"ExpDec3", 7, -800, false, true},
            {"ExpGro1", 3, 1000, false, true},     {"ExpGro2", 5, 800, false, true},
            {"Exponential", 3, 1000, true, false}, {"ExpDecay1", 4, -800, true, true},
            {"ExpDecay2", 6, -800, true, true},    {"ExpDecay3", 8, -800, true, true},
            {"ExpGrow1", 4, 800, false, false},    {"ExpGrow2", 6, 800, false, false},
        };
        for (const Case &c : cases) {
            Call call(c.name, {5, 5, 5, 5, 5, 5, 5, 5}, {c.X});
            call.p[static_cast<size_t>(c.n)] = 1;
            CAPTURE(c.name);
            CHECK((call.run(both) == 1 && call.runtime_code == 0 && call.dy_untouched()));
            CHECK((call.run(EVAL_DERIVS) == 1 && call.dy_missing_only(1, c.marks ? c.n : 0)));
            CHECK((is_missing(call.y[1]) && call.runtime_code == 0));
            CHECK((call.run(EVAL_VALUE | EVAL_USE_ERRPTR) == 0 && std::isinf(call.y[1])));
            CHECK(call.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 0, 5) == (c.in_errno ? 1 : 0));
            CHECK((call.runtime_code == 34 && call.caller_code == (c.in_errno ? 0 : 5)));

            call.x[1] = 0;  // no overflow any more, only stale codes
            CHECK((call.run(EVAL_VALUE, 33) == 1 && call.runtime_code == 0));
            CHECK(call.run(EVAL_DERIVS, 33) == (c.in_errno ? 0 : 1));
        }
        // Two values do not even compute an exponent above 1000.
        Call growth("ExpGro1", {3, 1, 1}, {1000.5}), rate("Exponential", {3, 1, 1}, {1000.5});
        CHECK((growth.run(EVAL_VALUE | EVAL_USE_ERRPTR) == 1 && growth.runtime_code == 0));
        CHECK((rate.run(EVAL_VALUE | EVAL_USE_ERRPTR) == 1 && rate.runtime_code == 0));
    }
}
