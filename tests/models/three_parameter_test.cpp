#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("three-parameter exponentials")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    TEST_CASE("the pole, the limit and stale codes: what each step looks at and marks")
    {
        Call plain("Exp3P1", {1, 1, -2}, {2}), offset("Exp3P1Md", {1, 1, -2}, {2});
        CHECK((plain.run(both) == 1 && is_missing(plain.y[1]) && plain.dy_untouched()));
        CHECK((plain.run(EVAL_DERIVS, 34) == 1 && plain.runtime_code == 0 && plain.dy_missing_only(1, 3)));
        CHECK((offset.run(EVAL_DERIVS, 34) == 1 && offset.runtime_code == 0 && offset.dy_untouched()));

        // Exp3P1Md divides limit and error test between its steps, Exp3P2 has both in both.
        for (const std::string name : {"Exp3P1Md", "Exp3P2"}) {
            const bool divides = name == std::string("Exp3P1Md");
            Call call(name, {700, 0, 0}, {1});
            CHECK(call.run(EVAL_VALUE) == !divides);
            CHECK((call.run(EVAL_DERIVS) == 1 && call.dy_missing_only(1, divides ? 3 : 0)));
            call.p[1] = std::nan("");  // is not beyond the limit
            CHECK((call.run(both) == 0 && call.run(both, 33) == 1 && call.dy_untouched()));
            CHECK((call.run(EVAL_DERIVS, 33) == !divides && call.runtime_code == (divides ? 33 : 0)));
        }
    }
}
