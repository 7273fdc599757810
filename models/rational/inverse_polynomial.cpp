// Peaks whose reciprocal is a polynomial in the squared distance from the centre.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr int peak_size = 6;          // parameters a peak
constexpr double negligible = 1e-10;  // a coefficient up to this size does not count in a query

/// The mask grows with the highest even power that the first peak has; a NaN coefficient ends the search.
int32_t query_mask(double A1, double A2, double A3)
{
    if (std::fabs(A3) > negligible) return 31;
    if (std::isnan(A3)) return 0;
    if (std::fabs(A2) > negligible) return 7;
    if (std::isnan(A2)) return 0;
    return std::fabs(A1) > negligible ? 1 : 0;
}

}  // namespace

/// Sum of inverse-polynomial peaks over a baseline.
///     y = y0 + sum of A / (1 + A1·z² + A2·z⁴ + A3·z⁶),  z = 2·(X - xc)/w
///     p = (y0, then for each peak: xc, w, A, A1, A2, A3);  (nParams - 1)/6 peaks
/// Each peak's share goes to y[2], y[3], ... A peak with A = 0 is skipped: its share and its derivatives stay
/// unwritten. Any other peak needs a positive width. A value call needs nParams >= 1. Queries are answered
/// before EVAL_INIT.
MODEL(InvsPoly)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy, query_mask(p[5], p[6], p[7]), QUERY_MASK);
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / peak_size;

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        y[1] = y0;
        for (int k = 0; k < peaks; ++k) {
            const int b = 2 + peak_size * k;
            const double xc = p[b], w = p[b + 1], A = p[b + 2], A1 = p[b + 3], A2 = p[b + 4], A3 = p[b + 5];
            if (A == 0) continue;
            if (w <= 0) return missing_value(error, y);
            const double z = 2 * (X - xc) / w, s = z * z;
            const double Q = 1 + A1 * s + (A2 + A3 * s) * (s * s);
            y[2 + k] = A / Q;
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + peak_size * k;
        const double xc = p[b], w = p[b + 1], A = p[b + 2], A1 = p[b + 3], A2 = p[b + 4], A3 = p[b + 5];
        if (A == 0) continue;
        if (w <= 0) {
            mark_missing(dy, 1, 1);
            return missing_values(error, y, dy, b, b + 5);
        }
        const double z = 2 * (X - xc) / w, s = z * z;
        const double Q = ((A3 * s + A2) * s + A1) * s + 1;
        const double t = -A * s / (Q * Q);
        dy[b + 2] = 1 / Q;
        dy[b + 3] = t;
        dy[b + 4] = t * s;
        dy[b + 5] = t * (s * s);
        dy[b + 1] = ((6 * A3 * s + 4 * A2) * s + 2 * A1) * A * s / w / (Q * Q);
        dy[b] = X != xc ? dy[b + 1] * w / (X - xc) : 0.0;
        y[2 + k] = A / Q;
        y[1] += A * dy[b + 2];
    }
    return 0;
}

}  // namespace curvebank
