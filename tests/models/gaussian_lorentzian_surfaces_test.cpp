#include <algorithm>
#include <cmath>

#include "tests/support/check_surface.h"

using namespace curvebank::test;

TEST_SUITE("gaussian lorentzian surfaces")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;
    constexpr std::initializer_list<double> one = {1, 2, 3, 4, 5, 6};

    TEST_CASE("peaks are counted by nParams; turned peaks share the angle and the next amplitude")
    {
        for (const std::string name : {"Gauss2D", "Lorentz2D"}) {
            Call call(name, {1, 3, 2, 1.5, -1, 0.75, -2, 4, 1, 1, 2}, {3, 0});
            CHECK((call.run(V | D) == 0 && call.y[1] == 1 + call.y[2] + call.y[3]));
            call.nParams = 10;
            CHECK((call.run(D) == 0 && call.dy_untouched(7) && call.y[1] == 1 + call.y[2]));
        }
        Call call("Gaussian2D", {1, 3, 2, 1.5, -1, 0.75, 0.5, 4, 1, 1, 2}, {3, 0});
        Call second("Gaussian2D", {0, 0.5, 4, 1, 1, 2, -0.25}, {3, 0});
        call.p[12] = -0.25;
        CHECK((call.run(D) + second.run(V | D) == 0 && call.y[3] == second.y[2]));
        CHECK((std::equal(&second.dy[2], &second.dy[8], &call.dy[7]) && call.dy_untouched(13)));
    }

    TEST_CASE("centre, widths, amplitudes of 0 and stale codes, step by step")
    {
        for (const std::string name : {"Gauss2D", "Lorentz2D"}) {
            check_surface(name, one, 3, 5, D, {33, 34}, 0, {33, 34}, {3, 2}, {1, 1, 0, 0, 0, 0});
            check_surface(name, {1, 0, 3, 0, 5, 0}, 3, 5, V | D, {34, 33}, 0, {34, 33}, {1}, {1, 0, 0, 0, 0, 0});
            check_surface(name, {1, 2, 3, -1, 5, 6}, 3, 5, V, {0, 33}, 0, {0, 33}, {3, 2});
            check_surface(name, {1, 2, 3, -1, 5, 6}, 3, 5, D, {12, 0}, 1, {0, 0}, {1}, {1, M, M, M, M, M});
            check_surface(name, {1, 2, 3, 4, 5, 6, 7, 3, 0, 5, 0}, 3, 5, V, {0, 12}, 1, {0, 12}, {3, 2});
            check_surface(name, one, 3, 5, V, {33, 12}, 1, {0, 12}, {1});
            check_surface(name, one, 3, 5, V | D | E, {34, 12}, 1, {34, 0}, {1, 2}, {1, M, M, M, M, M});
            check_surface(name, {}, 3, 5, D | E, {34, 12}, 1, {34, 0}, {});
        }
    }

    TEST_CASE("turned peaks mark all six derivatives; an infinite angle fails the value step only")
    {
        check_surface("Gaussian2D", {1, 0, 3, 0, 5, 0, 7}, 3, 5, V | D, {0, 0}, 0, {0, 0}, {1},
                      {1, 0, 0, 0, 0, 0, 0});
        check_surface("Gaussian2D", {1, 2, 3, 4, 5, -6, 0}, 3, 5, V | D, {0, 0}, 1, {0, 0}, {1, 2},
                      {1, M, M, M, M, M, M});
        check_surface("Gaussian2D", {1, 2, 3, 4, 5, 6, INFINITY}, 3, 5, V, {0, 12}, 1, {0, 12}, {1});
        check_surface("Gaussian2D", {1, 2, 3, 4, 5, 6, INFINITY}, 3, 5, D, {0, 0}, 0, {33, 0}, {NAN, NAN},
                      {1, NAN, NAN, NAN, NAN, NAN, NAN});
    }
}
