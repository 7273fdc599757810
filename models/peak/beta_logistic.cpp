// Peaks of the shape of the beta density and of the slope of the logistic curve, over a baseline.
//
// Both give a value only, need nParams >= 1 and sum as many peaks as it has room for; each peak's share goes to
// y[2], y[3], ... A peak of amplitude 0 is skipped, its other parameters untested and its share unwritten.
// EVAL_INIT is answered by 0, queries are not.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr int beta_size = 5;      // parameters a peak after the common baseline
constexpr int logistic_size = 3;  // the same of LogistPK

}  // namespace

/// Beta peaks by their heights: each stands on an interval of length w and has its maximum at xc.
///     y = y0 + sum of A·(1 - u/(b - 1))^(b - 1)·(1 + u/(a - 1))^(a - 1),  u = (X - xc)·(a + b - 2)/w
///     p = (y0, then for each peak: xc, A, w, a, b);  (nParams - 1)/5 peaks
/// Refuses a negative A, w <= 0, a <= 1 and b <= 1, which lets a NaN through. Nothing is cut off outside the
/// interval: there the power of a negative base is missing unless its exponent is an integer. A call for
/// derivatives alone answers 1 and writes nothing.
MODEL(Beta)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return flags & EVAL_DERIVS ? 1 : 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / beta_size;

    if (nParams <= 0) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + 2 + beta_size * k;
        const double xc = peak[0], A = peak[1], w = peak[2], a = peak[3], b = peak[4];
        if (A == 0) continue;
        if (A <= 0 || w <= 0 || a <= 1 || b <= 1) return missing_value(error, y);
        const double u = (X - xc) * (b + a - 2) / w;
        const double P1 = guarded_pow(1 - u / (b - 1), b - 1);
        const double P2 = guarded_pow(u / (a - 1) + 1, a - 1);
        if (error.raised()) return missing_value(error, y);
        y[2 + k] = P1 * (P2 * A);
        y[1] += y[2 + k];
    }
    return 0;
}

/// Logistic peaks by their heights.
///     y = y0 + sum of 4·A·e/(1 + e)²,  e = exp((xc - X)/w)
///     p = (y0, then for each peak: xc, w, A);  (nParams - 1)/3 peaks
/// A width that is not positive (a NaN passes) ends the call with 1, the sum as far as it goes left in y[1] and the
/// error variable alone. A range error in errno, far below a centre, makes the whole value 0, baseline included,
/// and is a success. A call for derivatives alone marks y[1] and dy[1..nParams].
MODEL(LogistPK)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return flags & EVAL_DERIVS ? missing_values(y, dy, 1, nParams) : 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / logistic_size;

    if (nParams <= 0) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + 2 + logistic_size * k;
        const double xc = peak[0], w = peak[1], A = peak[2];
        if (A == 0) continue;
        if (w <= 0) return 1;
        const double e = guarded_exp((xc - X) / w);
        if (ErrorVariable::runtime().range_error()) return saturated(y, 0.0);
        y[2 + k] = A * 4 * e / (e + 1) / (e + 1);
        y[1] += y[2 + k];
    }
    return 0;
}

}  // namespace curvebank
