#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("distributions")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("a call for nothing, or for derivatives that a model does not have, answers 1")
    {
        for (const std::string name : {"Gumbel", "Pareto2", "Rayleigh", "Laplace", "Poisson", "Weibull"}) {
            const bool exclusive = name == "Pareto2" || name == "Rayleigh";
            Call call(name, {1, 2, 3, 0}, {2});
            INFO(name);
            CHECK((call.run(0, 34) == 1 && call.nothing_written() && call.runtime_code == 34));
            CHECK((call.run(V | D) == 0 && call.dy_untouched()));
            if (!exclusive) CHECK((call.run(D) == 1 && (call.nothing_written() || call.y[1] == 1)));
        }
    }

    TEST_CASE("Pareto and Rayleigh: which failures clear which error variable")
    {
        check_call("Pareto2", {1.5, 2}, 0, V, {33, 34}, M, {33, 34});
        check_call("Pareto2", {1.5, 2}, -1, D | E, {33, 34}, M, {33, 34}, {M, M});
        check_call("Pareto2", {1.5, 2}, NAN, D, {0, 0}, NAN, {0, 0}, {NAN, NAN});
        check_call("Pareto2", {1.5, -2}, 1, V, {0, 34}, M, {0, 34});
        check_call("Pareto2", {2, -2}, 1, D, {0, 34}, M, {0, 34}, {M, M});
        check_call("Pareto2", {2, 2}, 4, D | E, {0, 33}, M, {0, 0}, {M, M});
        check_call("Rayleigh", {0}, 1, V, {33, 34}, M, {0, 34});
        check_call("Rayleigh", {1}, -1, D, {33, 34}, M, {33, 34}, {M});
        check_call("Rayleigh", {2}, 2, V | E, {33, 34}, M, {33, 0});
        check_call("Rayleigh", {2}, 2, D | E, {12, 34}, M, {0, 34}, {-0.5});
    }

    TEST_CASE("densities: too few parameters give the baseline, the share goes to y[2], a failure marks the total")
    {
        for (const std::string name : {"Laplace", "Poisson", "Weibull"}) {
            Call call(name, {1, 2, 3, 0.5}, {3});
            CHECK((call.run(V | D) == 0 && call.y[2] > 0.01 && call.y[1] == 1 + call.y[2]));
            CHECK((call.run(V | E, 34, 33) == 1 && is_missing(call.y[1]) && same_bits(call.y[2], untouched)));
            CHECK((call.runtime_code == 34 && call.caller_code == 0));
            call.nParams = name == "Weibull" ? 3 : name == "Laplace" ? 2 : 1;
            CHECK((call.run(V, 34) == 1 && call.y[1] == 1 && call.runtime_code == 34));
        }
        check_call("Laplace", {1, 2, 0}, 2, V, {34, 0}, M, {0, 0});
        check_call("Poisson", {1, -2}, 0.5, V, {0, 0}, M, {0, 0});
        check_call("Poisson", {1, 2}, 200, V, {0, 0}, M, {0, 0});
        check_call("Poisson", {1, 2}, -3, V | D, {0, 33}, 1, {0, 33});
        check_call("Gumbel", {1, 0}, 1, V | E, {33, 34}, M, {33, 0});
        check_call("Gumbel", {1, 0.001}, 2, V, {0, 34}, M, {0, 34});
        check_call("Weibull", {1, 1, 300, 0}, 1e6, V, {0, 34}, M, {0, 34});
        Call outside("Weibull", {1, 2, 3, 0.5}, {0.5});
        CHECK((outside.run(V, 34) == 1 && outside.y[1] == 1 && is_missing(outside.y[2])));
        CHECK(outside.runtime_code == 34);
    }
}
