#include <cmath>
#include <limits>

#include <doctest/doctest.h>

#include "frame/evaluation.h"
#include "platform/error_codes.h"
#include "tests/support/call.h"

using namespace curvebank;
using test::is_missing;

TEST_SUITE("contract")
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::nan("");

    TEST_CASE("the constants have the bits that hosts compare with")
    {
        const double missing = MISSING_VALUE;
        uint64_t bits = 0;
        std::memcpy(&bits, &missing, sizeof bits);
        CHECK(bits == 0x81aa74fe1c132c0e);
        CHECK(static_cast<uint32_t>(int32_t{QUERY_REPLY}) == 0xfff421cf);
    }

    TEST_CASE("guarded_exp cuts below -300 and leaves overflow to the standard library")
    {
        CHECK(guarded_exp(-300) == std::exp(-300.0));
        CHECK(guarded_exp(-300.000001) == 0);
        CHECK(std::isnan(guarded_exp(nan)));
        errno = 0;
        CHECK(guarded_exp(-1e300) == 0);
        CHECK(errno == 0);
        CHECK(guarded_exp(710) == infinity);
        CHECK(errno == 34);
        errno = 0;
    }

    TEST_CASE("guarded_pow answers a zero base itself and reports every error of pow in errno")
    {
        errno = 0;
        CHECK(guarded_pow(0, 2) == 0);
        CHECK(guarded_pow(-0.0, 3) == 0);
        CHECK(!std::signbit(guarded_pow(-0.0, 3)));
        CHECK(guarded_pow(0, 0) == 1);
        CHECK(errno == 0);
        CHECK(std::isnan(guarded_pow(-8, 1.0 / 3)));
        CHECK(errno == 33);
        errno = 0;
        CHECK(guarded_pow(10, 400) == infinity);
        CHECK(errno == 34);
        errno = 0;
    }

    TEST_CASE("a result tells of the same error as the runtime, but for one too small for a number")
    {
        const double values[] = {0,   -0.0, 1,    -1,       2.5,       -2.5, 3,          300,   -300,
                                 710, 1e-5, 5e-9, infinity, -infinity, nan,  -1.0 / 3.0, 1e200, -1e200};
        const auto agree = [](const char *function, double a, double b, double result) {
            INFO(function << " of " << a << " and " << b << ": " << result);
            if (result != 0) CHECK(platform::code_of(result, a, b) == errno);
            errno = 0;
        };
        errno = 0;
        for (const double a : values) {
            agree("exp", a, 1, std::exp(a));
            agree("log", a, 1, std::log(a));
            agree("sqrt", a, 1, std::sqrt(a));
            for (const double b : values) agree("pow", a, b, std::pow(a, b));
        }
    }

    TEST_CASE("a square through guarded_pow is a call, not a product: its range error arrives")
    {
        errno = 0;
        CHECK(guarded_pow(1e300, 2) == infinity);
        CHECK(errno == 34);
        errno = 0;
    }

    TEST_CASE("bounded_exp saturates beyond 300 without an error")
    {
        errno = 0;
        CHECK(bounded_exp(300) == std::exp(300.0));
        CHECK(is_missing(bounded_exp(300.5)));
        CHECK(is_missing(bounded_exp(infinity)));
        CHECK(bounded_exp(-301) == 0);
        CHECK(std::isnan(bounded_exp(nan)));
        CHECK(errno == 0);
    }

    TEST_CASE("missing_if_not_finite replaces infinities and NaN only")
    {
        missing_if_not_finite(nullptr);
        for (double value : {infinity, -infinity, nan}) {
            missing_if_not_finite(&value);
            CHECK(is_missing(value));
        }
        double finite = -1e308;
        missing_if_not_finite(&finite);
        CHECK(finite == -1e308);
    }

    TEST_CASE("math errors inside the library arrive in the errno of the host")
    {
        test::Call exponential("ExpGro1", {0, 1, 1}, {800}), power("Exp2P", {1, 10}, {400}),
            domain("SWeibull1", {1, 2, 0.5, 1}, {1});
        CHECK((exponential.run(EVAL_VALUE | EVAL_USE_ERRPTR) == 0 && exponential.y[1] == infinity));
        CHECK(exponential.runtime_code == 34);
        CHECK((power.run(EVAL_VALUE | EVAL_USE_ERRPTR) == 0 && power.y[1] == infinity));
        CHECK(power.runtime_code == 34);
        CHECK((domain.run(EVAL_VALUE | EVAL_USE_ERRPTR) == 0 && std::isnan(domain.y[1])));
        CHECK(domain.runtime_code == 33);
    }

    TEST_CASE("the error variable is errno unless the call brings its own")
    {
        int32_t own = 34;
        errno = 33;
        const ErrorVariable runtime(EVAL_VALUE, &own), callers(EVAL_VALUE | EVAL_USE_ERRPTR, &own);
        callers.clear();
        CHECK((own == 0 && errno == 33));
        CHECK((runtime.raised() && !callers.raised()));
        runtime.clear();
        own = 11;  // any other code does not count
        CHECK((errno == 0 && !callers.raised()));
    }
}
