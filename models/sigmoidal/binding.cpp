// Saturation binding to one and to two classes of sites.
//
// Neither calls a function that could fail, yet both make the error tests of the dose-response curves: a code left
// over from an earlier computation gives the saturated value. Derivatives only on calls without EVAL_VALUE.

#include "frame/evaluation.h"

namespace curvebank {

/// Binding to one class of sites.
///     y = Bmax·X / (Kd + X)          p = (Bmax, Kd)
/// A value call needs nParams >= 1. An infinite or NaN value becomes the missing value, and the call succeeds.
MODEL(Binding1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double Bmax = p[1], Kd = p[2], X = x[1];
    const double r = 1 / (Kd + X);

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        if (error.raised()) {
            runtime.clear();
            y[1] = Bmax;
        } else {
            y[1] = Bmax * X * r;
        }
        missing_if_not_finite(&y[1]);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (runtime.range_error()) {
        runtime.clear();
        dy[1] = 0.0;
        dy[2] = 1.0;
        y[1] = Bmax;
    } else {
        dy[1] = r * X;
        y[1] = X * Bmax * r;
        dy[2] = -y[1] * r;
    }
    missing_if_not_finite(&y[1]);
    return 0;
}

/// Binding to two classes of sites.
///     y = Bmax1·X / (Kd1 + X) + Bmax2·X / (Kd2 + X)          p = (Bmax1, Bmax2, Kd1, Kd2)
/// A value call needs nParams >= 1. Unlike Binding1 it leaves an infinite or NaN value as it is.
MODEL(Binding2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double Bmax1 = p[1], Bmax2 = p[2], Kd1 = p[3], Kd2 = p[4], X = x[1];
    const double r1 = 1 / (X + Kd1), r2 = 1 / (X + Kd2);

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        if (error.raised()) return saturated(y, Bmax2 + Bmax1);
        y[1] = X * Bmax2 * r2 + X * Bmax1 * r1;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (runtime.range_error()) {
        dy[1] = dy[2] = 0.0;
        dy[3] = dy[4] = 1.0;
        return saturated(y, Bmax1 + Bmax2);
    }
    dy[1] = r1 * X;
    dy[2] = r2 * X;
    dy[3] = -Bmax1 * X * r1 * r1;
    dy[4] = -Bmax2 * X * r2 * r2;
    y[1] = X * Bmax2 * r2 + X * Bmax1 * r1;
    return 0;
}

}  // namespace curvebank
