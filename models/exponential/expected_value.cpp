// Exponentials by points that they pass through (expected-value parameters).
//
// Such parameters are nearly uncorrelated in a fit and can be read off a plot. The abscissas of the points are
// usually chosen by the user and held fixed. The catalogue counts fewer parameters than the models read; a host
// supplies all that are read.

#include "frame/evaluation.h"

namespace curvebank {

/// Exponential growth of rate 1 through the point (xr, yr).
///     y = yr·exp(X - xr)          p = (xr, yr)
/// A failed derivative step clears errno, whichever error variable it looked at, and marks dy[1..2] too.
MODEL(ExponentEVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xr = p[1], yr = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = yr * guarded_exp(X - xr);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double E = guarded_exp(X - xr);
    if (error.raised()) return missing_values(ErrorVariable::runtime(), y, dy, 1, 2);
    dy[2] = E;
    dy[1] = -yr * E;
    y[1] = yr * E;
    return 0;
}

/// Exponential from 1 through the point (xr, yr).
///     y = yr^(X/xr)          p = (xr, yr)
/// Needs xr != 0 and yr > 0. xr is tested first: on a derivative call its failure marks dy[1..2] too, that of yr
/// does not.
MODEL(Exponent2EVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xr = p[1], yr = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        if (xr == 0 || !(yr > 0)) return missing_value(error, y);
        y[1] = guarded_pow(yr, X / xr);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (xr == 0) return missing_values(error, y, dy, 1, 2);
    if (!(yr > 0)) return missing_value(error, y);
    const double Q = guarded_pow(yr, X / xr);
    if (error.raised()) return missing_value(error, y);
    dy[2] = (X / xr) * Q / yr;
    const double L = std::log(yr);
    if (error.raised()) return missing_values(error, y, dy, 1, 1);
    dy[1] = -(X / xr) * Q / xr * L;
    y[1] = Q;
    return 0;
}

/// Exponential approach from 0 to 1 through the point (xr, yr).
///     y = 1 - (1 - yr)^(X/xr)          p = (xr, yr)
/// xr = 0 gives y = 0 whatever yr is, and a derivative call then marks dy[1..2] and still succeeds. Otherwise
/// yr >= 1 is refused, a NaN is not. A failed derivative step clears errno, whichever error variable it looked at.
MODEL(Exponent3EVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xr = p[1], yr = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        if (xr == 0) {
            y[1] = 0.0;
        } else {
            if (yr >= 1) return missing_value(error, y);
            y[1] = 1 - guarded_pow(1 - yr, X / xr);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (xr == 0) {
        y[1] = 0.0;
        mark_missing(dy, 1, 2);
        return 0;
    }
    if (yr >= 1) return missing_value(ErrorVariable::runtime(), y);
    const double Q = guarded_pow(1 - yr, X / xr);
    if (error.raised()) return missing_value(ErrorVariable::runtime(), y);
    dy[2] = (X * Q / xr) / (1 - yr);
    dy[1] = std::log(1 - yr) / xr * (X * Q / xr);
    y[1] = 1 - Q;
    return 0;
}

/// Exponential through the points (xa, ya) and (xb, yb).
///     y = ya^((X - xb)/(xa - xb)) · yb^((xa - X)/(xa - xb))          p = (xa, ya, xb, yb)
/// xa = xb, ya <= 0 and yb <= 0 are refused; a NaN is not. Derivatives only on calls without EVAL_VALUE.
MODEL(Exp2PEVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xa = p[1], ya = p[2], xb = p[3], yb = p[4], X = x[1];
    const double D = xa - xb, u = X - xb, v = xa - X;

    if (flags & EVAL_VALUE) {
        if (ya <= 0 || yb <= 0 || D == 0) return missing_value(error, y);
        const double Qa = guarded_pow(ya, u / D);
        const double Qb = guarded_pow(yb, v / D);
        y[1] = Qa * Qb;
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (ya <= 0 || yb <= 0 || D == 0) return missing_value(error, y);
    const double Qa = guarded_pow(ya, u / D);
    const double Qb = guarded_pow(yb, v / D);
    y[1] = Qa * Qb;
    // From here on a failure clears errno, whichever error variable was looked at.
    if (error.raised()) return missing_values(ErrorVariable::runtime(), y, dy, 1, 4);
    if (u != 0) {
        dy[1] = std::log(yb / ya) * u * y[1] / (D * D);
        if (error.raised()) {  // costs dy[1] and dy[3] only: the call goes on and succeeds
            ErrorVariable::runtime().clear();
            dy[1] = MISSING_VALUE;
            dy[3] = MISSING_VALUE;
        } else {
            dy[3] = v * dy[1] / u;
        }
    } else {
        dy[1] = 0.0;
        dy[3] = 0.0;  // defined as 0 at X = xb, where the exact partial is not
    }
    dy[2] = u * y[1] / D / ya;
    dy[4] = v * y[1] / D / yb;
    return 0;
}

}  // namespace curvebank
