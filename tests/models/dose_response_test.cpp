#include <algorithm>
#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("dose response")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    TEST_CASE("an overflow, and a stale code where a step looks for it, give fixed results and clear errno")
    {
        const struct {
            Call call;
            double calm, value;  // an x where no power overflows; the value where one does
            std::initializer_list<double> dy;
        } cases[] = {{{"Response1", {1, 9, 0, 1}, {-400}}, 1, 1, {0, 1, 0, 0}},
                     {{"Response2", {1, 9, 6, -400, -3, 1, 1}, {5}}, -200, 15, {1, 0, 0, 1, 1, -1, 1}},
                     {{"Competition1", {9, 1, 0}, {400}}, 1, 1, {0, 1, 0}},
                     {{"Competition2", {9, 1, -400, 5, 0.4}, {5}}, -200, 1, {0, 1, 0, 0, 0}},
                     {{"Competition2", {9, 1, 5, -400, 0.4}, {5}}, -200, 1, {0, 1, 0, 0, 0}}};
        for (auto [call, calm, value, dy] : cases) {
            CHECK((call.run(both) == 0 && call.y[1] == value && call.dy_untouched() && call.runtime_code == 0));
            CHECK(call.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 0, 33) == 0);
            CHECK((call.y[1] == value && call.runtime_code == 0 && call.caller_code == 33));
            CHECK(std::equal(dy.begin(), dy.end(), call.dy.begin() + 1));
            call.x[1] = calm;
            CHECK((call.run(EVAL_VALUE | EVAL_USE_ERRPTR, 34, 33) == 0 && call.y[1] == value));
            CHECK((call.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 33, 34) == 0 && call.y[1] != value));
        }
    }

    TEST_CASE("the value steps refuse levels that the derivative steps take")
    {
        const struct {
            Call call;
            bool fails;
        } cases[] = {{{"Response1", {2, 2, 0, 1}, {1}}, true},
                     {{"Response1", {std::nan(""), 2, 0, 1}, {1}}, false},
                     {{"Response2", {2, 9, 1, 0, 0, 1, 1}, {1}}, true}};
        for (auto [call, fails] : cases) {
            CHECK(call.run(both | EVAL_USE_ERRPTR, 34, fails ? 33 : 0) == fails);
            CHECK((is_missing(call.y[1]) == fails && call.runtime_code == 34 && call.caller_code == 0));
            CHECK(call.run(EVAL_DERIVS) == 0);
        }
        Call tiny_slope("Response1", {1, 3, 0, 1e-19}, {5});  // and the other way round
        CHECK((tiny_slope.run(both) == 0 && tiny_slope.run(EVAL_DERIVS) == 1 && tiny_slope.dy_untouched()));
    }

    TEST_CASE("BiDoseResp fails where either power does; a stale code ends the call before the second")
    {
        Call call("BiDoseResp", {1, 9, -500, 0, 1, 1, 0.4}, {-400});
        for (const int flags : {both, int{EVAL_DERIVS}}) {
            CHECK((call.run(flags) == 1 && is_missing(call.y[1]) && call.dy_untouched()));
            CHECK(call.run(flags | EVAL_USE_ERRPTR, 0, 33) == 1);
            CHECK((call.caller_code == 0 && call.runtime_code == 0));
        }
    }
}
