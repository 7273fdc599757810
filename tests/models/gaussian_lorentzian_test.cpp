#include <algorithm>
#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("gaussian lorentzian")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("peaks are counted by nParams, and each has its share")
    {
        for (const std::string name : {"Gauss", "GaussAmp", "Lorentz"}) {
            Call call(name, {1, 2, 1.5, 3, 4, 0.75, -2}, {2.5}), second(name, {0, 4, 0.75, -2}, {2.5});
            CHECK((call.run(D) + second.run(D) == 0 && call.y[3] == second.y[1]));
            call.nParams = 6;
            CHECK((call.run(V) == 0 && call.y[1] == 1 + call.y[2] && same_bits(call.y[3], untouched)));
        }
        Call apart("Gaussian", {1, 2, 3, 1.5, 99, 4, -2, 0.75}, {2.5}), single("Gaussian", {0, 4, -2, 0.75}, {2.5});
        apart.nParams = 7;
        CHECK((apart.run(D) + single.run(D) == 0 && apart.y[3] == single.y[1]));
        CHECK(std::equal(&apart.dy[5], &apart.dy[10], &single.dy[1]));
        Call split("BiGaussian", {1, 2, 3, 9, 1.25, 10, 4, 3, 1.25, 9}, {3});
        CHECK((split.run(V | D) == 0 && split.y[2] == split.y[3] && split.y[1] == 2 * split.y[2]));
        CHECK((split.dy[4] == split.dy[9] && split.run(V) == 0 && split.y[3] == split.y[2] + 9));
    }

    TEST_CASE("Gaussians: widths, amplitudes of 0 and stale codes, step by step")
    {
        constexpr double g = 0x1.9884533d42b1fp-1, h = 0x1.e0fdec495107ep-1;
        check_call("Gauss", {0, 0, 1, 1}, 0, V | E, {34, 33}, M, {34, 0});
        check_call("Gauss", {0, 0, 1, 1}, 0, D, {33, 34}, g, {33, 34}, {1, 0, -g, g});
        check_call("Gauss", {0, 0, 1, 1}, 0, D | E, {34, 12}, M, {34, 0}, {M, M, M, M});
        check_call("Gauss", {0, 0, -1, 1}, 0, V, {0, 0}, -g, {0, 0});
        check_call("Gauss", {0, 0, -1, 1}, 0, V | D, {12, 0}, M, {0, 0}, {M, M, M, M});
        check_call("Gauss", {5, 0, 0, 0, 0, 0, 1}, 0, D, {0, 0}, M, {0, 0}, {M, 0, 0, 0, M, M, M});
        check_call("GaussAmp", {1, 2, 1, 3}, 2, V | D, {0, 34}, 4, {0, 34});
        check_call("GaussAmp", {1, 2, 1, 3}, 2, D | E, {34, 33}, M, {34, 0}, {M, M, M, M});
        check_call("GaussAmp", {5, 2, 0, 0}, 2, D, {34, 0}, 5, {34, 0}, {1});
        check_call("GaussAmp", {}, 2, D, {34, 33}, M, {0, 33});
        check_call("Gaussian", {0, 0, 1, 1}, 0, E, {34, 12}, h, {34, 12});
        check_call("Gaussian", {0, 0, 1, 1}, 0, D, {33, 12}, M, {0, 12});
        check_call("Gaussian", {0, 0, 1, 0}, 0, D | E, {33, 12}, M, {33, 0});
        check_call("Gaussian", {5, 0, 0, 0}, 0, D, {34, 0}, 5, {34, 0});
        check_call("BiGaussian", {1, 2, 3, 0, 9}, 1, V, {12, 34}, 1, {12, 34});
        check_call("BiGaussian", {1, 2, 3, 0, 9}, 1, V | D | E, {33, 12}, M, {33, 0}, {1});
    }

    TEST_CASE("Lorentzian: no error tests; with the value the width after the last peak decides on derivatives")
    {
        check_call("Lorentz", {1, 2, -1, 3}, 2, V | E, {33, 34}, M, {33, 0});
        check_call("Lorentz", {1, 2, NAN, 3}, 2, V, {34, 33}, NAN, {34, 33});
        check_call("Lorentz", {1, 2, NAN, 3}, 2, D, {33, 34}, M, {0, 34}, {M, M, M, M});
        Call call("Lorentz", {1, 2, 1, 3}, {2});
        CHECK((call.run(V | D) == 1 && is_missing(call.dy[1]) && call.dy_untouched(2, 4) && call.dy[7] == M));
        call.p[6] = 1;
        CHECK((call.run(V | D) == 0 && call.dy[1] == 1 && call.dy_untouched(5)));
    }
}
