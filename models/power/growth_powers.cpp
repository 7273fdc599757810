// Rates and growth as powers of a distance from a threshold or from a limit.
//
// No failure clears the error variable, and derivatives come only on calls without EVAL_VALUE.

#include "frame/evaluation.h"

namespace curvebank {

/// Rate of a process against temperature (Belehradek, 1926).
///     y = a·(X - x0)^c          p = (a, x0, c)
/// The power must be in range. The derivatives also need the logarithm of a base that is negative, or 0 under an
/// exponent that is not positive, and the power below at a base of 0; they fail where these do.
MODEL(Belehradek)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], x0 = p[2], c = p[3];
    const double B = x[1] - x0;

    if (flags & EVAL_VALUE) {
        const double P = guarded_pow(B, c);
        if (error.raised()) return missing_value(y);
        y[1] = a * P;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double P = guarded_pow(B, c);
    if (error.raised()) return missing_values(y, dy, 1, 3);
    dy[1] = P;
    y[1] = a * P;
    dy[2] = B == 0 ? -a * (c * guarded_pow(0, c - 1)) : -a * (c * P / B);
    dy[3] = B == 0 && c > 0 ? 0.0 : std::log(B) * y[1];
    if (error.raised()) return missing_values(y, dy, 1, 3);
    return 0;
}

/// Growth to a limit (Richards, 1959; Chapman, 1961).
///     y = A·(1 - exp(-k·X))^c          p = (A, k, c)
/// The exponential and the power must be in range. A derivative that cannot be computed beside a value that can is
/// marked alone and the call succeeds: dy[2] where the power to c - 1 fails, dy[3] where the base is not positive.
MODEL(Chapman)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A = p[1], k = p[2], c = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        const double E = guarded_exp(-k * X);
        if (error.raised()) return missing_value(y);
        const double P = guarded_pow(1 - E, c);
        if (error.raised()) return missing_value(y);
        y[1] = A * P;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double E = guarded_exp(-k * X);
    if (error.raised()) return missing_values(y, dy, 1, 3);
    const double B = 1 - E;
    dy[1] = guarded_pow(B, c);
    if (error.raised()) return missing_values(y, dy, 1, 3);
    y[1] = A * dy[1];
    dy[2] = c * A * X * E * guarded_pow(B, c - 1);
    if (error.raised()) mark_missing(dy, 2, 2);
    if (B <= 0) {
        mark_missing(dy, 3, 3);
        return 0;
    }
    dy[3] = std::log(B) * y[1];
    if (error.raised()) mark_missing(dy, 3, 3);  // also for the code that a failed power to c - 1 left
    return 0;
}

}  // namespace curvebank
