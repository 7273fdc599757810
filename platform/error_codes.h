// The error codes that hosts see and models test for, and how they come into errno.
//
// On Linux and Windows the functions of <cmath> put them there. On a platform whose functions have other codes or
// none they follow from the results: there every call whose errors a model tests goes through reported().

#pragma once

#include <cerrno>
#include <cmath>
#include <cstdint>

namespace curvebank::platform {

constexpr int32_t domain_error_code = 33, range_error_code = 34;

#if defined(__GLIBC__) || defined(_WIN32)
constexpr bool runtime_reports_errors = true;
static_assert(EDOM == domain_error_code && ERANGE == range_error_code);
#else
constexpr bool runtime_reports_errors = false;
#endif

/// The code that a result tells of, 0 for none: a NaN that no argument brought along, an infinity from finite ones.
/// A result too small for a number passes for 0, as it does under Wine.
template <class... Arguments>
int32_t code_of(double result, Arguments... arguments)
{
    if (std::isnan(result)) return (std::isnan(arguments) || ...) ? 0 : domain_error_code;
    return std::isinf(result) && (std::isfinite(arguments) && ...) ? range_error_code : 0;
}

/// The result of a function of <cmath> for these arguments, its error in errno on every platform.
template <class... Arguments>
double reported(double result, Arguments... arguments)
{
    if constexpr (!runtime_reports_errors)
        if (const int32_t code = code_of(result, arguments...); code != 0) errno = code;
    return result;
}

}  // namespace curvebank::platform
