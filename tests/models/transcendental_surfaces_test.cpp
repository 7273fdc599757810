#include <cmath>

#include "tests/support/check_surface.h"

using namespace curvebank::test;

TEST_SUITE("transcendental surfaces")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("Fourier2D: an infinite argument or a stale code fails the value step, not the derivative step")
    {
        check_surface("Fourier2D", {3, 1, 1, 1, 1, 2, 2, 1, 1, 1, 1, 0, 2}, 0, 0, V, {0, 33}, 0, {0, 33},
                      {NAN, 2, NAN});
        check_surface("Fourier2D", {3, 1, 1, 1, 1, 2, 2, 1, 1, 1, 1, 0, 2}, 1e-300, 0, V | D, {0, 33}, 1, {0, 33},
                      {5, 2});
        check_surface("Fourier2D", {3, 1, 1, 1, 1, 2, 2}, 0, 0, V | E, {0, 33}, 1, {0, 0}, {3});
        check_surface("Fourier2D", {3, 1, 1, 1, 1, 2, 2}, 0, 0, D | E, {0, 33}, 0, {0, 33}, {5, 2},
                      {1, 1, 0, 1, 0, 0, 0});
        check_surface("Fourier2D", {}, 0, 0, D, {33, 0}, 1, {0, 0}, {});
    }

    TEST_CASE("Exponential2D: tests in both steps, saturation, and dy[1] written by terms only")
    {
        check_surface("Exponential2D", {3, 2, 1, 1, 4, 1, 1}, 0, 0, V | D, {0, 34}, 0, {0, 34}, {9, 2, 4},
                      {1, 1, 0, 0, 1, 0, 0});
        check_surface("Exponential2D", {3, 2, 1, 1}, 0, 0, D | E, {12, 33}, 1, {12, 0}, {3});
        check_surface("Exponential2D", {3, 2, 1, 1}, -301, 0, V, {0, 0}, 0, {0, 0}, {3, 2 * MISSING_VALUE});
        check_surface("Exponential2D", {3, 2}, 0, 0, D, {34, 0}, 0, {34, 0}, {3});
    }

    TEST_CASE("Power2D: the derivative of the exponent of X is that of a negative X, and 0 for the others")
    {
        const double ln2 = std::log(2.0), ln3 = std::log(3.0);
        check_surface("Power2D", {1, 5, 2, 3, 2, 0.5}, -2, 3, V | D, {0, 0}, 0, {0, 0}, {66, 65},
                      {1, 4, 4 * 9.5 * ln2, 9, 18 * ln3 + 27 * ln3, 36});
        check_surface("Power2D", {1, 5, 2, 3, 2, 0.5}, 2, 1, D, {0, 0}, 0, {0, 0}, {26, 25}, {1, 4, 0, 1, 0, 4});
    }

    TEST_CASE("Power2D: whatever is not finite in y[1] becomes missing, and every call succeeds")
    {
        check_surface("Power2D", {1, 5, -1, 3, 2, 0.5}, 0, -2, V, {0, 33}, 0, {34, 33}, {MISSING_VALUE, INFINITY});
        check_surface("Power2D", {1, 5, -1, 3, 2, 0.5}, 0, -2, D, {0, 0}, 0, {33, 0}, {MISSING_VALUE, INFINITY},
                      {1, INFINITY, 0, 4, NAN, INFINITY});  // ln Y comes after the powers
    }
}
