// The extreme-value peak, in the shape of the Gumbel density: steep below its centre, with an exponential tail
// above.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr int peak_size = 3;  // parameters a peak after the common baseline

}  // namespace

/// Extreme-value peaks by their heights.
///     y = y0 + sum of A·exp(1 - exp(-z) - z),  z = (X - xc)/w
///     p = (y0, then for each peak: xc, w, A);  (nParams - 1)/3 peaks
/// Each peak's share goes to y[2], y[3], ... Derivatives are given on calls without EVAL_VALUE only. Both steps
/// need nParams >= 1. A peak of amplitude 0 is skipped, its derivatives being 0; any other peak needs a positive
/// width (a NaN passes), for want of which dy is not marked. Far below a centre exp(-z) overflows while the peak
/// vanishes. The value step then drops that peak, its share unwritten; the derivative step ends the call as a
/// success with y = 0, the baseline and the earlier peaks lost, and derivatives of 0 for that peak. Both read and
/// reset errno, whichever the chosen error variable is, and a range error that stood there before the call works
/// alike.
MODEL(Extreme)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / peak_size;

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        y[1] = y0;
        for (int k = 0; k < peaks; ++k) {
            const double *peak = p + 2 + peak_size * k;
            const double xc = peak[0], w = peak[1], A = peak[2];
            if (A == 0) continue;
            if (w <= 0) return missing_value(error, y);
            const double z = (X - xc) / w;
            const double e = guarded_exp(-z);
            if (runtime.range_error()) {
                runtime.clear();
                continue;
            }
            const double E = guarded_exp(-e - z + 1);
            if (runtime.range_error()) return missing_value(error, y);
            y[2 + k] = E * A;
            y[1] += y[2 + k];
        }
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (nParams < 1) return missing_value(error, y);
    dy[1] = 1.0;
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + peak_size * k;
        const double xc = p[b], w = p[b + 1], A = p[b + 2];
        if (A == 0) {
            dy[b] = dy[b + 1] = dy[b + 2] = 0.0;
            continue;
        }
        if (w <= 0) return missing_value(error, y);
        const double z = (X - xc) / w;
        const double e = guarded_exp(-z);
        if (runtime.range_error()) {
            dy[b] = dy[b + 1] = dy[b + 2] = 0.0;
            return saturated(y, 0.0);
        }
        const double E = guarded_exp(1 - e - z);
        if (runtime.range_error()) return missing_values(error, y, dy, b, b + 2);
        const double h = A * E;
        dy[b + 2] = E;
        dy[b] = h * (1 - e) / w;
        dy[b + 1] = dy[b] * z;
        y[2 + k] = h;
        y[1] += h;
    }
    return 0;
}

}  // namespace curvebank
