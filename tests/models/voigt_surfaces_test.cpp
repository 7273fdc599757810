#include "tests/support/check_surface.h"

using namespace curvebank::test;

TEST_SUITE("voigt surfaces")
{
    constexpr double U = untouched;
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;
    constexpr std::initializer_list<double> one = {1, 2, 3, 4, 5, 6, 0.25};

    TEST_CASE("heights: skipped and failing peaks leave the derivative of mu alone")
    {
        check_surface("Voigt2D", {1, 0, 3, 0, 5, 0, 1, 2, 3, 4, 5, 6, 1}, 3, 5, V | D, {0, 34}, 0, {0, 34},
                      {3, U, 2}, {1, 0, 0, 0, 0, 0, U, 1, 0, 0, 0, 0, 0});
        check_surface("Voigt2D", {1, 2, 3, -4, 5, 6, 0.25}, 3, 5, V | D, {0, 0}, 1, {0, 0}, {1, 2},
                      {1, M, M, M, M, M, U});
        check_surface("Voigt2D", one, 3, 5, V | E, {34, 33}, 1, {34, 0}, {1});
        check_surface("Voigt2D", one, 3, 5, D | E, {34, 12}, 1, {34, 0}, {1}, {1, M, M, M, M, M, U});
    }

    TEST_CASE("normalised: amplitude 0 ends the call, a stale range error in errno fails it, a new one does not")
    {
        check_surface("Voigt2DMod", {1, 0, 3, -1, 5, 0, 1}, 3, 5, D, {34, 33}, 0, {34, 33}, {}, {U, 0, 0, 0, 0, 0});
        check_surface("Voigt2DMod", {1, 2, 3, 1, 5, 0, 1}, 3, 5, V | E, {12, 33}, 1, {12, 0}, {});
        check_surface("Voigt2DMod", {1, 2, 3, 1, 5, 1, 1}, 3, 5, D | E, {34, 12}, 1, {34, 0}, {},
                      {U, M, M, M, M, M});
        // The square of a distance leaves the range, and the Lorentzian is 0 there.
        check_surface("Voigt2DMod", {1, 2, 0, 1, 5, 1, 1}, 1e200, 5, V, {33, 34}, 0, {34, 34}, {1});
        // The square of a width is 0, and so is the denominator on the centre.
        check_surface("Voigt2DMod", {1, 2, 3, 1e-200, 5, 1, 1}, 3, 5, V, {0, 12}, 1, {0, 12}, {});
        Call call("Voigt2DMod", {1, 3, 2, 1.5, -1, 0.75, 0.4}, {3, 0}), value = call;
        CHECK((call.run(D, 33) + value.run(V) == 0 && call.y[1] == value.y[1] && call.run(E) == 0));
    }
}
