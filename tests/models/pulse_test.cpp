#include <cmath>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("pulse")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("a pulse is flat before its start; there, only baseline and amplitude have derivatives")
    {
        check_call("Pulse1", {2, 3, 1, 1, 1}, 2, V, {34, 33}, 0, {34, 33});
        check_call("Pulse", {5, 2, 3, 1, 1, 1}, 2, V, {34, 33}, M, {0, 33});
        Call rising("Pulse1", {2, 3, 1, 1, 1}, {2}), based("Pulse", {5, 2, 3, 1, 1, 1}, {2});
        CHECK((rising.run(V | D, 12) == 1 && rising.y[1] == 0 && rising.dy[2] == 0 && rising.runtime_code == 12));
        for (const size_t i : {1, 3, 4, 5}) CHECK(is_missing(rising.dy[i]));
        CHECK((based.run(D | E, 33, 12) == 1 && based.y[1] == 5 && based.dy[3] == 0 && based.caller_code == 12));
        for (const size_t i : {2, 4, 5, 6}) CHECK(is_missing(based.dy[i]));
        CHECK((based.run(EVAL_QUERY | EVAL_INIT | V) == QUERY_REPLY && based.dy[0] != untouched));
    }

    TEST_CASE("an amplitude of 0 needs nothing else for a value; NaN passes in Pulse alone; stale codes fail")
    {
        check_call("Pulse1", {2, 0, 0, 1, 0}, 3, V, {34, 33}, 0, {34, 33});
        check_call("Pulse1", {2, 0, 0, 1, 0}, 3, V | D | E, {34, 33}, M, {34, 0}, {M, M, M, M, M});
        check_call("Pulse1", {2, 1, NAN, 1, 1}, 1, D, {34, 33}, M, {0, 33}, {M, M, M, M, M});
        check_call("Pulse", {5, 2, 1, NAN, 1, 1}, 1, V | D, {0, 0}, 5, {0, 0}, {1, 0, 0, 0, 0, 0});
        check_call("Pulse", {5, 2, 1, 1, 1, 0}, 1, D | E, {12, 33}, M, {12, 0}, {M, M, M, M, M, M});
        check_call("Pulse", {5, NAN, 1, 1, 1, 1}, 1, V, {34, 0}, 5, {34, 0});
        check_call("Pulse", {5, NAN, 1, 1, 1, 1}, 1, D, {0, 0}, NAN, {0, 0}, {1, NAN, NAN, NAN, NAN, NAN});
        check_call("Pulse1", {2, 1, 1, 1, 1}, 3, D | E, {1, 33}, M, {1, 0}, {M, M, M, M, M});
        check_call("Pulse", {5, 2, 1, 1, 1, 1}, 3, D | E, {34, 0}, M, {34, 0}, {1, M, M, M, M, M});
    }
}
