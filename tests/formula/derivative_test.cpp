// Values and derivatives in double precision and with 50 digits.

#include <algorithm>
#include <cmath>
#include <random>

#include <doctest/doctest.h>

#include "formula/evaluate.h"
#include "tests/formula/formulas.h"

using namespace curvebank::formula;

namespace {

using Digits50 = boost::multiprecision::cpp_bin_float_50;
using Values = std::map<std::string, double>;

double derivative(const char *text, const char *name, const Values &values)
{
    return evaluate(Formula::parse(text).with_derivatives({name})[1], values);
}

/// Central differences of the sixth order: with steps of 1e-10 exact to more than 30 digits.
template <typename Function>
Digits50 difference(Function &&value)
{
    const Digits50 step("1e-10");
    const auto odd = [&](int k) -> Digits50 { return value(k * step) - value(-k * step); };
    return (45 * odd(1) - 9 * odd(2) + odd(3)) / (60 * step);
}

}  // namespace

TEST_CASE("derivatives agree with 50-digit differences, and double precision with both")
{
    std::mt19937 random(1);
    for (const std::string &text : curvebank::test::formulas()) {
        CAPTURE(text);
        const Formula formula = Formula::parse(text);
        const std::vector<std::string> names = formula.names();
        const std::vector<Formula> all = formula.with_derivatives(names);
        Evaluator<Digits50> value({formula}, names), exact(all, names);
        Evaluator<double> rounded(all, names);
        for (int repeat = 0; repeat < 8; ++repeat) {
            std::vector<double> point;
            for (size_t i = 0; i < names.size(); ++i)
                point.push_back(0.3 + static_cast<double>(random() % 2048) / 1024);
            std::vector<Digits50> place(point.begin(), point.end()), expected(all.size());
            std::vector<double> found(all.size());
            exact(place, expected);
            rounded(point, found);
            for (size_t i = 0; i < names.size(); ++i) {
                CAPTURE(names[i]);
                const Digits50 differences = difference([&](const Digits50 &step) {
                    std::vector<Digits50> moved = place;
                    moved[i] += step;
                    return value(moved);
                });
                if (isnan(differences)) continue;  // a power of a negative number
                const Digits50 size = abs(differences) + abs(expected[0]) + Digits50(1e-30);
                CHECK(abs(expected[i + 1] - differences) <= 1e-25 * size);
                CHECK(static_cast<double>(abs(found[i + 1] - expected[i + 1]) / size) <= 1e-12);
            }
        }
    }
}

TEST_CASE("a branch that is not in use leaves no trace")
{
    CHECK(derivative("x <= 0 ? 0 : A*(x/a)^k*ln(x)", "k", {{"x", -1}, {"A", 1}, {"a", 2}, {"k", 1.5}}) == 0);
    CHECK(derivative("a + 3*(x > 0 ? sqrt(a*x)/x : 2*a)", "a", {{"x", 0}, {"a", 2}}) == 7);
    CHECK(derivative("max(1 - a, a*sqrt(a - 1))", "a", {{"a", 1}}) == -1);
    CHECK(derivative("(x > 0 ? 1/x : a)*a", "a", {{"x", 0}, {"a", 3}}) == 6);
    CHECK(evaluate<double>(Formula::parse("x > 0 ? gamma(-1)/0 : 5"), {{"x", 0}}) == 5);
}

TEST_CASE("derivatives exist where the value is smooth, at zeros of a base too")
{
    const Values at = {{"x", 0}, {"a", 2}, {"b", 1}, {"c", 2.5}, {"z", 0}};
    CHECK(derivative("a*x^c", "c", at) == 0);
    CHECK(derivative("a*(x - z)^c", "z", at) == 0);
    CHECK(derivative("a*((x - z)/a)^b", "z", at) == -1);
    CHECK(derivative("a*(x*z)^c", "a", at) == 0);
    CHECK(derivative("(x/a)^b", "a", at) == 0);
    CHECK(derivative("(z*a)^2.5", "z", at) == 0);
    CHECK(derivative("z^3 + z^2 + z", "z", at) == 1);
    CHECK(derivative("besseli1(z)", "z", at) == 0.5);
    CHECK(derivative("abs(z) + floor(z) + sign(z)", "z", at) == 0);
}

TEST_CASE("derivatives keep their digits far out")
{
    // 1 - tanh^2 and exp = expm1 + 1 would have none left.
    CHECK(derivative("tanh(a)", "a", {{"a", 30}}) == doctest::Approx(4 * std::exp(-60)).epsilon(1e-14));
    CHECK(derivative("expm1(a)", "a", {{"a", -60}}) == doctest::Approx(std::exp(-60)).epsilon(1e-14));
    CHECK(derivative("erf(a)", "a", {{"a", 10}}) == doctest::Approx(4.197656842867e-44).epsilon(1e-11));
    CHECK(derivative("asin(a)", "a", {{"a", 1 - 0x1p-52}}) ==
          doctest::Approx(0x1p25 * std::sqrt(2)).epsilon(1e-14));
}

TEST_CASE("the derivative of gammap in its first argument has full accuracy")
{
    const Formula formula = Formula::parse("gammap(a, z)");
    const Formula shape = formula.with_derivatives({"a"})[1];
    for (const double a : {1e-3, 0.2, 1.0, 7.0, 100.0, 3000.0})
        for (const double ratio : {1e-3, 0.5, 0.98, 1.02, 1.3, 3.0}) {
            CAPTURE(a);
            const double z = a * ratio;
            const Digits50 differences = difference([&](const Digits50 &step) {
                return evaluate<Digits50>(formula, {{"a", a * (1 + step)}, {"z", z}});
            });
            const Digits50 exact = evaluate<Digits50>(shape, {{"a", a}, {"z", z}});
            if (abs(exact) < 1e-20) continue;  // the differences see 1 - 1
            CHECK(static_cast<double>(abs(a * exact / differences - 1)) <= 1e-15);
            CHECK(static_cast<double>(abs(evaluate<double>(shape, {{"a", a}, {"z", z}}) / exact - 1)) <= 4e-16);
        }
    CHECK(std::isnan(evaluate<double>(shape, {{"a", -1}, {"z", 1}})));
    CHECK(evaluate<double>(shape, {{"a", 2}, {"z", 0}}) == 0);
}

TEST_CASE("second derivatives are derivatives, as far as there are functions for them")
{
    const auto second = [](const char *text, const char *name) {
        return Formula::parse(text).with_derivatives({name})[1].with_derivatives({name})[1];
    };
    CHECK(evaluate<double>(second("a^x*lgamma(a)", "a"), {{"a", 1}, {"x", 1}}) ==
          doctest::Approx(-2 * 0.57721566490153286 + 1.6449340668482264).epsilon(1e-14));
    CHECK_THROWS_AS(second("digamma(a)", "a"), FormulaError);
}

TEST_CASE("a name without a value is an error")
{
    CHECK_THROWS_WITH_AS(evaluate<double>(Formula::parse("a + b"), {{"a", 1}}), "\"b\" has no value", FormulaError);
    CHECK(evaluate<long double>(Formula::parse("0.1"), {}) == 0.1L);
}
