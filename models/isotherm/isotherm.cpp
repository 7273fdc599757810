// Adsorption isotherms: powers (Freundlich), extended Langmuir forms, multilayer forms (BET, Bradley), and the
// reciprocal of a power (Harris), some also by points that the curve passes through.
//
// All but Freundlich3PMod give derivatives only on calls without EVAL_VALUE. Unless a model says otherwise:
// - parameters and abscissas out of the domain fail without touching the error variable; a failed power or
//   logarithm, and a denominator that is 0 after one, clears it;
// - a failed derivative step marks every derivative of the model.
// Where the C runtime reports an underflow, a power that underflows has failed too.
//
// The catalogue counts fewer parameters than the models with points (expected-value parameters) read; a host
// supplies all that are read. The abscissas of the points are usually held fixed in a fit.

#include <utility>

#include "frame/evaluation.h"
#include "numerics/differences.h"

namespace curvebank {
namespace {

/// b to the power e into P, or false where the error variable then holds an error.
bool power(double b, double e, const ErrorVariable &error, double &P)
{
    P = guarded_pow(b, e);
    return !error.raised();
}

/// The natural logarithm of v into L, or false where the error variable then holds an error.
bool logarithm(double v, const ErrorVariable &error, double &L)
{
    L = std::log(v);
    return !error.raised();
}

/// The partial of P = b^e with respect to b. It exists at b = 0 for e >= 1.
double by_base(double b, double e, double P)
{
    return b == 0 ? e * guarded_pow(0, e - 1) : e * P / b;
}

/// The partial of P = b^e with respect to e. Its limit at b = 0 must not meet the logarithm; a negative base fails
/// by its logarithm, also where the power itself exists.
double by_exponent(double b, double e, double P)
{
    return b == 0 && e > 0 ? 0.0 : std::log(b) * P;
}

struct Power {
    double base, value;
};

/// The cyclic sum A·ln(a)·(C - B) + B·ln(b)·(A - C) + C·ln(c)·(B - A) of the powers A, B and C of positive a, b and
/// c to the exponent e. It vanishes where two bases are equal and changes its sign when two change places. Of bases
/// in order it is
///     ln(c/b)·C·A·r(e·ln(b/a)) + ln(b/a)·A·C·r(-e·ln(c/b)),  r(t) = exp(t) - 1 - t,
/// two terms of the same sign, where the sum as it stands may lose all digits.
double cyclic_sum(Power a, Power b, Power c, double e)
{
    double sign = 1.0;
    const auto order = [&sign](Power &low, Power &high) {
        if (!(low.base > high.base)) return;
        std::swap(low, high);
        sign = -sign;
    };
    order(a, b);
    order(b, c);
    order(a, b);
    const double L_ab = numerics::log_ratio(b.base, a.base), L_bc = numerics::log_ratio(c.base, b.base);
    const double u = e * L_ab, v = e * L_bc;
    const double A_r =
        std::fabs(u) < 1 ? a.value * numerics::expm1_beyond_linear(u) : b.value - a.value - u * a.value;
    const double C_r =
        std::fabs(v) < 1 ? c.value * numerics::expm1_beyond_linear(-v) : b.value - c.value + v * c.value;
    return sign * (L_bc * c.value * A_r + L_ab * a.value * C_r);
}

}  // namespace

/// Freundlich isotherm (Freundlich, 1906).
///     y = K·X^b          p = (K, b)
/// Needs X > 0.
MODEL(Freundlich)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double K = p[1], b = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0) return missing_value(y);
        y[1] = K * guarded_pow(X, b);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0) return missing_values(y, dy, 1, 2);
    dy[1] = guarded_pow(X, b);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    y[1] = K * dy[1];
    dy[2] = std::log(X) * y[1];
    if (error.raised()) return missing_derivative(dy, 2);
    return 0;
}

/// Freundlich isotherm by the reciprocal of its exponent.
///     y = K·X^(1/n)          p = (K, n)
/// Needs X > 0 and n other than 0.
MODEL(FreundlichMod1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double K = p[1], n = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0 || n == 0) return missing_value(y);
        y[1] = K * guarded_pow(X, 1 / n);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0 || n == 0) return missing_values(y, dy, 1, 2);
    dy[1] = guarded_pow(X, 1 / n);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    y[1] = K * dy[1];
    dy[2] = -std::log(X) * y[1] / n / n;
    return 0;
}

/// Freundlich isotherm through the points (xa, ya) and (xb, yb).
///     y = ya·(yb/ya)^(ln(X/xa) / ln(xb/xa))          p = (xa, ya, xb, yb)
/// X and all parameters must be positive and xa must not equal xb.
MODEL(FreundlichEVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xa = p[1], ya = p[2], xb = p[3], yb = p[4], X = x[1];
    const bool refused = xa <= 0 || ya <= 0 || xb <= 0 || yb <= 0 || X <= 0 || xa == xb;
    double Lx = 0.0, L = 0.0, P = 0.0;

    if (flags & EVAL_VALUE) {
        if (refused) return missing_value(y);
        if (!logarithm(X / xa, error, Lx) || !logarithm(xb / xa, error, L)) return missing_value(error, y);
        if (!power(yb / ya, Lx / L, error, P)) return missing_value(error, y);
        y[1] = ya * P;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (refused) return missing_values(y, dy, 1, 4);
    if (!logarithm(X / xa, error, Lx) || !logarithm(xb / xa, error, L)) return missing_values(error, y, dy, 1, 4);
    const double b = yb / ya, e = Lx / L;
    if (!power(b, e, error, P)) return missing_values(error, y, dy, 1, 4);
    const double P_b = by_base(b, e, P), P_e = by_exponent(b, e, P);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    dy[1] = ya * P_e * (e - 1) / xa / L;
    dy[2] = (1 - e) * P;
    dy[3] = -ya * P_e * e / xb / L;
    dy[4] = P_b;
    y[1] = ya * P;
    return 0;
}

/// Freundlich isotherm with offset.
///     y = y0 + K·X^b          p = (y0, K, b)
/// Needs X > 0. A power that fails in the derivative step leaves the error variable as it is.
MODEL(Freundlich3P)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], K = p[2], b = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0) return missing_value(y);
        y[1] = y0 + K * guarded_pow(X, b);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0) return missing_values(y, dy, 1, 3);
    dy[2] = guarded_pow(X, b);
    if (error.raised()) return missing_values(y, dy, 1, 3);
    dy[1] = 1.0;
    y[1] = y0 + K * dy[2];
    dy[3] = std::log(X) * K * dy[2];
    if (error.raised()) return missing_derivative(dy, 3);
    return 0;
}

/// Freundlich isotherm with offset, through the point (xa, ya).
///     y = ya + K·(X^b - xa^b)          p = (xa, ya, K, b)
/// Needs X > 0 and xa > 0.
MODEL(Freundlich3PEVP1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xa = p[1], ya = p[2], K = p[3], b = p[4], X = x[1];
    double P = 0.0, Pa = 0.0;

    if (flags & EVAL_VALUE) {
        if (X <= 0 || xa <= 0) return missing_value(y);
        if (!power(X, b, error, P) || !power(xa, b, error, Pa)) return missing_value(error, y);
        y[1] = ya + K * (P - Pa);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0 || xa <= 0) return missing_values(y, dy, 1, 4);
    if (!power(X, b, error, P) || !power(xa, b, error, Pa)) return missing_values(error, y, dy, 1, 4);
    const double L = std::log(X), La = std::log(xa);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    const double L_ratio = numerics::log_ratio(X, xa);
    dy[1] = -K * (b * Pa / xa);
    dy[2] = 1.0;
    dy[3] = numerics::power_difference(P, Pa, b * L_ratio);
    dy[4] = K * (std::fabs(L_ratio) < 1 ? L_ratio * P + La * dy[3] : L * P - La * Pa);
    y[1] = ya + K * (P - Pa);
    return 0;
}

/// Freundlich isotherm with offset, through the points (xa, ya) and (xb, yb).
///     y = y0 + (ya - y0)·((yb - y0)/(ya - y0))^(ln(X/xa) / ln(xb/xa))          p = (y0, xa, ya, xb, yb)
/// Needs X > 0, xa > 0 and xb > 0. ya = y0 and xa = xb are divided by. Initialisation calls answer 0.
MODEL(Freundlich3PEVP2)
{
    if (flags & EVAL_INIT) return 0;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], xa = p[2], ya = p[3], xb = p[4], yb = p[5], X = x[1];
    const bool refused = xa <= 0 || xb <= 0 || X <= 0;
    double Lx = 0.0, L = 0.0, P = 0.0;

    if (flags & EVAL_VALUE) {
        if (refused) return missing_value(y);
        if (!logarithm(X / xa, error, Lx) || !logarithm(xb / xa, error, L)) return missing_value(error, y);
        if (!power((yb - y0) / (ya - y0), Lx / L, error, P)) return missing_value(error, y);
        y[1] = y0 + (ya - y0) * P;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (refused) return missing_values(y, dy, 1, 5);
    if (!logarithm(X / xa, error, Lx) || !logarithm(xb / xa, error, L)) return missing_values(error, y, dy, 1, 5);
    const double b = (yb - y0) / (ya - y0), e = Lx / L;
    if (!power(b, e, error, P)) return missing_values(error, y, dy, 1, 5);
    const double P_b = by_base(b, e, P);
    double P_e = by_exponent(b, e, P);
    if (error.raised()) return missing_values(error, y, dy, 1, 5);
    const double rise = (yb - ya) / (ya - y0);  // b - 1 with all its digits, also where y0 is far from both
    const bool flat = std::fabs(rise) < 0.5;
    const double Lb = flat ? numerics::log_of_one_plus(rise) : numerics::log_ratio(b, 1.0);
    const double rest = numerics::log_ratio(xb, X) / L;
    if (flat) P_e = Lb * P;
    dy[2] = -(ya - y0) * P_e * rest / xa / L;
    dy[3] = rest * P;
    dy[4] = -(ya - y0) * P_e * e / xb / L;
    dy[5] = P_b;
    // Raising y0, ya and yb together raises the curve by as much. What that leaves of 1 is, the curve being a power
    // of X, a cyclic sum too.
    dy[1] = 1 - dy[3] - dy[5];
    if (b > 0 && P > 0 && std::fabs(dy[1]) < 0.1 * (1 + std::fabs(dy[3]) + std::fabs(dy[5]))) {
        const double L_ab = numerics::log_ratio(xb, xa);
        dy[1] = -cyclic_sum({xa, 1.0}, {X, P}, {xb, b}, Lb / L_ab) / L_ab / b;
    }
    y[1] = y0 + (ya - y0) * P;
    return 0;
}

/// Freundlich isotherm with offset, by the reciprocal of its exponent.
///     y = y0 + K·X^(1/n)          p = (y0, K, n)
/// Needs n other than 0, and every failure clears the error variable. A negative X goes to the power and, where the
/// exponent is not a whole number, fails there; the derivatives do not exist for any negative X.
MODEL(Freundlich3PMod)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], K = p[2], n = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (n == 0) return missing_value(error, y);
        y[1] = y0 + K * guarded_pow(X, 1 / n);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (n == 0) return missing_values(error, y, dy, 1, 3);
    const double P = guarded_pow(X, 1 / n);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    const double P_e = by_exponent(X, 1 / n, P);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1.0;
    dy[2] = P;
    dy[3] = -P_e * K / n / n;
    y[1] = y0 + K * P;
    return 0;
}

/// Freundlich isotherm whose exponent is a power of X itself.
///     y = K·X^(b·X^(-c))          p = (K, b, c)
/// Needs X > 0.
MODEL(FreundlichEXT)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double K = p[1], b = p[2], c = p[3], X = x[1];
    double u = 0.0, P = 0.0;

    if (flags & EVAL_VALUE) {
        if (X <= 0) return missing_value(y);
        if (!power(X, -c, error, u) || !power(X, b * u, error, P)) return missing_value(error, y);
        y[1] = K * P;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0) return missing_values(y, dy, 1, 3);
    if (!power(X, -c, error, u) || !power(X, b * u, error, P)) return missing_values(error, y, dy, 1, 3);
    dy[1] = P;
    y[1] = K * dy[1];
    const double L = std::log(X);
    dy[2] = u * y[1] * L;
    dy[3] = -b * dy[2] * L;
    if (error.raised()) {
        mark_missing(dy, 2, 2);
        return missing_derivative(dy, 3);
    }
    return 0;
}

/// Freundlich isotherm whose exponent is a power of X itself, through the point (xa, ya).
///     y = ya·X^(b·X^(-c)) / xa^(b·xa^(-c))          p = (xa, ya, b, c)
/// Needs X > 0 and xa > 0; the power of xa must not vanish.
MODEL(FreundlichEXTEVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xa = p[1], ya = p[2], b = p[3], c = p[4], X = x[1];
    double u = 0.0, P = 0.0, ua = 0.0, Pa = 0.0;

    if (flags & EVAL_VALUE) {
        if (X <= 0 || xa <= 0) return missing_value(y);
        if (!power(X, -c, error, u) || !power(X, b * u, error, P)) return missing_value(error, y);
        if (!power(xa, -c, error, ua) || !power(xa, b * ua, error, Pa)) return missing_value(error, y);
        if (Pa == 0) return missing_value(error, y);
        y[1] = ya * (P / Pa);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0 || xa <= 0) return missing_values(y, dy, 1, 4);
    if (!power(X, -c, error, u) || !power(X, b * u, error, P)) return missing_values(error, y, dy, 1, 4);
    if (!power(xa, -c, error, ua) || !power(xa, b * ua, error, Pa)) return missing_values(error, y, dy, 1, 4);
    if (Pa == 0) return missing_values(error, y, dy, 1, 4);
    const double L = std::log(X), La = std::log(xa);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    y[1] = ya * (P / Pa);
    dy[1] = -y[1] * b * ua * (1 - c * La) / xa;
    dy[2] = P / Pa;
    const double L_ratio = numerics::log_ratio(X, xa);
    if (std::fabs(L_ratio) < 1) {
        const double u_difference = numerics::power_difference(u, ua, -c * L_ratio);
        dy[3] = y[1] * (u * L_ratio + La * u_difference);
        dy[4] = -y[1] * b * (u * L_ratio * (L + La) + La * La * u_difference);
    } else {
        dy[3] = y[1] * (u * L - ua * La);
        dy[4] = -y[1] * b * (u * L * L - ua * La * La);
    }
    return 0;
}

/// Langmuir isotherm of a power of X, of which c = 0 is the plain isotherm.
///     y = Q·K·X^(1 - c) / (1 + K·X^(1 - c))          p = (Q, K, c)
/// Needs X > 0; the denominator must not be 0. The derivative step needs K other than 0 besides, and a zero
/// denominator leaves the error variable alone there.
MODEL(LangmuirEXT1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double Q = p[1], K = p[2], c = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0) return missing_value(y);
        const double P = guarded_pow(X, 1 - c);
        if (error.raised()) return missing_value(error, y);
        const double D = 1 + K * P;
        if (D == 0) return missing_value(error, y);
        y[1] = Q * K * P / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0 || K == 0) return missing_values(y, dy, 1, 3);
    const double P = guarded_pow(X, 1 - c);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    const double D = 1 + K * P;
    if (D == 0) return missing_values(y, dy, 1, 3);
    const double q = K * P / D;
    dy[1] = q;
    y[1] = Q * q;
    dy[2] = (1 - q) * y[1] / K;
    dy[3] = -std::log(X) * (1 - q) * y[1];
    return 0;
}

/// Langmuir isotherm in the form X/y = a·X + b·X^c, of which c = 0 is the plain isotherm.
///     y = 1 / (a + b·X^(c - 1))          p = (a, b, c)
/// Needs X > 0; the denominator must not be 0. A power out of range gives 0 for the value and all derivatives:
/// an overflow, and where the C runtime reports it an underflow too, although the curve tends to 1/a there. The
/// power is tested in errno whatever the flags say; a domain error there clears the chosen error variable.
MODEL(LangmuirEXT2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double a = p[1], b = p[2], c = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0) return missing_value(y);
        const double P = guarded_pow(X, c - 1);
        if (runtime.range_error()) return saturated(y, 0.0);
        if (runtime.domain_error()) return missing_value(error, y);
        const double D = b * P + a;
        if (D == 0) return missing_value(error, y);
        y[1] = 1 / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0) return missing_values(y, dy, 1, 3);
    const double P = guarded_pow(X, c - 1);
    if (runtime.range_error()) {
        dy[1] = 0.0;
        dy[2] = 0.0;
        dy[3] = 0.0;
        return saturated(y, 0.0);
    }
    if (runtime.domain_error()) return missing_values(error, y, dy, 1, 3);
    const double D = b * P + a;
    if (D == 0) return missing_values(error, y, dy, 1, 3);
    y[1] = 1 / D;
    dy[1] = -(y[1] * y[1]);
    dy[2] = -(y[1] * y[1]) * P;
    dy[3] = std::log(X) * dy[2] * b;
    return 0;
}

/// Multilayer isotherm against relative pressure (Brunauer, Emmett and Teller, 1938).
///     y = vm·c·X / (1 + (c - 2 - (c - 1)·X)·X)          p = (vm, c)
/// The denominator, (1 - X)·(1 + (c - 1)·X), must not be 0 in the form that is printed here.
MODEL(BET)
{
    if (flags & EVAL_INIT) return 1;
    const double vm = p[1], c = p[2], X = x[1];
    const double D = (c - 2 - (c - 1) * X) * X + 1;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = vm * c * X / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 2);
    dy[1] = c * X / D;
    y[1] = vm * dy[1];
    dy[2] = (vm - (1 - X) * y[1]) * X / D;
    return 0;
}

/// Multilayer isotherm against relative pressure, by the coefficients of its denominator.
///     y = X / (a + (b - (a + b)·X)·X)          p = (a, b)
/// The denominator, (1 - X)·(a + (a + b)·X), must not be 0 in the form that is printed here.
MODEL(BETMod)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1], b = p[2], X = x[1];
    const double D = (b - (a + b) * X) * X + a;

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = X / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 2);
    y[1] = X / D;
    dy[1] = -(1 - X * X) * y[1] / D;
    dy[2] = dy[1] - (X - 1) * y[1] / D;
    return 0;
}

/// Multilayer isotherm against relative pressure (Bradley, 1936).
///     y = a·ln(-b·ln(X))          p = (a, b)
/// Needs X > 0, b other than 0 and -b·ln(X) > 0; a NaN fails. The error variable is looked at after each logarithm.
MODEL(Bradley)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];
    const bool refused = !(X > 0) || b == 0;
    double L = 0.0, Lt = 0.0;

    if (flags & EVAL_VALUE) {
        if (refused) return missing_value(y);
        if (!logarithm(X, error, L)) return missing_value(error, y);
        const double t = -b * L;
        if (!(t > 0)) return missing_value(y);
        if (!logarithm(t, error, Lt)) return missing_value(error, y);
        y[1] = a * Lt;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (refused) return missing_values(y, dy, 1, 2);
    if (!logarithm(X, error, L)) return missing_values(error, y, dy, 1, 2);
    const double t = -b * L;
    if (!(t > 0)) return missing_values(y, dy, 1, 2);
    if (!logarithm(t, error, Lt)) return missing_values(error, y, dy, 1, 2);
    dy[1] = Lt;
    dy[2] = a / b;
    y[1] = a * Lt;
    return 0;
}

/// Reciprocal of a power with offset (Farazdaghi and Harris, 1968).
///     y = 1 / (a + b·X^c)          p = (a, b, c)
/// The denominator must not be 0. X is not tested before the power. In the derivative step a failed power and a
/// zero denominator mark y alone and leave the error variable as it is; X <= 0 costs dy[3] alone.
MODEL(Harris)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        const double P = guarded_pow(X, c);
        if (error.raised()) return missing_value(error, y);
        const double D = b * P + a;
        if (D == 0) return missing_value(error, y);
        y[1] = 1 / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double P = guarded_pow(X, c);
    if (error.raised()) return missing_value(y);
    const double D = b * P + a;
    if (D == 0) return missing_value(y);
    y[1] = 1 / D;
    dy[1] = -(y[1] * y[1]);
    dy[2] = -(y[1] * y[1]) * P;
    if (X <= 0) {
        mark_missing(dy, 3, 3);
        return 1;
    }
    dy[3] = std::log(X) * dy[2] * b;
    if (error.raised()) return missing_derivative(dy, 3);
    return 0;
}

/// Reciprocal of a power with offset, through the points (xa, ya) and (xb, yb).
///     y = (xb^c - xa^c)·ya·yb / ((xb^c - X^c)·yb + (X^c - xa^c)·ya)          p = (xa, ya, xb, yb, c)
/// xa must not equal xb; the denominator must not be 0. Initialisation calls answer 0.
MODEL(HarrisEVP)
{
    if (flags & EVAL_INIT) return 0;
    const ErrorVariable error(flags, perr);
    const double xa = p[1], ya = p[2], xb = p[3], yb = p[4], c = p[5], X = x[1];
    double P = 0.0, Pa = 0.0, Pb = 0.0;

    if (flags & EVAL_VALUE) {
        if (xa == xb) return missing_value(y);
        if (!power(X, c, error, P) || !power(xa, c, error, Pa) || !power(xb, c, error, Pb))
            return missing_value(error, y);
        const double D = (Pb - P) * yb + (P - Pa) * ya;
        if (D == 0) return missing_value(error, y);
        y[1] = (Pb - Pa) * ya * yb / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (xa == xb) return missing_values(y, dy, 1, 5);
    if (!power(X, c, error, P) || !power(xa, c, error, Pa) || !power(xb, c, error, Pb))
        return missing_values(error, y, dy, 1, 5);
    const double D = (Pb - P) * yb + (P - Pa) * ya;
    if (D == 0) return missing_values(error, y, dy, 1, 5);
    y[1] = (Pb - Pa) * ya * yb / D;
    const double Pa_xa = by_base(xa, c, Pa), Pb_xb = by_base(xb, c, Pb);
    const double P_c = by_exponent(X, c, P), Pa_c = by_exponent(xa, c, Pa), Pb_c = by_exponent(xb, c, Pb);
    if (error.raised()) return missing_values(error, y, dy, 1, 5);

    // The value is near ya or yb where one of the three differences is small beside the others. What remains of it
    // above either is a product of these differences, and so is every partial with respect to a power.
    const auto difference = [c](double A, double a, double B, double b) {
        return a > 0 && b > 0 ? numerics::power_difference(A, B, c * numerics::log_ratio(a, b)) : A - B;
    };
    const double from_a = difference(P, X, Pa, xa), to_b = difference(Pb, xb, P, X),
                 all = difference(Pb, xb, Pa, xa);
    const double D_exact = to_b * yb + from_a * ya, k = ya / D_exact * yb * (ya - yb);
    dy[1] = k * (to_b / D_exact) * Pa_xa;
    dy[2] = yb * (all / D_exact) * (yb * (to_b / D_exact));
    dy[3] = k * (from_a / D_exact) * Pb_xb;
    dy[4] = ya * (all / D_exact) * (ya * (from_a / D_exact));
    if (xa > 0 && xb > 0 && X > 0)
        dy[5] = k * cyclic_sum({xa, Pa / D_exact}, {X, P / D_exact}, {xb, Pb / D_exact}, c) * D_exact;
    else
        dy[5] = k * ((to_b * Pa_c + from_a * Pb_c - all * P_c) / D_exact);
    return 0;
}

}  // namespace curvebank
