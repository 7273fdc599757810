// Sigmoids of X and Y: products of two cumulative curves, and a dose-response surface.
//
// A call sums as many terms as nParams, divided by the parameters of a term, gives over a common offset. Each
// term's share goes to y[2], y[3], ... A failure leaves the shares and the sum it has reached. Widths of 0 are
// divided by.

#include "models/surface/surface.h"
#include "numerics/error_function.h"

namespace curvebank {
namespace {

constexpr int product_size = 5;  // parameters a term, of all but ExtremeCum
constexpr int extreme_size = 7;  // of ExtremeCum

}  // namespace

/// Cumulative Gaussian in X times one in Y.
///     z = z0 + sum of A/4·(1 + erf((X - xc)/(√2·wx)))·(1 + erf((Y - yc)/(√2·wy)))
///     p = (z0, then for each term: A, xc, wx, yc, wy);  nParams/5 terms
/// Value only, and never fails. EVAL_INIT answers 0. A call for derivatives writes none and leaves y[1] = z0; with
/// EVAL_VALUE too, the shares are still those of the terms.
MODEL(GaussCum)
{
    if (flags & EVAL_INIT) return 0;
    const double z0 = p[1], X = x[1], Y = x[2];
    const int terms = nParams / product_size;

    if (flags & EVAL_VALUE) {
        y[1] = z0;
        const double r = std::sqrt(2.0);
        for (int k = 0; k < terms; ++k) {
            const double *q = p + 2 + product_size * k;
            const double A = q[0], xc = q[1], wx = q[2], yc = q[3], wy = q[4];
            const double ex = numerics::error_function((X - xc) / r / wx);
            const double ey = numerics::error_function((Y - yc) / r / wy);
            y[2 + k] = A * 0.25 * (ex + 1) * (ey + 1);
            y[1] += y[2 + k];
        }
    }
    if (flags & EVAL_DERIVS) y[1] = z0;
    return 0;
}

/// Logistic curve in X times one in Y.
///     z = z0 + sum of A / (1 + exp(-(X - xc)/wx)) / (1 + exp(-(Y - yc)/wy))
///     p = (z0, then for each term: A, xc, wx, yc, wy);  nParams/5 terms
/// Both steps test for errors after either exponential. An exponent above 300 is no error: its exponential is the
/// missing value, as a number, which makes that factor 1 where the curve tends to 0.
MODEL(LogisticCum)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int terms = nParams / product_size;

    if (flags & EVAL_VALUE) {
        y[1] = z0;
        for (int k = 0; k < terms; ++k) {
            const double *q = p + 2 + product_size * k;
            const double A = q[0], xc = q[1], wx = q[2], yc = q[3], wy = q[4];
            const double Ex = bounded_exp(-(X - xc) / wx);
            if (error.raised()) return surface_missing(error, x);
            const double Ey = bounded_exp(-(Y - yc) / wy);
            if (error.raised()) return surface_missing(error, x);
            y[2 + k] = A / (Ex + 1) / (Ey + 1);
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    y[1] = z0;
    for (int k = 0; k < terms; ++k) {
        const int b = 2 + product_size * k;
        const double A = p[b], xc = p[b + 1], wx = p[b + 2], yc = p[b + 3], wy = p[b + 4];
        const double Ex = bounded_exp(-(X - xc) / wx);
        if (error.raised()) return surface_missing(error, x);
        const double Ey = bounded_exp(-(Y - yc) / wy);
        if (error.raised()) return surface_missing(error, x);
        const double u = Ex + 1, v = Ey + 1;
        dy[b] = 1 / u / v;
        dy[b + 1] = -A * Ex / wx / u / u / v;
        dy[b + 2] = (X - xc) * dy[b + 1] / wx;
        dy[b + 3] = -A * Ey / u / v / v / wy;
        dy[b + 4] = (Y - yc) * dy[b + 3] / wy;
        y[2 + k] = dy[b] * A;
        y[1] += y[2 + k];
    }
    return 0;
}

/// Cumulative extreme-value curves in X and in Y and their product.
///     z = z0 + sum of A·exp(-Ex) + B·exp(-Ey) + C·exp(-Ex - Ey),  Ex = exp((xc - X)/wx), Ey = exp((yc - Y)/wy)
///     p = (z0, then for each term: A, xc, wx, B, yc, wy, C);  nParams/7 terms
/// Value only: a call without EVAL_VALUE writes nothing, and EVAL_INIT answers 0. Tests for errors after Ex, after
/// Ey and after the share, which is written even so. An exponent (xc - X)/wx above 300 is no error: Ex is the
/// missing value, as a number, and exp(-Ex) 1 where the curve tends to 0.
MODEL(ExtremeCum)
{
    if (flags & EVAL_INIT || !(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int terms = nParams / extreme_size;

    y[1] = z0;
    for (int k = 0; k < terms; ++k) {
        const double *q = p + 2 + extreme_size * k;
        const double A = q[0], xc = q[1], wx = q[2], B = q[3], yc = q[4], wy = q[5], C = q[6];
        const double Ex = bounded_exp((xc - X) / wx);
        if (error.raised()) return surface_missing(error, x);
        const double Ey = bounded_exp((yc - Y) / wy);
        if (error.raised()) return surface_missing(error, x);
        y[2 + k] = bounded_exp(-Ex) * A + bounded_exp(-Ey) * B + bounded_exp(-Ex - Ey) * C;
        if (error.raised()) return surface_missing(error, x);
        y[1] += y[2 + k];
    }
    return 0;
}

/// Response to two doses.
///     z = z0 + sum of A / (1 + (X/x0)^-hx) / (1 + (Y/y0)^-hy)
///     p = (z0, then for each term: A, x0, hx, y0, hy);  nParams/5 terms
/// A term needs X and Y that are not 0 or less (a NaN passes). No error test: a power that fails leaves its code in
/// errno and its infinity or NaN in the term.
MODEL(DoseResp)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int terms = nParams / product_size;

    if (flags & EVAL_VALUE) {
        y[1] = z0;
        for (int k = 0; k < terms; ++k) {
            const double *q = p + 2 + product_size * k;
            const double A = q[0], x0 = q[1], hx = q[2], y0 = q[3], hy = q[4];
            if (X <= 0 || Y <= 0) return surface_missing(error, x);
            const double Du = guarded_pow(X / x0, -hx) + 1;
            const double Dv = guarded_pow(Y / y0, -hy) + 1;
            y[2 + k] = A / Du / Dv;
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    y[1] = z0;
    for (int k = 0; k < terms; ++k) {
        const int b = 2 + product_size * k;
        const double A = p[b], x0 = p[b + 1], hx = p[b + 2], y0 = p[b + 3], hy = p[b + 4];
        if (X <= 0 || Y <= 0) return surface_missing(error, x);
        const double Du = guarded_pow(X / x0, -hx) + 1;
        const double Dv = guarded_pow(Y / y0, -hy) + 1;
        dy[b] = 1 / Du / Dv;
        dy[b + 1] = -A * hx * X * guarded_pow(X / x0, -1 - hx) / x0 / x0 / Du / Du / Dv;
        // Each power is called again after its logarithm: of several failures the last leaves its code in errno.
        const double lnX = std::log(X / x0);
        dy[b + 2] = lnX * guarded_pow(X / x0, -hx) * A / Du / Du / Dv;
        dy[b + 3] = -A * hy * Y * guarded_pow(Y / y0, -1 - hy) / y0 / y0 / Du / Dv / Dv;
        const double lnY = std::log(Y / y0);
        dy[b + 4] = lnY * guarded_pow(Y / y0, -hy) * A / Du / Dv / Dv;
        y[2 + k] = dy[b] * A;
        y[1] += y[2 + k];
    }
    return 0;
}

}  // namespace curvebank
