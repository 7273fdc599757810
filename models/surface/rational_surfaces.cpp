// Ratios of two polynomials in X and Y.
//
// A call sums nParams/10 terms without an offset, and each term's share goes to y[2], y[3], ... A denominator of
// exactly 0 fails the call in either step; a NaN is no 0. The derivatives with respect to the coefficients of Y in
// the denominator are had from those of X by a division by X. EVAL_INIT answers 0.

#include "models/surface/surface.h"

namespace curvebank {
namespace {

constexpr int size = 10;  // parameters a term

double cubic_numerator(const double *q, double X, double Y)
{
    const double a0 = q[0], a1 = q[1], b1 = q[2], b2 = q[3], b3 = q[4];
    return a0 + a1 * X + b1 * Y + b2 * (Y * Y) + b3 * guarded_pow(Y, 3);
}

double cubic_denominator(const double *q, double X, double Y)
{
    const double c1 = q[5], c2 = q[6], c3 = q[7], d1 = q[8], d2 = q[9];
    return 1 + c1 * X + c2 * (X * X) + c3 * guarded_pow(X, 3) + d1 * Y + d2 * (Y * Y);
}

double taylor_numerator(const double *q, double X, double Y)
{
    const double a0 = q[0], a1 = q[1], b1 = q[2], b2 = q[3], f = q[4];
    return a0 + a1 * X + b1 * Y + b2 * guarded_pow(Y, 2) + f * X * Y;
}

double taylor_denominator(const double *q, double X, double Y)
{
    const double c1 = q[5], c2 = q[6], d1 = q[7], d2 = q[8], g = q[9];
    return 1 + c1 * X + c2 * (X * X) + d1 * Y + d2 * (Y * Y) + g * X * Y;
}

/// The share of a term from its derivatives with respect to the numerator's coefficients.
double term_from(const double *q, const double *derivatives)
{
    return q[0] * derivatives[0] + q[1] * derivatives[1] + q[2] * derivatives[2] + q[3] * derivatives[3] +
           q[4] * derivatives[4];
}

}  // namespace

/// Ratio of cubic polynomials.
///     z = sum of (a0 + a1·X + b1·Y + b2·Y² + b3·Y³) / (1 + c1·X + c2·X² + c3·X³ + d1·Y + d2·Y²)
///     p = (for each term: a0, a1, b1, b2, b3, c1, c2, c3, d1, d2)
/// At X = 0 the derivatives with respect to d1 and d2 are not finite, in a successful call.
MODEL(Rational2D)
{
    if (flags & EVAL_INIT) return 0;
    const ErrorVariable error(flags, perr);
    const double X = x[1], Y = x[2];
    const int terms = nParams / size;

    if (flags & EVAL_VALUE) {
        y[1] = 0.0;
        for (int k = 0; k < terms; ++k) {
            const double *q = p + 1 + size * k;
            const double D = cubic_denominator(q, X, Y);
            if (D == 0) return surface_missing(error, x);
            y[2 + k] = cubic_numerator(q, X, Y) / D;
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = 0.0;
    for (int k = 0; k < terms; ++k) {
        const int b = 1 + size * k;
        const double D = cubic_denominator(p + b, X, Y);
        if (D == 0) return surface_missing(error, x);
        const double r = 1 / D;
        dy[b] = r;
        dy[b + 1] = r * X;
        dy[b + 2] = r * Y;
        dy[b + 3] = Y * Y * r;
        dy[b + 4] = guarded_pow(Y, 3) * r;
        const double s = guarded_pow(r, 2), N = cubic_numerator(p + b, X, Y);
        dy[b + 5] = -N * X * s;
        dy[b + 6] = dy[b + 5] * X;
        dy[b + 7] = dy[b + 6] * X;
        dy[b + 8] = dy[b + 5] * Y / X;
        dy[b + 9] = dy[b + 8] * Y;
        y[2 + k] = term_from(p + b, dy + b);
        y[1] += y[2 + k];
    }
    return 0;
}

/// Ratio of quadratic polynomials with mixed terms.
///     z = sum of (a0 + a1·X + b1·Y + b2·Y² + f·X·Y) / (1 + c1·X + c2·X² + d1·Y + d2·Y² + g·X·Y)
///     p = (for each term: a0, a1, b1, b2, f, c1, c2, d1, d2, g)
/// A derivative call fails at X = 0, after the term's first seven derivatives.
MODEL(RationalTaylor)
{
    if (flags & EVAL_INIT) return 0;
    const ErrorVariable error(flags, perr);
    const double X = x[1], Y = x[2];
    const int terms = nParams / size;

    if (flags & EVAL_VALUE) {
        y[1] = 0.0;
        for (int k = 0; k < terms; ++k) {
            const double *q = p + 1 + size * k;
            const double D = taylor_denominator(q, X, Y);
            if (D == 0) return surface_missing(error, x);
            y[2 + k] = taylor_numerator(q, X, Y) / D;
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = 0.0;
    for (int k = 0; k < terms; ++k) {
        const int b = 1 + size * k;
        const double D = taylor_denominator(p + b, X, Y);
        if (D == 0) return surface_missing(error, x);
        const double r = 1 / D;
        dy[b] = r;
        dy[b + 1] = r * X;
        dy[b + 2] = r * Y;
        dy[b + 3] = Y * Y * r;
        dy[b + 4] = Y * X * r;
        const double s = guarded_pow(r, 2), N = taylor_numerator(p + b, X, Y);
        dy[b + 5] = -N * X * s;
        dy[b + 6] = dy[b + 5] * X;
        if (X == 0) return surface_missing(error, x);
        dy[b + 9] = dy[b + 5] * Y;
        dy[b + 7] = dy[b + 9] / X;
        dy[b + 8] = dy[b + 7] * Y;
        y[2 + k] = term_from(p + b, dy + b);
        y[1] += y[2 + k];
    }
    return 0;
}

}  // namespace curvebank
