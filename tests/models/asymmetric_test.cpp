#include <doctest/doctest.h>

#include "tests/support/check_call.h"

using namespace curvebank::test;

TEST_SUITE("asymmetric")
{
    constexpr int V = EVAL_VALUE, D = EVAL_DERIVS, E = EVAL_USE_ERRPTR, I = EVAL_INIT;
    constexpr double M = MISSING_VALUE;

    TEST_CASE("peaks of a value only: counts, skipped and failing peaks, what the flags answer")
    {
        Call weibull("Weibull3", {1, 2, 3, 1.5, 1, 9, 0, 0, 0, 2, 5, 1.5, 1}, {2});
        CHECK((weibull.run(V | D) == 1 && weibull.y[1] == 9 && weibull.y[2] == 3 && weibull.y[4] == 5));
        Call sigmoids("Asym2Sig", {1, 2, 8, 0, 1, 1, 2, 4, 0, 0, 1}, {2});
        sigmoids.nParams = 7;
        CHECK((sigmoids.run(V, 0, 34) == 1 && is_missing(sigmoids.y[1]) && sigmoids.y[2] == 2));
        for (Call *call : {&weibull, &sigmoids})
            CHECK((call->run(D | E, 34, 33) == 1 && call->caller_code == 33 && call->nothing_written()));
        check_call("Weibull3", {1, 2, 3, 1.5, 2.5}, 0, V, {0, 34}, M, {0, 34});  // below the onset
        check_call("Asym2Sig", {1, 2, 8, 0, 1, 1}, 2, V | D | E, {34, 12}, 3, {34, 12});
    }

    TEST_CASE("split Gaussian: stale codes come before all else, and only the side in use has a derivative")
    {
        const double e = std::exp(-0.5);
        check_call("asymptgauss", {0, 1, 1, 2, 1}, 0, D, {0, 0}, e, {0, 0}, {1, -e, e, untouched, e});
        check_call("asymptgauss", {0, 1, 2, 1, 1}, 2, D, {0, 0}, e, {0, 0}, {1, e, untouched, e, e});
        check_call("asymptgauss", {1, 2, 1, 1, 3}, 2, I | E, {34, 33}, M, {34, 0});
        check_call("asymptgauss", {1, 2, 0, 1, 3}, 2, V | D, {0, 34}, 4, {0, 34});
        check_call("asymptgauss", {1, 2, 0, 1, 3}, 2, D | E, {34, 12}, M, {34, 0}, {M, M, M, M, M});
    }
}
