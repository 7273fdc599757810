// The log-normal peak: a Gaussian in the logarithm of x.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr int peak_size = 3;  // parameters a peak after the common baseline

constexpr double sqrt2 = 1.414213562373;
constexpr double sqrt_2pi = 2.506628274631;

}  // namespace

/// Log-normal peaks by their areas.
///     y = y0 + sum of A/(w·X·√(2π))·exp(-(ln X - ln xc)²/(2·w²))
///     p = (y0, then for each peak: xc, w, A);  (nParams - 1)/3 peaks
/// Each peak's share goes to y[2], y[3], ... Queries are answered before EVAL_INIT. Derivatives are given on calls
/// without EVAL_VALUE only. Both steps need nParams >= 1. A peak of amplitude 0 is skipped, its derivatives being
/// 0; any other peak needs X, xc and w positive (a NaN passes). The exponent is never positive, so an error code
/// found after the exponential was there before the call; it fails value calls, while the derivative step looks for
/// none. A failing derivative call marks the derivatives of the peak at fault and keeps those of the baseline and
/// of earlier peaks.
MODEL(LogNormal)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / peak_size;

    if (flags & EVAL_VALUE) {
        if (nParams <= 0) return missing_value(error, y);
        y[1] = y0;
        for (int k = 0; k < peaks; ++k) {
            const double *peak = p + 2 + peak_size * k;
            const double xc = peak[0], w = peak[1], A = peak[2];
            if (A == 0) continue;
            if (X <= 0 || xc <= 0 || w <= 0) return missing_value(error, y);
            const double L = (std::log(X) - std::log(xc)) / (w * sqrt2);
            const double e = guarded_exp(-L * L);
            if (error.raised()) return missing_value(error, y);
            y[2 + k] = e * A / (w * X * sqrt_2pi);
            y[1] += y[2 + k];
        }
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (nParams <= 0) return missing_value(error, y);
    dy[1] = 1.0;
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + peak_size * k;
        const double xc = p[b], w = p[b + 1], A = p[b + 2];
        if (A == 0) {
            dy[b] = dy[b + 1] = dy[b + 2] = 0.0;
            continue;
        }
        if (X <= 0 || xc <= 0 || w <= 0) return missing_values(error, y, dy, b, b + 2);
        const double L = (std::log(X) - std::log(xc)) / w;
        const double e = guarded_exp(-L * L * 0.5);
        const double q = 1 / (X * w * sqrt_2pi);
        dy[b + 2] = e * q;
        dy[b] = (A / w) * e * L / xc * q;
        dy[b + 1] = (A / w) * e * L * L * q;  // of the exponential alone, w in the normalisation held fixed
        y[2 + k] = e * q * A;
        y[1] += e * q * A;
    }
    return 0;
}

}  // namespace curvebank
