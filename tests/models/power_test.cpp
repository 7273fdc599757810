#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("power")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE, inf = INFINITY;

    TEST_CASE("powers of X: derivatives, the domain, errors of the power")
    {
        struct Case {
            std::string name;
            std::initializer_list<double> p, steep;  // the latter for an overflow at X = 1000
            bool clears, joint;                      // out of the domain; value and derivatives in one call
        };
        const Case cases[] = {
            {"Allometric1", {0.8, 1.7}, {1, 200}, true, true},
            {"Allometric2", {1.5, 0.8, 1.7}, {5, 1, 200}, true, true},
            {"Pareto", {1.7}, {-200}, false, false},
            {"ParetoEVP", {2.5, 0.7}, {2, -1e300}, false, false},
            {"PowerEVP", {2.5, 4}, {2, 1e300}, true, false},
            {"Power", {1.7}, {200}, false, false},
        };
        for (const Case &c : cases) {
            CAPTURE(c.name);
            Call call(c.name, c.p, {3}), steep(c.name, c.steep, {1e3});
            CHECK(call.run(D) == 0);
            const double value = call.y[1];
            CHECK((call.run(V | D) == 0 && call.y[1] == doctest::Approx(value) && call.dy_untouched() != c.joint));
            CHECK((call.run(V | D | E, 34, 33) == 1 && is_missing(call.y[1]) && call.dy_untouched()));
            CHECK((call.runtime_code == 34 && call.caller_code == 0));
            CHECK((steep.run(V | D, 0, 33) == 1 && is_missing(steep.y[1]) && steep.dy_untouched()));
            CHECK((steep.runtime_code == 0 && steep.run(D, 0, 33) == 1 && is_missing(steep.y[1])));
            CHECK((steep.dy_missing_only(1, steep.nParams) || c.name == "Allometric2"));
            CHECK((steep.runtime_code == 0 && steep.caller_code == 33));
            if (c.name == "Power") continue;  // has no domain
            call.x[1] = 0;
            CHECK((call.run(V | D | E, 34, 33) == 1 && is_missing(call.y[1]) && call.dy_untouched()));
            CHECK((call.runtime_code == 34 && call.caller_code == (c.clears ? 0 : 33)));
            CHECK((call.run(D, 34, 33) == 1 && is_missing(call.y[1]) && call.dy_missing_only(1, call.nParams)));
            CHECK((call.runtime_code == (c.clears ? 0 : 34) && call.caller_code == 33));
        }
        check_call("Power", {3}, -2, V | D, {12, 0}, -8, {12, 0});
        Call zero("Power", {2}, {0});  // fails for its derivative alone
        CHECK((zero.run(D, 12) == 1 && zero.y[1] == 0 && zero.dy_missing_only(1, 1) && zero.runtime_code == 12));
        check_call("Allometric1", {0, 2}, 2, V, {34, 0}, 0, {34, 0});  // an amplitude of 0 needs no power
        check_call("Allometric2", {5, 0, 2}, 2, V, {33, 0}, 5, {33, 0});
        check_call("Allometric2", {5, 1, 200}, 1e3, D, {0, 0}, M, {0, 0}, {1, M, M});
    }

    TEST_CASE("curves through a point: a point at X = 1, parameters out of the domain, stale codes")
    {
        check_call("PowerEVP", {1, 1}, 3, V | D, {34, 0}, 1, {34, 0});
        check_call("PowerEVP", {1, 1}, 3, D, {34, 0}, 1, {34, 0}, {M, M});
        check_call("PowerEVP", {1, 2}, 3, D, {34, 0}, M, {34, 0}, {M, M});
        check_call("PowerEVP", {1, 2}, 3, V, {34, 0}, M, {34, 0});
        check_call("PowerEVP", {1, 0}, 3, V, {34, 33}, M, {0, 33});
        check_call("PowerEVP", {2, 1e300}, 1e300, V | E, {0, 34}, M, {0, 0});  // the power is not tried
        check_call("ParetoEVP", {1, 0.5}, 3, D, {34, 0}, 0, {34, 0}, {0, M});
        check_call("ParetoEVP", {1, 1}, 3, D, {34, 0}, M, {34, 0}, {M, M});
    }

    TEST_CASE(
        "powers of a distance: derivatives, the centre, domains and error tests that differ between the steps")
    {
        // at the centre no power, no error test, and a success
        check_call("Power0", {5, 2, 3, 2}, 2, V, {34, 0}, 5, {34, 0});
        check_call("Power0", {5, 2, 3, 2}, 2, D, {34, 0}, 0, {34, 0}, {1, M, 0, M});
        check_call("Power1", {inf, 3, 0.5}, inf, V | D, {33, 0}, 0, {33, 0}, {M, 0, M});
        check_call("Power2", {1, 2, 0.5, 2}, 1, D, {0, 0}, 0, {0, 0}, {M, 0, M, M});
        check_call("Power2", {inf, 2, 0.5, 2}, inf, V, {0, 0}, 0, {0, 0});
        check_call("Power2", {inf, 2, 0.5, 2}, inf, D, {0, 0}, NAN, {0, 0}, {NAN, NAN, 0, NAN});

        check_call("Power0", {}, 1, V | D | E, {12, 33}, M, {12, 0});
        check_call("Power0", {5, 0, 1, 200}, 1e3, V | D, {0, 33}, M, {0, 33});
        check_call("Power0", {5, 0, 1, 200}, 1e3, D, {0, 33}, M, {0, 33}, {1, M, M, M});
        check_call("Power1", {0, 2, -1}, 4, V, {0, 0}, 0.5, {0, 0});
        check_call("Power1", {0, 2, 0}, 4, D | E, {34, 33}, M, {34, 0}, {M, M, M});
        check_call("Power1", {0, 2, 200}, 1e3, V | D, {0, 0}, M, {0, 0});
        check_call("Power1", {0, 2, 200}, 1e3, D, {0, 0}, inf, {34, 0}, {-inf, inf, inf});
        check_call("Power2", {1, 2, 0.5, 0}, 0, V | D | E, {0, 12}, M, {0, 0}, {M, M, M, M});
        check_call("Power2", {1, 2, NAN, 2}, 3, V | D, {0, 0}, 8, {0, 0}, {-8, 4, 0, std::log(2) * 2 * 4});
        check_call("Power2", {1, 2, 0.5, 200}, 1e3, D, {0, 34}, M, {0, 34}, {M, M, M, M});
        check_call("Power2", {1, 2, 0.5, 200}, 1e3, V | D, {0, 34}, M, {0, 34});
    }
}
