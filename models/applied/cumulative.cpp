// Scaled cumulative distribution functions: y = y0 + A·F(X).
//
// The value is written on every call for values or derivatives, and a value that cannot be computed ends the call.
// No model here makes an error test: an overflow leaves its code in errno, and what was computed is returned as a
// success. All distribution functions but the exponential one are those of the host's math library; they are called
// anew for every entry that needs them, always for the lower tail.

#include "frame/evaluation.h"
#include "numerics/numcore.h"

namespace curvebank {
namespace {

constexpr double two_pi = 6.283185307179586;
constexpr double shape_step = 0.0001;  // of the difference quotient in GammaCDF

/// Derivatives of y0 + A·Φ((u - mu)/s).
void normal_derivatives(double u, double A, double mu, double s, double *dy)
{
    dy[1] = 1.0;
    dy[2] = normcdf((u - mu) / s, NUMCORE_LOWER_TAIL, nullptr);
    const double e = guarded_exp(-guarded_pow(u - mu, 2) / ((s + s) * s));
    dy[3] = -A / std::sqrt(two_pi) / s * e;
    dy[4] = -A / std::sqrt(two_pi) * (u - mu) / (s * s) * e;
}

double gamma_probability(double X, double shape, double scale)
{
    return gamcdf(X, shape, scale, NUMCORE_LOWER_TAIL, nullptr);
}

}  // namespace

/// Normal distribution.
///     y = y0 + A·Φ((X - mu)/s)          p = (y0, A, mu, s)
/// s must not be 0.
MODEL(NormalCDF)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], A = p[2], mu = p[3], s = p[4], X = x[1];

    if (s == 0) return missing_value(error, y);
    y[1] = y0 + A * normcdf((X - mu) / s, NUMCORE_LOWER_TAIL, nullptr);
    if (flags & EVAL_DERIVS) normal_derivatives(X, A, mu, s, dy);
    return 0;
}

/// Log-normal distribution.
///     y = y0 + A·Φ((ln X - mu)/s)          p = (y0, A, mu, s)
/// s must not be 0, X must be positive.
MODEL(LognormalCDF)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], A = p[2], mu = p[3], s = p[4], X = x[1];

    if (s == 0 || X <= 0) return missing_value(error, y);
    const double u = std::log(X);
    y[1] = y0 + A * normcdf((u - mu) / s, NUMCORE_LOWER_TAIL, nullptr);
    if (flags & EVAL_DERIVS) normal_derivatives(u, A, mu, s, dy);
    return 0;
}

/// Exponential distribution.
///     y = y0 + A·(1 - exp(-X/t)) for X >= 0, otherwise y0          p = (y0, A, t)
/// t must not be 0 where X is not negative. The derivative for t is exp(-X/t)·A/t, not the exact partial
/// -A·X·exp(-X/t)/t².
MODEL(ExponentialCDF)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], A = p[2], t = p[3], X = x[1];

    if (X < 0) {
        y[1] = y0;
        if (flags & EVAL_DERIVS) {
            dy[1] = 1.0;
            dy[2] = 0.0;
            dy[3] = 0.0;
        }
        return 0;
    }
    if (t == 0) return missing_value(error, y);
    const double e = guarded_exp(-X / t);
    y[1] = y0 + A * (1 - e);
    if (flags & EVAL_DERIVS) {
        dy[1] = 1.0;
        dy[2] = 1 - e;
        dy[3] = e * (A / t);
    }
    return 0;
}

/// Gamma distribution.
///     y = y0 + A·P(a, X/b)          p = (y0, A, a, b)
/// P is the lower incomplete gamma function divided by Γ(a). Never fails: outside the domain of the distribution
/// the host's function has its say. The derivative for the shape a is a forward difference quotient with step
/// 0.0001; that for the scale b is exact, by the recurrence from shape a to a + 1.
MODEL(GammaCDF)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double y0 = p[1], A = p[2], a = p[3], b = p[4], X = x[1];

    y[1] = y0 + A * gamma_probability(X, a, b);
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    dy[2] = gamma_probability(X, a, b);
    dy[3] = (gamma_probability(X, a + shape_step, b) - gamma_probability(X, a, b)) * A / shape_step;
    dy[4] = A * a / b * (gamma_probability(X, a + 1, b) - gamma_probability(X, a, b));
    return 0;
}

/// Weibull distribution.
///     y = y0 + A·(1 - exp(-(X/a)^k)) for X > 0, otherwise y0          p = (y0, A, a, k)
/// a and k must be positive, even where X is not.
MODEL(WeibullCDF)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], A = p[2], a = p[3], k = p[4], X = x[1];

    if (a <= 0 || k <= 0) return missing_value(error, y);
    y[1] = X <= 0 ? y0 : y0 + A * wblcdf(X, a, k, nullptr);
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    if (X <= 0) {
        dy[2] = 0.0;
        dy[3] = 0.0;
        dy[4] = 0.0;
        return 0;
    }
    const double f = wblpdf(X, a, k, nullptr);
    dy[2] = wblcdf(X, a, k, nullptr);
    dy[3] = f * (-A * X / a);
    dy[4] = f * std::log(X / a) * (X * A / k);
    return 0;
}

}  // namespace curvebank
