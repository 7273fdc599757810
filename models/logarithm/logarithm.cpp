// Natural logarithms of a straight line, also by points that the curve passes through.
//
// All give derivatives only on calls without EVAL_VALUE. Unless a model says otherwise, a number whose logarithm
// does not exist fails without touching the error variable, and a derivative step that fails so marks every
// derivative; a code found after the logarithm itself clears the error variable and marks y alone. The catalogue
// counts fewer parameters than the models with points (expected-value parameters) read; a host supplies all that
// are read.

#include "frame/evaluation.h"

namespace curvebank {

/// Natural logarithm from its pole.
///     y = ln(X - x0)          p = (x0)
/// Needs X > x0.
MODEL(Logarithm)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double x0 = p[1], d = x[1] - x0;

    if (flags & EVAL_VALUE) {
        if (d <= 0) return missing_value(y);
        y[1] = std::log(d);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (d <= 0) return missing_values(y, dy, 1, 1);
    dy[1] = -1 / d;
    y[1] = std::log(d);
    if (error.raised()) return missing_value(error, y);
    return 0;
}

/// Natural logarithm whose pole is shifted by an exponential.
///     y = ln(X - x0 - exp(s))          p = (x0, s)
/// Needs X - x0 > exp(s). Where the exponential overflows the curve is s itself: that is looked for in errno,
/// whatever the flags say, and before the domain. dy[2] is defined as -exp(s)·dy[1], of opposite sign to the exact
/// partial.
MODEL(LogarithmEVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double x0 = p[1], s = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        const double e = guarded_exp(s);
        if (ErrorVariable::runtime().range_error()) return saturated(y, s);
        const double B = X - x0 - e;
        if (B <= 0) return missing_value(y);
        y[1] = std::log(B);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double e = guarded_exp(s);
    if (ErrorVariable::runtime().range_error()) {
        dy[1] = 0.0;
        dy[2] = 1.0;
        return saturated(y, s);
    }
    const double B = X - x0 - e;
    if (B <= 0) return missing_values(y, dy, 1, 2);
    dy[1] = -1 / B;
    dy[2] = -e * dy[1];
    y[1] = std::log(B);
    if (error.raised()) return missing_value(error, y);
    return 0;
}

/// Natural logarithm from its pole, with a factor.
///     y = b·ln(X - x0)          p = (x0, b)
/// Needs X > x0. In the derivative step a failed logarithm marks both derivatives too.
MODEL(Log2P1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double x0 = p[1], b = p[2], d = x[1] - x0;

    if (flags & EVAL_VALUE) {
        if (d <= 0) return missing_value(y);
        y[1] = b * std::log(d);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (d <= 0) return missing_values(y, dy, 1, 2);
    dy[2] = std::log(d);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    dy[1] = -b / d;
    y[1] = dy[2] * b;
    return 0;
}

/// Natural logarithm with a factor, through the point (xr, yr).
///     y = b·ln(X - xr + exp(yr/b))          p = (xr, yr, b)
/// Every failure clears the error variable. A NaN fails in the value step and passes in the derivative step. There
/// only a failed logarithm marks a derivative, dy[3], which is formed from it; the others are written by then.
MODEL(Log2P1EVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xr = p[1], yr = p[2], b = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        const double e = guarded_exp(yr / b);
        if (error.raised()) return missing_value(error, y);
        const double B = X - xr + e;
        if (!(B > 0)) return missing_value(error, y);
        y[1] = b * std::log(B);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double e = guarded_exp(yr / b);
    if (error.raised()) return missing_value(error, y);
    const double B = X - xr + e;
    if (B <= 0) return missing_value(error, y);
    dy[1] = -b / B;
    dy[2] = e / B;
    y[1] = b * std::log(B);
    if (error.raised()) return missing_values(error, y, dy, 3, 3);
    dy[3] = (y[1] - dy[2] * yr) / b;
    return 0;
}

/// Natural logarithm of a straight line.
///     y = ln(a + b·X)          p = (a, b)
/// Needs a + b·X > 0; where it is not, the value step clears the error variable, the derivative step does not.
MODEL(Log2P2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];
    const double D = a + b * X;

    if (flags & EVAL_VALUE) {
        if (D <= 0) return missing_value(error, y);
        y[1] = std::log(D);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D <= 0) return missing_values(y, dy, 1, 2);
    dy[1] = 1 / D;
    dy[2] = X / D;
    y[1] = std::log(D);
    if (error.raised()) return missing_value(error, y);
    return 0;
}

/// Natural logarithm of the straight line through exp(ya) at xa and exp(yb) at xb.
///     y = ln(((xb - X)·exp(ya) + (X - xa)·exp(yb)) / (xb - xa))          p = (xa, ya, xb, yb)
/// xa must not equal xb and the line must be positive. A derivative step marks dy[1..4] only where the line is not:
/// equal abscissas, which leave the error variable alone, and a failed exponential mark y. The derivatives are
/// defined without the divisor xb - xa in their quotients by the line; they are exact for xb - xa = 1.
MODEL(Log2P2EVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xa = p[1], ya = p[2], xb = p[3], yb = p[4], X = x[1];
    const double D = xb - xa;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        const double a = guarded_exp(ya);
        if (error.raised()) return missing_value(error, y);
        const double b = guarded_exp(yb);
        if (error.raised()) return missing_value(error, y);
        const double A = ((xb - X) * a + (X - xa) * b) / D;
        if (A <= 0) return missing_value(y);
        y[1] = std::log(A);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_value(y);
    const double a = guarded_exp(ya);
    if (error.raised()) return missing_value(error, y);
    const double b = guarded_exp(yb);
    if (error.raised()) return missing_value(error, y);
    const double A = ((xb - X) * a + (X - xa) * b) / D;
    if (A <= 0) return missing_values(y, dy, 1, 4);
    dy[1] = 1 / D - b / A;
    dy[2] = (a / A) * (xb - X);
    dy[3] = a / A - 1 / D;
    dy[4] = (b / A) * (X - xa);
    y[1] = std::log(A);
    if (error.raised()) return missing_value(error, y);
    return 0;
}

/// Falling natural logarithm with offset.
///     y = a - b·ln(X + c)          p = (a, b, c)
/// Needs X + c > 0. In the derivative step a failed logarithm marks dy[1..3] too and clears errno, whichever error
/// variable it looked at.
MODEL(Log3P1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3];
    const double d = x[1] + c;

    if (flags & EVAL_VALUE) {
        if (d <= 0) return missing_value(y);
        y[1] = a - b * std::log(d);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (d <= 0) return missing_values(y, dy, 1, 3);
    dy[2] = -std::log(d);
    if (error.raised()) return missing_values(ErrorVariable::runtime(), y, dy, 1, 3);
    dy[1] = 1.0;
    y[1] = a + dy[2] * b;
    dy[3] = -b / d;
    return 0;
}

}  // namespace curvebank
