// Differences that keep their digits where both sides are nearly equal. They leave errno alone: what they call is
// no part of the formulas whose errors the models report.

#pragma once

#include <cmath>

#include "numerics/keep_errno.h"

namespace curvebank::numerics {

/// ln(a/b) for positive a and b; ln(b/a) is its negative to the bit.
inline double log_ratio(double a, double b)
{
    if (a < b) return -log_ratio(b, a);
    const KeepErrno keep;
    const double ratio = a / b;
    return std::isnormal(ratio) ? std::log(ratio) : std::log(a) - std::log(b);
}

/// ln(1 + t).
inline double log_of_one_plus(double t)
{
    const KeepErrno keep;
    return std::log1p(t);
}

/// exp(t).
inline double quiet_exp(double t)
{
    const KeepErrno keep;
    return std::exp(t);
}

/// a^e - b^e from the powers A and B and from t = e·ln(a/b), which need not exist where a base is 0.
inline double power_difference(double A, double B, double t)
{
    if (!(std::fabs(t) < 1)) return A - B;
    const KeepErrno keep;
    return B * std::expm1(t);
}

/// exp(t) - 1 - t.
inline double expm1_beyond_linear(double t)
{
    const KeepErrno keep;
    if (!(std::fabs(t) < 0.5)) return std::expm1(t) - t;
    double sum = 1;  // t²/2·(1 + t/3·(1 + t/4·(1 + ...)))
    for (int n = 15; n > 2; --n) sum = 1 + t / n * sum;
    return t * t / 2 * sum;
}

}  // namespace curvebank::numerics
