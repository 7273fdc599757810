#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("expected-value exponentials")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS, derivs_errptr = EVAL_DERIVS | EVAL_USE_ERRPTR;

    TEST_CASE("the derivatives of Exp2PEVP at its second point")
    {
        check_call("Exp2PEVP", {5, 2.5, -1, 0.5}, -1, EVAL_DERIVS, {0, 0}, 0.5, {0, 0}, {0, 0, 0, 1});
    }

    TEST_CASE("failed derivative steps: what they mark and which error variable they clear")
    {
        const auto fails = [](Call c, int marked, bool clears_errno) {
            return c.run(derivs_errptr, 34, 33) == 1 && is_missing(c.y[1]) && c.dy_missing_only(1, marked) &&
                   c.runtime_code == (clears_errno ? 0 : 34) && c.caller_code == (clears_errno ? 33 : 0);
        };
        // Sound parameters fail by the stale code.
        CHECK(fails({"ExponentEVP", {0, 1}, {3}}, 2, true));
        CHECK(fails({"Exponent2EVP", {0, -1}, {3}}, 2, false));
        CHECK(fails({"Exponent2EVP", {1, 2}, {3}}, 0, false));
        CHECK(fails({"Exponent3EVP", {1, 1}, {3}}, 0, true));
        CHECK(fails({"Exponent3EVP", {1, 0.5}, {3}}, 0, true));
        CHECK(fails({"Exp2PEVP", {1, 1, 2, 0}, {3}}, 0, false));
        CHECK(fails({"Exp2PEVP", {1, 1, 2, 1}, {3}}, 4, true));
    }

    TEST_CASE("successes without all derivatives: Exponent3EVP with xr = 0, Exp2PEVP after a failed logarithm")
    {
        Call zero("Exponent3EVP", {0, 2}, {3});
        CHECK((zero.run(both, 34) == 0 && zero.y[1] == 0 && zero.dy_missing_only(1, 2) && zero.runtime_code == 34));

        Call call("Exp2PEVP", {0, 1e300, 4, 1e-300}, {1});
        CHECK((call.run(both) == 0 && call.dy_untouched()));
        CHECK((call.run(EVAL_DERIVS) == 0 && is_missing(call.dy[1]) && is_missing(call.dy[3])));
        CHECK((call.dy[2] == -3 * call.y[1] / -4 / 1e300 && call.dy[4] == -1 * call.y[1] / -4 / 1e-300));
        CHECK((call.run(derivs_errptr) == 0 && call.runtime_code == 34 && std::isinf(call.dy[1])));
    }
}
