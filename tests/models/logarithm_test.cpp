#include <cmath>

#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("logarithms")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("a number without logarithm: whether the error variable is cleared and what is marked")
    {
        check_call("Logarithm", {1}, 1, V | D | E, {12, 34}, M, {12, 34});
        check_call("Logarithm", {1}, 1, D, {34, 12}, M, {34, 12}, {M});
        check_call("Logarithm", {NAN}, 2, V, {0, 0}, NAN, {0, 0});
        check_call("LogarithmEVP", {1, 0}, 2, D | E, {12, 34}, M, {12, 34}, {M, M});
        check_call("Log2P1", {1, 3}, 1, D, {33, 12}, M, {33, 12}, {M, M});
        check_call("Log2P1EVP", {NAN, 0, 3}, 2, V | D, {12, 33}, M, {0, 33});
        check_call("Log2P1EVP", {NAN, 0, 3}, 2, D, {0, 0}, NAN, {0, 0}, {NAN, NAN, NAN});
        check_call("Log2P1EVP", {1, 0, 3}, -5, D | E, {33, 12}, M, {33, 0});
        check_call("Log2P2", {0, 1}, 0, V | D, {33, 12}, M, {0, 12});
        check_call("Log2P2", {0, 1}, 0, D, {33, 12}, M, {33, 12}, {M, M});
        check_call("Log2P2EVP", {1, 0, 1, 0}, 2, D | E, {34, 33}, M, {34, 33});
        check_call("Log2P2EVP", {0, 0, 1, -400}, 2, D, {12, 33}, M, {12, 33}, {M, M, M, M});
        check_call("Log3P1", {5, 2, 1}, -1, D | E, {34, 33}, M, {34, 33}, {M, M, M});
    }

    TEST_CASE("a code after the logarithm: which variable is cleared and which derivatives stay")
    {
        check_call("Logarithm", {1}, 2, V | D | E, {34, 33}, M, {34, 0});
        check_call("Logarithm", {1}, 2, D, {33, 34}, M, {0, 34}, {-1});
        check_call("LogarithmEVP", {1, -400}, 2, D, {33, 34}, M, {0, 34}, {-1, 0});
        check_call("Log2P1", {1, 3}, 2, D | E, {33, 34}, M, {33, 0}, {M, M});
        check_call("Log2P2", {0, 1}, 1, D | E, {34, 33}, M, {34, 0}, {1, 1});
        check_call("Log3P1", {5, 2, 1}, 0, V | D | E, {34, 33}, M, {34, 0});
        check_call("Log3P1", {5, 2, 1}, 0, D | E, {34, 33}, M, {0, 33}, {M, M, M});
    }

    TEST_CASE("exponentials: overflow of the shift is a value, that of a point is missing")
    {
        check_call("LogarithmEVP", {1, 710}, 2, V | D | E, {0, 33}, 710, {0, 33});
        check_call("LogarithmEVP", {5, 2}, 2, D | E, {34, 33}, 2, {0, 33}, {0, 1});
        check_call("LogarithmEVP", {1, -400}, 2, D, {0, 0}, 0, {0, 0}, {-1, 0});
        check_call("Log2P1EVP", {1, 710, 1}, 2, D, {0, 12}, M, {0, 12});
        check_call("Log2P2EVP", {0, 710, 2, 0}, 1, D, {0, 12}, M, {0, 12});
        check_call("Log2P2EVP", {0, 0, 2, 710}, 1, V | D, {0, 12}, M, {0, 12});
        check_call("Log2P2EVP", {0, 0, 2, 0}, 1, D, {0, 0}, 0, {0, 0}, {-0.5, 1, 0.5, 1});
    }
}
