#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("monomolecular")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;
    const double nan = std::nan("");

    TEST_CASE("derivatives where no exponential is computed")
    {
        check_call("MnMolecular", {5, 1, 0.5}, 1, EVAL_DERIVS, {34, 0}, 0, {34, 0}, {0, -2.5, 5});
        check_call("ExpGrowth", {1, 0.5}, 1, EVAL_DERIVS, {34, 0}, 1, {34, 0}, {0.5, 0});
        check_call("ExpGrowth", {1, 0}, 3, EVAL_DERIVS, {34, 0}, 1, {34, 0}, {0, 2});
    }

    TEST_CASE("failures: what is marked, and the error variable of the call is cleared")
    {
        for (Call call : {Call("BoxLucas1", {5, 1}, {-1000}), Call("BoxLucas1Mod", {5, 0}, {1}),
                          Call("BoxLucas1EVP", {0, 3, 0.5}, {1}), Call("BoxLucas1EVP", {4, 3, 1}, {1}),
                          Call("BoxLucas1EVP", {4, 3, nan}, {1}), Call("BoxLucas1EVP", {4, 3, 2}, {2000}),
                          Call("BoxLucas2", {0, 0}, {1}), Call("BoxLucas2", {0.5, 1}, {-1000}),
                          Call("MnMolecular1", {5, 3, 1}, {-1000}), Call("ExpGrowth", {1, 2}, {1000})}) {
            CHECK((call.run(both) == 1 && is_missing(call.y[1]) && call.dy_untouched() && call.runtime_code == 0));
            CHECK((call.run(EVAL_DERIVS, 33, 7) == 1 && is_missing(call.y[1]) && call.runtime_code == 0));
            if (call.dy[1] == 1) call.dy[1] = MISSING_VALUE;  // MnMolecular1 keeps it
            CHECK(call.dy_missing_only(1, call.nParams));
        }
        Call undefined("BoxLucas1Mod", {5, nan}, {1});
        CHECK((undefined.run(EVAL_VALUE) == 1 && undefined.run(EVAL_DERIVS) == 0));
    }

    TEST_CASE("the derivative step of MnMolecular tests errno, for the range error, and clears the other")
    {
        Call call("MnMolecular", {5, 1, 0.5}, {3});
        CHECK((call.run(EVAL_DERIVS, 33) == 0 && call.run(EVAL_DERIVS | EVAL_USE_ERRPTR, 0, 34) == 0));
        CHECK((call.run(both | EVAL_USE_ERRPTR, 34, 7) == 1 && call.dy_missing_only(1, 3)));
        CHECK((is_missing(call.y[1]) && call.runtime_code == 34 && call.caller_code == 0));
        call.x[1] = 1;  // at xc nothing is computed that could fail
        CHECK((call.run(both, 34) == 0 && call.y[1] == 0 && call.dy[2] == -2.5 && call.dy[3] == 5));
    }

    TEST_CASE("BoxLucas1EVP is the zero curve where its normaliser finds a range error in errno")
    {
        Call call("BoxLucas1EVP", {2000, 3, 2}, {1});
        CHECK((call.run(both) == 0 && call.y[1] == 0 && call.dy_untouched() && call.runtime_code == 34));
        CHECK((call.run(EVAL_DERIVS | EVAL_USE_ERRPTR) == 0 && call.y[1] == 0 && call.runtime_code == 34));
        CHECK((call.dy[1] == 0 && call.dy[2] == 0 && call.dy[3] == 0 && call.dy_untouched(4)));
        Call stale("BoxLucas1EVP", {4, 3, 0.5}, {1});  // the first test does not see errno, the second does
        CHECK((stale.run(EVAL_VALUE | EVAL_USE_ERRPTR, 34) == 0 && stale.y[1] == 0));
    }

    TEST_CASE("shortcuts, and what both flags together compute")
    {
        for (Call call : {Call("BoxLucas2", {0, 0.5}, {-5000}), Call("ExpGrowth", {1, 2}, {1})})
            CHECK((call.run(both, 34) == 0 && call.y[1] == call.p[1] && call.dy_untouched()));
        Call line("ExpLinear", {3, 0, 1, 2}, {4});
        CHECK((line.run(EVAL_DERIVS, 34) == 0 && line.y[1] == 9 && line.dy[1] == 0 && line.dy[2] == 0));
        Call steep("ExpLinear", {3, 1, 1, 2}, {-1000});
        CHECK((steep.run(both) == 1 && steep.run(EVAL_DERIVS) == 0 && steep.runtime_code == 34));
    }
}
