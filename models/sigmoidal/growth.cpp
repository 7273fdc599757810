// Asymmetric growth curves.
//
// Value and derivatives may be asked for in one call. A value step that ends the call, by a failure or at a limit,
// leaves the derivatives unwritten; a failure of the derivative step marks them all, unless a model says otherwise.

#include "frame/evaluation.h"

namespace curvebank {

/// Gompertz growth (Gompertz, 1825).
///     y = A·exp(-exp(-rate·(X - xc)))          p = (A, xc, rate)
/// A and the rate must be positive. Where the inner exponential overflows, as errno tells, the curve is 0.
MODEL(SGompertz)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double A = p[1], xc = p[2], rate = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (A <= 0 || rate <= 0) return missing_value(error, y);
        const double e = guarded_exp(-rate * (X - xc));
        if (runtime.range_error()) return saturated(y, 0.0);
        const double E = guarded_exp(-e);
        if (error.raised()) return missing_value(error, y);
        y[1] = E * A;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (A <= 0 || rate <= 0) return missing_values(error, y, dy, 1, 3);
    const double e = guarded_exp(-rate * (X - xc));
    if (runtime.range_error()) {
        dy[1] = dy[2] = dy[3] = 0.0;
        return saturated(y, 0.0);
    }
    const double E = guarded_exp(-e);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[1] = E;
    y[1] = E * A;
    const double v = y[1] * e;
    dy[3] = (X - xc) * v;
    dy[2] = -rate * v;
    return 0;
}

/// Richards growth with a linear exponent (after Richards, 1959).
///     y = A / (1 + exp(-(b + c·X)/d))^d          p = (A, b, c, d)
/// With d = 0 a value call answers A and ends there; a negative d has a value but no derivatives.
MODEL(Richards)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A = p[1], b = p[2], c = p[3], d = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        if (d == 0) {
            y[1] = A;
            return 0;
        }
        const double e = guarded_exp(-(c * X + b) / d);
        if (error.raised()) return missing_value(error, y);
        y[1] = A / guarded_pow(e + 1, d);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (d <= 0) return missing_values(error, y, dy, 1, 4);
    const double t = (c * X + b) / d;
    const double e = guarded_exp(-t);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    const double B = e + 1;
    const double P = guarded_pow(B, -d);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    dy[1] = P;
    y[1] = A * P;
    const double v = y[1] * e / B;
    dy[2] = v;
    dy[3] = v * X;
    dy[4] = -std::log(B);
    if (error.raised()) return missing_derivative(dy, 4);
    dy[4] = (dy[4] - t * e / B) * y[1];
    return 0;
}

/// Richards growth, first form (Richards, 1959).
///     y = (A^(1 - d) - exp(-rate·(X - xc)))^(1/(1 - d)) for d < 1; with + for - for d > 1
///     p = (A, xc, d, rate)
/// A and the rate must be positive, d other than 1, and the base of the outer power positive. A NaN d takes the
/// plus.
MODEL(SRichards1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A = p[1], xc = p[2], d = p[3], rate = p[4], X = x[1];
    const double r = 1 / (1 - d);

    if (flags & EVAL_VALUE) {
        if (d == 1 || A <= 0 || rate <= 0) return missing_value(error, y);
        const double e = guarded_exp(-(X - xc) * rate);
        if (error.raised()) return missing_value(error, y);
        const double level = guarded_pow(A, 1 - d);
        if (error.raised()) return missing_value(error, y);
        const double B = d < 1 ? level - e : level + e;
        if (B <= 0) return missing_value(error, y);
        y[1] = guarded_pow(B, r);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (d == 1 || A <= 0 || rate <= 0) return missing_values(error, y, dy, 1, 4);
    const double e = guarded_exp(-(X - xc) * rate);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    const double level = guarded_pow(A, 1 - d);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    const double B = d < 1 ? level - e : level + e;
    if (B <= 0) return missing_values(error, y, dy, 1, 4);
    y[1] = guarded_pow(B, r);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    const double q = y[1] / B;
    const double g = q * e / (1 - d);
    dy[1] = (level / A) * q;
    if (d < 1) {
        dy[4] = (X - xc) * g;
        dy[2] = -rate * g;
    } else {
        dy[4] = -(X - xc) * g;
        dy[2] = g * rate;
    }
    dy[3] = std::log(B) / (1 - d);
    if (error.raised()) return missing_derivative(dy, 3);
    dy[3] = dy[3] - std::log(A) * level / B;
    if (error.raised()) return missing_derivative(dy, 3);
    dy[3] = dy[3] * y[1] / (1 - d);
    return 0;
}

/// Richards growth, second form: the upper limit as a factor.
///     y = A·(1 - (1 - d)·exp(-rate·(X - xc)))^(1/(1 - d))          p = (A, xc, d, rate)
/// A, d and the rate must be positive, d other than 1, and the base of the power positive.
MODEL(SRichards2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A = p[1], xc = p[2], d = p[3], rate = p[4], X = x[1];
    const double r = 1 / (1 - d);

    if (flags & EVAL_VALUE) {
        if (d == 1 || A <= 0 || d <= 0 || rate <= 0) return missing_value(error, y);
        const double e = guarded_exp(-(X - xc) * rate);
        if (error.raised()) return missing_value(error, y);
        const double B = 1 - e / r;
        if (B <= 0) return missing_value(error, y);
        const double P = guarded_pow(B, r);
        if (error.raised()) return missing_value(error, y);
        y[1] = P * A;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (d == 1 || A <= 0 || d <= 0 || rate <= 0) return missing_values(error, y, dy, 1, 4);
    const double e = guarded_exp(-(X - xc) * rate);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    const double B = 1 - e / r;
    if (B <= 0) return missing_values(error, y, dy, 1, 4);
    const double P = guarded_pow(B, r);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    dy[1] = P;
    y[1] = P * A;
    const double v = y[1] * e / B;
    dy[4] = (X - xc) * v;
    dy[2] = -rate * v;
    dy[3] = std::log(B) * r;
    if (error.raised()) {  // only the shape's derivative is lost, and the error is left standing
        mark_missing(dy, 3, 3);
        return 1;
    }
    dy[3] = r * y[1] * (e / B + dy[3]);
    return 0;
}

/// Weibull growth from a threshold (Weibull, 1951).
///     y = A·(1 - exp(-(rate·(X - xc))^d))          p = (A, xc, d, rate)
/// The value step tests no parameter and fails where a power or an exponential does, as below the threshold with a
/// broken d. The derivative step needs d >= 0 and a positive rate, gives zeros up to the threshold, and fails on a
/// range error in errno only.
MODEL(SWeibull1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double A = p[1], xc = p[2], d = p[3], rate = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        const double q = guarded_pow((X - xc) * rate, d);
        if (error.raised()) return missing_value(error, y);
        const double E = guarded_exp(-q);
        if (error.raised()) return missing_value(error, y);
        y[1] = (1 - E) * A;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (d < 0 || rate <= 0) return missing_values(error, y, dy, 1, 4);
    if (X <= xc) {
        dy[1] = dy[2] = dy[3] = dy[4] = 0.0;
        y[1] = 0.0;
        return 0;
    }
    const double q = guarded_pow((X - xc) * rate, d);
    if (runtime.range_error()) return missing_values(error, y, dy, 1, 4);
    const double E = guarded_exp(-q);
    if (runtime.range_error()) return missing_values(error, y, dy, 1, 4);
    dy[1] = 1 - E;
    y[1] = (1 - E) * A;
    const double v = d * A * E * q / rate;
    dy[4] = v;
    dy[2] = -rate * v / (X - xc);
    dy[3] = std::log((X - xc) * rate) * v * rate / d;
    return 0;
}

/// Weibull growth between two levels.
///     y = A - (A - B)·exp(-(rate·X)^d)          p = (A, B, d, rate)
/// X and the rate must be positive. A range error of the power, in errno, gives the upper level A. A failing
/// derivative step marks dy[1..3] and multiplies what dy[4] held by the missing value.
MODEL(SWeibull2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double A = p[1], B = p[2], d = p[3], rate = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        if (rate <= 0 || X <= 0) return missing_value(error, y);
        const double q = guarded_pow(X * rate, d);
        if (runtime.range_error()) return saturated(y, A);
        const double E = guarded_exp(-q);
        if (error.raised()) return missing_value(error, y);
        y[1] = A - (A - B) * E;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (rate <= 0 || X <= 0) {
        dy[4] *= MISSING_VALUE;
        return missing_values(error, y, dy, 1, 3);
    }
    const double q = guarded_pow(X * rate, d);
    if (runtime.range_error()) {
        dy[1] = 1.0;
        dy[2] = dy[3] = dy[4] = 0.0;
        return saturated(y, A);
    }
    const double E = guarded_exp(-q);
    if (error.raised()) {
        dy[4] *= MISSING_VALUE;
        return missing_values(error, y, dy, 1, 3);
    }
    dy[2] = E;
    dy[1] = 1 - E;
    const double v = (A - B) * E * q;
    dy[3] = std::log(rate * X) * v;
    dy[4] = (d / rate) * v;
    y[1] = (1 - E) * A + E * B;
    return 0;
}

}  // namespace curvebank
