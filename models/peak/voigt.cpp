// Voigt and pseudo-Voigt peaks: symmetric peaks between a Gaussian and a Lorentzian, over a baseline.
//
// A call sums as many peaks as nParams has room for, and each peak's share goes to y[2], y[3], ... A peak of
// amplitude 0 is skipped: its widths are not looked at and its share is not written. The models have a value only:
// a call for derivatives alone answers 1 and writes nothing, and a value call ignores EVAL_DERIVS. Queries are
// answered before EVAL_INIT, which answers 0. No exponent here is ever positive, so an error code found after an
// exponential is one that was there before the call; it fails the call all the same.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr int peak_size = 4;       // parameters a peak after the common baseline
constexpr int two_width_size = 5;  // of PsdVoigt2

constexpr double gauss_height = 0.939437278;  // 2·√(ln 2/π), of a Gaussian of unit area and width at half height
constexpr double two_sqrt_ln2 = 1.665109222;
constexpr double sqrt_ln2 = 0.832554611;
constexpr double lorentz_height = 0.636619772;  // 2/π
constexpr double four_ln2 = 2.77258872;

// The rational approximation of the complex probability function (Humlicek, 1979) in twelve terms. The first of S
// is kept to five decimals.
constexpr int terms = 6;
constexpr double T[terms] = {0.314240376, 0.947788391, 1.59768264, 2.27950708, 3.02063703, 3.8897249};
constexpr double C[terms] = {1.01172805, -0.75197147, 0.012557727, 0.0100220082, -0.000242068135, 5.00848061e-7};
constexpr double S[terms] = {1.39323, 0.231152406, -0.155351466, 0.00621836624, 9.19082986e-5, -6.27525958e-7};
constexpr double shift = 1.5;  // of Y, away from the poles

/// Whether (X, Y) lies where the plain sum is accurate: away from the real axis, or close to the centre.
bool off_axis(double X, double Y)
{
    return Y > 0.85 || std::fabs(X) < 18.1 * Y + 1.65;
}

/// W and the terms of the plain sum.
double add_off_axis(double W, double X, double Y)
{
    const double Y1 = Y + shift, Y2 = Y1 * Y1;
    for (int i = 0; i < terms; ++i) {
        const double below = X - T[i], D = 1 / (below * below + Y2), D1 = Y1 * D, D2 = below * D;
        const double above = X + T[i], E = 1 / (above * above + Y2), D3 = Y1 * E, D4 = above * E;
        W = W + C[i] * (D1 + D3) - S[i] * (D2 - D4);
    }
    return W;
}

/// W and the terms of the sum for the neighbourhood of the real axis, where the plain one loses its digits.
double add_near_axis(double W, double X, double Y)
{
    const double Y1 = Y + shift, Y2 = Y1 * Y1, Y3 = Y + 3;
    for (int i = 0; i < terms; ++i) {
        const double below = X - T[i], R2 = below * below, D = 1 / (R2 + Y2), D1 = Y1 * D, D2 = below * D;
        W = W + Y * (C[i] * (below * D2 - shift * D1) + S[i] * Y3 * D2) / (R2 + shift * shift);
        const double above = X + T[i], Q2 = above * above, E = 1 / (Q2 + Y2), D3 = Y1 * E, D4 = above * E;
        W = W + Y * (C[i] * (above * D4 - shift * D3) - S[i] * Y3 * D4) / (Q2 + shift * shift);
    }
    return W;
}

}  // namespace

/// Voigt peaks by their areas: a Gaussian of width wG convolved with a Lorentzian of width wL, both at half height.
///     y = y0 + sum of A·K(X, Y)·2·√(ln 2/π)/wG,  X = 2·√(ln 2)·(x - xc)/wG,  Y = √(ln 2)·wL/wG,
///     K being the real part of the complex probability function
///     p = (y0, then for each peak: xc, A, wG, wL);  (nParams - 1)/4 peaks
/// Needs nParams >= 1 and, in every peak whose area is not 0, two widths other than 0. The sum that gives K is set
/// to 0 once a call and not for each peak: K of a later peak contains that of the one before it, unless the peak
/// begins with its own exponential, close to the real axis. Only such a peak looks at the error variable.
MODEL(Voigt5)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return flags & EVAL_DERIVS ? 1 : 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1];
    const int peaks = (nParams - 1) / peak_size;
    double K = 0.0;

    if (nParams < 1) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + 2 + peak_size * k;
        const double xc = peak[0], A = peak[1], wG = peak[2], wL = peak[3];
        if (A == 0) continue;
        if (wG == 0 || wL == 0) return missing_value(error, y);
        const double X = (x[1] - xc) * two_sqrt_ln2 / wG, Y = wL * sqrt_ln2 / wG;
        if (off_axis(X, Y)) {
            K = add_off_axis(K, X, Y);
        } else {
            if (std::fabs(X) < 12) {
                K = guarded_exp(-X * X);
                if (error.raised()) return missing_value(error, y);
            }
            K = add_near_axis(K, X, Y);
        }
        y[2 + k] = A * K * gauss_height / wG;
        y[1] += y[2 + k];
    }
    return 0;
}

/// Pseudo-Voigt peaks by their areas: a Lorentzian and a Gaussian of one width, that at half height, in the
/// proportion mu to 1 - mu.
///     y = y0 + sum of A·(mu·2/π·w/(4·(X - xc)² + w²) + (1 - mu)·2·√(ln 2/π)/w·exp(-4·ln 2·((X - xc)/w)²))
///     p = (y0, then for each peak: xc, A, w, mu);  (nParams - 1)/4 peaks
/// Needs nParams >= 1 and a positive width in every peak whose area is not 0; a NaN width passes.
MODEL(PsdVoigt1)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return flags & EVAL_DERIVS ? 1 : 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / peak_size;

    if (nParams <= 0) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + 2 + peak_size * k;
        const double xc = peak[0], A = peak[1], w = peak[2], mu = peak[3], d = X - xc;
        if (A == 0) continue;
        if (w <= 0) return missing_value(error, y);
        const double g = guarded_exp(d * d * -four_ln2 / (w * w));
        const double v = mu * lorentz_height * w / (d * d * 4 + w * w) + g * ((1 - mu) * gauss_height) / w;
        if (error.raised()) return missing_value(error, y);
        y[2 + k] = v * A;
        y[1] += y[2 + k];
    }
    return 0;
}

/// Pseudo-Voigt peaks whose Gaussian and Lorentzian parts have a width each.
///     y = y0 + sum of A·(mu·2/π·wL/(wL² + 4·(X - xc)²) + (1 - mu)·2·√(ln 2/π)/wG·exp(-4·ln 2·((X - xc)/wG)²))
///     p = (y0, then for each peak: xc, A, wG, wL, mu);  (nParams - 1)/5 peaks
/// The tests are those of PsdVoigt1, for both widths.
MODEL(PsdVoigt2)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return flags & EVAL_DERIVS ? 1 : 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / two_width_size;

    if (nParams <= 0) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + 2 + two_width_size * k;
        const double xc = peak[0], A = peak[1], wG = peak[2], wL = peak[3], mu = peak[4], d = X - xc;
        if (A == 0) continue;
        if (wG <= 0 || wL <= 0) return missing_value(error, y);
        const double g = guarded_exp(d * d * -four_ln2 / (wG * wG));
        const double v = mu * lorentz_height * wL / (wL * wL + d * d * 4) + g * ((1 - mu) * gauss_height) / wG;
        if (error.raised()) return missing_value(error, y);
        y[2 + k] = v * A;
        y[1] += y[2 + k];
    }
    return 0;
}

}  // namespace curvebank
