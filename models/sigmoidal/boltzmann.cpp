// Sigmoids in an exponential of x over a width: steps between two levels, single, doubled, or under a line.
//
// Where the exponential or power leaves the range, all but DoubleBoltzmann take the limit of the curve and of its
// derivatives and report success. That resets errno and never the caller's error variable, not even where the
// caller's variable told of the overflow. All give derivatives only on calls without EVAL_VALUE.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double largest_exponent = 665.0;  // above it the exponential is not tried
constexpr double least_width = 1e-18;       // for derivatives; a value needs only a width other than 0
constexpr double ln10 = 2.302585093;

/// exp(t) into e, or false where the curve saturates.
bool exponential(double t, const ErrorVariable &error, double &e)
{
    if (t > largest_exponent) return false;
    e = guarded_exp(t);
    return !error.raised();
}

}  // namespace

/// Boltzmann sigmoid.
///     y = A2 + (A1 - A2) / (1 + exp((X - x0)/dx))          p = (A1, A2, x0, dx)
/// A value call needs nParams >= 1 and dx other than 0, a derivative call |dx| >= 1e-18. An exponent above 665, and
/// any error code found after the exponential, gives A2.
MODEL(Boltzman)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A1 = p[1], A2 = p[2], x0 = p[3], dx = p[4];
    const double t = (x[1] - x0) / dx;
    double e = 0.0;

    if (flags & EVAL_VALUE) {
        if (nParams <= 0 || dx == 0) return missing_value(error, y);
        if (!exponential(t, error, e)) return saturated(y, A2);
        y[1] = (A1 - A2) / (e + 1) + A2;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (std::fabs(dx) < least_width) return missing_value(error, y);
    if (!exponential(t, error, e)) {
        dy[1] = 0.0;
        dy[2] = 1.0;
        dy[3] = 0.0;
        dy[4] = 0.0;
        return saturated(y, A2);
    }
    const double s = 1 / (e + 1);
    dy[1] = s;
    dy[2] = 1 - s;
    y[1] = (A1 - A2) / (e + 1) + A2;
    dy[3] = (A1 - A2) * s * (1 - s) / dx;
    dy[4] = dy[3] * t;
    return 0;
}

/// Current-voltage curve: a line through the reversal potential under a Boltzmann sigmoid.
///     y = G·(X - Vr) / (1 + exp((X - Vh)/dx))          p = (Vh, dx, G, Vr)
/// The tests are those of Boltzman; a saturated curve and all its derivatives are 0.
MODEL(BoltzIV)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double Vh = p[1], dx = p[2], G = p[3], Vr = p[4], X = x[1];
    const double t = (X - Vh) / dx;
    double e = 0.0;

    if (flags & EVAL_VALUE) {
        if (nParams <= 0 || dx == 0) return missing_value(error, y);
        if (!exponential(t, error, e)) return saturated(y, 0.0);
        y[1] = G * (X - Vr) / (e + 1);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (std::fabs(dx) < least_width) return missing_value(error, y);
    if (!exponential(t, error, e)) {
        dy[1] = 0.0;
        dy[2] = 0.0;
        dy[3] = 0.0;
        dy[4] = 0.0;
        return saturated(y, 0.0);
    }
    dy[1] = (X - Vr) * e * G / ((e + 1) * dx * (e + 1));
    dy[2] = (X - Vr) * e * G * (X - Vh) / (dx * dx * (e + 1) * (e + 1));
    dy[3] = (X - Vr) / (e + 1);
    dy[4] = -G / (e + 1);
    y[1] = G * (X - Vr) / (e + 1);
    return 0;
}

/// Two Boltzmann sigmoids that share one amplitude.
///     y = y0 + A·(f / (1 + exp((X - x1)/w1)) + (1 - f) / (1 + exp((X - x2)/w2)))
///     p = (y0, A, f, x1, x2, w1, w2)
/// Does not saturate: an overflow of either exponential is missing. A zero width is divided by. A derivative call
/// that fails has already written dy[1] = 1.
MODEL(DoubleBoltzmann)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], A = p[2], f = p[3], x1 = p[4], x2 = p[5], w1 = p[6], w2 = p[7], X = x[1];

    if (flags & EVAL_VALUE) {
        const double e1 = guarded_exp((X - x1) / w1);
        if (error.raised()) return missing_value(error, y);
        const double e2 = guarded_exp((X - x2) / w2);
        if (error.raised()) return missing_value(error, y);
        y[1] = ((1 - f) / (e2 + 1) + f / (e1 + 1)) * A + y0;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    const double E1 = guarded_exp((X - x1) / w1) + 1;
    if (error.raised()) return missing_value(error, y);
    const double E2 = guarded_exp((X - x2) / w2) + 1;
    if (error.raised()) return missing_value(error, y);
    const double B = (1 - f) / E2 + f / E1;
    dy[2] = B;
    dy[3] = (1 / E1 - 1 / E2) * A;
    dy[4] = (E1 - 1) * A * f / (E1 * E1 * w1);
    dy[5] = (E2 - 1) * A * (1 - f) / (E2 * E2 * w2);
    dy[6] = (X - x1) * dy[4] / w1;
    dy[7] = (X - x2) * dy[5] / w2;
    y[1] = B * A + y0;
    return 0;
}

/// Sigmoid in a power of ten.
///     y = A2 + (A1 - A2) / (1 + 10^(x0 - X))          p = (A1, A2, x0)
/// A value call needs nParams >= 1. A power out of range gives A2: an overflow, and where the C runtime reports it
/// an underflow too, although the curve tends to A1 there. The value step tests the chosen error variable for both
/// codes, the derivative step errno for the range error alone.
MODEL(Boltzman1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A1 = p[1], A2 = p[2], x0 = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        const double e = guarded_pow(10, x0 - X);
        if (error.raised()) return saturated(y, A2);
        y[1] = (A1 - A2) / (e + 1) + A2;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double e = guarded_pow(10, x0 - X);
    if (ErrorVariable::runtime().range_error()) {
        dy[1] = 0.0;
        dy[2] = 1.0;
        dy[3] = 0.0;
        return saturated(y, A2);
    }
    const double s = 1 / (e + 1);
    dy[1] = s;
    dy[2] = 1 - s;
    y[1] = (A1 - A2) / (e + 1) + A2;
    dy[3] = -(A1 - A2) * s * (1 - s) * ln10;
    return 0;
}

}  // namespace curvebank
