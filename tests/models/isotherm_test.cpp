#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

namespace {

/// A model with its number of derivatives at one point.
struct Point {
    std::string name;
    int derivatives;
    std::initializer_list<double> p;
    double x;
};

/// Checks that both steps of that model fail with the stale code in the caller's variable, which then holds the
/// other code, that errno is left alone, and that the derivative step, and it alone, marks all derivatives.
void check_failure(const Point &c, int stale, int after)
{
    CAPTURE(c.name);
    Call call(c.name, c.p, {c.x});
    for (const int flags : {EVAL_VALUE | EVAL_DERIVS, EVAL_DERIVS + 0}) {
        CHECK((call.run(flags | EVAL_USE_ERRPTR, 12, stale) == 1 && is_missing(call.y[1])));
        CHECK((call.runtime_code == 12 && call.caller_code == after));
        CHECK(call.dy_missing_only(1, flags & EVAL_VALUE ? 0 : c.derivatives));
    }
}

}  // namespace

TEST_SUITE("isotherms")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("out of the domain: all derivatives are marked and the error variables left alone")
    {
        const Point cases[] = {
            {"Freundlich", 2, {2, 1}, 0},
            {"FreundlichMod1", 2, {2, 1}, 0},
            {"FreundlichMod1", 2, {2, 0}, 1},
            {"FreundlichEVP", 4, {1, 2, 1, 3}, 1},
            {"FreundlichEVP", 4, {1, -2, 4, 3}, 1},
            {"FreundlichEVP", 4, {1, 2, 4, 0}, 1},
            {"Freundlich3P", 3, {1, 2, 1}, 0},
            {"Freundlich3PEVP1", 4, {0, 3, 1, 1}, 1},
            {"FreundlichEXT", 3, {2, 1, 1}, -1},
            {"Freundlich3PEVP2", 5, {1, 1, 2, -4, 3}, 1},
            {"BET", 2, {2, 3}, 1},
            {"FreundlichEXTEVP", 4, {0, 3, 1, 1}, 1},
            {"BETMod", 2, {1, 1}, 1},
            {"LangmuirEXT1", 3, {5, 1, 1}, 0},
            {"Bradley", 2, {2, 0}, 0.5},
            {"LangmuirEXT2", 3, {1, 1, 1}, 0},
            {"Bradley", 2, {2, 1}, 2},
            {"HarrisEVP", 5, {1, 3, 1, 2, 1}, 2},
        };
        for (const Point &c : cases) check_failure(c, 12, 12);
        check_failure({"Bradley", 2, {2, 1}, NAN}, 12, 12);
        check_failure({"Bradley", 2, {2, NAN}, 0.5}, 12, 12);
        check_call("Freundlich", {2, 1}, NAN, V, {0, 0}, NAN, {0, 0});
    }

    TEST_CASE("a code after a power or logarithm: all derivatives are marked, the variable cleared")
    {
        const Point cases[] = {
            {"Freundlich", 2, {2, 1}, 2},          {"FreundlichMod1", 2, {2, 1}, 2},
            {"FreundlichEVP", 4, {1, 2, 4, 3}, 2}, {"Freundlich3PEVP1", 4, {1, 3, 1, 1}, 2},
            {"FreundlichEXT", 3, {2, 1, 1}, 2},    {"Freundlich3PEVP2", 5, {1, 1, 2, 4, 3}, 2},
            {"Bradley", 2, {2, 1}, 0.5},           {"Freundlich3PMod", 3, {1, 2, 1}, 2},
            {"LangmuirEXT1", 3, {5, 1, 1}, 2},     {"FreundlichEXTEVP", 4, {1, 3, 1, 1}, 2},
            {"HarrisEVP", 5, {1, 3, 4, 1, 1}, 2},
        };
        for (const Point &c : cases) check_failure(c, 33, 0);
        // The later of several powers and logarithms.
        check_call("FreundlichEVP", {1e300, 1, 1e-300, 1}, 1e300, D, {0, 0}, M, {0, 0}, {M, M, M, M});
        check_call("Freundlich3PEVP1", {1e-300, 1, 1, -2}, 1, D, {0, 0}, M, {0, 0}, {M, M, M, M});
        check_call("Freundlich3PEVP2", {2, 1, 1, 4, 3}, 2, D, {0, 0}, M, {0, 0}, {M, M, M, M, M});
        check_call("FreundlichEXT", {1, 1e5, 0}, 10, D, {0, 0}, M, {0, 0}, {M, M, M});
        check_call("HarrisEVP", {1, 3, -4, 1, 0.5}, 2, D, {0, 0}, M, {0, 0}, {M, M, M, M, M});
    }

    TEST_CASE("zero divisors that clear the variable as a failed power does")
    {
        check_failure({"Freundlich3PMod", 3, {1, 2, 0}, 2}, 12, 0);
        check_failure({"LangmuirEXT2", 3, {1, -1, 1}, 2}, 12, 0);
        check_failure({"HarrisEVP", 5, {1, 0, 2, 0, 1}, 1}, 12, 0);
        Call vanished("FreundlichEXTEVP", {1e-200, 1, 2, 0}, {1});
        CHECK((vanished.run(V | E, 0, 12) == 1 && is_missing(vanished.y[1]) && vanished.caller_code == 0));
    }

    TEST_CASE("a negative base has a value but no derivatives")
    {
        check_call("Freundlich3PMod", {1, 2, 0.5}, -3, V, {0, 0}, 19, {0, 0});
        check_call("Freundlich3PMod", {1, 2, 0.5}, -3, V | D, {0, 0}, M, {0, 0}, {M, M, M});
        check_call("HarrisEVP", {0, 1, 4, 1, 2}, -4, V, {0, 0}, 1, {0, 0});
        check_call("HarrisEVP", {0, 1, 4, 1, 2}, -4, D, {0, 0}, M, {0, 0}, {M, M, M, M, M});
    }

    TEST_CASE("models that fail in their own way")
    {
        check_call("Freundlich3P", {1, 2, 1}, 2, V | D | E, {12, 33}, M, {12, 0});
        check_call("Freundlich3P", {1, 2, 1}, 2, D | E, {12, 33}, M, {12, 33}, {M, M, M});

        check_call("LangmuirEXT1", {1, 0, 1}, 2, V | D, {0, 0}, 0, {0, 0});
        check_call("LangmuirEXT1", {1, 0, 1}, 2, D, {33, 12}, M, {33, 12}, {M, M, M});
        check_call("LangmuirEXT1", {1, -1, 1}, 2, V | D, {12, 33}, M, {0, 33});
        check_call("LangmuirEXT1", {1, -1, 1}, 2, D, {12, 33}, M, {12, 33}, {M, M, M});

        check_call("LangmuirEXT2", {1, 1, 400}, 10, V | D | E, {0, 33}, 0, {0, 33});
        check_call("LangmuirEXT2", {1, 1, 400}, 10, D | E, {0, 33}, 0, {0, 33}, {0, 0, 0});
        check_call("LangmuirEXT2", {1, 1, 1}, 1, V | D | E, {33, 34}, M, {33, 0});
        check_call("LangmuirEXT2", {1, 1, 1}, 1, D | E, {33, 34}, M, {33, 0}, {M, M, M});

        check_call("Harris", {1, -1, 0}, 3, V | D, {12, 33}, M, {0, 33});
        check_call("Harris", {1, -1, 0}, 3, D, {12, 33}, M, {12, 33});
        check_call("Harris", {1, 1, 0.5}, -3, D, {0, 12}, M, {33, 12});
        Call harris("Harris", {1, 3, 2}, {-1});
        CHECK((harris.run(D, 12, 33) == 1 && harris.y[1] == 0.25 && harris.dy[1] == -0.0625));
        CHECK((harris.dy[2] == -0.0625 && is_missing(harris.dy[3]) && harris.runtime_code == 12));
    }
}
