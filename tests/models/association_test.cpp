#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("exponential association")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    TEST_CASE("ExpAssoc: a phase left out of the value is not left out of the derivatives")
    {
        Call call("ExpAssoc", {3, 0, 0, 2, 0}, {1});
        CHECK(call.run(EVAL_VALUE) == 1);
        call.nParams = 3;
        CHECK((call.run(EVAL_VALUE, 34) == 0 && call.y[1] == 3));  // no exponential, no error test
        CHECK((call.run(both | EVAL_USE_ERRPTR, 34, 33) == 1 && is_missing(call.y[1]) && call.dy_untouched()));
        CHECK((call.runtime_code == 34 && call.caller_code == 0));
    }

    TEST_CASE("start times: a zero time constant marks all derivatives, an overflow is no failure")
    {
        for (const std::string name : {"ExpAssoc1", "ExpAssoc2", "ExpAssocDelay1", "ExpAssocDelay2"}) {
            Call call(name, {-900, -900, 1, -1, -1, -1, -1}, {0});
            if (name.back() == '1') call.nParams = 4;
            CHECK((call.run(both, 33) == 0 && std::isinf(call.y[1]) && call.runtime_code == 34));
            call.p[static_cast<size_t>(call.nParams)] = 0;
            CHECK((call.run(EVAL_VALUE) == 1 && is_missing(call.y[1]) && call.dy_untouched()));
            CHECK((call.run(both | EVAL_USE_ERRPTR, 34, 33) == 1 && call.dy_missing_only(1, call.nParams)));
            CHECK((call.runtime_code == 34 && call.caller_code == 0));
        }

        // A closed gate keeps its exponential uncalled; a NaN start closes it, but not to ExpAssoc2's derivatives.
        Call delay("ExpAssocDelay1", {1000, 3, 1, 1}, {0});
        CHECK((delay.run(EVAL_VALUE) == 0 && delay.y[1] == 3 && delay.runtime_code == 0));
        for (const std::string name : {"ExpAssoc2", "ExpAssocDelay2"}) {
            Call call(name, {0, 1000, 3, 1, 1, 1, 1}, {0});
            CHECK((call.run(EVAL_DERIVS) == 0 && call.runtime_code == 0 && call.dy[2] == 0));
            call.p[2] = std::nan("");
            CHECK((call.run(EVAL_DERIVS) == 0 && call.y[1] == 3));
            CHECK(std::isnan(call.dy[2]) == (name == "ExpAssoc2"));
        }
    }
}
