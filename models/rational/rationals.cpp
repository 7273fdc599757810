// Rational functions: ratios of linear and quadratic polynomials in several parameterisations.
//
// A denominator is refused only where it is exactly 0; a tiny one is divided by. Only Rational clears the
// error variable when it fails.

#include "frame/evaluation.h"

namespace curvebank {

/// Ratio of two straight lines.
///     y = (a + b·X) / (c + d·X)          p = (a, b, c, d)
/// The denominator must not be 0; a value call needs nParams >= 1.
MODEL(Rational)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], d = p[4], X = x[1];
    const double D = d * X + c;

    if (flags & EVAL_VALUE) {
        if (nParams < 1 || D == 0) return missing_value(error, y);
        y[1] = (b * X + a) / D;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(error, y, dy, 1, 4);
    const double r = 1 / D;
    dy[1] = r;
    dy[2] = r * X;
    y[1] = (b * X + a) * r;
    dy[3] = -y[1] * r;
    dy[4] = -y[1] * r * X;
    return 0;
}

/// Ratio of two straight lines, the denominator 1 at X = 0.
///     y = (b + c·X) / (1 + a·X)          p = (a, b, c)
/// The denominator must not be 0. Derivatives only on calls without EVAL_VALUE.
MODEL(Rational0)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1], b = p[2], c = p[3], X = x[1];
    const double D = a * X + 1;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = (c * X + b) / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 3);
    const double r = 1 / D;
    dy[2] = r;
    dy[3] = r * X;
    y[1] = dy[3] * c + r * b;
    dy[1] = -y[1] * dy[3];
    return 0;
}

/// Ratio of two straight lines, the numerator 1 at X = 0.
///     y = (1 + c·X) / (a + b·X)          p = (a, b, c)
/// The denominator must not be 0. Derivatives only on calls without EVAL_VALUE.
MODEL(Rational1)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1], b = p[2], c = p[3], X = x[1];
    const double D = b * X + a;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = (c * X + 1) / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 3);
    const double r = 1 / D;
    dy[3] = X * r;
    y[1] = dy[3] * c + r;
    dy[1] = -r * y[1];
    dy[2] = -r * y[1] * X;
    return 0;
}

/// Ratio of two straight lines, the denominator of slope 1.
///     y = (b + c·X) / (a + X)          p = (a, b, c)
/// The denominator must not be 0. Derivatives only on calls without EVAL_VALUE.
MODEL(Rational2)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1], b = p[2], c = p[3], X = x[1];
    const double D = X + a;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = (c * X + b) / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 3);
    dy[2] = 1 / D;
    dy[3] = X / D;
    y[1] = dy[3] * c + dy[2] * b;
    dy[1] = -y[1] * dy[2];
    return 0;
}

/// Ratio of two straight lines, the numerator of slope 1.
///     y = (b + X) / (a + c·X)          p = (a, b, c)
/// The denominator must not be 0. Derivatives only on calls without EVAL_VALUE.
MODEL(Rational3)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1], b = p[2], c = p[3], X = x[1];
    const double D = c * X + a;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = (X + b) / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 3);
    dy[2] = 1 / D;
    y[1] = (b + X) / D;
    dy[1] = -y[1] * dy[2];
    dy[3] = dy[1] * X;
    return 0;
}

/// Hyperbola with offset.
///     y = c + b / (a + X)          p = (a, b, c)
/// The denominator must not be 0. Derivatives only on calls without EVAL_VALUE.
MODEL(Rational4)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1], b = p[2], c = p[3];
    const double D = a + x[1];

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = b / D + c;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 3);
    dy[3] = 1.0;
    dy[2] = 1 / D;
    dy[1] = -(b / D) * dy[3];  // defined with dy[3] where the exact partial has dy[2]
    y[1] = c + b / D;
    return 0;
}

/// Straight line over a parabola, the denominator 1 at X = 0.
///     y = (a + b·X) / (1 + c·X + d·X²)          p = (a, b, c, d)
/// The denominator must not be 0; where it is, a derivative call also marks dy[1..4]. The value is written on
/// derivative calls too.
MODEL(Rational5)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double a = p[1], b = p[2], c = p[3], d = p[4], X = x[1];
    const double N = b * X + a;
    const double D = X * d * X + (c * X + 1);

    if (D == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 4);
        return missing_value(y);
    }
    y[1] = N / D;
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1 / D;
    dy[2] = X / D;
    dy[3] = -N * X / (D * D);
    dy[4] = -N * (X * X) / (D * D);
    return 0;
}

}  // namespace curvebank
