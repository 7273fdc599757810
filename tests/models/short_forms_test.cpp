#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("short exponentials")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS, derivs_errptr = EVAL_DERIVS | EVAL_USE_ERRPTR;

    TEST_CASE("overflow: which step sees it, what it marks and which error variable it clears")
    {
        struct Case {
            std::string name;
            std::initializer_list<double> p;
            int marked;                      // derivatives marked by a failed derivative step
            bool clears_errno, value_fails;  // the first concerns the derivative step
        };
        const Case cases[] = {
            {"Exp1P1", {-400}, 1, true, true},     {"Exp1P2", {-2}, 0, false, true},
            {"Exp1P2Md", {10}, 0, false, true},    {"Exp1P3", {-2}, 0, false, true},
            {"Exp1P3Md", {10}, 0, false, true},    {"Exp1P4", {-2}, 0, false, true},
            {"Exp1P4Md", {10}, 0, false, false},   {"Exp2P", {2, 10}, 0, false, true},
            {"Exp2PMod1", {2, 2}, 2, false, true}, {"Exp2PMod2", {2, 2}, 0, false, true},
        };
        for (const Case &c : cases) {
            CAPTURE(c.name);
            Call call(c.name, c.p, {400});
            CHECK((call.run(both) == c.value_fails && call.dy_untouched()));
            CHECK((call.run(EVAL_DERIVS) == 1 && is_missing(call.y[1]) && call.dy_missing_only(1, c.marked)));
            CHECK((call.run(derivs_errptr, 0, 33) == 1 && call.caller_code == (c.clears_errno ? 33 : 0)));
            CHECK(call.runtime_code == (c.clears_errno ? 0 : 34));
            CHECK((call.run(derivs_errptr) == 0 && std::isinf(call.y[1])));  // the overflow is seen in errno only
        }
    }

    TEST_CASE("a base that is not positive, or NaN; the zero rate of Exp1P3")
    {
        for (const std::string name : {"Exp1P2Md", "Exp1P3Md", "Exp1P4Md", "Exp2P"}) {
            const bool own = name == std::string("Exp1P4Md");
            Call call(name, {-2, -2}, {2});
            CHECK((call.run(both, 7) == 1 && call.runtime_code == (own ? 7 : 0) && call.dy_untouched()));
            CHECK((call.run(EVAL_DERIVS) == 1 && is_missing(call.y[1]) && call.dy_missing_only(1, own)));
            call.p[1] = call.p[2] = std::nan("");
            CHECK((call.run(both) == !own && call.run(EVAL_DERIVS) == !own));
        }
        Call call("Exp1P3", {0}, {2});
        CHECK((call.run(both, 34) == 0 && call.y[1] == 0 && call.dy_untouched()));
        CHECK((call.run(EVAL_DERIVS, 34) == 0 && call.y[1] == 0 && call.dy_missing_only(1, 1)));
    }
}
