// Gaussian and Lorentzian peaks: symmetric peaks over a baseline, and the split Gaussian with a width for each
// side.
//
// A call sums as many peaks as nParams has room for, and each peak's share goes to y[2], y[3], ... Where a model
// skips peaks of amplitude 0, their width is not looked at and their share is not written. All but Gauss answer
// queries, before EVAL_INIT. No exponent here is ever positive, so an error code found after an exponential is one
// that was there before the call; it fails the call all the same.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr int peak_size = 3;        // parameters a peak after the common baseline
constexpr int gaussian_stride = 4;  // from peak to peak in Gaussian
constexpr int split_size = 5;       // parameters a peak with a baseline of its own

constexpr double pi = 3.141592653589793;
constexpr double sqrt2 = 1.414213562373;
constexpr double sqrt_half_pi = 1.253314137316;
constexpr double sqrt_pi_4ln2 = 1.06446701943122;  // sqrt(pi/(4·ln 2))
constexpr double ln2 = 0.69314718055994;
constexpr double four_ln2 = 2.77258872223978;

}  // namespace

/// Gaussian peaks by their areas.
///     y = y0 + sum of A/(w·√(π/2))·exp(-2·((X - xc)/w)²)
///     p = (y0, then for each peak: xc, w, A);  (nParams - 1)/3 peaks
/// Both steps need nParams >= 1. A peak of amplitude 0 is skipped, all its derivatives being 0, that of A too. Any
/// other peak needs a width other than 0, for derivatives a positive one. The value step tests the chosen error
/// variable for both codes, the derivative step errno for the range error alone. Where the latter fails, the
/// baseline's and that peak's derivatives are marked and those of earlier peaks stay.
MODEL(Gauss)
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
            if (w == 0) return missing_value(error, y);
            const double t = (X - xc) / w;
            const double e = guarded_exp(-2 * t * t);
            if (error.raised()) return missing_value(error, y);
            y[2 + k] = e * A / (w * sqrt_half_pi);
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (nParams <= 0) return missing_value(error, y);
    dy[1] = 1.0;
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + peak_size * k;
        const double xc = p[b], w = p[b + 1], A = p[b + 2];
        if (A == 0) {
            dy[b] = 0.0;
            dy[b + 1] = 0.0;
            dy[b + 2] = 0.0;
            continue;
        }
        const double u = (X - xc) * sqrt2 / w, u2 = u * u;
        const double g = guarded_exp(-u2) / (w * sqrt_half_pi);
        if (w <= 0 || ErrorVariable::runtime().range_error()) {
            mark_missing(dy, 1, 1);
            return missing_values(error, y, dy, b, b + 2);
        }
        dy[b + 2] = g;
        dy[b + 1] = (2 * u2 - 1) * A * g / w;
        dy[b] = X != xc ? 2 * A * u2 * g / (X - xc) : 0.0;
        y[2 + k] = g * A;
        y[1] += g * A;
    }
    return 0;
}

/// Gaussian peaks by their heights.
///     y = y0 + sum of A·exp(-0.5·((X - xc)/w)²)
///     p = (y0, then for each peak: xc, w, A);  (nParams - 1)/3 peaks
/// Derivatives are given on calls without EVAL_VALUE only. Both steps need nParams >= 1. A peak of amplitude 0 is
/// skipped, its derivatives unwritten; any other peak needs a width other than 0. A failing derivative call marks
/// as that of Gauss.
MODEL(GaussAmp)
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
            if (w == 0) return missing_value(error, y);
            const double t = (X - xc) / w;
            const double e = guarded_exp(-0.5 * t * t);
            if (error.raised()) return missing_value(error, y);
            y[2 + k] = A * e;
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
        const double t = (X - xc) / w;
        const double e = guarded_exp(-0.5 * t * t);
        if (w == 0 || error.raised()) {
            mark_missing(dy, 1, 1);
            return missing_values(error, y, dy, b, b + 2);
        }
        dy[b + 2] = e;
        dy[b] = (X - xc) * e * A / w / w;
        dy[b + 1] = (X - xc) * dy[b] / w;
        y[2 + k] = e * A;
        y[1] += e * A;
    }
    return 0;
}

/// Gaussian peaks by their areas, the width being that at half height.
///     y = y0 + sum of A/(w·√(π/(4·ln 2)))·exp(-4·ln 2·((X - xc)/w)²)
///     p = (y0, xc, A, w);  (nParams - 1)/3 peaks, of which peak k is read from p[4k - 2] on
/// Peaks are counted by three parameters but stand four apart: two peaks are p = (y0, xc, A, w, -, xc, A, w) with
/// nParams = 7, and p and dy are used up to four times the number of peaks. The value is computed on every call but
/// queries and initialisations, whatever the flags. A peak of amplitude 0 is skipped, its derivatives unwritten;
/// any other peak needs a width other than 0. A baseline alone looks at no error variable. The first of a peak's
/// four derivatives is that of the baseline, 1, which every peak writes.
MODEL(Gaussian)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / peak_size;

    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + gaussian_stride * k;
        const double xc = p[b], A = p[b + 1], w = p[b + 2];
        if (A == 0) continue;
        if (w == 0) return missing_value(error, y);
        const double z = 2 * (X - xc) / w;
        const double q = z * z * ln2;
        const double e = bounded_exp(-q);
        if (error.raised()) return missing_value(error, y);
        const double g = e / (w * sqrt_pi_4ln2), term = g * A;
        y[2 + k] = term;
        y[1] += term;
        if (flags & EVAL_DERIVS) {
            dy[b + 1] = g;
            dy[b - 1] = 1.0;
            dy[b + 2] = (2 * q - 1) * term / w;
            dy[b] = term * z * four_ln2 / w;
        }
    }
    return 0;
}

/// Split Gaussian peaks: one width on each side of the centre.
///     y = sum of y0 + H·exp(-(X - xc)²/(2·w²)),  w = w1 for X < xc, else w2
///     p = (for each peak: y0, xc, H, w1, w2);  nParams/5 peaks
/// Every peak has a baseline of its own, which belongs to its share. Value calls divide by a width of 0; derivative
/// calls fail, having written dy for y0. EVAL_INIT answers 0. The derivative step writes the value again without
/// the baselines, and stores the derivative of the width in use, be it w1 or w2, in the place of w1: that of w2 is
/// never written.
MODEL(BiGaussian)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 0;
    const ErrorVariable error(flags, perr);
    const double X = x[1];
    const int peaks = nParams / split_size;

    if (flags & EVAL_VALUE) {
        y[1] = 0.0;
        for (int k = 0; k < peaks; ++k) {
            const double *peak = p + 1 + split_size * k;
            const double y0 = peak[0], xc = peak[1], H = peak[2], w = xc > X ? peak[3] : peak[4];
            const double d = X - xc;
            const double e = bounded_exp(-(d * d) * 0.5 / w / w);
            if (error.raised()) return missing_value(error, y);
            y[2 + k] = y0 + H * e;
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = 0.0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 1 + split_size * k;
        const double xc = p[b + 1], H = p[b + 2], w = xc > X ? p[b + 3] : p[b + 4];
        const double d = X - xc;
        dy[b] = 1.0;
        if (w == 0) return missing_value(error, y);
        const double e = bounded_exp(-(d * d) * 0.5 / w / w);
        if (error.raised()) return missing_value(error, y);
        dy[b + 2] = e;
        dy[b + 1] = d * e * H / w / w;
        dy[b + 3] = d * dy[b + 1] / w;
        y[2 + k] = e * H;
        y[1] += e * H;
    }
    return 0;
}

/// Lorentzian peaks by their areas, the width being that at half height.
///     y = y0 + sum of 2·A/π · w/(4·(X - xc)² + w²)
///     p = (y0, then for each peak: xc, w, A);  (nParams - 1)/3 peaks
/// Both steps need nParams >= 1. A value call needs the first peak's width to be positive (a NaN passes) and a
/// denominator other than 0 in every peak. A derivative call tests one width (a NaN fails): with EVAL_VALUE that
/// after the last peak, p[3·peaks + 3], which the caller must supply, otherwise that of the first peak. Where it
/// fails, the three derivatives from that of the tested peak's centre on are marked besides the baseline's. The
/// error variable is never tested, and cleared by failures only.
MODEL(Lorentz)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / peak_size;
    int finished = 0;

    if (flags & EVAL_VALUE) {
        if (nParams <= 0 || p[3] <= 0) return missing_value(error, y);
        y[1] = y0;
        for (; finished < peaks; ++finished) {
            const double *peak = p + 2 + peak_size * finished;
            const double xc = peak[0], w = peak[1], A = peak[2], d = X - xc;
            const double D = 4 * (d * d) + w * w;
            if (D == 0) return missing_value(error, y);
            y[2 + finished] = (2 * A / pi) * (w / D);
            y[1] += y[2 + finished];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const int tested = 2 + peak_size * finished;
    if (nParams < 1 || !(p[tested + 1] > 0)) {
        mark_missing(dy, 1, 1);
        return missing_values(error, y, dy, tested, tested + 2);
    }
    dy[1] = 1.0;
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const int b = 2 + peak_size * k;
        const double xc = p[b], w = p[b + 1], A = p[b + 2];
        const double u = 2 * (X - xc) / w;
        const double L = 2 / ((u * u + 1) * (w * pi)), term = L * A;
        dy[b + 2] = L;
        dy[b] = u * 2 * pi * term * L;
        dy[b + 1] = (w * pi * u * u * L - 1) * term / w;
        y[2 + k] = term;
        y[1] += term;
    }
    return 0;
}

}  // namespace curvebank
