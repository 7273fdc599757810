// Curves with two values, the first in y[1], the second in y[2].
//
// All have values only: without EVAL_VALUE, as with EVAL_INIT, they do nothing and answer 0. No parameter is
// tested; a zero divisor gives what the arithmetic gives. Where a model tests for errors, it does so after each
// value, so a code from before the call fails it at the first.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double pi = 3.141592653589793;
constexpr double half_pi = 1.5707963267948966;

/// Leaves a call of which one value is lost: both are missing then. It is errno that is reset, never the caller's
/// variable, whichever of them told of the error.
int32_t both_missing(double *y)
{
    y[1] = y[2] = MISSING_VALUE;
    ErrorVariable::runtime().clear();
    return 1;
}

}  // namespace

/// Gaussian and Lorentzian peak on one offset about one centre.
///     y1 = y0 + A1/(w1·√(π/2)) · exp(-2·((X - xc)/w1)²)
///     y2 = y0 + 2·A2/π · w2/(4·(X - xc)² + w2²)
///     p = (y0, xc, A1, A2, w1, w2);  A1 and A2 are areas, w2 a full width at half height
MODEL(GaussianLorentz)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], xc = p[2], A1 = p[3], A2 = p[4], w1 = p[5], w2 = p[6], X = x[1];

    const double u = (X - xc) / w1;
    const double e = guarded_exp(u * -2 * u);
    y[1] = A1 / (std::sqrt(half_pi) * w1) * e + y0;
    if (error.raised()) return both_missing(y);
    const double d = X - xc;
    y[2] = w2 / (d * 4 * d + w2 * w2) * ((A2 + A2) / pi) + y0;
    if (error.raised()) return both_missing(y);
    return 0;
}

/// Helix: a circle traced along X.
///     y1 = xc + r·cos(ω·X + φ),  y2 = yc + r·sin(ω·X + φ)          p = (xc, yc, r, ω, φ)
/// No error test: an infinite angle gives two NaN, a success that leaves its code in errno.
MODEL(Helix)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const double xc = p[1], yc = p[2], r = p[3], omega = p[4], phi = p[5], X = x[1];

    const double angle = omega * X + phi;
    y[1] = xc + r * std::cos(angle);
    y[2] = yc + r * std::sin(angle);
    return 0;
}

/// Enzyme kinetics against two variables: a saturation curve in the first, a double-reciprocal line in the second.
///     y1 = V1·X/(X + K1),  y2 = (1 + K2·Y)/V2          p = (V1, K1, V2, K2)
MODEL(HillBurk)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double V1 = p[1], K1 = p[2], V2 = p[3], K2 = p[4], X = x[1], Y = x[2];

    y[1] = X * V1 / (X + K1);
    if (error.raised()) return both_missing(y);
    y[2] = (K2 * Y + 1) / V2;
    if (error.raised()) return both_missing(y);
    return 0;
}

/// Two straight lines: a line in space along X.
///     y1 = a1 + b1·X,  y2 = a2 + b2·X          p = (a1, b1, a2, b2)
/// No error test.
MODEL(Line3)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const double a1 = p[1], b1 = p[2], a2 = p[3], b2 = p[4], X = x[1];

    y[1] = a1 + b1 * X;
    y[2] = a2 + b2 * X;
    return 0;
}

/// Straight line and exponential growth.
///     y1 = a + b·X,  y2 = y0 + A·exp(X/t)          p = (a, y0, b, A, t)
/// An overflow of the exponential fails the call where errno is the error variable; with EVAL_USE_ERRPTR y2 is
/// infinite.
MODEL(LineExp)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double a = p[1], y0 = p[2], b = p[3], A = p[4], t = p[5], X = x[1];

    y[1] = b * X + a;
    if (error.raised()) return both_missing(y);
    y[2] = guarded_exp(X / t) * A + y0;
    if (error.raised()) return both_missing(y);
    return 0;
}

}  // namespace curvebank
