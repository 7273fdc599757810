// The potential of a membrane that several ions pass.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double gas_constant = 8.314;  // joule per mole and kelvin
constexpr double faraday = 96485;       // coulomb per mole

}  // namespace

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
