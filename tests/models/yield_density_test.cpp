#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("yield and density")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("outside the domain: what is marked, and which error variable is cleared")
    {
        const struct {
            std::string name;
            std::initializer_list<double> p;
            int derivatives;  // marked on a derivative call
        } cases[] = {
            {"Holliday", {1, -2, 1}, 3},       {"Holliday1", {1, -2, 1}, 3}, {"BlNeldSmp", {-1, 1, 2}, 3},
            {"BlNeldSmp", {1, 1, 0}, 3},       {"BlNeld", {1, 1, 0, 1}, 4},  {"BlNeldEVP", {3, 2, 3, 4, 1}, 5},
            {"BlNeldEVP", {2, 2, 3, 1, 1}, 5}, {"Gunary", {1, 1, -2}, 3},    {"Nelder", {-1, 0, 1, 1}, 4},
        };
        for (const auto &c : cases) {
            CAPTURE(c.name);
            const int after = c.name == "Holliday1" ? 12 : 0;
            Call call(c.name, c.p, {1});
            for (const int flags : {V, D, V | D}) {
                CHECK((call.run(flags, 12, 34) == 1 && is_missing(call.y[1]) && call.runtime_code == after));
                CHECK((call.dy_missing_only(1, flags == D ? c.derivatives : 0) && call.caller_code == 34));
                CHECK((call.run(flags | E, 34, 12) == 1 && call.runtime_code == 34 && call.caller_code == after));
            }
        }
    }

    TEST_CASE("powers in the chosen error variable, bases at and below 0, the zero of the inverse polynomial")
    {
        check_call("BlNeldSmp", {1, 1, 1}, 1, V | D | E, {34, 0}, 0.5, {34, 0});
        check_call("BlNeldSmp", {1, 1, 1}, 1, D | E, {12, 34}, M, {12, 0}, {M, M, M});
        check_call("BlNeld", {-3, 1, -0.5, 1}, 1, D, {0, 12}, M, {0, 12}, {M, M, M, M});
        check_call("BlNeld", {-3, 1, -0.5, 1}, 1, D | E, {0, 12}, 4, {33, 12}, {-4, -4, NAN, -0.0});
        check_call("BlNeld", {0, 2, -1, 1}, 0, D, {0, 0}, 0, {0, 0}, {1, 0, 0, 0});
        check_call("BlNeld", {0, 2, -2, 1}, 0, D, {0, 0}, M, {0, 0}, {M, M, M, M});
        check_call("BlNeldEVP", {1, 2, 3, 4, 1}, 1, V | E, {33, 0}, 2, {33, 0});
        check_call("BlNeldEVP", {1, 2, 3, 4, 0.5}, 20, D, {0, 12}, M, {0, 12}, {M, M, M, M, M});
        check_call("Gunary", {1, 1, 1}, -1, D, {12, 0}, M, {0, 0}, {M, M, M});
        check_call("Gunary", {1, 1, 1}, NAN, V | D, {0, 0}, NAN, {0, 0});
        check_call("Nelder", {1, 1, INFINITY, 0}, -1, V, {0, 0}, 0, {0, 0});
    }
}
