#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("pearson")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE, pi = 3.14159265358979323846;

    double type_iv(double w, double m, double nu, double x)
    {
        Call call("PearsonIV", {0, 0, 1, w, m, nu}, {x});
        CHECK((call.run(V | D | E, 33, 34) == 0 && call.runtime_code == 33 && call.caller_code == 34));
        return call.y[1];
    }

    TEST_CASE("type VII: no error test looks at the gamma functions in the derivative by the exponent")
    {
        Call call("PearsonVII", {1, 2, 3, 1.5, 1}, {2.75});
        CHECK((call.run(V | D) == 0 && std::isnan(call.dy[5]) && call.dy[2] > 0));
        check_call("PearsonVII", {1, 2, 3, 1, 0.5}, 2, D | E, {33, 12}, M, {33, 0});
        check_call("PearsonVII", {1, 2, 3, 1, NAN}, 2, V, {12, 33}, NAN, {12, 33});
        check_call("PearsonVII", {1, 2, 3, 1, 172}, 2, V, {0, 0}, M, {0, 0});
        check_call("PearsonVII", {1, 2, 3, 1, 300}, 2, D, {0, 0}, NAN, {34, 0}, {1, NAN, NAN, NAN, NAN});
    }

    TEST_CASE("queries: the finite moments of type VII, no status word of type IV")
    {
        for (const auto &[m, expected] : {std::pair(0.5, 0), {1.5, 3}, {2.2, 15}, {3, 31}, {NAN, 0}}) {
            Call call("PearsonVII", {1, 2, 3, 1, m}, {2});
            CHECK((call.run(EVAL_QUERY | EVAL_INIT) == QUERY_MASK && !std::memcmp(call.dy.data(), &expected, 4)));
        }
        Call call("PearsonIV", {1, 2, 3, 1, 2, 1}, {2});
        CHECK((call.run(EVAL_QUERY) == QUERY_MASK && call.run(D) == 0 && call.nothing_written()));
    }

    TEST_CASE("type IV: unit area, the closed form of m = 1, and finite to the ends of its range")
    {
        for (const auto &[m, nu] : {std::pair(0.55, -1.5), {1, 60}, {3.5, 1e6}, {40, 0}, {1e5, 1e6}}) {
            double area = 0, t = nu / 2 / m, width = std::hypot(1, t) / std::sqrt(m);
            for (double u = -6; u < 6; u += 1.0 / 64) {  // x = the maximum + width·sinh(π/2·sinh(u))
                const double v = pi / 2 * std::sinh(u), dx = std::cosh(v) * width / 2 * pi / 2 * std::cosh(u) / 64;
                area += type_iv(0.5, m, nu, (width * std::sinh(v) - t) / 2) * dx;
            }
            CHECK(area == doctest::Approx(1).epsilon(1e-9));
        }
        CHECK(type_iv(2, 1, 2, 2) == doctest::Approx(1 / (4 * std::sinh(pi) * std::exp(pi / 2))).epsilon(1e-13));
        for (const double m : {std::nextafter(0.5, 1), 1e8, 1.79e308})
            for (const double nu : {-1.79e308, 1e-300, 1.79e308})
                CHECK(std::isfinite(type_iv(1, m, nu, 0) + type_iv(1, m, nu, 1e155) + type_iv(1, m, nu, INFINITY)));
        CHECK((std::isnan(type_iv(0, 1, 1, 0)) && std::isnan(type_iv(1, 0.5, 1, 0))));
    }
}
