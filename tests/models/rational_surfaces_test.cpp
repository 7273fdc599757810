#include <cmath>

#include "tests/support/check_surface.h"

using namespace curvebank::test;

TEST_SUITE("rational surfaces")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("without a denominator: the numerator's own powers, and ten parameters a term without an offset")
    {
        check_surface("Rational2D", {1, 2, 3, 4, 5, 0, 0, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 2, 3, V, {0, 0},
                      0, {0, 0}, {191, 185, 6});
        check_surface("RationalTaylor", {1, 2, 3, 4, 5, 0, 0, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0, 0, 0}, 2, 3, V, {34, 0},
                      0, {34, 0}, {80, 80});
    }

    TEST_CASE("a denominator of 0 marks x[2] and keeps the earlier terms, a NaN does not")
    {
        for (const std::string name : {"Rational2D", "RationalTaylor"}) {
            check_surface(name, {5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, -0.5, 0, 0, 0, 0}, 2, 3, V | D | E,
                          {34, 12}, 1, {34, 0}, {5, 5});
            check_surface(name, {1, 0, 0, 0, 0, -0.5, 0, 0, 0, 0}, 2, 3, D, {33, 12}, 1, {0, 12}, {0});
            check_surface(name, {1, 0, 0, 0, 0, -0.5, 0, 0, 0, 0}, 2, NAN, V, {33, 0}, 0, {33, 0}, {NAN, NAN});
        }
    }

    TEST_CASE("at X = 0 the derivatives that are divided by X: not finite in one, a failure in the other")
    {
        check_surface("Rational2D", {1, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0, 2, D, {0, 0}, 0, {0, 0}, {1, 1},
                      {1, 0, 2, 4, 8, 0, 0, 0, NAN, NAN});
        check_surface("RationalTaylor", {1, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0, 2, V | D, {0, 0}, 1, {0, 0}, {0, 1},
                      {1, 0, 2, 4, 0, 0, 0});
    }
}
