// Probability distributions in closed form: three cumulative functions without an offset, two densities and a mass
// function over one.
//
// The densities and the mass function write their share to y[2] and give no derivatives. None of the six gives
// derivatives together with the value: EVAL_VALUE takes precedence. A call with neither flag answers 1, but for the
// initialisation of the models whose EVAL_INIT answers 0.

#include "frame/evaluation.h"
#include "numerics/numcore.h"

namespace curvebank {

/// Extreme-value distribution of the smallest value (Gumbel), cumulative.
///     y = 1 - exp(-exp((X - xc)/w))          p = (xc, w)
/// w must not be 0. No derivatives: a call without EVAL_VALUE answers 1 and writes nothing. EVAL_INIT answers 0.
MODEL(Gumbel)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 1;
    const ErrorVariable error(flags, perr);
    const double xc = p[1], w = p[2];

    if (w == 0) return missing_value(error, y);
    y[1] = 1 - guarded_exp(-guarded_exp((x[1] - xc) / w));
    if (error.raised()) return missing_value(error, y);
    return 0;
}

/// Pareto distribution, cumulative.
///     y = 1 - (b/X)^a          p = (a, b)
/// X must be positive; where it is not, the error variable is left alone. A failing derivative call marks dy, too,
/// whatever the reason.
MODEL(Pareto2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0) return missing_value(y);
        const double t = guarded_pow(b / X, a);
        if (error.raised()) return missing_value(error, y);
        y[1] = 1 - t;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 1;

    if (X <= 0) return missing_values(y, dy, 1, 2);
    const double t = guarded_pow(b / X, a);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    const double log_ratio = std::log(b / X);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    dy[1] = -log_ratio * t;
    dy[2] = -a / b * t;
    y[1] = 1 - t;
    return 0;
}

/// Rayleigh distribution, cumulative.
///     y = 1 - exp(-0.5·X²/s²)          p = (s)
/// X must not be negative, s must be positive. Where they are not, a value call clears the error variable and a
/// derivative call leaves it alone. An error code found after the exponential resets errno on a derivative call,
/// never the caller's variable, and leaves in dy[1] its first factor.
MODEL(Rayleigh)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double s = p[1], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X < 0 || s <= 0) return missing_value(error, y);
        y[1] = 1 - guarded_exp(-0.5 * X * X / (s * s));
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 1;

    if (X < 0 || s <= 0) return missing_values(y, dy, 1, 1);
    const double r = X / s;
    dy[1] = -(r * r / s);
    const double e = guarded_exp(-0.5 * r * r);
    if (error.raised()) return missing_value(ErrorVariable::runtime(), y);
    y[1] = 1 - e;
    dy[1] = e * dy[1];
    return 0;
}

/// Laplace (double exponential) density over a baseline.
///     y = y0 + exp(-|X - xc|/b)·0.5/b          p = (y0, xc, b)
/// With fewer than three parameters the call answers 1 with the baseline as its value. b must not be 0; a negative
/// one gives a negative density that grows away from the centre. EVAL_INIT answers 0.
MODEL(Laplace)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], xc = p[2], b = p[3];

    y[1] = y0;
    if (nParams < 3) return 1;
    if (b == 0) return missing_value(error, y);
    const double f = guarded_exp(-std::fabs(x[1] - xc) / b) * 0.5 / b;
    if (error.raised()) return missing_value(error, y);
    y[2] = f;
    y[1] = y0 + f;
    return 0;
}

/// Poisson probability over a baseline, continued to numbers of events that are not integers.
///     y = y0 + m^X·exp(-m)/Γ(X + 1)          p = (y0, m)
/// With a single parameter the call answers 1 with the baseline as its value. The gamma function goes through its
/// logarithm, so negative X divide by |Γ|. EVAL_INIT answers 0.
MODEL(Poisson)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & EVAL_VALUE)) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], m = p[2], X = x[1];

    y[1] = y0;
    if (nParams <= 1) return 1;
    const double g = numcore_log_gamma(X + 1);
    const double power = guarded_pow(m, X);
    const double factorial = guarded_exp(g);
    const double e = guarded_exp(-m);
    if (error.raised()) return missing_value(error, y);
    y[2] = power / factorial * e;
    y[1] = y0 + y[2];
    return 0;
}

/// Weibull density over a baseline, formed in logarithms.
///     y = y0 + (k/a)·((X - xc)/a)^(k - 1)·exp(-((X - xc)/a)^k)          p = (y0, a, k, xc)
/// With fewer than four parameters the call answers 1 with the baseline as its value, as every derivative call
/// does. Outside the domain, a > 0 and X > xc, it is the share that is marked missing: y[1] keeps the baseline, and
/// the error variable is left alone. The last exponential is not tested. EVAL_INIT answers 0.
MODEL(Weibull)
{
    if (flags & EVAL_INIT) return 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], a = p[2], k = p[3], xc = p[4], X = x[1];

    if (flags & (EVAL_VALUE | EVAL_DERIVS)) y[1] = y0;
    if (!(flags & EVAL_VALUE) || nParams < 4) return 1;

    const double z = (X - xc) / a;
    if (a <= 0 || X - xc <= 0 || z <= 0) {
        y[2] = MISSING_VALUE;
        return 1;
    }
    const double log_z = std::log(z);
    if (error.raised()) return missing_value(error, y);
    const double t = (k - 1) * log_z - guarded_exp(log_z * k);
    if (error.raised()) return missing_value(error, y);
    y[2] = guarded_exp(t) * k / a;
    y[1] = y0 + y[2];
    return 0;
}

}  // namespace curvebank
