#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/call.h"

using namespace curvebank::test;

TEST_SUITE("inverse polynomial")
{
    constexpr int both = EVAL_VALUE | EVAL_DERIVS;

    TEST_CASE("at the centre a peak gives its amplitude and no slope")
    {
        Call call("InvsPoly", {1, 2, 1.5, 3, 0.5, 0.25, 0.125}, {2});
        CHECK(call.run(both) == 0);
        CHECK((call.y[1] == 4 && call.y[2] == 3 && call.dy[2] == 0 && call.dy_untouched(8)));
    }

    TEST_CASE("the number of peaks follows from nParams, and each has its share")
    {
        Call call("InvsPoly", {1, 2, 1, 3, 1, 0, 0, 2, 1, 4, 1, 0, 0}, {2.5});
        CHECK(call.run(EVAL_VALUE) == 0);
        CHECK((call.y[1] == 4.5 && call.y[2] == 1.5 && call.y[3] == 2));
        call.nParams = 12;
        CHECK(call.run(EVAL_VALUE) == 0);
        CHECK((call.y[1] == 2.5 && call.y[2] == 1.5 && same_bits(call.y[3], untouched)));
        call.nParams = 6;
        CHECK(call.run(both) == 0);
        CHECK((call.y[1] == 1 && call.dy[1] == 1 && call.dy_untouched(2)));
        call.nParams = 0;
        CHECK(call.run(both, 34) == 1);
        CHECK((is_missing(call.y[1]) && call.dy_untouched() && call.runtime_code == 0));
        CHECK(call.run(EVAL_DERIVS) == 0);
        CHECK((call.y[1] == 1 && call.dy[1] == 1));
    }

    TEST_CASE("a peak of amplitude 0 is skipped, its width untested and its entries unwritten")
    {
        Call call("InvsPoly", {1, 2, -1, 0, 1, 0, 0, 2, 1, 4, 1, 0, 0}, {2.5});
        CHECK(call.run(both) == 0);
        CHECK((call.y[1] == 3 && same_bits(call.y[2], untouched) && call.y[3] == 2));
        CHECK(call.dy_untouched(2, 7));
        CHECK(!call.dy_untouched(8, 8));
    }

    TEST_CASE("a width that is not positive fails and keeps the earlier peaks")
    {
        Call call("InvsPoly", {1, 2, 1, 3, 1, 0, 0, 2, 0, 4, 1, 0, 0}, {2.5});
        CHECK(call.run(both | EVAL_USE_ERRPTR, 34, 33) == 1);
        CHECK((is_missing(call.y[1]) && call.y[2] == 1.5 && call.dy_untouched()));
        CHECK((call.runtime_code == 34 && call.caller_code == 0));
        CHECK(call.run(EVAL_DERIVS) == 1);
        CHECK((is_missing(call.y[1]) && call.y[2] == 1.5 && is_missing(call.dy[1]) && call.dy[4] == 0.5));
        for (size_t i = 8; i <= 13; ++i) CHECK(is_missing(call.dy[i]));
        CHECK(call.dy_untouched(14));

        call.p[9] = std::nan("");  // a NaN width is not refused
        CHECK(call.run(EVAL_VALUE) == 0);
        CHECK(std::isnan(call.y[1]));
    }

    TEST_CASE("queries tell the highest power of the first peak")
    {
        const double nan = std::nan("");
        const struct {
            double A1, A2, A3;
            int32_t mask;
        } cases[] = {{0, 0, 2e-10, 31}, {5e-11, -3e-10, 0, 7}, {-2e-10, 0, 0, 1}, {1e-10, 1e-10, -1e-10, 0},
                     {1, 1, nan, 0},    {1, nan, 0, 0},        {nan, 0, 0, 0}};
        for (const auto &c : cases) {
            Call call("InvsPoly", {1, 2, 1, 3, c.A1, c.A2, c.A3}, {2});
            CHECK(call.run(EVAL_QUERY | EVAL_INIT | both) == QUERY_MASK);
            int32_t mask = -1;
            std::memcpy(&mask, call.dy.data(), sizeof mask);
            CHECK(mask == c.mask);
            CHECK(std::memcmp(reinterpret_cast<const char *>(call.dy.data()) + 4,
                              reinterpret_cast<const char *>(&untouched) + 4, 4) == 0);
            CHECK((call.dy_untouched(1) && same_bits(call.y[1], untouched)));
        }
    }
}
