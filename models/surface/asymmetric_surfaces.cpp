// Peaks over a plane that are skewed in one variable or tilted along the other: extreme-value, Gaussian by
// log-normal, log-normal in both, and logistic. All but the extreme-value peaks have a value only.
//
// A call sums as many peaks as nParams has room for, at least 1 + that many elements of y being supplied: each
// peak's share goes to y[2], y[3], ... No parameter is tested: widths of 0 and amplitudes of 0 are computed with.
// The exponentials are bounded, an argument above 300 giving the missing value as a number, in effect 0; none sets
// an error, so an error test finds a code from before the call or one of a logarithm.

#include "models/surface/surface.h"

namespace curvebank {
namespace {

constexpr int extreme_size = 5;  // parameters a peak after the common offset
constexpr int gauss_log_size = 5;
constexpr int log_normal_size = 7;
constexpr int logistic_size = 4;

}  // namespace

/// Extreme-value peaks in X over a parabola in Y.
///     z = z0 + sum of a·Y + s·Y² + A·exp(1 - exp(-(X - xc)/w) - (X - xc)/w)
///     p = (z0, then for each peak: a, s, A, xc, w);  nParams/5 peaks, the last of which may end at p[nParams + 1]
/// A failing derivative step has written dy[1] = 1 and the derivatives of earlier peaks, and marks none.
MODEL(Extreme2D)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int peaks = nParams / extreme_size;

    if (flags & EVAL_VALUE) {
        y[1] = z0;
        for (int k = 0; k < peaks; ++k) {
            const double *peak = p + 2 + extreme_size * k;
            const double a = peak[0], s = peak[1], A = peak[2], xc = peak[3], w = peak[4];
            const double e1 = bounded_exp((xc - X) / w);
            const double e2 = bounded_exp(1 - e1 - (X - xc) / w);
            if (error.raised()) return surface_missing(error, x);
            y[2 + k] = a * Y + A * e2 + s * Y * Y;
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = z0;
    dy[1] = 1.0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + extreme_size * k;
        const double a = p[b], s = p[b + 1], A = p[b + 2], xc = p[b + 3], w = p[b + 4], Y2 = Y * Y;
        const double e1 = bounded_exp((xc - X) / w);
        const double e2 = bounded_exp(1 - e1 - (X - xc) / w);
        if (error.raised()) return surface_missing(error, x);
        dy[b] = Y;
        dy[b + 2] = e2;
        dy[b + 1] = Y2;
        dy[b + 3] = e2 * A * (1 - e1) / w;
        dy[b + 4] = ((xc - X) * e1 + (X - xc)) * e2 * A / w / w;
        y[2 + k] = s * Y2 + a * Y + e2 * A;
        y[1] += y[2 + k];
    }
    return 0;
}

/// Peaks that are Gaussian in X and log-normal in Y.
///     z = z0 + sum of A·exp(-0.5·((X - xc)/w1)² - 0.5·(ln(Y/yc)/w2)²)
///     p = (z0, then for each peak: A, xc, w1, yc, w2);  (nParams - 1)/5 peaks
/// Every peak needs Y > 0 (a NaN passes). EVAL_INIT answers 0. There are no derivatives: a call for them ends with
/// y[1] = z0, the peaks missing from it even where the value step has added them. The share of a peak that fails
/// the error test has been written.
MODEL(GaussLog)
{
    if (flags & EVAL_INIT) return 0;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int peaks = (nParams - 1) / gauss_log_size;

    if (flags & EVAL_VALUE) {
        y[1] = z0;
        for (int k = 0; k < peaks; ++k) {
            const double *peak = p + 2 + gauss_log_size * k;
            const double A = peak[0], xc = peak[1], w1 = peak[2], yc = peak[3], w2 = peak[4];
            if (Y <= 0) return surface_missing(error, x);
            const double v = std::log(Y / yc) / w2, u = (X - xc) / w1;
            y[2 + k] = A * bounded_exp(-0.5 * (v * v + u * u));
            if (error.raised()) return surface_missing(error, x);
            y[1] += y[2 + k];
        }
    }
    if (flags & EVAL_DERIVS) y[1] = z0;
    return 0;
}

/// Log-normal ridges in X and in Y and their product.
///     z = z0 + sum of Ax·Ex + Ay·Ey + Axy·Ex·Ey,  Ex = exp(-0.5·(ln(X/xc)/wx)²), Ey = exp(-0.5·(ln(Y/yc)/wy)²)
///     p = (z0, then for each peak: Ax, xc, wx, Ay, yc, wy, Axy);  nParams/7 peaks, the last of which may end at
///     p[nParams + 1]
/// Computed on calls with EVAL_VALUE only; EVAL_INIT answers 0. X/xc and Y/yc are not tested: where they are not
/// positive it is the logarithm's code in errno that fails the call, so with EVAL_USE_ERRPTR the value is what the
/// logarithm gives.
MODEL(LogNormal2D)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int peaks = nParams / log_normal_size;

    y[1] = z0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + 2 + log_normal_size * k;
        const double Ax = peak[0], xc = peak[1], wx = peak[2], Ay = peak[3], yc = peak[4], wy = peak[5];
        const double Axy = peak[6];
        const double u = std::log(X / xc);
        const double Ex = bounded_exp(-0.5 * (u * u) / wx / wx);
        if (error.raised()) return surface_missing(error, x);
        const double v = std::log(Y / yc);
        const double Ey = bounded_exp(-0.5 * (v * v) / wy / wy);
        if (error.raised()) return surface_missing(error, x);
        y[2 + k] = Ay * Ey + Ax * Ex + Axy * Ex * Ey;
        y[1] += y[2 + k];
    }
    return 0;
}

/// Logistic peaks in X over a line in Y.
///     z = z0 + sum of a·Y + 4·A·E/(1 + E)²,  E = exp((xc - X)/w)
///     p = (z0, then for each peak: a, A, xc, w);  nParams/4 peaks, the last of which may end at p[nParams + 1]
/// EVAL_INIT answers 0. There are no derivatives: a call for them ends with y[1] = z0, as that of GaussLog.
MODEL(LogisticPeak)
{
    if (flags & EVAL_INIT) return 0;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int peaks = nParams / logistic_size;

    if (flags & EVAL_VALUE) {
        y[1] = z0;
        for (int k = 0; k < peaks; ++k) {
            const double *peak = p + 2 + logistic_size * k;
            const double a = peak[0], A = peak[1], xc = peak[2], w = peak[3];
            const double E = bounded_exp((xc - X) / w);
            if (error.raised()) return surface_missing(error, x);
            y[2 + k] = 4 * A * E / (E + 1) / (E + 1) + a * Y;
            y[1] += y[2 + k];
        }
    }
    if (flags & EVAL_DERIVS) y[1] = z0;
    return 0;
}

}  // namespace curvebank
