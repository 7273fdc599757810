// Asymmetric peaks over a baseline: the Weibull peak, the double sigmoid, and the Gaussian with a width for each
// side.
//
// The first two give a value only. They sum as many peaks as nParams has room for, and each peak's share goes to
// y[2], y[3], ... A peak of amplitude 0 is skipped, its other parameters untested and its share unwritten; a peak
// that cannot be computed fails the call and leaves the shares of those before it. Both answer queries, before
// EVAL_INIT, which they answer by 0.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr int weibull_size = 4;    // parameters a peak after the common baseline
constexpr int sigmoid_count = 3;   // parameters by which the peaks of Asym2Sig are counted
constexpr int sigmoid_stride = 5;  // from peak to peak in Asym2Sig

}  // namespace

/// Weibull peaks by their heights, xc being the place of the maximum.
///     y = y0 + sum of A·(1 - 1/c)^(-(1 - 1/c))·Z^(c - 1)·exp(1 - 1/c - Z^c),  Z = (1 - 1/c)^(1/c) + (X - xc)/w
///     p = (y0, then for each peak: xc, A, w, c);  (nParams - 1)/4 peaks
/// Needs nParams >= 1, and w and c other than 0 in each peak. The powers bound the shape: with 0 < c < 1, and below
/// the onset (Z < 0) unless c is an integer, the value is missing. A call that asks for derivatives answers 1, even
/// with the value computed.
MODEL(Weibull3)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 0;
    const int32_t done = flags & EVAL_DERIVS ? 1 : 0;
    if (!(flags & EVAL_VALUE)) return done;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / weibull_size;

    if (nParams < 1) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + 2 + weibull_size * k;
        const double xc = peak[0], A = peak[1], w = peak[2], c = peak[3];
        if (A == 0) continue;
        if (w == 0 || c == 0) return missing_value(error, y);
        const double z = (X - xc) / w, r = 1 / c;
        const double Z = guarded_pow(1 - r, r) + z;
        const double P = guarded_pow(Z, c - 1);
        if (error.raised()) return missing_value(error, y);
        const double E = guarded_exp(1 - r - P * Z);
        const double K = guarded_pow(1 - r, -(1 - r));
        if (error.raised()) return missing_value(error, y);
        y[2 + k] = E * (K * A * P);
        y[1] += y[2 + k];
    }
    return done;
}

/// Double sigmoidal peaks: a rising logistic edge of width w2 and a falling one of width w3, w1 apart.
///     y = y0 + sum of A / (1 + exp(-(X - xc + w1/2)/w2)) · (1 - 1 / (1 + exp(-(X - xc - w1/2)/w3)))
///     p = (y0, then for each peak: xc, A, w1, w2, w3);  (nParams - 1)/3 peaks
/// Peaks are counted by three parameters but stand five apart: two peaks take nParams = 7 and p[1..11]. Needs
/// nParams >= 1, and w2 and w3 other than 0 in each peak. Does not saturate: far out on the side where an
/// exponential overflows the value is missing. A call for derivatives alone answers 1 and writes nothing.
MODEL(Asym2Sig)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return flags & EVAL_DERIVS ? 1 : 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / sigmoid_count;

    if (nParams <= 0) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + 2 + sigmoid_stride * k;
        const double xc = peak[0], A = peak[1], w1 = peak[2], w2 = peak[3], w3 = peak[4];
        if (A == 0) continue;
        if (w2 == 0 || w3 == 0) return missing_value(error, y);
        const double rise = A / (guarded_exp(-(w1 * 0.5 + (X - xc)) / w2) + 1);
        if (error.raised()) return missing_value(error, y);
        const double term = rise * (1 - 1 / (guarded_exp(-((X - xc) - w1 * 0.5) / w3) + 1));
        if (error.raised()) return missing_value(error, y);
        y[2 + k] = term;
        y[1] += term;
    }
    return 0;
}

/// Gaussian peak with a width for each side.
///     y = y0 + A·exp(-(X - xc)²/(2·w²)),  w = w1 for X < xc, else w2          p = (y0, xc, w1, w2, A)
/// An error code left from before fails every call, that of an initialisation too. No exponent is ever positive, so
/// nothing is tested after the exponential. Derivatives are given on calls without EVAL_VALUE only; they need both
/// widths to be other than 0, where a value divides by the one in use. The derivative of the other width is never
/// written.
MODEL(asymptgauss)
{
    const ErrorVariable error(flags, perr);
    if (error.raised()) return missing_value(error, y);
    if (flags & EVAL_INIT) return 1;
    const double y0 = p[1], xc = p[2], w1 = p[3], w2 = p[4], A = p[5], X = x[1];
    const bool left = xc > X;
    const double w = left ? w1 : w2, d = X - xc;

    if (flags & EVAL_VALUE) {
        y[1] = guarded_exp(-(d * d) / ((w + w) * w)) * A + y0;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (w1 == 0 || w2 == 0) return missing_values(error, y, dy, 1, 5);
    const double t = d / w;
    const double e = guarded_exp(-0.5 * (t * t));
    dy[1] = 1.0;
    dy[5] = e;
    dy[2] = d * (e * A) / w / w;
    dy[left ? 3 : 4] = d * dy[2] / w;
    y[1] = y0 + e * A;
    return 0;
}

}  // namespace curvebank
