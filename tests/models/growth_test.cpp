#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("growth")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    TEST_CASE("a failing value step leaves dy alone, a failing derivative step marks it whole")
    {
        const struct {
            Call call;
            bool value, derivatives;  // which step fails
        } cases[] = {{{"SGompertz", {5, 2, 0}, {1}}, true, true},
                     {{"SGompertz", {5, 2, std::nan("")}, {1}}, false, false},
                     {{"Richards", {5, 1, 1, -2}, {1}}, false, true},
                     {{"Richards", {5, 0, 1, 1e-3}, {-1}}, true, true},
                     {{"SRichards1", {5, 2, -0.5, 1}, {3}}, false, false},
                     {{"SRichards1", {5, 2, std::nan(""), 1}, {3}}, false, false},
                     {{"SRichards1", {1, 2, 0.5, 1}, {2}}, true, true},
                     {{"SRichards2", {5, 2, -0.5, 1}, {3}}, true, true},
                     {{"SWeibull1", {5, 2, 1.5, 1}, {1}}, true, false},
                     {{"SWeibull1", {5, 2, -1, 1}, {3}}, false, true},
                     {{"SWeibull1", {5, 2, 400, 10}, {3}}, true, true}};
        for (auto [call, value, derivatives] : cases) {
            CHECK(call.run(both) == (value || derivatives));
            CHECK((call.dy_untouched() == value && call.runtime_code == 0));
            CHECK(call.run(EVAL_DERIVS) == derivatives);
            CHECK((is_missing(call.y[1]) == derivatives && call.runtime_code == 0));
            CHECK(call.dy_missing_only(1, call.nParams) == derivatives);
        }
        Call weibull("SWeibull2", {5, 1, 1.5, 1}, {0});  // dy[4] is multiplied instead
        CHECK((weibull.run(EVAL_DERIVS) == 1 && weibull.dy[4] == untouched * MISSING_VALUE));
    }

    TEST_CASE("limits end the call with success, also when both steps are asked for")
    {
        Call gompertz("SGompertz", {5, 2, 1}, {-800}), weibull("SWeibull2", {5, 1, 400, 10}, {1});
        Call richards("Richards", {5, 2, 1, 0}, {1}), threshold("SWeibull1", {5, 2, 1.5, 1}, {2});
        for (Call *call : {&gompertz, &weibull}) {
            CHECK(call->run(both | EVAL_USE_ERRPTR, 0, 33) == 0);
            CHECK((call->dy_untouched() && call->runtime_code == 0 && call->caller_code == 33));
            CHECK((call->run(EVAL_DERIVS | EVAL_USE_ERRPTR, 0, 33) == 0 && call->dy[2] == 0 && call->dy[3] == 0 &&
                   call->runtime_code == 0));
        }
        CHECK((gompertz.y[1] == 0 && gompertz.dy[1] == 0 && weibull.y[1] == 5 && weibull.dy[1] == 1));
        CHECK((richards.run(both, 34) == 0 && richards.y[1] == 5 && richards.dy_untouched()));
        CHECK((threshold.run(EVAL_DERIVS, 34) == 0 && threshold.y[1] == 0 && threshold.dy[4] == 0));
    }

    TEST_CASE("a stale code counts in the chosen variable; for SWeibull1's derivatives in errno")
    {
        for (const std::string name : {"Richards", "SRichards1", "SRichards2", "SWeibull1"}) {
            const bool chosen = name != "SWeibull1";
            Call call(name, {5, 1, 2, 1}, {3});
            CHECK(call.run(EVAL_VALUE | EVAL_USE_ERRPTR, 0, 33) == 1);
            CHECK(call.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 34) == !chosen);
            CHECK(call.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 0, 33) == chosen);
        }
    }
}
