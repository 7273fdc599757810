#include <cmath>

#include "tests/support/check_surface.h"

using namespace curvebank::test;

TEST_SUITE("linear surfaces")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("terms are counted in nParams, with the offset or without")
    {
        check_surface("Parabola2D", {1, 2, 2, 2, 2, 1, 1, 1}, 1, 1, V, {0, 0}, 0, {0, 0}, {9, 8});
        check_surface("Poly2D", {1, 2, 2, 2, 2, 2, 1, 1, 1, 1}, 1, 1, V, {0, 0}, 0, {0, 0}, {11, 10});
        check_surface("Cosine", {1, 2, 2, 2, 2, 2, 1, 1, 1, 1}, 0, 0, V, {0, 0}, 0, {0, 0}, {15, 10, 4});
        check_surface("Chebyshev2D", {1, 2, 2, 2, 2, 2, 1, 1, 1, 1}, 1, 1, V, {0, 0}, 0, {0, 0}, {15, 10, 4});
        check_surface("Polynomial2D", {1, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 1, 1, 1, 1, 1, 1, 1, 1, 1}, 1, 1, V, {0, 0},
                      0, {0, 0}, {30, 20, 9});
    }

    TEST_CASE("a share is summed in parameter order of finished basis values, in both steps")
    {
        // Here any other grouping rounds differently.
        const double X = 0.8, Y = 1.3, sum = 0.3 * X + 0.6 * Y + 1.4 * (X * X) + 0.2 * (Y * Y) + 1.6 * (X * Y);
        check_surface("Poly2D", {0, 0.3, 0.6, 1.4, 0.2, 1.6}, X, Y, V, {0, 0}, 0, {0, 0}, {sum, sum});
        check_surface("Poly2D", {0, 0.3, 0.6, 1.4, 0.2, 1.6}, X, Y, D, {0, 0}, 0, {0, 0}, {sum, sum},
                      {1, X, Y, X * X, Y * Y, X * Y});
        check_surface("Plane", {0.1, 0.2, 0.3}, X, Y, D, {34, 0}, 0, {34, 0}, {0.2 * X + 0.1 + 0.3 * Y}, {1, X, Y});
    }

    TEST_CASE("error codes count in the value step of the paraboloids, after a term; no parameter fails both steps")
    {
        check_surface("Poly2D", {3, 1, 1, 1, 1, 1}, 1, 2, V | D | E, {34, 33}, 1, {34, 0}, {3});
        check_surface("Parabola2D", {3, 1, 1, 1, 1}, 1, 2, D, {33, 0}, 0, {33, 0}, {11, 8}, {1, 1, 2, 1, 4});
        check_surface("Parabola2D", {3}, 1, 2, V, {34, 0}, 0, {34, 0}, {3});
        check_surface("Parabola2D", {}, 1, 2, V, {34, 33}, 1, {0, 33}, {});
        check_surface("Poly2D", {}, 1, 2, D, {34, 33}, 1, {0, 33}, {});
    }

    TEST_CASE("powers and cosines out of range succeed, and are called for terms only")
    {
        check_surface("Polynomial2D", {3, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0}, 1e70, 1, V, {0, 0}, 0, {34, 0},
                      {INFINITY, INFINITY});
        check_surface("Cosine", {3, 1, 1, 1, 1, 1}, INFINITY, 1, V, {0, 0}, 0, {33, 0}, {NAN, NAN});
        check_surface("Cosine", {3, 1}, INFINITY, 1, D, {0, 0}, 0, {0, 0}, {3}, {1});
    }

    TEST_CASE("Chebyshev2D outside its square: the missing value in a success, and a code even without terms")
    {
        check_surface("Chebyshev2D", {3, 1, 1, 1, 1, 1}, 1, 1, V, {0, 0}, 0, {0, 0}, {8, 5});
        check_surface("Chebyshev2D", {3, 1, 1, 1, 1, 1}, 2, 1, V, {0, 0}, 0, {33, 0}, {MISSING_VALUE, NAN});
        check_surface("Chebyshev2D", {3, 1}, 1, 2, D | E, {0, 0}, 0, {33, 0}, {3}, {1});
        check_surface("Chebyshev2D", {3, 1, 1, 1, 1, 1}, 2, 2, 0, {0, 0}, 0, {0, 0}, {});
    }
}
