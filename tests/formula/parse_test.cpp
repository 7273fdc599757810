// The language, its errors and its limits.

#include <doctest/doctest.h>

#include "formula/formula.h"

using namespace curvebank::formula;

namespace {

std::string error(const std::string &text)
{
    try {
        Formula::parse(text);
    } catch (const FormulaError &failure) {
        return failure.what();
    }
    return "";
}

std::string repeated(const std::string &text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

bool same(const std::string &a, const std::string &b)
{
    return Formula::parse(a).graph().nodes() == Formula::parse(b).graph().nodes();
}

}  // namespace

TEST_CASE("operators bind as in mathematics")
{
    const std::pair<std::string, std::string> pairs[] = {
        {"-x^2", "-(x^2)"},
        {"2^3^2", "2^(3^2)"},
        {"2^-x^2", "2^(-(x^2))"},
        {"x**-y*z", "(x^(-y))*z"},
        {"-x*y", "(-x)*y"},
        {"a - b - c + d", "((a - b) - c) + d"},
        {"a/b*c/d", "((a/b)*c)/d"},
        {"a + b*c^d", "a + (b*(c^d))"},
        {"+x - +y", "x - y"},
        {"a or b and not c < d + e", "a or (b and (not (c < (d + e))))"},
        {"a || b && c", "a or (b and c)"},
        {"a < b ? c : d ? e : f", "(a < b) ? c : (d ? e : f)"},
        {"a ? b ? c : d : e", "a ? (b ? c : d) : e"},
        {"log(x) + min(a, b, c)", "ln(x) + min(min(a, b), c)"},
        {" x\t*\ny ", "x*y"},
    };
    for (const auto &[text, meaning] : pairs) CHECK_MESSAGE(same(text, meaning), text);
}

TEST_CASE("a function's name is one only before a bracket, and names keep the order of the text")
{
    const Formula formula = Formula::parse("gamma*gamma(e)+exp+_1*notx+Pi+pi-e1*1e1+gamma");
    CHECK((formula.names() == std::vector<std::string>{"gamma", "e", "exp", "_1", "notx", "Pi", "e1"}));
    for (const char *number : {"1", ".5", "1.", "1e-3", "1.5E+300", "00012"}) CHECK(error(number) == "");
}

TEST_CASE("an error shows the column, what was expected and the place")
{
    CHECK(error("a*exp(-)") ==
          "column 8: expected a number, a name or \"(\", found \")\"\n"
          "    a*exp(-)\n"
          "           ^");
    CHECK(error("x \u2212 1") ==
          "column 3: expected an operator or the end, found \"\u2212\" (a minus sign is written -)\n"
          "    x \u2212 1\n"
          "      ^");
    CHECK(error(repeated("a+b*", 40) + "2x+" + repeated("c-d+", 40)) ==
          "column 162: a letter after a number (a product needs its *, and an exponent is written 1e-3)\n"
          "    ...+b*a+b*a+b*a+b*a+b*a+b*a+b*a+b*a+b*2x+c-d+c-d+c-d+c-d+c-d+c-d+c-d+c-d+c-...\n"
          "                                           ^");

    const std::pair<std::string, std::string> cases[] = {
        {"", "column 1: expected a number, a name or \"(\", found the end"},
        {"  ", "column 3: expected a number"},
        {"a + ", "column 5: expected a number"},
        {"(a", "column 3: expected an operator or \")\", found the end"},
        {"a)", "column 2: expected an operator or the end"},
        {"f(a", "column 1: there is no function \"f\""},
        {"Exp(a)", "column 1: there is no function \"Exp\""},
        {"exp(a", "column 6: expected an operator, \",\" or \")\""},
        {"exp(a,)", "column 7: expected a number"},
        {"exp()", "column 5: expected a number"},
        {"b*exp(a, b)", "column 3: \"exp\" takes 1 argument, not 2"},
        {"max(a)", "column 1: \"max\" takes 2 or more arguments, not 1"},
        {"a ? b", "column 6: expected an operator or \":\""},
        {"a < b < c", "column 7: comparisons cannot be chained"},
        {"y = x", "column 3: expected an operator or the end, found \"=\" (equality is written ==)"},
        {"1.08D1", "column 5: a letter after a number"},
        {"1..2", "column 3: expected an operator or the end, found \".2\""},
        {"1e999", "column 1: a number beyond the range of double precision"},
        {"0." + repeated("1", 2000), "column 1: a number of more than 1000 characters"},
        {"a and or b", "column 7: expected a number, a name or \"(\", found \"or\""},
        {std::string("a\0b", 3), "column 2: expected an operator or the end, found the byte 0x00"},
        {"a*\xff", "column 3: expected a number, a name or \"(\", found the byte 0xff"},
    };
    for (const auto &[text, start] : cases) CHECK_MESSAGE(error(text).starts_with(start), error(text));
}

TEST_CASE("nesting has a limit, length has none")
{
    const std::pair<std::string, std::string> brackets[] = {
        {"(", ")"}, {"-", ""}, {"2^", ""}, {"not ", ""}, {"exp(", ")"}, {"max(1, ", ")"}, {"x < 1 ? 2 : ", ""}};
    for (const auto &[open, close] : brackets) {
        CAPTURE(open);
        CHECK(error(repeated(open, Formula::deepest) + "x" + repeated(close, Formula::deepest)) == "");
        const std::string deep = error(repeated(open, 100'000) + "x" + repeated(close, 100'000));
        CHECK_MESSAGE(deep.find("nested deeper than 300 levels") != std::string::npos, deep);
    }
    for (const char *sign : {"+", "-", "*", "/"}) {
        std::string text = "x";
        for (int i = 1; i < 100'000; ++i) text += sign + ("a" + std::to_string(i % 1000));
        const Formula chain = Formula::parse(text);
        CHECK(chain.names().size() == 1001);
        CHECK(Formula::parse(chain.text()).graph().nodes() == chain.graph().nodes());
        CHECK(chain.latex().size() > text.size());
        CHECK(chain.with_derivatives({"x", "a1"}).size() == 3);
    }
    CHECK(error("min(0" + repeated(", x", 100'000) + ")") == "");
}

TEST_CASE("an equation has a name on its left")
{
    const Equation equation = Equation::parse(" y = a == b");
    CHECK((equation.left == "y" && equation.right.text() == "a == b"));
    CHECK((Equation::parse("y == b").left == "" && Equation::parse("x + 1").left == ""));
    try {
        Equation::parse("y = a*");
        FAIL("no error");
    } catch (const FormulaError &failure) {
        CHECK((failure.column() == 7 && std::string(failure.what()).ends_with("    y = a*\n          ^")));
    }
}
