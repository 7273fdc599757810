#include <doctest/doctest.h>

#include "tests/support/derivatives.h"

using namespace curvebank::test;

TEST_SUITE("logistic")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    using Codes = std::pair<int, int>;  // errno and the caller's variable

    /// One call. It is to fail where the value is missing, and to leave all entries of dy beyond the listed ones
    /// untouched.
    static void check(const char *name, std::initializer_list<double> p, double X, int flags, Codes before,
                      double value, Codes after, std::initializer_list<double> derivatives = {})
    {
        const auto same = [](double a, double b) { return same_bits(a, b) || (std::isnan(a) && std::isnan(b)); };
        Call call(name, p, {X});
        const int result = call.run(flags, before.first, before.second);
        const int listed = static_cast<int>(derivatives.size());
        INFO(std::string(name) << " at x = " << X << ", flags " << flags << ": y = " << call.y[1]);
        const Codes codes(call.runtime_code, call.caller_code);
        CHECK((result == is_missing(value) && same(call.y[1], value) && codes == after));
        CHECK((std::equal(derivatives.begin(), derivatives.end(), &call.dy[1], same) &&
               call.dy_untouched(listed + 1)));
    }

    TEST_CASE("derivatives are the exact partials")
    {
        check_derivatives("Logistic", {1, 5, 2, 3}, {0, 1, 2, 3});
        check_derivatives("Logistic5", {1, 5, 2, 3, 0.6}, {1, 2, 3});
        check_derivatives("SLogistic1", {3, 2, 1.5}, {0, 2, 3});
        check_derivatives("SLogistic2", {0.5, 4, 1.5}, {-1, 0, 3});
        check_derivatives("SLogistic3", {4, 7, 1.5}, {-1, 0, 2});
        check_derivatives("Slogistic4", {1, 5, 2, 1.5}, {0, 2, 3});
    }

    TEST_CASE("logistic in a power: domains and error variables that differ between the steps")
    {
        check("Logistic", {1, 5, -2, 1}, -2, V | D, {0, 0}, 3, {0, 0});
        check("Logistic", {1, 5, -2, 1}, -2, D | E, {12, 33}, M, {12, 0}, {M, M, M, M});
        check("Logistic", {1, 5, 2, 1}, 0, D, {0, 0}, 1, {0, 0}, {1, 0, -0.0, 0.0});
        check("Logistic", {1, 5, 2, 1}, 2, V | E, {34, 33}, 5, {0, 33});
        check("Logistic", {1, 5, 2, 1}, 2, D | E, {33, 12}, M, {33, 0}, {M, M, M, M});
        check("Logistic", {1, 5, 2, 1}, 2, D | E, {0, 34}, M, {0, 0}, {0.5, 0.5, -0.5, M});
        check("Logistic5", {1, 5, 2, 2.5, 0.6}, -1, V | D, {0, 34}, M, {0, 34});
        check("Logistic5", {1, 5, 2, 2.5, 0.6}, -1, D, {0, 34}, M, {0, 34}, {NAN, NAN, NAN, NAN, NAN});
    }

    TEST_CASE("logistic growth: saturation is looked for in errno alone, a NaN is out of some domains only")
    {
        check("SLogistic1", {3, 2, 1}, 2, D | E, {34, 33}, 0, {0, 33}, {0, 0, 0});
        check("SLogistic1", {NAN, 2, 1}, 1, V, {0, 0}, NAN, {0, 0});
        check("SLogistic1", {0, 2, 1}, 1, D | E, {12, 34}, M, {12, 0});
        check("SLogistic2", {1, 4, 1}, -1000, V | D, {0, 33}, 0, {0, 33});
        check("SLogistic2", {1, 4, 1}, -1000, D, {0, 0}, 0, {34, 0}, {NAN, NAN, NAN});
        check("SLogistic2", {1, 4, NAN}, 1, D | E, {12, 33}, M, {12, 0}, {M, M, M});
        check("SLogistic3", {4, NAN, 1}, 1, D, {33, 12}, M, {0, 12}, {M, M, M});
        check("Slogistic4", {1, 5, 2, 1}, 2, V | D, {33, 34}, 3, {33, 34});
        check("Slogistic4", {1, 5, 2, 1}, -1000, D | E, {0, 34}, 5, {0, 34}, {0, 1, 0, 0});
    }
}
