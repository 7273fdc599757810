// Exponentials of one and two parameters, by a rate or by a base.
//
// A rate form and its base form are the same curve, r = exp(-b) or r = exp(b); the base forms need r > 0. Both
// steps look at the error variable after the exponential or power, and a failed derivative step marks y alone,
// unless the model says otherwise.

#include "frame/evaluation.h"

namespace curvebank {

/// Exponential growth of rate 1.
///     y = exp(X - xc)          p = (xc)
/// A failed derivative step clears errno, whichever error variable it looked at, and marks dy[1] too.
MODEL(Exp1P1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xc = p[1], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = guarded_exp(X - xc);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = guarded_exp(X - xc);
    if (error.raised()) return missing_values(ErrorVariable::runtime(), y, dy, 1, 1);
    dy[1] = -y[1];
    return 0;
}

/// Exponential decay from 1.
///     y = exp(-b·X)          p = (b)
MODEL(Exp1P2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double b = p[1], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = guarded_exp(-b * X);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = guarded_exp(-b * X);
    if (error.raised()) return missing_value(error, y);
    dy[1] = -X * y[1];
    return 0;
}

/// Exponential from 1, by its base.
///     y = r^X          p = (r)
/// Needs r > 0.
MODEL(Exp1P2Md)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double r = p[1], X = x[1];

    if (flags & EVAL_VALUE) {
        if (!(r > 0)) return missing_value(error, y);
        y[1] = guarded_pow(r, X);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(r > 0)) return missing_value(error, y);
    y[1] = guarded_pow(r, X);
    if (error.raised()) return missing_value(error, y);
    dy[1] = X * y[1] / r;
    return 0;
}

/// Density of the exponential distribution.
///     y = b·exp(-b·X)          p = (b)
/// A zero rate gives y = 0 at once, also where derivatives are asked for with the value. On a derivative call
/// dy[1] is then marked, and the call still succeeds.
MODEL(Exp1P3)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double b = p[1], X = x[1];

    if (flags & EVAL_VALUE) {
        if (b == 0) {
            y[1] = 0.0;
            return 0;
        }
        y[1] = b * guarded_exp(-b * X);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (b == 0) {
        y[1] = 0.0;
        mark_missing(dy, 1, 1);
        return 0;
    }
    y[1] = b * guarded_exp(-b * X);
    if (error.raised()) return missing_value(error, y);
    dy[1] = (1 / b - X) * y[1];
    return 0;
}

/// Density of the exponential distribution, by its base.
///     y = -ln(r)·r^X          p = (r)
/// Needs r > 0. The value step looks at the error variable after the logarithm too.
MODEL(Exp1P3Md)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double r = p[1], X = x[1];

    if (flags & EVAL_VALUE) {
        if (!(r > 0)) return missing_value(error, y);
        const double Q = guarded_pow(r, X);
        if (error.raised()) return missing_value(error, y);
        const double L = std::log(r);
        if (error.raised()) return missing_value(error, y);
        y[1] = -L * Q;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(r > 0)) return missing_value(error, y);
    const double Q = guarded_pow(r, X);
    if (error.raised()) return missing_value(error, y);
    const double L = std::log(r);
    y[1] = -Q * L;
    dy[1] = (-Q * L * X - Q) / r;
    return 0;
}

/// Exponential approach from 0 to 1.
///     y = 1 - exp(-b·X)          p = (b)
MODEL(Exp1P4)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double b = p[1], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = 1 - guarded_exp(-b * X);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double E = guarded_exp(-b * X);
    if (error.raised()) return missing_value(error, y);
    dy[1] = X * E;
    y[1] = 1 - E;
    return 0;
}

/// Exponential approach from 0 to 1, by its base.
///     y = 1 - r^X          p = (r)
/// r <= 0 is refused without clearing the error variable (and marks dy[1] on a derivative call); a NaN is not
/// refused. Derivatives only on calls without EVAL_VALUE, and only they look at the error variable.
MODEL(Exp1P4Md)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double r = p[1], X = x[1];

    if (flags & EVAL_VALUE) {
        if (r <= 0) return missing_value(y);
        y[1] = 1 - guarded_pow(r, X);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (r <= 0) return missing_values(y, dy, 1, 1);
    const double Q = guarded_pow(r, X);
    if (error.raised()) return missing_value(error, y);
    y[1] = 1 - Q;
    dy[1] = -X / r * Q;
    return 0;
}

/// Exponential by its value at 0 and its base.
///     y = A·r^X          p = (A, r)
/// Needs r > 0. Derivatives only on calls without EVAL_VALUE.
MODEL(Exp2P)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A = p[1], r = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        if (!(r > 0)) return missing_value(error, y);
        y[1] = A * guarded_pow(r, X);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(r > 0)) return missing_value(error, y);
    const double Q = guarded_pow(r, X);
    if (error.raised()) return missing_value(error, y);
    dy[1] = Q;
    dy[2] = A * dy[1] * X / r;
    y[1] = A * Q;
    return 0;
}

/// Exponential by its value at 0 and its rate.
///     y = A·exp(b·X)          p = (A, b)
/// A failed derivative step marks dy[1..2] too.
MODEL(Exp2PMod1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A = p[1], b = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = A * guarded_exp(b * X);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double E = guarded_exp(b * X);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    dy[1] = E;
    dy[2] = A * E * X;
    y[1] = A * E;
    return 0;
}

/// Exponential of a straight line.
///     y = exp(a + b·X)          p = (a, b)
MODEL(Exp2PMod2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = guarded_exp(a + b * X);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = guarded_exp(a + b * X);
    if (error.raised()) return missing_value(error, y);
    dy[1] = y[1];
    dy[2] = y[1] * X;
    return 0;
}

}  // namespace curvebank
