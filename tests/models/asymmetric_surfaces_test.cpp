#include <cmath>

#include "tests/support/check_surface.h"

using namespace curvebank::test;

TEST_SUITE("asymmetric surfaces")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr std::initializer_list<double> ridges = {1, 2, 3, 4, 5, 6, 7, 8};
    constexpr std::initializer_list<double> one = {1, 2, 3, 4, 5, 6};

    TEST_CASE("extreme values: a saturated side, failures that mark no derivative, a peak beyond nParams")
    {
        check_surface("Extreme2D", one, 5, 2, V | D, {0, 34}, 0, {0, 34}, {21, 20}, {1, 2, 4, 1, 0, 0});
        check_surface("Extreme2D", {1, 2, 3, 4, 5, 0.01}, -1, 1, V, {0, 0}, 0, {0, 0}, {6, 5});
        check_surface("Extreme2D", one, 5, 2, D, {34, 12}, 1, {0, 12}, {1}, {1});
        check_surface("Extreme2D", {1, 2, 3, 4}, 5, 2, V | D | E, {12, 34}, 0, {12, 34}, {1}, {1});
        Call call("Extreme2D", {1, 2, 3, 4, 5}, {5, 2});
        call.p[6] = 6;
        CHECK((call.run(V) == 0 && call.y[1] == 21));
    }

    TEST_CASE("value only: a derivative call ends with the offset, and asks the error variable nothing")
    {
        check_surface("GaussLog", one, 3, 5, V, {12, 34}, 0, {12, 34}, {3, 2});
        check_surface("GaussLog", one, 3, 5, V | D, {0, 0}, 0, {0, 0}, {1, 2});
        check_surface("GaussLog", one, 3, -5, D, {34, 33}, 0, {34, 33}, {1});
        check_surface("LogisticPeak", {1, 2, 3, 4, 5}, 4, 7, V | E, {34, 0}, 0, {34, 0}, {18, 17});
        check_surface("LogisticPeak", {1, 2, 3, 4, 5}, 4, 7, V | D, {0, 0}, 0, {0, 0}, {1, 17});
        check_surface("LogisticPeak", {1, 2, 3, 4, 5}, 4, 7, V | D, {33, 12}, 1, {0, 12}, {1});
        check_surface("LogNormal2D", ridges, 3, 6, V | D, {0, 0}, 0, {0, 0}, {16, 15});
        check_surface("LogNormal2D", ridges, 3, 6, D, {34, 33}, 0, {34, 33}, {});
    }

    TEST_CASE("logarithms: their codes, with the caller's variable unnoticed, and the share stored before the test")
    {
        check_surface("GaussLog", {1, 2, 3, 4, 5, 6, 2, 3, 4, -5, 6}, 3, 5, V | D, {0, 12}, 1, {0, 12},
                      {3, 2, NAN});
        check_surface("GaussLog", one, 3, 0, V | D, {0, 12}, 1, {0, 12}, {1});
        check_surface("GaussLog", one, 3, NAN, V, {0, 0}, 0, {0, 0}, {NAN, NAN});
        check_surface("LogNormal2D", ridges, 3, -6, V, {0, 12}, 1, {0, 12}, {1});
        check_surface("LogNormal2D", ridges, 0, 6, V | E, {0, 0}, 0, {34, 0}, {6, 5});
    }
}
