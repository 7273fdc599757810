#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("reciprocal")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE, inf = INFINITY;

    TEST_CASE("zero denominators: what is marked; the error variable plays no part")
    {
        struct Case {
            std::string name;
            std::initializer_list<double> p;
            double zero;  // of the denominator
            int marked;   // by a derivative call there; -1 where it succeeds
        };
        const Case cases[] = {
            {"Reciprocal", {1.5, 0.5}, -3, 0},
            {"ReciprocalMod", {3, 0.5}, -2, 0},
            {"Reciprocal1", {1.5}, -1.5, 1},
            {"Reciprocal1EVP", {3, 0.5}, 1, 2},
            {"Reciprocal0", {0.5}, -2, 1},
            {"Reciprocal0EVP", {3, 0.4}, -2, 2},
            {"ReciprocalEVP", {1, 2, 7, 0.5}, -1, -1},
        };
        for (const Case &c : cases) {
            CAPTURE(c.name);
            Call call(c.name, c.p, {4});
            CHECK(call.run(D, 34) == 0);
            const double value = call.y[1];
            CHECK((call.run(V | D, 34) == 0 && call.y[1] == doctest::Approx(value) && call.dy_untouched()));
            call.x[1] = c.zero;
            CHECK((call.run(V | D, 34) == 1 && is_missing(call.y[1]) && call.dy_untouched()));
            CHECK((call.runtime_code == 34 && call.run(D | E, 0, 33) == (c.marked >= 0) && call.caller_code == 33));
            CHECK((c.marked < 0 || (is_missing(call.y[1]) && call.dy_missing_only(1, c.marked))));
        }
        check_call("Reciprocal0EVP", {0, 0.5}, 2, V, {34, 33}, M, {34, 33});
        check_call("Reciprocal0EVP", {3, 0}, 2, D, {34, 33}, M, {34, 33}, {M, M});
        // derivatives as defined, the latter over a denominator of 0
        check_call("Reciprocal0", {1}, 1, D, {0, 0}, 0.5, {0, 0}, {-4});
        check_call("ReciprocalEVP", {1, 1, 3, -1}, 2, D, {34, 0}, -inf, {34, 0}, {-inf, inf, -inf, inf});
    }
}
