// Printed formulas, what they are linear in, and replaced names.

#include <doctest/doctest.h>

#include "formula/formula.h"
#include "tests/formula/formulas.h"

using namespace curvebank::formula;

namespace {

std::string latex(const char *text)
{
    return Formula::parse(text).latex();
}

/// Tags that close in order, and no bare & or <.
bool well_formed(const std::string &xml)
{
    std::vector<std::string> open;
    for (size_t i = 0; i < xml.size(); ++i) {
        if (xml[i] == '&' && xml.find(';', i) > i + 8) return false;
        if (xml[i] != '<') continue;
        const size_t end = xml.find('>', i);
        if (end == std::string::npos) return false;
        const std::string tag = xml.substr(i + 1, end - i - 1), name = tag.substr(0, tag.find(' '));
        i = end;
        if (name[0] != '/') {
            open.push_back(name);
        } else {
            if (open.empty() || '/' + open.back() != name) return false;
            open.pop_back();
        }
    }
    return open.empty();
}

}  // namespace

TEST_CASE("every formula prints to a text that reads as the same tree, and to valid MathML")
{
    for (const std::string &text : curvebank::test::formulas()) {
        const Formula formula = Formula::parse(text);
        const Formula again = Formula::parse(formula.text());
        CHECK_MESSAGE((again.graph().nodes() == formula.graph().nodes() && again.text() == formula.text()), text);
        CHECK_MESSAGE(well_formed(formula.mathml()), formula.mathml());
        CHECK(formula.latex().find('$') == std::string::npos);
    }
    // Derivatives are no text that a person typed, but read as well.
    for (const Formula &formula : Formula::parse("a*(x/b)^c + min(a, x, b)").with_derivatives({"a", "b", "c"}))
        CHECK(Formula::parse(formula.text()).text() == formula.text());
}

TEST_CASE("brackets stand where they are needed")
{
    for (const char *text : {"a - (b - c) - d", "a*(b/c)/d", "(-a)^-b^c", "(a^b)^(c + d)", "-(a*b)", "-a*b",
                             "a - -b", "(a ? b : c) + (a < b)", "not (a and b) or c", "(a < b) < c", "min(a, b, c)",
                             "min(a, min(b, c))", "1.50e-3*x", "(a ? b : c) ? d : e"})
        CHECK(Formula::parse(text).text() == text);
}

TEST_CASE("LaTeX and MathML have fractions, powers, Greek letters and subscripts")
{
    CHECK(latex("y0 + A*exp(-(x - xc)^2/tau1)") ==
          "y_0 + A \\, \\exp\\left(\\frac{-\\left(x - x_c\\right)^{2}}{\\tau_1}\\right)");
    CHECK(latex("Vmax*x/(k_cat1 + eta_inf*alpha*Kd12)") ==
          "\\frac{V_{\\mathrm{max}} \\, x}{k_{\\mathrm{cat1}} + \\eta_{\\mathrm{inf}} \\, \\alpha \\, K_{d12}}");
    CHECK(latex("x*2^0.5 + 2*bottom^-a*1.5e-05*1e3") ==
          "x \\cdot 2^{0.5} + 2 \\, \\mathrm{bottom}^{-a} \\cdot 1.5 \\cdot 10^{-5} \\cdot 10^{3}");
    CHECK(latex("x < 0 ? sqrt(x) : abs(pi)") ==
          "\\begin{cases} \\sqrt{x} & \\text{if } x < 0 \\\\ \\left|\\pi\\right| & \\text{otherwise} \\end{cases}");
    CHECK(
        Formula::parse("-x_1/sigma").mathml() ==
        "<math "
        "xmlns=\"http://www.w3.org/1998/Math/MathML\"><mfrac><mrow><mo>\u2212</mo><msub><mi>x</mi><mrow><mn>1</mn>"
        "</mrow></msub></mrow><mrow><mi>\u03c3</mi></mrow></mfrac></math>");
}

TEST_CASE("shared parts written out may be too long to print")
{
    Formula formula = Formula::parse("x*x");
    for (int i = 0; i < 5; ++i) formula = formula.substitute({{"x", formula}});
    CHECK_THROWS_AS(formula.text(), std::length_error);
    CHECK(formula.with_derivatives({"x"}).size() == 2);
}

TEST_CASE("names are replaced all at once")
{
    const Formula swapped =
        Formula::parse("a - b*a").substitute({{"a", Formula::parse("b + 1")}, {"b", Formula::parse("-a")}});
    CHECK(swapped.text() == "b + 1 - -a*(b + 1)");
    CHECK((swapped.names() == std::vector<std::string>{"b", "a"}));
}

TEST_CASE("what a formula is linear in follows from its tree")
{
    using Names = std::vector<std::string>;
    const auto linear = [](const char *text, const Names &names) { return Formula::parse(text).linear_in(names); };
    CHECK((linear("y0 + A*exp(-x/t)", {"t", "y0", "A"}) == Names{"y0", "A"}));
    CHECK((linear("A*w*x + b", {"A", "w", "b"}) == Names{"A", "b"}));
    CHECK((linear("A*w*x + b", {"w", "A", "b"}) == Names{"w", "b"}));
    CHECK((linear("x < c ? a*x : -(b/2 - a)", {"a", "b", "c"}) == Names{"a", "b"}));
    CHECK((linear("(a + b)/(c + d) + abs(e)", {"a", "b", "c", "d", "e", "f"}) == Names{"a", "b", "f"}));

    CHECK(Formula::parse("a + b*x + (x > c ? d*sin(x) : 0)").is_linear_in({"a", "b", "d"}));
    CHECK(!Formula::parse("a + b*x + (x > c ? d*sin(x) : 1)").is_linear_in({"a", "b", "d"}));
    CHECK(!Formula::parse("a + x").is_linear_in({"a"}));
    CHECK(!Formula::parse("a*b").is_linear_in({"a", "b"}));
}
