// Diode and solar cell as equations in voltage and current: the value is the residual, 0 for a point on the
// characteristic.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double elementary_charge = 1.60217662e-19;   // coulomb
constexpr double boltzmann_constant = 1.38064852e-23;  // joule per kelvin

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

}  // namespace curvebank
