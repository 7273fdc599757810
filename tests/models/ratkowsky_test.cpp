#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("power curves of two parameters")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("derivatives; out of the domain the error variable is left alone, errors of the power clear it")
    {
        struct Case {
            std::string name;
            double edge;                             // the last X out of the domain
            std::initializer_list<double> p, steep;  // the latter for an overflow at X = 2
            int value_tests = 1;                     // whether the value step looks at errors
        };
        const Case cases[] = {
            {"Pow2P1", 0, {3, 0.7}, {3, -9e3}},
            {"Pow2P2", -1, {3, 0.7}, {3, 9e3}},
            {"Pow2P3", -2, {0.5, 1.7}, {0.5, -9e3}},
            {"Ratkowsky2P1EVP", -2, {3, 0.6, 0.5}, {0.5, -1e300, 0.5}},
            {"Ratkowsky2P2EVP", 0, {3, 2, 0.7}, {3, 2, -9e3}},
            {"Ratkowsky2P3EVP", -1, {3, 2, 0.7}, {0.5, 2, 9e3}, 0},
        };
        for (const Case &c : cases) {
            CAPTURE(c.name);
            Call call(c.name, c.p, {2}), steep(c.name, c.steep, {2});
            CHECK((call.run(D) == 0 && steep.run(D, 0, 33) == 1 && steep.dy_missing_only(1, steep.nParams)));
            CHECK((is_missing(steep.y[1]) && steep.runtime_code == 0 && steep.caller_code == 33));
            const double value = call.y[1];
            CHECK((call.run(V | D) == 0 && call.y[1] == doctest::Approx(value) && call.dy_untouched()));
            CHECK((steep.run(V | D) == c.value_tests && steep.runtime_code == (c.value_tests ? 0 : 34)));
            CHECK((call.run(V | E, 34, 33) == c.value_tests && call.caller_code == (c.value_tests ? 0 : 33)));
            CHECK((call.run(D | E, 34, 33) == 1 && call.caller_code == 0 && call.dy_missing_only(1, call.nParams)));
            call.x[1] = c.edge;
            CHECK((call.run(V | D, 34, 33) == 1 && is_missing(call.y[1]) && call.dy_untouched()));
            CHECK((call.runtime_code == 34 && call.run(D | E, 34, 33) == 1 && call.caller_code == 33));
            CHECK((is_missing(call.y[1]) && call.dy_missing_only(1, call.nParams)));
        }
        check_call("Ratkowsky2P1EVP", {3, 0.5, 0}, 1, D, {34, 33}, M, {34, 33}, {M, M, M});
        check_call("Ratkowsky2P1EVP", {3, 1, 0.4}, 1, V, {34, 33}, M, {34, 33});
        check_call("Ratkowsky2P2EVP", {1e3, 3, -200}, 1, D, {0, 33}, M, {0, 33}, {M, M, M});
        check_call("Ratkowsky2P2EVP", {1e3, 3, -200}, 1, V, {0, 33}, M, {0, 33});
        check_call("Ratkowsky2P3EVP", {-1, 3, 1}, 4, D, {34, 33}, M, {34, 33}, {M, M, M});
        // export names, which are crossed with catalogue names; a factor where a quotient would be expected
        check_call("Ratkowsky2P2", {3, 1}, 4, V, {0, 0}, 2.25, {0, 0});
        check_call("Ratkowsky2P3", {3, 2}, 1, V, {0, 0}, 12, {0, 0});
        check_call("Ratkowsky2P1", {1, 1}, 1, V, {0, 0}, 0.5, {0, 0});
        check_call("Ratkowsky2P2EVP", {2, 3, 1}, 4, V, {0, 0}, 1.125, {0, 0});
    }
}
