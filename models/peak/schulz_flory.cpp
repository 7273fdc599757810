// The Schulz-Flory distribution of chain lengths, drawn over the decimal logarithm of the length.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr int peak_size = 3;         // parameters a peak after the common baseline
constexpr double power_cap = 140.0;  // 140^140 still is a double

/// a to the power b, both capped where both are large. An error code in errno, be it of this power or an earlier
/// one, makes it the missing value, which callers go on computing with and which stays the missing value here.
double capped_pow(double a, double b)
{
    if (a == MISSING_VALUE || b == MISSING_VALUE) return MISSING_VALUE;
    if (a > power_cap && b > power_cap) return guarded_pow(power_cap, power_cap);
    const double power = guarded_pow(a, b);
    return ErrorVariable::runtime().raised() ? MISSING_VALUE : power;
}

}  // namespace

/// Schulz-Flory peaks on a logarithmic axis, by their heights.
///     y = y0 + sum of A·(N/C)^(C/W)·exp((C - N)/W),  N = 10^X, C = 10^xc, W = 10^w
///     p = (y0, then for each peak: xc, w, A);  (nParams - 1)/3 peaks
/// Each peak's share goes to y[2], y[3], ... Derivatives are given on calls without EVAL_VALUE only. Both steps
/// need nParams >= 1. A peak of amplitude 0 is skipped, its derivatives unwritten. A power out of range leaves its
/// code in errno. The call fails where errno is the chosen error variable; with the caller's variable it goes on
/// with the missing value for a number, as it does past an exponent above 300. A failing derivative call marks the
/// derivatives of the baseline and of the peak at fault.
MODEL(SchulzFlory)
{
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
            const double N = capped_pow(10, X);
            const double C = capped_pow(10, xc);
            const double W = capped_pow(10, w);
            const double E = bounded_exp((C - N) / W);
            const double Q = capped_pow(N / C, C / W);
            if (error.raised()) return missing_value(error, y);
            y[2 + k] = Q * E * A;
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
        if (A == 0) continue;
        const double N = capped_pow(10, X);
        const double C = capped_pow(10, xc);
        const double W = capped_pow(10, w);
        const double E = bounded_exp((C - N) / W);
        const double r = N / C;
        const double Q = capped_pow(r, C / W);
        if (error.raised()) {
            mark_missing(dy, 1, 1);
            return missing_values(error, y, dy, b, b + 2);
        }
        const double g = Q * E, t = g * A;
        const double L = std::log(r);  // an r underflowed to 0 leaves a range error, which the next peak meets
        const double ln10 = std::log(10.0);
        dy[b + 2] = g;
        dy[b] = ((L - 1) * t / W + t) * N * ln10;  // not the partial: scaled by N, the last t not over W
        dy[b + 1] = (-A * g * (C - N) / (W * W) - A * g * C * L / (W * W)) * W * ln10;
        y[2 + k] = t;
        y[1] += t;
    }
    return 0;
}

}  // namespace curvebank
