// Hyperbolas: rectangular, double and generalised.
//
// A denominator is refused only where it is exactly 0; a tiny one is divided by. Hyperbl and Dhyperbl compute value
// and derivatives in one call, the others give derivatives only on calls without EVAL_VALUE.

#include "frame/evaluation.h"

namespace curvebank {

/// Hyperbola from 0 to a limit.
///     y = a·X / (b + X)          p = (a, b)
/// b + X must not be 0; a value call needs nParams >= 1. Failures clear the error variable.
MODEL(Hyperbl)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];
    const double D = X + b;

    if (flags & EVAL_VALUE) {
        if (nParams < 1 || D == 0) return missing_value(error, y);
        y[1] = a * X / D;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(error, y, dy, 1, 2);
    dy[1] = X / D;
    y[1] = a * dy[1];
    dy[2] = -y[1] / D;
    return 0;
}

/// Two hyperbolas and a straight line.
///     y = a1·X / (b1 + X) + a2·X / (b2 + X) + c·X          p = (a1, b1, a2, b2, c)
/// No denominator may be 0; a value call needs nParams >= 1. Failures clear the error variable and mark y alone, on
/// derivative calls too.
MODEL(Dhyperbl)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a1 = p[1], b1 = p[2], a2 = p[3], b2 = p[4], c = p[5], X = x[1];
    const double D1 = X + b1, D2 = X + b2;

    if (flags & EVAL_VALUE) {
        if (nParams < 1 || D1 == 0 || D2 == 0) return missing_value(error, y);
        y[1] = a1 * X / D1 + a2 * X / D2 + c * X;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D1 == 0 || D2 == 0) return missing_value(error, y);
    dy[1] = X / D1;
    dy[2] = -a1 * X / (D1 * D1);
    dy[3] = X / D2;
    dy[4] = -a2 * X / (D2 * D2);
    dy[5] = X;
    y[1] = dy[1] * a1 + dy[3] * a2 + c * X;
    return 0;
}

/// Rectangular hyperbola from 0 to a limit, by the limit and the initial slope over it.
///     y = a·b·X / (1 + b·X)          p = (a, b)
/// b·X must not be -1. Failures clear the error variable.
MODEL(RectHyperbola)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2];
    const double t = b * x[1];

    if (flags & EVAL_VALUE) {
        if (t == -1) return missing_value(error, y);
        y[1] = a * t / (t + 1);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (t == -1) return missing_values(error, y, dy, 1, 2);
    dy[1] = t / (t + 1);
    y[1] = a * dy[1];
    dy[2] = (1 - dy[1]) * y[1] / b;
    return 0;
}

/// Hyperbola whose X/y is a straight line.
///     y = X / (a·X + b)          p = (a, b)
/// a·X + b must not be 0. A failure marks y alone, on derivative calls too, and leaves the error variable alone.
MODEL(HyperbolaMod)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1], b = p[2], X = x[1];
    const double D = a * X + b;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = X / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_value(y);
    y[1] = X / D;
    dy[1] = -(y[1] * y[1]);
    dy[2] = -y[1] / D;
    return 0;
}

/// Hyperbola through 0 and the points (xa, ya) and (xb, yb).
///     y = (xb - xa)·X·ya·yb / ((xb - X)·xa·yb + (X - xa)·xb·ya)          p = (xa, ya, xb, yb)
/// The denominator must not be 0; failures leave the error variable alone. Reads four parameters, two more than the
/// catalogue counts.
MODEL(HyperbolaEVP)
{
    if (flags & EVAL_INIT) return 1;
    const double xa = p[1], ya = p[2], xb = p[3], yb = p[4], X = x[1];
    const double D = (xb - X) * xa * yb + (X - xa) * xb * ya;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = (xb - xa) * X * ya * yb / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 4);
    const double r = 1 / (xb - xa);
    y[1] = (xb - xa) * X * ya * yb / D;
    dy[1] = ((xb * ya - (xb - X) * yb) / D - r) * y[1];
    dy[2] = (1 / ya - (X - xa) * xb / D) * y[1];
    dy[3] = (r - ((X - xa) * ya + xa * yb) / D) * y[1];
    dy[4] = (1 / yb - (xb - X) * xa / D) * y[1];
    return 0;
}

/// Generalised hyperbola.
///     y = a - b / (1 + c·X)^(1/d)          p = (a, b, c, d)
/// The value needs 1 + c·X and d other than 0, or fails without clearing the error variable; an error of the power,
/// or a power of 0, clears it. The derivatives need d other than 0 only, clear the error variable where it is 0,
/// and pass every error of the power and the logarithm as infinity or NaN.
MODEL(HyperbolaGen)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], d = p[4], X = x[1];
    const double B = 1 + c * X;

    if (flags & EVAL_VALUE) {
        if (B == 0 || d == 0) return missing_value(y);
        const double P = guarded_pow(B, 1 / d);
        if (error.raised() || P == 0) return missing_value(error, y);
        y[1] = a - b / P;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    if (d == 0) return missing_values(error, y, dy, 2, 4);
    dy[2] = -guarded_pow(B, -1 / d);
    dy[3] = -b * dy[2] * X / B / d;
    dy[4] = std::log(B) * dy[2] * b / (d * d);
    y[1] = dy[2] * b + a;
    return 0;
}

}  // namespace curvebank
