// Skewed peaks of chromatography: values only, one peak or several over a common baseline.
//
// The number of peaks follows from nParams, and each peak's share goes to y[2], y[3], ... A peak of area 0 is
// skipped: its other parameters are not tested and its share stays unwritten. A value needs nParams >= 1; after
// each peak the error variable is tested, so that a stale code fails too unless there is no peak to add. A failure
// marks y[1] alone, and the shares already written stay. Initialisation calls answer 0 and calls for derivatives
// alone answer 1, both without touching anything. Queries come before all else, but Giddings does not know them.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double root_half = 0.707106781;    // 1/√2
constexpr double root_two_pi = 2.506628275;  // √(2π)
constexpr double largest_exponent = 625;     // of GaussMod's closed form, above or below zero
constexpr double bessel_switch = 3.75;       // between the two polynomials of I1

// The complementary error function by a Chebyshev fit with a fractional error below 1.2e-7 everywhere (Press,
// Teukolsky, Vetterling and Flannery, Numerical Recipes, 1992): erfc(t) = h·exp(-t² + P(h)) for t >= 0, with
// h = 1/(1 + t/2).

/// The polynomial P of the fit.
double erfc_exponent(double h)
{
    return -1.26551223 +
           h * (1.00002368 +
                h * (0.37409196 +
                     h * (0.09678418 +
                          h * (-0.18628806 +
                               h * (0.27886807 +
                                    h * (-1.13520398 + h * (1.48851587 + h * (-0.82215223 + h * 0.17087277))))))));
}

/// erfc(t).
double fitted_erfc(double t)
{
    const double a = std::fabs(t), h = 1 / (1 + 0.5 * a);
    const double tail = h * guarded_exp(-a * a + erfc_exponent(h));
    return t >= 0 ? tail : 2 - tail;
}

/// erfc(t)·exp(t²)·s. For t >= 0 the exp(-t²) of the fit cancels exp(t²) and neither is formed; for t < 0 erfc(t)
/// tends to 2, so exp(t²) stays and may overflow.
double scaled_erfc(double t, double s)
{
    const double a = std::fabs(t), h = 1 / (1 + 0.5 * a);
    if (t >= 0) return h * guarded_exp(erfc_exponent(h)) * s;
    return 2 * guarded_exp(a * a) * s - h * guarded_exp(erfc_exponent(h)) * s;
}

/// The modified Bessel function of the first kind and order one by the polynomials 9.8.3 (error below 8e-9 of the
/// argument) and 9.8.4 (below 2.2e-7 of exp(a)/√a) of Abramowitz and Stegun (1964).
double bessel_i1(double t)
{
    const double a = std::fabs(t);
    double magnitude = 0.0;
    if (a < bessel_switch) {
        const double r = t / bessel_switch, q = r * r;
        magnitude =
            a * (0.5 +
                 q * (0.87890594 +
                      q * (0.51498869 + q * (0.15084934 + q * (0.02658733 + q * (0.00301532 + q * 0.00032411))))));
    } else {
        const double q = bessel_switch / a;
        magnitude =
            guarded_exp(a) / std::sqrt(a) *
            (0.39894228 +
             q * (-0.03988024 +
                  q * (-0.00362018 +
                       q * (0.00163801 +
                            q * (-0.01031555 +
                                 q * (0.02282967 + q * (-0.02895312 + q * (0.01787654 - q * 0.00420059))))))));
    }
    return t < 0 ? -magnitude : magnitude;
}

/// Sum of Gaussians, each times a series in its skewness a3 and its excess a4.
///     y = y0 + sum of A/(w·√(2π))·exp(-z²/2)·S,  z = (X - xc)/w
///     S = 1 + a3/6·(z³ - 3z) + a4/24·(z⁴ - 6z³ + 3), and with sixth_order + a3²/72·(z⁶ - 15z⁴ + 45z² - 15)
///     p = (y0, then for each peak: xc, A, w, a3, a4);  (nParams - 1)/count_size peaks
/// The middle power of the a4 term is z³, where the Hermite polynomial of that order has z².
template <int count_size, bool sixth_order>
int32_t gaussian_series(int16_t flags, int32_t *perr, int16_t nParams, const double *p, const double *x, double *y,
                        double *dy)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return flags & EVAL_DERIVS ? 1 : 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / count_size;

    if (nParams < 1) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + (2 + 5 * k);
        const double xc = peak[0], A = peak[1], w = peak[2], a3 = peak[3], a4 = peak[4];
        if (A == 0) continue;
        if (w == 0) return missing_value(error, y);
        const double z = (X - xc) / w, z2 = z * z, z3 = z2 * z, z4 = z3 * z;
        const double g = guarded_exp(-0.5 * z * z);
        double series = 1 + a3 / 6 * (z3 - 3 * z) + a4 / 24 * (z4 - 6 * z3 + 3);
        if (sixth_order) series += a3 * a3 / 72 * (z4 * z * z - 15 * z4 + 45 * z2 - 15);
        const double term = A * g / (w * root_two_pi) * series;
        if (error.raised()) return missing_value(error, y);
        y[2 + k] = term;
        y[1] += term;
    }
    return 0;
}

}  // namespace

/// Exponentially modified Gaussian: a Gaussian of area A convolved with an exponential decay (Grushka, 1972).
///     y = y0 + sum of A/(2·t0)·exp((w/t0)²/2 - (X - xc)/t0)·erfc((w/t0 - z)/√2),  z = (X - xc)/w
///     p = (y0, then for each peak: A, xc, w, t0);  (nParams - 1)/4 peaks
/// A zero or negative w and a zero t0 are refused. Where the exponent is 625 or more either way, erfc is formed
/// together with the Gaussian exp(-z²/2): that keeps the peak finite for very small t0. Far out on the tail it
/// gives exactly 0, and a missing value where erfc's own factor overflows, at z - w/t0 beyond 37.7.
MODEL(GaussMod)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return flags & EVAL_DERIVS ? 1 : 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / 4;

    if (nParams < 1) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + (2 + 4 * k);
        const double A = peak[0], xc = peak[1], w = peak[2], t0 = peak[3];
        if (A == 0) continue;
        if (w <= 0 || t0 == 0) return missing_value(error, y);
        const double z = (X - xc) / w, u = z - w / t0, q = 0.5 * u * u - 0.5 * z * z;
        double term = 0.0;
        if (std::fabs(q) < largest_exponent) {
            term = guarded_exp(q) * (A * 0.5) * fitted_erfc(-u * root_half);
        } else {
            term = A * 0.5 * scaled_erfc(-u * root_half, guarded_exp(-0.5 * z * z));
        }
        term /= t0;
        if (error.raised()) return missing_value(error, y);
        y[2 + k] = term;
        y[1] += term;
    }
    return 0;
}

/// Peak of a solute adsorbed and released at random on its way through the column (Giddings and Eyring, 1955).
///     y = y0 + sum of A/w·√(xc/X)·I1(2·√(X·xc)/w)·exp((-X - xc)/w)
///     p = (y0, then for each peak: xc, w, A);  (nParams - 1)/3 peaks
/// Needs w and X other than 0. A negative X·xc is missing through the square root's domain error; with the caller's
/// error variable that error is not seen and the sum becomes NaN. The error test stands before √(xc/X), whose own
/// error would only meet the next peak. The exponential and I1 are formed apart: the peak is exactly 0 where
/// (X + xc)/w exceeds 300, and missing where I1 overflows, 2·√(X·xc)/w beyond 709.7.
MODEL(Giddings)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return flags & EVAL_DERIVS ? 1 : 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / 3;

    if (nParams < 1) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + (2 + 3 * k);
        const double xc = peak[0], w = peak[1], A = peak[2];
        if (A == 0) continue;
        if (w == 0 || X == 0) return missing_value(error, y);
        const double E = guarded_exp((-X - xc) / w);
        const double b = bessel_i1(2 * std::sqrt(X * xc) / w);
        if (error.raised()) return missing_value(error, y);
        const double term = std::sqrt(xc / X) * (A / w) * b * E;
        y[2 + k] = term;
        y[1] += term;
    }
    return 0;
}

/// Gram-Charlier series: a Gaussian with a correction for skewness and one for excess (Gram, 1883; Charlier, 1905).
///     y and p as in gaussian_series, up to the a4 term;  (nParams - 1)/3 peaks
/// Needs w other than 0. Peaks are five parameters long but counted by three: nParams = 7 means two peaks, and
/// eleven parameters are read.
MODEL(GCAS)
{
    return gaussian_series<3, false>(flags, perr, nParams, p, x, y, dy);
}

/// Edgeworth-Cramér series: GCAS with a further correction in a3² (Edgeworth, 1905; Cramér, 1928).
///     y and p as in gaussian_series, with the sixth order;  (nParams - 1)/5 peaks
/// Needs w other than 0.
MODEL(ECS)
{
    return gaussian_series<5, true>(flags, perr, nParams, p, x, y, dy);
}

/// Gaussian with an exponential tail that a hyperbolic tangent switches on (Chesler and Cram, 1971).
///     y = y0 + sum of A·(exp(-(X - c)²/(2v)) + B·(1 + tanh(s·(X - d)))/2·exp(-r·max(X - e, 0)))
///     p = (y0, then for each peak: c, A, v, s, d, B, r, e);  (nParams - 1)/8 peaks
/// Needs v other than 0.
MODEL(CCE)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return flags & EVAL_DERIVS ? 1 : 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];
    const int peaks = (nParams - 1) / 8;

    if (nParams < 1) return missing_value(error, y);
    y[1] = y0;
    for (int k = 0; k < peaks; ++k) {
        const double *peak = p + (2 + 8 * k);
        const double c = peak[0], A = peak[1], v = peak[2], s = peak[3], d = peak[4], B = peak[5], r = peak[6];
        const double e = peak[7];
        if (A == 0) continue;
        if (v == 0) return missing_value(error, y);
        const double E = guarded_exp((std::fabs(X - e) + (X - e)) * (-0.5 * r));  // |t| + t is 2·max(t, 0)
        const double T = 1 - (1 - std::tanh((X - d) * s)) * 0.5;
        const double G = guarded_exp(-((X - c) * (X - c)) / (v + v));
        const double term = (G + T * B * E) * A;
        if (error.raised()) return missing_value(error, y);
        y[2 + k] = term;
        y[1] += term;
    }
    return 0;
}

}  // namespace curvebank
