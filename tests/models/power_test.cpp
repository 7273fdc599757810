#include <doctest/doctest.h>

#include "tests/support/check_call.h"
#include "tests/support/derivatives.h"

using namespace curvebank::test;

TEST_SUITE("power")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE, inf = INFINITY;

    TEST_CASE("derivatives are the exact partials")
    {
        check_derivatives("Power", {1.7}, {0.5, 1, 3});
        check_derivatives("PowerEVP", {2.5, 4}, {0.5, 1, 3});
        check_derivatives("Power0", {1, 2, 1.5, 1.7}, {-1, 1.5, 4});
        check_derivatives("Power1", {2, 1.5, 1.7}, {-1, 1.5, 4});
        check_derivatives("Power2", {2, 1.5, 1.7, 1.3}, {-1, 1.5, 4});
        check_derivatives("Allometric1", {0.8, 1.7}, {0.5, 1, 3});
        check_derivatives("Allometric2", {1.5, 0.8, 1.7}, {0.5, 1, 3});
        check_derivatives("Pareto", {1.7}, {0.5, 1, 3});
        check_derivatives("ParetoEVP", {2.5, 0.7}, {0.5, 1, 3});
    }

    TEST_CASE("at the centre: no power, no error test, and derivatives missing in a success")
    {
        check_call("Power0", {5, 2, 3, 2}, 2, V, {34, 0}, 5, {34, 0});
        check_call("Power0", {5, 2, 3, 2}, 2, V | D, {34, 0}, 0, {34, 0}, {1, M, 0, M});
        check_call("Power1", {2, 3, 0.5}, 2, V | D, {33, 0}, 0, {33, 0}, {M, 0, M});
        check_call("Power1", {inf, 3, 0.5}, inf, D, {0, 0}, 0, {0, 0}, {M, 0, M});
        check_call("Power2", {1, 2, 0.5, 2}, 1, V | D, {0, 0}, 0, {0, 0}, {M, 0, M, M});
        check_call("Power2", {inf, 2, 0.5, 2}, inf, V, {0, 0}, 0, {0, 0});
        check_call("Power2", {inf, 2, 0.5, 2}, inf, D, {0, 0}, NAN, {0, 0}, {NAN, NAN, 0, NAN});
    }

    TEST_CASE("powers of a distance: domains and error tests that differ between the steps")
    {
        check_call("Power0", {}, 1, V | D | E, {12, 33}, M, {12, 0});
        check_call("Power0", {5, 0, 1, 200}, 1e3, V | D, {0, 33}, M, {0, 33});
        check_call("Power0", {5, 0, 1, 200}, 1e3, D, {0, 33}, M, {0, 33}, {1, M, M, M});
        check_call("Power0", {5, 0, 1, 200}, 1e3, V | E, {0, 0}, inf, {34, 0});
        check_call("Power1", {0, 2, -1}, 4, V, {0, 0}, 0.5, {0, 0});
        check_call("Power1", {0, 2, -1}, 0, D | E, {34, 33}, M, {34, 0}, {M, M, M});
        check_call("Power1", {0, 2, 200}, 1e3, V | D, {0, 0}, M, {0, 0});
        check_call("Power1", {0, 2, 200}, 1e3, D, {0, 0}, inf, {34, 0}, {-inf, inf, inf});
        check_call("Power2", {1, 2, 0.5, 2}, 0, V, {0, 0}, 2, {0, 0});
        check_call("Power2", {1, 2, 0.5, 0}, 0, V | D, {0, 33}, M, {0, 33}, {M, M, M, M});
        check_call("Power2", {1, 2, NAN, 2}, 3, D, {0, 0}, 8, {0, 0}, {-8, 4, 0, std::log(2) * 2 * 4});
        check_call("Power2", {1, 2, 0.5, 2}, 3, D | E, {0, 34}, M, {0, 0}, {M, M, M, M});
    }

    TEST_CASE("powers of X at X <= 0: what is marked, and whether the error variable is cleared")
    {
        check_call("Power", {3}, -2, V | D, {12, 0}, -8, {12, 0});
        check_call("Power", {0.5}, -2, D, {0, 34}, M, {0, 34}, {M});
        Call power("Power", {3}, {-2});
        CHECK(
            (power.run(D, 12) == 1 && power.y[1] == -8 && power.dy_missing_only(1, 1) && power.runtime_code == 12));
        check_call("Allometric1", {0, 2}, 0, V | D | E, {34, 33}, M, {34, 0});
        check_call("Allometric2", {1, 2, 3}, 0, D, {34, 33}, M, {0, 33}, {M, M, M});
        check_call("Pareto", {2}, 0, V | D | E, {34, 33}, M, {34, 33});
        check_call("Pareto", {2}, 0, D, {34, 33}, M, {34, 33}, {M});
        check_call("PowerEVP", {2, 4}, 0, D | E, {34, 33}, M, {34, 0}, {M, M});
        check_call("ParetoEVP", {2, 0.5}, 0, D | E, {34, 33}, M, {34, 33}, {M, M});
    }

    TEST_CASE("errors of the power; amplitudes of 0, for which the value calls none")
    {
        check_call("Allometric1", {0, 2}, 2, V, {34, 0}, 0, {34, 0});
        check_call("Allometric1", {0, 2}, 2, V | D, {34, 0}, M, {0, 0}, {M, M});
        check_call("Allometric2", {5, 0, 2}, 2, V, {33, 0}, 5, {33, 0});
        check_call("Allometric2", {5, 1, 200}, 1e3, D, {0, 0}, M, {0, 0}, {1, M, M});
        check_call("Pareto", {-200}, 1e3, D, {0, 0}, M, {0, 0}, {M});
        check_call("Pareto", {-200}, 1e3, V | D | E, {0, 12}, -inf, {34, 12});
    }

    TEST_CASE("curves through a point: a point at X = 1, parameters out of the domain, stale codes")
    {
        check_call("PowerEVP", {1, 1}, 3, V | D, {34, 0}, 1, {34, 0});
        check_call("PowerEVP", {1, 1}, 3, D, {34, 0}, 1, {34, 0}, {M, M});
        check_call("PowerEVP", {1, 2}, 3, D, {34, 0}, M, {34, 0}, {M, M});
        check_call("PowerEVP", {1, 0}, 3, V, {34, 33}, M, {0, 33});
        check_call("PowerEVP", {2, 1e300}, 1e300, V | E, {0, 34}, M, {0, 0});  // the power is not tried
        check_call("ParetoEVP", {1, 0.5}, 3, D, {34, 0}, 0, {34, 0}, {0, M});
        check_call("ParetoEVP", {1, 1}, 3, D, {34, 0}, M, {34, 0}, {M, M});
        check_call("ParetoEVP", {NAN, 0.5}, 3, V, {0, 0}, NAN, {0, 0});
        check_call("ParetoEVP", {2, 0.5}, 4, D, {33, 0}, M, {0, 0}, {M, M});
    }
}
