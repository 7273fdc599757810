// Gaussian and Lorentzian peaks over a plane, with a width along either axis, and the Gaussian turned by an angle.
//
// A call sums as many peaks as nParams has room for, at least 1 + that many elements of y being supplied: each
// peak's share goes to y[2], y[3], ... A peak of amplitude 0 is skipped: its widths are not looked at, its share is
// not written, and its derivatives are 0, that of the amplitude too. Any other peak needs widths other than 0 for
// the value and positive ones for the derivatives. Both steps need nParams >= 1.
//
// The value step tests the chosen error variable for both codes, the derivative step errno for the range error
// alone. No exponent here is ever positive, so what they find was there before the call, or came from the sine and
// cosine of an infinite angle; it fails the call all the same. A failing derivative step marks the derivatives of
// the peak it fails in and leaves those of earlier and later ones.

#include "models/surface/surface.h"

namespace curvebank {
namespace {

constexpr int peak_size = 5;  // parameters a peak after the common offset

}  // namespace

/// Gaussian peaks.
///     z = z0 + sum of A·exp(-0.5·((X - xc)/w1)² - 0.5·((Y - yc)/w2)²)
///     p = (z0, then for each peak: A, xc, w1, yc, w2);  (nParams - 1)/5 peaks
/// On the lines X = xc and Y = yc the derivative of that centre is exactly 0.
MODEL(Gauss2D)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int peaks = (nParams - 1) / peak_size;

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return surface_missing(error, x);
        y[1] = z0;
        for (int k = 0; k < peaks; ++k) {
            const double *peak = p + 2 + peak_size * k;
            const double A = peak[0], xc = peak[1], w1 = peak[2], yc = peak[3], w2 = peak[4];
            if (A == 0) continue;
            if (w1 == 0 || w2 == 0) return surface_missing(error, x);
            const double u = (X - xc) / w1, v = (Y - yc) / w2;
            const double e = guarded_exp(-0.5 * (u * u) - 0.5 * (v * v));
            if (error.raised()) return surface_missing(error, x);
            y[2 + k] = e * A;
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (nParams < 1) return surface_missing(error, x);
    dy[1] = 1.0;
    y[1] = z0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + peak_size * k;
        const double A = p[b], xc = p[b + 1], w1 = p[b + 2], yc = p[b + 3], w2 = p[b + 4];
        if (A == 0) {
            for (int i = b; i <= b + 4; ++i) dy[i] = 0.0;
            continue;
        }
        if (w1 <= 0 || w2 <= 0) return surface_missing(error, x, dy, b, b + 4);
        const double u = (X - xc) / w1, v = (Y - yc) / w2, u2 = u * u, v2 = v * v;
        const double e = guarded_exp(-0.5 * u2 - 0.5 * v2);
        if (ErrorVariable::runtime().range_error()) return surface_missing(error, x, dy, b, b + 4);
        dy[b] = e;
        dy[b + 2] = e * A * u2 / w1;
        dy[b + 4] = e * A * v2 / w2;
        dy[b + 1] = X != xc ? e * A * u2 / (X - xc) : 0.0;
        dy[b + 3] = Y != yc ? e * A * v2 / (Y - yc) : 0.0;
        y[2 + k] = A * e;
        y[1] += y[2 + k];
    }
    return 0;
}

/// Products of two Lorentzians.
///     z = z0 + sum of A / ((1 + ((X - xc)/w1)²)·(1 + ((Y - yc)/w2)²))
///     p = (z0, then for each peak: A, xc, w1, yc, w2);  (nParams - 1)/5 peaks
/// Without an exponential there is nothing to go wrong, but a code from before the call is looked for as in
/// Gauss2D.
MODEL(Lorentz2D)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int peaks = (nParams - 1) / peak_size;

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return surface_missing(error, x);
        y[1] = z0;
        for (int k = 0; k < peaks; ++k) {
            const double *peak = p + 2 + peak_size * k;
            const double A = peak[0], xc = peak[1], w1 = peak[2], yc = peak[3], w2 = peak[4];
            if (A == 0) continue;
            if (w1 == 0 || w2 == 0 || error.raised()) return surface_missing(error, x);
            const double u = (X - xc) / w1, v = (Y - yc) / w2;
            y[2 + k] = A / (1 + u * u) / (1 + v * v);
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (nParams < 1) return surface_missing(error, x);
    dy[1] = 1.0;
    y[1] = z0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + peak_size * k;
        const double A = p[b], xc = p[b + 1], w1 = p[b + 2], yc = p[b + 3], w2 = p[b + 4];
        if (A == 0) {
            for (int i = b; i <= b + 4; ++i) dy[i] = 0.0;
            continue;
        }
        if (w1 <= 0 || w2 <= 0 || ErrorVariable::runtime().range_error())
            return surface_missing(error, x, dy, b, b + 4);
        const double u = (X - xc) / w1, v = (Y - yc) / w2, u2 = u * u, v2 = v * v;
        const double R = 1 / ((1 + u2) * (1 + v2));
        dy[b] = R;
        dy[b + 2] = 2 * A * R / (1 + u2) * u2 / w1;
        dy[b + 4] = 2 * A * R / (1 + v2) * v2 / w2;
        dy[b + 1] = X != xc ? 2 * A * R * u2 / (1 + u2) / (X - xc) : 0.0;
        dy[b + 3] = Y != yc ? 2 * A * R * v2 / (1 + v2) / (Y - yc) : 0.0;
        y[2 + k] = A * R;
        y[1] += y[2 + k];
    }
    return 0;
}

/// Gaussian peaks whose axes are turned by an angle theta, in radians.
///     z = z0 + sum of A·exp(-0.5·(U/w1)² - 0.5·(V/w2)²)
///     U = cos(theta)·(X - xc) + sin(theta)·(Y - yc),  V = cos(theta)·(Y - yc) - sin(theta)·(X - xc)
///     p = (z0, then for each peak: A, xc, w1, yc, w2, theta);  (nParams - 1)/5 peaks
/// Peaks of six parameters stand five apart: the angle of a peak is the amplitude of the next, and the last angle
/// may be p[nParams + 1]. The derivative of a shared parameter is that of the amplitude, which is written later.
MODEL(Gaussian2D)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int peaks = (nParams - 1) / peak_size;

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return surface_missing(error, x);
        y[1] = z0;
        for (int k = 0; k < peaks; ++k) {
            const double *peak = p + 2 + peak_size * k;
            const double A = peak[0], xc = peak[1], w1 = peak[2], yc = peak[3], w2 = peak[4], theta = peak[5];
            if (A == 0) continue;
            if (w1 == 0 || w2 == 0) return surface_missing(error, x);
            const double c = std::cos(theta), s = std::sin(theta);
            const double U = c * X + s * Y - (c * xc + s * yc), V = c * Y - s * X - (c * yc - s * xc);
            const double u = U / w1, v = V / w2;
            const double e = guarded_exp(-0.5 * (u * u) - 0.5 * (v * v));
            if (error.raised()) return surface_missing(error, x);
            y[2 + k] = e * A;
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (nParams < 1) return surface_missing(error, x);
    dy[1] = 1.0;
    y[1] = z0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + peak_size * k;
        const double A = p[b], xc = p[b + 1], w1 = p[b + 2], yc = p[b + 3], w2 = p[b + 4], theta = p[b + 5];
        if (A == 0) {
            for (int i = b; i <= b + 5; ++i) dy[i] = 0.0;
            continue;
        }
        if (w1 <= 0 || w2 <= 0) return surface_missing(error, x, dy, b, b + 5);
        const double c = std::cos(theta), s = std::sin(theta);
        const double U = c * X + s * Y - (c * xc + s * yc), V = c * Y - s * X - (c * yc - s * xc);
        const double u = U / w1, v = V / w2, u2 = u * u, v2 = v * v;
        const double e = guarded_exp(-0.5 * u2 - 0.5 * v2);
        if (ErrorVariable::runtime().range_error()) return surface_missing(error, x, dy, b, b + 5);
        dy[b] = e;
        dy[b + 2] = e * A * u2 / w1;
        dy[b + 4] = e * A * v2 / w2;
        dy[b + 1] = A * e * (c * U / (w1 * w1) - s * V / (w2 * w2));
        dy[b + 3] = A * e * (s * U / (w1 * w1) + c * V / (w2 * w2));
        dy[b + 5] = A * e * U * V * (1 / (w2 * w2) - 1 / (w1 * w1));
        y[2 + k] = A * e;
        y[1] += y[2 + k];
    }
    return 0;
}

}  // namespace curvebank
