// Responses of a yield to a fertiliser or another input: powers and exponentials of x with constant base and rate.
//
// All but Reich compute value and derivatives in one call.

#include "frame/evaluation.h"

namespace curvebank {

/// Straight line and exponential.
///     y = a + b·X + c·r^X          p = (a, b, c, r)
/// Refuses r <= 0 and r >= 1, which lets a NaN through. The value for c = 0 takes no power; the derivative step
/// always takes it.
MODEL(Shah)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], r = p[4], X = x[1];
    const bool refused = r >= 1 || r <= 0;

    if (flags & EVAL_VALUE) {
        if (refused) return missing_value(error, y);
        double value = a + b * X;
        if (c != 0) {
            value += c * guarded_pow(r, X);
            if (error.raised()) return missing_value(error, y);
        }
        y[1] = value;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (refused) return missing_values(error, y, dy, 1, 4);
    const double P = guarded_pow(r, X);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    dy[1] = 1.0;
    dy[2] = X;
    dy[3] = P;
    dy[4] = X * c * P / r;
    y[1] = a + b * X + c * P;
    return 0;
}

/// Exponential by its value and its slope at X = 0.
///     y = a + b·(exp(k·X) - 1)/k          p = (a, b, k)
/// k must not be 0; there is no limit form. A derivative call writes dy[1] = 1 even where it then fails for k = 0,
/// and it makes no error test: an overflow gives infinities and stays in errno.
MODEL(Stirling)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], k = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (k == 0) return missing_value(error, y);
        const double E = guarded_exp(k * X);
        if (error.raised()) return missing_value(error, y);
        y[1] = a + b * (E - 1) / k;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    if (k == 0) return missing_values(error, y, dy, 2, 3);
    const double E = guarded_exp(k * X);
    dy[2] = (E - 1) / k;
    dy[3] = (E * X - dy[2]) * b / k;
    y[1] = dy[2] * b + a;
    return 0;
}

/// Asymptotic response by a ratio of successive increments.
///     y = a + b·r^X          p = (a, b, r)
/// Refuses r <= 0 and r > 1, which lets a NaN through. A derivative step that refuses r leaves the error variable
/// as it was; every other failure clears it.
MODEL(YldFert)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], r = p[3], X = x[1];
    const bool refused = r > 1 || r <= 0;

    if (flags & EVAL_VALUE) {
        if (refused) return missing_value(error, y);
        const double P = guarded_pow(r, X);
        if (error.raised()) return missing_value(error, y);
        y[1] = a + b * P;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (refused) return missing_values(y, dy, 1, 3);
    const double P = guarded_pow(r, X);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1.0;
    dy[2] = P;
    dy[3] = X * b * P / r;
    y[1] = a + b * P;
    return 0;
}

/// Asymptotic response by a rate.
///     y = a + b·exp(-k·X)          p = (a, b, k)
MODEL(YldFert1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], k = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        const double E = guarded_exp(-k * X);
        if (error.raised()) return missing_value(error, y);
        y[1] = a + b * E;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double E = guarded_exp(-k * X);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1.0;
    dy[2] = E;
    dy[3] = -X * b * E;
    y[1] = a + b * E;
    return 0;
}

/// Two exponentials without offset.
///     y = a·exp(-b·X) + c·exp(-d·X)          p = (a, b, c, d)
/// Has a value only.
MODEL(Reich)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], d = p[4], X = x[1];

    const double E1 = guarded_exp(-b * X);
    if (error.raised()) return missing_value(error, y);
    const double E2 = guarded_exp(-d * X);
    if (error.raised()) return missing_value(error, y);
    y[1] = a * E1 + c * E2;
    return 0;
}

}  // namespace curvebank
