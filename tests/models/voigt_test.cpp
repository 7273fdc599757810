#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("voigt")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE, wG = 1.665109222;  // wG makes X the distance from the centre, Y wL/2

    TEST_CASE("the Voigt profile agrees with the complex probability function")
    {
        constexpr double table[][3] = {
            {0, 0.001, 0.998872620081151}, {3, 0.01, 0.000908830706741}, {20, 0.5, 0.000707452219885}};
        for (const auto &[X, Y, K] : table) {
            Call call("Voigt5", {0, 0, wG / 0.939437278, wG, 2 * Y}, {X});
            CHECK_MESSAGE((call.run(V) == 0 && call.y[1] == doctest::Approx(K).epsilon(1e-5)), X << ", " << Y);
        }
    }

    TEST_CASE("a later Voigt peak contains the sum of the one before, unless its own exponential starts it anew")
    {
        constexpr double cases[][3] = {{5, 2, 2}, {5, 0.02, 1}, {15, 0.02, 2}};
        for (const auto &[X, wL, share] : cases) {
            Call call("Voigt5", {1, 0, 2, wG, wL, 9, 0, 0, 0, 0, 2, wG, wL}, {X});
            CHECK((call.run(V) == 0 && same_bits(call.y[3], untouched) && call.y[1] == 1 + call.y[2] + call.y[4]));
            CHECK(call.y[4] == doctest::Approx(share * call.y[2]).epsilon(1e-12));
            const bool looked = call.run(V | D | E, 33, 34) == 1;  // at the error variable, after an exponential
            CHECK((looked == (share == 1) && call.runtime_code == 33 && call.caller_code == (looked ? 0 : 34)));
        }
    }

    TEST_CASE("widths, shapes and stale codes; queries come before initialisation, which is answered by 0")
    {
        check_call("Voigt5", {0, 0, 1, 1, 0}, 5, V | E, {12, 34}, M, {12, 0});
        check_call("PsdVoigt1", {0, 0, 1, 1, 0}, 0, V | E, {34, 12}, 0.939437278, {34, 12});
        check_call("PsdVoigt1", {0, 0, 1, NAN, 0}, 0, V, {0, 0}, NAN, {0, 0});
        check_call("PsdVoigt2", {1, -500, 4, 2, 9, 0, 5, 4, 9, 2, 1}, 5, V, {0, 0}, 1 + 2 * 0.636619772, {0, 0});
        check_call("PsdVoigt2", {0, 0, 1, 1, 1, 0}, 0, V, {34, 33}, M, {0, 33});
        for (const std::string name : {"Voigt5", "PsdVoigt1", "PsdVoigt2"}) {
            Call call(name, {1, 2, 1, 1, 1, 1}, {2});
            CHECK((call.run(D) == 1 && call.nothing_written()));
        }
    }
}
