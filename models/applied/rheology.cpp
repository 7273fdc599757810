// Flow of fluids: shear stress or viscosity against the shear rate X, and the viscosity of liquids that form a
// glass against the temperature X.
//
// All compute the value on derivative calls too. None makes an error test: what an exponential, a power or a
// logarithm reports stays in errno. No failure but one of Herschel clears the error variable.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double ln10 = 2.302585092994046;

}  // namespace

/// Stress of a plastic fluid with constant viscosity (Bingham, 1916).
///     y = s0 + eta·X          p = (s0, eta)
/// X = 0 is refused; the derivative of s0 is written all the same, and the error variable stays.
MODEL(Bingham)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double s0 = p[1], eta = p[2], X = x[1];

    if (flags & EVAL_DERIVS) dy[1] = 1.0;
    if (X == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 2, 2);
        return missing_value(y);
    }
    y[1] = X * eta + s0;
    if (flags & EVAL_DERIVS) dy[2] = X;
    return 0;
}

/// Stress of a plastic fluid whose viscosity follows a power law (Herschel and Bulkley, 1926).
///     y = s0 + K·X^n          p = (s0, K, n)
/// A negative X is refused with dy unwritten and the error variable as it was. X = 0 has a value but no derivatives
/// other than that of s0; there a derivative call fails and clears the error variable.
MODEL(Herschel)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double s0 = p[1], K = p[2], n = p[3], X = x[1];

    if (X < 0) return missing_value(y);
    const double P = guarded_pow(X, n);
    y[1] = P * K + s0;
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    if (X <= 0) return missing_values(error, y, dy, 2, 3);
    dy[2] = P;
    dy[3] = P * std::log(X) * K;
    return 0;
}

/// Viscosity of a shear-thinning fluid (Cross, 1965).
///     y = eta_inf + (eta0 - eta_inf) / (1 + (t·X)^m)          p = (eta0, eta_inf, t, m)
/// A denominator of 0 is refused and leaves dy and the error variable as they were. A value that is not finite
/// becomes the missing value, and the call succeeds. This look at y[1] and the power are part of every call but
/// initialisations, also of one that asks for nothing.
MODEL(Cross)
{
    if (flags & EVAL_INIT) return 1;
    const double eta0 = p[1], eta_inf = p[2], t = p[3], m = p[4], X = x[1];
    const double P = guarded_pow(X * t, m), D = P + 1;

    if (flags & (EVAL_VALUE | EVAL_DERIVS)) {
        if (D == 0) return missing_value(y);
        y[1] = (eta0 - eta_inf) / D + eta_inf;
    }
    if (flags & EVAL_DERIVS) {
        dy[1] = 1 / D;
        dy[2] = 1 - 1 / D;
        dy[3] = guarded_pow(X * t, m - 1) * (-(eta0 - eta_inf) * m * X) / (D * D);
        dy[4] = P * std::log(X * t) * (-(eta0 - eta_inf)) / (D * D);
    }
    missing_if_not_finite(&y[1]);
    return 0;
}

/// Viscosity of a shear-thinning fluid, with an exponent for the width of the transition (Carreau, 1972; Yasuda,
/// Armstrong and Cohen, 1981).
///     y = eta_inf + (eta0 - eta_inf)·(1 + (t·X)^a)^((n - 1)/a)          p = (eta0, eta_inf, t, a, n)
/// a = 0 is refused and leaves the error variable as it was, but the power before it is part of every call but
/// initialisations, also of one that asks for nothing. A value that is not finite becomes the missing value, and
/// the call succeeds.
MODEL(Carreau)
{
    if (flags & EVAL_INIT) return 1;
    const double eta0 = p[1], eta_inf = p[2], t = p[3], a = p[4], n = p[5], X = x[1];
    const double P = guarded_pow(X * t, a), B = P + 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;

    if (a == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 5);
        return missing_value(y);
    }
    const double e = (n - 1) / a;
    const double G = guarded_pow(B, e);
    y[1] = G * (eta0 - eta_inf) + eta_inf;
    missing_if_not_finite(&y[1]);
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = G;
    dy[2] = 1 - G;
    const double lower_G = guarded_pow(B, e - 1);
    dy[3] = lower_G * (eta0 - eta_inf) * (n - 1) * guarded_pow(X * t, a - 1) * X;
    const double ln_rate = std::log(X * t);
    dy[4] = G * (eta0 - eta_inf) * e * (P * ln_rate / B - std::log(B) / a);
    // Power and logarithm once more, because theirs is to be the code that stays when X·t is negative.
    const double last_G = guarded_pow(B, e);
    dy[5] = last_G * (eta0 - eta_inf) * std::log(B) / a;
    return 0;
}

/// Viscosity of a glass-forming liquid without divergence at a finite temperature (Mauro, Yue, Ellison, Gupta and
/// Allan, 2009).
///     y = eta_inf·10^((K/X)·exp(C/X))          p = (eta_inf, K, C)
/// X = 0 is refused and costs all derivatives. A value that is not finite becomes the missing value, and the call
/// succeeds; dy[2] and dy[3] are then multiples of the missing value.
MODEL(MYEGA)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double eta_inf = p[1], K = p[2], C = p[3], X = x[1];

    if (X == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 3);
        return missing_value(y);
    }
    const double E = guarded_exp(C / X);
    const double P = guarded_pow(10, (K / X) * E);
    y[1] = P * eta_inf;
    missing_if_not_finite(&y[1]);
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = P;
    dy[2] = E * y[1] * ln10 / X;
    dy[3] = E * y[1] * ln10 * K / (X * X);
    return 0;
}

/// Viscosity of a glass-forming liquid that diverges at a finite temperature (Vogel, 1921; Fulcher, 1925; Tammann
/// and Hesse, 1926).
///     y = 10^(A + B/(X - T0))          p = (A, B, T0)
/// X = T0 is refused and costs all derivatives. There is no other test: an overflow gives infinities.
MODEL(VFT)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double A = p[1], B = p[2], T0 = p[3], d = x[1] - T0;

    if (x[1] == T0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 3);
        return missing_value(y);
    }
    y[1] = guarded_pow(10, A + B / d);
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = y[1] * ln10;
    dy[2] = dy[1] / d;
    dy[3] = y[1] * ln10 * B / (d * d);
    return 0;
}

}  // namespace curvebank
