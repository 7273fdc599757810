// Pearson peaks: type VII, a symmetric peak whose shape exponent leads from a Lorentzian (1) to a Gaussian
// (infinite), and type IV, its asymmetric relative.

#include "frame/evaluation.h"
#include "numerics/numcore.h"

namespace curvebank {
namespace {

constexpr double pi = 3.141592653589793;
constexpr double pi_squared = 9.869604401089358;
constexpr double sqrt_pi = 1.77245385090551;
constexpr double sqrt_2pi = 2.50662827465;
constexpr double ln2 = 0.693147;  // this and the next only in the derivative of the shape exponent
constexpr double four_ln2 = 2.77259;

// The gamma function in Lanczos' form (1964), good to some ten digits. The arguments here are positive or NaN; the
// latter counts as large.
constexpr double lanczos[] = {76.18009173, -86.50532033, 24.01409822, -1.231739516, 0.00120858003, -5.36382e-6};

double log_gamma(double v)
{
    double sum = 1.0;
    int i = 0;
    for (const double coefficient : lanczos) sum += coefficient / (v + i++);
    return std::log(sum * sqrt_2pi) - (v + 4.5 - (v - 0.5) * std::log(v + 4.5));
}

/// The denominators of the sum are one lower than log_gamma's by definition, which makes psi(1) a NaN.
double digamma(double v)
{
    double sum = 1.0, slope = 0.0;
    int i = -1;
    for (const double coefficient : lanczos) {
        const double denominator = v + i++;
        sum += coefficient / denominator;
        slope += -coefficient / (denominator * denominator);
    }
    return std::log(v + 4.5) + (v - 0.5) / (v + 4.5) - 1 + slope / sum;
}

double gamma(double v)
{
    if (v < 1) {
        const double t = (1 - v) * pi;
        return t / (guarded_exp(log_gamma(2 - v)) * std::sin(t));
    }
    return guarded_exp(log_gamma(v));
}

/// What stands for the derivative of gamma; below 1 it is not that of the reflection above.
double gamma_slope(double v)
{
    if (v < 1) {
        const double a = 1 - v, t = a * pi;
        const double E = guarded_exp(log_gamma(2 - v));
        return std::cos(t) * (a * -pi_squared) / E - std::sin(t) * pi / E + digamma(2 - v) * (std::sin(t) * t) / E;
    }
    return digamma(v) * guarded_exp(log_gamma(v));
}

/// Bit k tells that the k-th moment of the profile is finite.
int32_t finite_moments(double m)
{
    return (m > 0.5) | (m > 1.0) << 1 | (m > 1.5) << 2 | (m > 2.0) << 3 | (m > 2.5) << 4;
}

}  // namespace

/// Pearson type VII peak by its area, the width being that at half height.
///     y = y0 + 2·A·√q·Γ(m)/(√π·w·Γ(m - 1/2))·(1 + 4·q·((X - xc)/w)²)^(-m),  q = 2^(1/m) - 1
///     p = (y0, xc, A, w, m)
/// Needs w other than 0 and m above 0.5; a NaN passes. A query is answered by the mask of the finite moments,
/// before EVAL_INIT, which answers 0. Error tests read the chosen variable; a failing derivative call leaves dy as
/// it is. The derivative step does not look for an overflow of the gamma functions. Its entry for m is not the
/// exact partial: a first term stands beside the peak's factor instead of multiplying it, and m = 1 and 1.5 give
/// NaN.
MODEL(PearsonVII)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy, finite_moments(p[5]), QUERY_MASK);
    if (flags & EVAL_INIT) return 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], xc = p[2], A = p[3], w = p[4], m = p[5], X = x[1];

    if (flags & EVAL_VALUE) {
        if (w == 0 || m <= 0.5) return missing_value(error, y);
        const double z = (X - xc) / w;
        const double q = guarded_pow(2, 1 / m) - 1;
        if (error.raised()) return missing_value(error, y);
        const double G = gamma(m) / gamma(m - 0.5);
        const double height = std::sqrt(q) * 2 * A * G / (w * sqrt_pi);
        if (error.raised()) return missing_value(error, y);
        const double peak = height * guarded_pow(4 * q * z * z + 1, -m);
        if (error.raised()) return missing_value(error, y);
        y[1] = peak + y0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (w == 0 || m <= 0.5) return missing_value(error, y);
    const double z = (X - xc) / w;
    const double q = guarded_pow(2, 1 / m) - 1;
    if (error.raised()) return missing_value(error, y);
    const double s = std::sqrt(q), base = 4 * q * z * z + 1;
    const double P = guarded_pow(base, -m);
    if (error.raised()) return missing_value(error, y);
    const double upper = gamma(m), lower = gamma(m - 0.5), G = upper / lower;
    dy[1] = 1.0;
    dy[2] = s * 16 * s * s * A * m * (P / base) * z * G / (w * sqrt_pi * w);
    dy[3] = 2 * s * P * G / (w * sqrt_pi);
    dy[4] = dy[2] * z - (A / w) * dy[3];
    const double of_base = ((q + 1) * four_ln2 * z * z / (m * base) - std::log(base)) * upper;
    const double whole = 2 * s * A * P / (w * sqrt_pi * lower);
    const double of_q = (q + 1) * ln2 * A * P * G / (m * s * m * sqrt_pi * w);
    const double of_lower = 2 * s * A * P * G * gamma_slope(m - 0.5) / (w * sqrt_pi * lower);
    const double of_upper = gamma_slope(m) * 2 * s * A * P / (w * sqrt_pi * lower);
    dy[5] = of_base + (whole - of_q) - of_lower + of_upper;
    y[1] = A * dy[3] + y0;
    return 0;
}

/// Pearson type IV peak, computed whole by numcore_PearsonIV.
///     p = (y0, xc, A, w, m, nu), as there
/// A value only: every call but a query answers 0, with or without a value. A query gives no status word. No
/// parameter is tested, and no error variable is read or cleared.
MODEL(PearsonIV)
{
    if (flags & EVAL_QUERY) return QUERY_MASK;
    if (flags & EVAL_INIT || !(flags & EVAL_VALUE)) return 0;
    y[1] = numcore_PearsonIV(p[1], p[2], p[3], p[4], p[5], p[6], x[1]);
    return 0;
}

}  // namespace curvebank
