// Langevin curves: the mean alignment of magnetic or electric moments in a field, as sums of terms (Langevin,
// 1905).
//
// A call sums (nParams - 1)/2 terms and writes each term's share into y[2], y[3], ... With no term at all dy[1] is
// not written either.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double series_limit = 0.0001;

/// L(u) = coth(u) - 1/u, near 0, where the two terms cancel, by its series. The powers of the series may underflow
/// and the exponential may overflow into errno; it is the models that look there, or do not.
double langevin_function(double u)
{
    if (std::fabs(u) < series_limit) {
        const double cube = guarded_pow(u, 3);
        const double fifth = guarded_pow(u, 5);
        return u / 3 - cube / 45 + fifth * 2 / 945;
    }
    return 2 / (guarded_exp(u + u) - 1) + 1 - 1 / u;
}

}  // namespace

/// Langevin curves by centre and amplitude.
///     y = y0 + sum of A·L(X - x0)          p = (y0, then for each term: x0, A);  (nParams - 1)/2 terms
/// The derivative step refuses the centre of a term itself, and a distance above it of which the exponential for
/// dy of x0 saturates; what it wrote of this and the earlier terms stays.
MODEL(Langevin)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int terms = (nParams - 1) / 2;

    if (flags & EVAL_VALUE) {
        y[1] = y0;
        for (int k = 1; k <= terms; ++k) {
            const double x0 = p[2 * k], A = p[2 * k + 1];
            const double h = langevin_function(X - x0) * A;
            if (error.raised()) return missing_value(error, y);
            y[1 + k] = h;
            y[1] += h;
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = y0;
    for (int k = 1; k <= terms; ++k) {
        const double x0 = p[2 * k], A = p[2 * k + 1], u = X - x0;
        dy[1] = 1.0;
        if (u == 0) return missing_value(error, y);
        dy[2 * k + 1] = langevin_function(u);
        if (error.raised()) return missing_value(error, y);
        const double E = bounded_exp(u + u);
        if (E == MISSING_VALUE) return missing_value(error, y);
        dy[2 * k] = (4 * E / (E - 1) / (E - 1) - 1 / u / u) * A;
        y[1 + k] = A * dy[2 * k + 1];
        y[1] += y[1 + k];
    }
    return 0;
}

/// Langevin curves by centre, amplitude and width.
///     y = y0 + sum of A·L((X - x0)/w)          p = (y0, x0, A, w);  (nParams - 1)/2 terms
/// Each term has three parameters but stands only two behind the one before: the width of a term is the centre of
/// the next. The value step tests p[4] alone, w of the first term, and looks at no error variable. The derivative
/// step refuses p[2m + 4] = 0 and X = p[2m + 2], where m is the number of terms if the call had a value step and
/// else 0. So a call without a value step tests the first term's w and x0, and one with it, for a single term, X
/// against w. An element beyond nParams is not looked at. A saturated exponential is a number here, so small that
/// its part in the slope vanishes, as it should.
MODEL(LangevinMod)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int terms = (nParams - 1) / 2;
    int finished = 0;

    if (flags & EVAL_VALUE) {
        y[1] = y0;
        if (p[4] == 0) return missing_value(error, y);
        for (; finished < terms; ++finished) {
            const double *term = p + 2 + 2 * finished;
            const double x0 = term[0], A = term[1], w = term[2];
            y[2 + finished] = langevin_function((X - x0) / w) * A;
            y[1] += y[2 + finished];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = y0;
    const int width = 2 * finished + 4, centre = 2 * finished + 2;
    if (width <= nParams && p[width] == 0) return missing_value(error, y);
    if (centre <= nParams && X == p[centre]) return missing_value(error, y);
    for (int k = 1; k <= terms; ++k) {
        const double x0 = p[2 * k], A = p[2 * k + 1], w = p[2 * k + 2], u = (X - x0) / w;
        dy[1] = 1.0;
        dy[2 * k + 1] = langevin_function(u);
        const double E = bounded_exp(u);
        if (error.raised()) return missing_value(error, y);
        const double g = 4 / (E - 1 / E) / (E - 1 / E) - 1 / u / u;
        dy[2 * k] = g * (A / w);
        dy[2 * k + 2] = dy[2 * k] * u;  // of w, until the next term takes the entry for its x0
        y[1 + k] = A * dy[2 * k + 1];
        y[1] += y[1 + k];
    }
    return 0;
}

}  // namespace curvebank
