#include <cmath>

#include <tuple>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("chromatography")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("the modified Gaussian is the convolution with its decay, on both sides of the switch")
    {
        const double cases[][3] = {{1, 0.5, -3}, {1, 0.5, 0}, {1, 0.5, 8}, {1, 20, 4}, {2, 0.02, -5}, {2, 0.02, 1}};
        for (const auto &[w, t0, d] : cases) {
            double sum = 0, step = 1e-4;  // midpoint rule in s/t0
            for (double s = step / 2; s < 40; s += step)
                sum += step * std::exp(-std::pow((d - s * t0) / w, 2) / 2 - s);
            Call call("GaussMod", {0, 5, 3, w, t0}, {3 + d});
            CHECK((call.run(V) == 0 && std::fabs(call.y[1] / (5 * sum / (w * 2.5066282746310002)) - 1) < 1.5e-7));
        }
    }

    TEST_CASE("Giddings has the Bessel function I1, an odd function, on both sides of the switch")
    {
        for (const double w : {-2.0, 0.3, 0.8, 1.05, 1.1, 4.0}) {
            const double I1 = std::cyl_bessel_i(1.0, 4 / std::fabs(w)) * (w < 0 ? -1 : 1);
            Call call("Giddings", {0, 2, w, 7}, {2});
            CHECK((call.run(V) == 0 && std::fabs(call.y[1] / (7 / w * I1 * std::exp(-4 / w)) - 1) < 6e-7));
        }
    }

    TEST_CASE("what is refused, what overflows, and the error variable that tells")
    {
        check_call("ECS", {}, 2, V | E, {34, 33}, MISSING_VALUE, {34, 0});
        check_call("GaussMod", {1, 2, 3, NAN, 1}, 3, V | D, {0, 34}, NAN, {0, 34});
        check_call("GaussMod", {1, 2, 0, 1, 0.05}, 60, V, {0, 33}, MISSING_VALUE, {0, 33});
        check_call("Giddings", {1, -2, 1, 2}, 1, V, {0, 0}, MISSING_VALUE, {0, 0});
        check_call("Giddings", {1, -2, 1, 2}, 1, V | E, {0, 0}, NAN, {33, 0});
        check_call("Giddings", {1, -1e-200, 1, 2}, 1e-200, V, {0, 0}, NAN, {33, 0});
        check_call("Giddings", {1, 160, 1, 2}, 160, V, {0, 0}, 1, {0, 0});
        check_call("CCE", {1, 0, 3, -1, 1, 1, 0, 1, 1}, 40, V, {0, 12}, MISSING_VALUE, {0, 12});
    }

    TEST_CASE("two peaks in the strides of their model: one refused, both added, one skipped")
    {
        using Peaks = std::tuple<const char *, int16_t, size_t, size_t>;  // count, then the second area and width
        for (const auto &[name, count, area, width] :
             {Peaks("GaussMod", 9, 6, 8), Peaks("Giddings", 7, 7, 6), Peaks("GCAS", 7, 8, 9),
              Peaks("ECS", 11, 8, 9), Peaks("CCE", 17, 11, 12)}) {
            CAPTURE(name);
            Call call(name, {1, 3, 1, 2, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, {2.5});
            call.nParams = count;
            CHECK((call.run(V | D, 12, 34) == 0 && call.y[1] == 1 + call.y[2] + call.y[3] && call.dy_untouched()));
            CHECK((call.run(D, 34) == 1 && call.nothing_written()));
            call.p[width] = 0;
            CHECK((call.run(V) == 1 && is_missing(call.y[1]) && !same_bits(call.y[2], untouched)));
            call.p[area] = 0;
            CHECK((call.run(V) == 0 && call.y[1] == 1 + call.y[2] && same_bits(call.y[3], untouched)));
        }
    }
}
