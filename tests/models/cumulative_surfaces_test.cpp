#include <cmath>

#include "tests/support/check_surface.h"

using namespace curvebank::test;

TEST_SUITE("cumulative surfaces")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;

    TEST_CASE("at its centre a product of two sigmoids is a quarter of the amplitude; terms are counted in nParams")
    {
        for (const std::string name : {"GaussCum", "LogisticCum", "DoseResp"}) {
            check_surface(name, {3, 8, 2, 1.5, 5, 0.5, 4, 2, 1.5, 5, 0.5}, 2, 5, V | E, {0, 0}, 0, {0, 0},
                          {6, 2, 1});
            check_surface(name, {3, 8, 2, 1.5, 5, 0.5, 4, 2, 1.5}, 2, 5, V, {0, 0}, 0, {0, 0}, {5, 2});
        }
    }

    TEST_CASE("GaussCum called for derivatives leaves the offset, and never looks at an error variable")
    {
        check_surface("GaussCum", {3, 8, 2, 1, 5, 1}, 2, 5, V | D | E, {34, 33}, 0, {34, 33}, {3, 2});
        check_surface("GaussCum", {3, 8, 2, 1, 5, 1}, 2, 5, D, {34, 33}, 0, {34, 33}, {3});
    }

    TEST_CASE("LogisticCum and ExtremeCum: stale codes fail, saturated exponentials do not")
    {
        check_surface("LogisticCum", {3, 8, 2, 1, 5, 1}, -299, 5, V, {0, 33}, 0, {0, 33}, {7, 4});
        check_surface("LogisticCum", {3, 8, 2, 1, 5, 1}, 2, 5, D, {12, 33}, 0, {12, 33}, {5, 2},
                      {1, 0.25, -1, 0, -1, 0});
        check_surface("LogisticCum", {3, 8, 2, 1, 5, 1}, 2, 5, D | E, {33, 34}, 1, {33, 0}, {3}, {1});
        check_surface("ExtremeCum", {3, 8, 2, 1, 4, 5, 1, 2}, -299, 800, V | D, {0, 33}, 0, {0, 33}, {17, 14});
        check_surface("ExtremeCum", {3, 8, 2, 1, 4, 5, 1, 2}, 0, 0, V, {33, 0}, 1, {0, 0}, {3});
        check_surface("ExtremeCum", {3, 8, 2, 1, 4, 5, 1, 2}, 0, 0, D, {33, 0}, 0, {33, 0}, {});
    }

    TEST_CASE("DoseResp: doses of 0 or less fail, errors of powers and logarithms do not")
    {
        check_surface("DoseResp", {3, 8, 2, 1, 5, 1}, 0, 5, V | D, {12, 33}, 1, {0, 33}, {3});
        check_surface("DoseResp", {3, 8, 2, 1, 5, 1}, 2, -0.0, D | E, {12, 33}, 1, {12, 0}, {3}, {1});
        check_surface("DoseResp", {3, 8, 2, 1, 5, 1}, 2, NAN, V, {34, 0}, 0, {34, 0}, {NAN, NAN});

        // Y/y0 is below 0: its logarithm fails, then its power overflows and has the last word.
        Call order("DoseResp", {3, 8, 1, 1, -1e200, 2}, {1, 1});
        CHECK((order.run(D) == 0 && order.y[2] == 0 && order.runtime_code == ERANGE));
    }
}
