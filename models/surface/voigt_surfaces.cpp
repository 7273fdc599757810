// Pseudo-Voigt peaks over a plane: mixtures of a Gaussian and a Lorentzian of the same centre and widths, by their
// heights or by a common amplitude of normalised profiles. mu is the Lorentzian's fraction.

#include "models/surface/surface.h"

namespace curvebank {
namespace {

constexpr int peak_size = 6;  // parameters a peak after the common offset

constexpr double pi = 3.141592653589793;
constexpr double pi_squared = 9.869604401089358;
constexpr double four_over_pi_squared = 0.4052847345693511;
constexpr double ln2 = 0.69314718055994;
constexpr double four_ln2 = 2.77258872223976;
constexpr double eight_ln2 = 5.54517744447952;

}  // namespace

/// Pseudo-Voigt peaks by their heights.
///     z = z0 + sum of A·((1 - mu)·exp(-0.5·(a + b)) + mu/((1 + a)·(1 + b)))
///     a = ((X - xc)/w1)²,  b = ((Y - yc)/w2)²
///     p = (z0, then for each peak: A, xc, w1, yc, w2, mu);  (nParams - 1)/6 peaks
/// Both steps need nParams >= 1. A peak of amplitude 0 is skipped, its share unwritten; any other needs widths
/// other than 0 for the value and positive ones for the derivatives. The value step tests the chosen error variable
/// for both codes, the derivative step errno for the range error alone. The derivatives of a skipped peak are set
/// to 0 and those of a failing one marked, but for that of mu, which both leave unwritten.
MODEL(Voigt2D)
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
            const double A = peak[0], xc = peak[1], w1 = peak[2], yc = peak[3], w2 = peak[4], mu = peak[5];
            if (A == 0) continue;
            if (w1 == 0 || w2 == 0) return surface_missing(error, x);
            const double u = (X - xc) / w1, v = (Y - yc) / w2, u2 = u * u, v2 = v * v;
            const double G = guarded_exp(-0.5 * u2 - 0.5 * v2);
            if (error.raised()) return surface_missing(error, x);
            y[2 + k] = A * ((1 - mu) * G + mu / ((1 + u2) * (1 + v2)));
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (nParams < 1) return surface_missing(error, x);
    dy[1] = 1.0;
    y[1] = z0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + peak_size * k;
        const double A = p[b], xc = p[b + 1], w1 = p[b + 2], yc = p[b + 3], w2 = p[b + 4], mu = p[b + 5];
        if (A == 0) {
            for (int i = b; i <= b + 4; ++i) dy[i] = 0.0;
            continue;
        }
        if (w1 <= 0 || w2 <= 0) return surface_missing(error, x, dy, b, b + 4);
        const double u = (X - xc) / w1, v = (Y - yc) / w2, u2 = u * u, v2 = v * v;
        const double G = guarded_exp(-0.5 * u2 - 0.5 * v2), R = 1 / ((1 + u2) * (1 + v2));
        if (ErrorVariable::runtime().range_error()) return surface_missing(error, x, dy, b, b + 4);
        dy[b] = (1 - mu) * G + mu * R;
        dy[b + 2] = 2 * mu * A * R / (1 + u2) * u2 / w1 + (1 - mu) * A * G * u2 / w1;
        dy[b + 4] = 2 * mu * A * R / (1 + v2) * v2 / w2 + (1 - mu) * A * G * v2 / w2;
        dy[b + 1] = X != xc ? (2 * mu * A * R * u2 / (1 + u2) + (1 - mu) * A * G * u2) / (X - xc) : 0.0;
        dy[b + 3] = Y != yc ? (2 * mu * A * R * v2 / (1 + v2) + (1 - mu) * A * G * v2) / (Y - yc) : 0.0;
        dy[b + 5] = (R - G) * A;
        y[2 + k] = A * ((1 - mu) * G + mu * R);
        y[1] += y[2 + k];
    }
    return 0;
}

/// One pseudo-Voigt peak of normalised profiles, the widths being those at half height.
///     z = z0 + A·(L + G),  L = 4·mu/π² · w1·w2/((w1² + 4·(X - xc)²)·(w2² + 4·(Y - yc)²))
///     G = (1 - mu)·4·ln 2/(π·w1·w2) · exp(-4·ln 2·(X - xc)²/w1² - 4·ln 2·(Y - yc)²/w2²)
///     p = (z0, A, xc, w1, yc, w2, mu)
/// With A = 0 the call succeeds without a value: y stays as it stands, and of the derivatives dy[2..6] are set to
/// 0. Otherwise both widths must be positive and the denominator of L other than 0. A range error left in errno by
/// an earlier call is a failure, with EVAL_USE_ERRPTR too, while a power out of range of this call goes unnoticed.
/// A failing call for derivatives marks dy[2..6] alone. The value is computed on derivative calls too.
MODEL(Voigt2DMod)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], A = p[2], xc = p[3], w1 = p[4], yc = p[5], w2 = p[6], mu = p[7];
    const double dX = x[1] - xc, dY = x[2] - yc;

    if (A == 0) {
        if (flags & EVAL_DERIVS)
            for (int i = 2; i <= 6; ++i) dy[i] = 0.0;
        return 0;
    }
    const int last_marked = flags & EVAL_DERIVS ? 6 : 1;  // dy[2..1], none, for the value alone
    if (w1 <= 0 || w2 <= 0 || ErrorVariable::runtime().range_error())
        return surface_missing(error, x, dy, 2, last_marked);
    const double dX2 = guarded_pow(dX, 2), dY2 = guarded_pow(dY, 2);
    const double w1_2 = guarded_pow(w1, 2), w2_2 = guarded_pow(w2, 2);
    const double DX = w1_2 + 4 * dX2, DY = w2_2 + 4 * dY2;
    if (DX * DY == 0) return surface_missing(error, x, dy, 2, last_marked);

    const double c = 4 * mu / pi_squared;
    const double E = guarded_exp(-four_ln2 * dX2 / w1_2 - four_ln2 * dY2 / w2_2);
    y[1] = z0 + A * (c * w1 * w2 / (DX * DY) + (1 - mu) * four_ln2 / (pi * w1 * w2) * E);
    if (!(flags & EVAL_DERIVS)) return 0;

    const double g = four_ln2 / (pi * w1 * w2);
    const double DX_2 = guarded_pow(DX, 2), DY_2 = guarded_pow(DY, 2);
    dy[1] = 1.0;
    dy[2] = c * w1 * w2 / (DX * DY) + (1 - mu) * g * E;
    dy[3] = A * (c * w1 * w2 / (DY * DX_2) * 8 * dX + (1 - mu) * g * E * 8 * ln2 * dX / w1_2);
    dy[4] = A * ((w2 / (DX * DY) - 2 * w1 * w1 * w2 / (DY * DX_2)) * c +
                 (eight_ln2 * dX2 / guarded_pow(w1, 3) - 1 / w1) * (1 - mu) * g * E);
    dy[5] = A * (c * w1 * w2 / (DX * DY_2) * 8 * dY + (1 - mu) * g * E * 8 * ln2 * dY / w2_2);
    dy[6] = A * ((w1 / (DX * DY) - 2 * w2 * w1 * w2 / (DX * DY_2)) * c +
                 (eight_ln2 * dY2 / guarded_pow(w2, 3) - 1 / w2) * (1 - mu) * g * E);
    dy[7] = A * (four_over_pi_squared * w1 * w2 / (DX * DY) - g * E);
    return 0;
}

}  // namespace curvebank
