#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("asymptotic")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    struct Curve {
        std::string name;
        std::initializer_list<double> p;
        size_t rate;  // the parameter with a domain, and a value outside it
        double refused;
        // Whether a derivative step that refuses it clears the error variable of the call, and whether one that
        // finds an error there clears errno instead.
        bool refusal_clears, error_clears_errno;
        int nan_value, nan_derivs;  // results of a value and of a derivative call with a NaN there
    };
    const Curve curves[] = {
        {"Asymptotic1", {5, 3, 0.6}, 3, 1, false, false, 1, 1},
        {"Asymptotic2", {5, 3, 0.5}, 3, 0, true, false, 1, 1},
        {"Asymptotic3", {5, 1, 0.5}, 3, 0, true, true, 1, 1},
        {"Asymptotic4", {5, 0.6, 2}, 2, 1, true, true, 1, 1},
        {"Asymptotic5", {5, 0.5, 2}, 2, 0, false, false, 0, 0},
        {"Asymptotic6", {5, -1, 0.5}, 3, 0, true, false, 1, 1},
        {"Asymptotic7", {2, 3, 0.5}, 3, 0, true, false, 1, 0},
    };

    TEST_CASE("the derivatives of Asymptotic5 at x = 0")
    {
        check_call("Asymptotic5", {5, 0.5, 2}, 0, EVAL_DERIVS, {0, 0}, 2, {0, 0}, {0, 0, -1});
    }

    TEST_CASE("failures: what is marked, and which error variable is tested and cleared")
    {
        for (const Curve &c : curves) {
            CAPTURE(c.name);
            Call call(c.name, c.p, {0});  // the domain comes before the shortcuts at x = 0
            call.p[c.rate] = c.refused;
            CHECK((call.run(both | EVAL_USE_ERRPTR, 34, 33) == 1 && is_missing(call.y[1]) && call.dy_untouched()));
            CHECK((call.runtime_code == 34 && call.caller_code == 0));
            CHECK((call.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 34, 33) == 1 && is_missing(call.y[1])));
            CHECK((call.dy_missing_only(1, 3) && call.caller_code == (c.refusal_clears ? 0 : 33)));

            call = Call(c.name, c.p, {2});
            CHECK(call.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 34, 0) == 0);
            CHECK(call.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 33, 34) == 1);
            CHECK((c.error_clears_errno ? call.runtime_code == 0 && call.caller_code == 34
                                        : call.runtime_code == 33 && call.caller_code == 0));
            const bool keeps = c.name == "Asymptotic4";
            CHECK((is_missing(call.dy[2]) && is_missing(call.y[1]) == !keeps && is_missing(call.dy[3]) == !keeps));

            call.p[c.rate] = std::nan("");
            CHECK((call.run(EVAL_VALUE) == c.nan_value && call.run(EVAL_DERIVS) == c.nan_derivs));
        }
    }

    TEST_CASE("value calls that end without derivatives")
    {
        for (Call call : {Call("Asymptotic2", {5, 0, 0.5}, {2}), Call("Asymptotic5", {2, 0.5, 5}, {0}),
                          Call("Asymptotic5", {5, 0.5, 5}, {2}), Call("Asymptotic7", {5, 3, 0.5}, {0}),
                          Call("Asymptotic4", {7, 0.5, 3}, {1})}) {
            CHECK((call.run(both) == 0 && call.y[1] == 5 && call.dy_untouched()));
            CHECK((call.run(EVAL_DERIVS) == 0 && call.y[1] == 5 && !call.dy_untouched(1, 3)));
        }
    }
}
