// The numeric guards: every exponential and power of a model goes through one of them.
//
// They neither read nor clear the error variable. An overflow or a domain error is reported in errno, and it is the
// model that tests for it.

#pragma once

#include <cmath>

#include "curvebank/model_func.h"
#include "platform/error_codes.h"

namespace curvebank {

/// exp(t), and exactly 0 for t below -300, so that no exponential ever underflows into errno.
inline double guarded_exp(double t)
{
    return t < -300 ? 0.0 : platform::reported(std::exp(t), t);
}

/// b to the power e, and 0 without a call for a zero base with a positive exponent. The call must stay a
/// call: folded into products it would lose its range error.
inline double guarded_pow(double b, double e)
{
    return b == 0 && e > 0 ? 0.0 : platform::reported(std::pow(b, e), b, e);
}

/// exp(t) for t up to 300; beyond it the missing value, as a number and without an error.
inline double bounded_exp(double t)
{
    return t > 300 ? MISSING_VALUE : guarded_exp(t);
}

/// Replaces an infinite or NaN *value by the missing value; a null pointer is ignored.
inline void missing_if_not_finite(double *value)
{
    if (value != nullptr && !std::isfinite(*value)) *value = MISSING_VALUE;
}

}  // namespace curvebank
