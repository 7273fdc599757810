// Reciprocals of straight lines.
//
// A denominator is refused only where it is exactly 0; a tiny one is divided by. All give derivatives only on calls
// without EVAL_VALUE, and no failure touches the error variable. The forms by points that the curve passes through
// (expected-value parameters) read more parameters than the catalogue counts.

#include "frame/evaluation.h"

namespace curvebank {

/// Reciprocal of a straight line.
///     y = 1 / (a + b·X)          p = (a, b)
/// The denominator must not be 0; where it is, derivative calls too mark y alone.
MODEL(Reciprocal)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1], b = p[2], X = x[1];
    const double D = b * X + a;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = 1 / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_value(y);
    y[1] = 1 / D;
    dy[1] = -(y[1] * y[1]);
    dy[2] = -(y[1] * y[1]) * X;
    return 0;
}

/// Reciprocal of a straight line, by its value at X = 0.
///     y = a / (1 + b·X)          p = (a, b)
/// The denominator must not be 0; where it is, derivative calls too mark y alone.
MODEL(ReciprocalMod)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1], b = p[2], X = x[1];
    const double D = 1 + b * X;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = a / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_value(y);
    y[1] = a / D;
    dy[1] = 1 / D;
    dy[2] = -X * y[1] / D;
    return 0;
}

/// Reciprocal of a straight line through the points (xa, ya) and (xb, yb).
///     y = (xb - xa)·ya·yb / ((X - xa)·ya + (xb - X)·yb)          p = (xa, ya, xb, yb)
/// Only the value refuses a denominator of 0: a derivative call divides by it and succeeds.
MODEL(ReciprocalEVP)
{
    if (flags & EVAL_INIT) return 1;
    const double xa = p[1], ya = p[2], xb = p[3], yb = p[4], X = x[1];
    const double D = (X - xa) * ya + (xb - X) * yb;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = (xb - xa) * ya * yb / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = yb * ya * (xb - xa) / D;
    dy[1] = (y[1] - yb) * ya / D;
    dy[2] = ((xb - xa) * yb - (X - xa) * y[1]) / D;
    dy[3] = (ya - y[1]) * yb / D;
    dy[4] = ((xb - xa) * ya - (xb - X) * y[1]) / D;
    return 0;
}

/// Reciprocal of a straight line, 1 at X = 0.
///     y = 1 / (1 + a·X)          p = (a)
/// The denominator must not be 0.
MODEL(Reciprocal0)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1];
    const double D = 1 + a * x[1];

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = 1 / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 1);
    y[1] = 1 / D;
    dy[1] = -a / (y[1] * y[1]);  // defined so; the exact partial is -X·y²
    return 0;
}

/// Reciprocal of a straight line, 1 at X = 0, through the point (xr, yr).
///     y = 1 / (1 + (1/yr - 1)·X/xr)          p = (xr, yr)
/// Neither xr nor yr nor the denominator may be 0.
MODEL(Reciprocal0EVP)
{
    if (flags & EVAL_INIT) return 1;
    const double xr = p[1], yr = p[2], X = x[1];
    const double u = 1 / yr - 1, D = u * X / xr + 1;
    const bool outside = xr == 0 || yr == 0 || D == 0;

    if (flags & EVAL_VALUE) {
        if (outside) return missing_value(y);
        y[1] = 1 / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (outside) return missing_values(y, dy, 1, 2);
    y[1] = 1 / D;
    const double w = y[1] * (X / xr) * y[1];
    dy[1] = w * u / xr;
    dy[2] = w / (yr * yr);
    return 0;
}

/// Reciprocal of X less a pole.
///     y = 1 / (a + X)          p = (a)
/// The denominator must not be 0.
MODEL(Reciprocal1)
{
    if (flags & EVAL_INIT) return 1;
    const double D = p[1] + x[1];

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = 1 / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 1);
    y[1] = 1 / D;
    dy[1] = -(y[1] * y[1]);
    return 0;
}

/// Reciprocal of X less a pole, through the point (xr, yr).
///     y = yr / (1 + yr·(X - xr))          p = (xr, yr)
/// The denominator must not be 0.
MODEL(Reciprocal1EVP)
{
    if (flags & EVAL_INIT) return 1;
    const double xr = p[1], yr = p[2];
    const double D = (x[1] - xr) * yr + 1;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = yr / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 2);
    y[1] = yr / D;
    dy[2] = 1 / (D * D);
    dy[1] = yr * yr / (D * D);
    return 0;
}

}  // namespace curvebank
