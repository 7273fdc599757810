// Electrical characteristics: diode and solar cell, and the potential of a membrane that several ions pass.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double elementary_charge = 1.60217662e-19;   // coulomb
constexpr double boltzmann_constant = 1.38064852e-23;  // joule per kelvin
constexpr double gas_constant = 8.314;                 // joule per mole and kelvin
constexpr double faraday = 96485;                      // coulomb per mole

}  // namespace

/// Diode with a series resistance and a shunt (Shockley, 1949).
///     y = I0·(exp(q·Vd/(n·k·T)) - 1) + Vd/Rsh - I,  Vd = V - Rs·I          p = (T, I0, Rs, n, Rsh)
/// The residual of the equation, 0 for a voltage V = x[1] and a current I = x[2] on the characteristic; the
/// equation is not solved for the current. No parameter is refused, a zero is divided by. An exponent above 300 is
/// no failure either: the exponential is then the missing value, a number so small that it counts as 0. A call
/// fails by a code that was there before it, since the bounded exponential reports none, and that code stays in the
/// error variable.
MODEL(ModDiode)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double T = p[1], I0 = p[2], Rs = p[3], n = p[4], Rsh = p[5], V = x[1], I = x[2];

    const double beta = elementary_charge / (n * boltzmann_constant * T);
    const double Vd = V - Rs * I;
    const double E = bounded_exp(Vd * beta);
    if (error.raised()) return missing_value(y);
    y[1] = (E - 1) * I0 + Vd / Rsh - I;
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = E * I0 * Vd * (-beta / T);
    dy[2] = E - 1;
    dy[3] = -I * beta * (E * I0) - I / Rsh;
    dy[4] = E * I0 * Vd * (-beta / n);
    dy[5] = -Vd / (Rsh * Rsh);
    return 0;
}

/// Solar cell with a series resistance and a shunt, I being the current it delivers.
///     y = I0·(exp(q·Vd/(n·k·T)) - 1) + Vd/Rsh + I - IL,  Vd = V + Rs·I          p = (T, I0, Rs, n, Rsh, IL)
/// A residual with the behaviour of ModDiode.
MODEL(SolarCellIV)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double T = p[1], I0 = p[2], Rs = p[3], n = p[4], Rsh = p[5], IL = p[6], V = x[1], I = x[2];

    const double beta = elementary_charge / (n * boltzmann_constant * T);
    const double Vd = Rs * I + V;
    const double E = bounded_exp(Vd * beta);
    if (error.raised()) return missing_value(y);
    y[1] = (E - 1) * I0 + Vd / Rsh + I - IL;
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = E * I0 * Vd * (-beta / T);
    dy[2] = E - 1;
    dy[3] = I * beta * (E * I0) + I / Rsh;
    dy[4] = E * I0 * Vd * (-beta / n);
    dy[5] = -Vd / (Rsh * Rsh);
    dy[6] = -1.0;
    return 0;
}

/// Membrane potential against an outer concentration (Goldman, 1943).
///     y = R·T/F·ln((P·a + X)/(P·b + c))          p = (P, a, b, c, T)
/// P is the ratio of the permeabilities of two ions, a the outer concentration of the one, b and c the inner
/// concentrations of both. Both parts of the ratio must be positive, or a NaN. The potential goes to y[2] and from
/// there to y[1]; it is y[2] that a failure marks, and y[1] is then 0. No failure touches the error variable.
/// EVAL_INIT answers 0, every other call without a potential 1: one with neither flag, and one with fewer than five
/// parameters. A call with both flags gives the value alone. dy[1] divides by P, so it is a NaN for P = 0.
MODEL(Goldman)
{
    if (flags & EVAL_INIT) return 0;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 1;
    const double P = p[1], a = p[2], b = p[3], c = p[4], T = p[5], X = x[1];

    y[1] = 0.0;
    if (nParams / 5 < 1) return 1;
    const double N = P * a + X, D = P * b + c;
    if (N <= 0 || D <= 0) {
        y[2] = MISSING_VALUE;
        return 1;
    }
    if (flags & EVAL_VALUE) {
        y[2] = std::log(N / D) * T * gas_constant / faraday;
        y[1] += y[2];
        return 0;
    }

    dy[4] = -gas_constant * T / (D * faraday);
    dy[3] = dy[4] * P;
    dy[2] = T * gas_constant * P / (N * faraday);
    dy[1] = dy[2] * a / P + dy[4] * b;
    dy[5] = std::log(N / D) * gas_constant / faraday;
    y[2] = dy[5] * T;
    y[1] += y[2];
    return 0;
}

}  // namespace curvebank
