#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("rheology")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("exact partials; refused points: a derivative call of Herschel at 0 alone clears the error variable")
    {
        check_call("Bingham", {2, 0.5}, -0.0, V | D | E, {34, 33}, M, {34, 33}, {1, M});
        check_call("Herschel", {2, 0.5, -1}, 0, V | D | E, {12, 33}, M, {34, 0}, {1, M, M});
        check_call("Cross", {10, 0.5, -1, 1}, 1, V | D | E, {34, 33}, M, {34, 33});
        check_call("Carreau", {10, 0.5, -1, 0, 2}, 1, V | D | E, {34, 33}, M, {34, 33}, {M, M, M, M, M});
        for (const std::string name : {"MYEGA", "VFT"})
            check_call(name, {1, 2, 0}, -0.0, D, {33, 34}, M, {33, 34}, {M, M, M});
    }

    TEST_CASE("what is not finite is marked but in VFT, the call succeeds, and the last code stays")
    {
        for (const std::string name : {"Cross", "Carreau"}) {
            Call call(name, {10, 0.5, -1, 0.5, 2}, {1});
            CHECK((call.run(V | D | E, 0, 34) == 0 && is_missing(call.y[1]) && std::isnan(call.dy[1])));
            CHECK((call.run(0) == 0 && call.nothing_written() && call.runtime_code == 33));
        }
        Call overflow("Carreau", {10, 0.5, -1, 2, 1000}, {10});  // X·t < 0: the last power outdoes the logarithm
        CHECK((overflow.run(V | D) == 0 && is_missing(overflow.y[1]) && overflow.runtime_code == 34));
        check_call("VFT", {309, 0, 1}, 2, V | D | E, {0, 33}, INFINITY, {34, 33}, {INFINITY, INFINITY, NAN});
    }
}
