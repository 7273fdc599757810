// Hill curves: saturation with a power of the concentration, rising alone or against an inhibition.
//
// A range error of the power, be it an overflow or an underflow, is not a failure of Hill and Hill1: the value is
// then 0 or the start level. They look for it in errno, whatever EVAL_USE_ERRPTR says.

#include "frame/evaluation.h"

namespace curvebank {

/// Hill curve (Hill, 1910).
///     y = Vmax / (1 + (K/X)^n)          p = (Vmax, K, n)
/// X and K must not be negative; the derivatives need K > 0. At X = 0 a call with both flags ends with the value.
MODEL(Hill)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double Vmax = p[1], K = p[2], n = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X < 0 || K < 0) return missing_value(error, y);
        if (X == 0) {
            y[1] = n >= 0 ? 0.0 : Vmax;
            return 0;
        }
        const double e = guarded_pow(K / X, n);
        if (runtime.range_error()) return saturated(y, 0.0);
        if (runtime.domain_error()) return missing_value(error, y);
        y[1] = Vmax / (e + 1);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X < 0 || K <= 0) return missing_values(error, y, dy, 1, 3);
    if (X == 0) {
        dy[1] = dy[2] = dy[3] = 0.0;
        y[1] = n >= 0 ? 0.0 : Vmax;
        return 0;
    }
    const double e = guarded_pow(K / X, n);
    if (runtime.range_error()) {  // left standing here, where the value step clears it
        dy[1] = dy[2] = dy[3] = 0.0;
        y[1] = 0.0;
        return 0;
    }
    const double s = 1 / (e + 1);
    dy[1] = s;
    y[1] = s * Vmax;
    const double v = -e * y[1] * s;
    dy[3] = std::log(K / X) * v;
    dy[2] = (n / K) * v;
    if (error.raised()) return missing_derivative(dy, 3);
    return 0;
}

/// Hill curve between two levels.
///     y = start + (end - start) / (1 + (K/X)^n)          p = (start, end, K, n)
/// X and K must not be negative. At X = 0 and at a range error the value is the start level, and all derivatives
/// are 0, the one of the start level too.
MODEL(Hill1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double start = p[1], end = p[2], K = p[3], n = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X < 0 || K < 0) return missing_value(error, y);
        if (X == 0) {
            y[1] = start;
            return 0;
        }
        const double e = guarded_pow(K / X, n);
        if (runtime.range_error()) return saturated(y, start);
        if (runtime.domain_error()) return missing_value(error, y);
        y[1] = (end - start) / (e + 1) + start;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X < 0 || K < 0) return missing_values(error, y, dy, 1, 4);
    if (X == 0) {
        dy[1] = dy[2] = dy[3] = dy[4] = 0.0;
        y[1] = start;
        return 0;
    }
    const double e = guarded_pow(K / X, n);
    if (runtime.range_error()) {  // left standing here, where the value step clears it
        dy[1] = dy[2] = dy[3] = dy[4] = 0.0;
        y[1] = start;
        return 0;
    }
    const double s = 1 / (e + 1);
    dy[2] = s;
    dy[1] = 1 - s;
    y[1] = (end - start) * s + start;
    const double v = (end - start) * (-e) * s * s;
    dy[4] = std::log(K / X) * v;
    dy[3] = (n / K) * v;
    if (error.raised()) return missing_derivative(dy, 4);
    return 0;
}

/// Activation by one Hill term, inhibition by another.
///     y = Vmax / ((1 + (Ka/X)^na)·(1 + (X/Ki)^ni))          p = (Vmax, Ka, Ki, na, ni)
/// Fails at X = 0 and where the denominator is 0. The error variable is neither read nor cleared: an infinite or
/// NaN value becomes the missing value, and the call still succeeds.
MODEL(BiHill)
{
    if (flags & EVAL_INIT) return 1;
    const double Vmax = p[1], Ka = p[2], Ki = p[3], na = p[4], ni = p[5], X = x[1];
    // Formed even if neither value nor derivatives are asked for, so that errno shows the powers' errors.
    const double activation = guarded_pow(Ka / X, na) + 1;
    const double inhibition = guarded_pow(X / Ki, ni) + 1;
    const double Q = activation * inhibition;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;

    if (Q == 0) return missing_value(y);
    if (X == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 5);
        return missing_value(y);
    }
    y[1] = Vmax / Q;
    if (flags & EVAL_DERIVS) {
        dy[1] = 1 / Q;
        dy[2] = -Vmax * na / (Q * Ka * (guarded_pow(Ka / X, -na) + 1));
        dy[3] = ni * Vmax / (Q * Ki * (guarded_pow(X / Ki, -ni) + 1));
        // The last error reported stays in errno, hence the order: each logarithm, then its own power.
        const double log_a = std::log(Ka / X);
        dy[4] = log_a * (-Vmax) / ((guarded_pow(Ka / X, -na) + 1) * Q);
        const double log_i = std::log(X / Ki);
        // Defined with na where the exact partial has ni.
        dy[5] = log_i * (-Vmax) / ((guarded_pow(X / Ki, -na) + 1) * Q);
    }
    missing_if_not_finite(&y[1]);
    return 0;
}

}  // namespace curvebank
