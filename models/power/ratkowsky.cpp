// Power curves of two parameters, and their forms by a point that they pass through (expected-value parameters).
//
// All give derivatives only on calls without EVAL_VALUE. A domain failure leaves the error variable alone, an error
// of a power clears it. Where the last logarithm of a derivative step fails, only the entries of dy that need it
// are lost: value and other derivatives stay, the call answers 1. The forms by a point read three parameters, one
// more than the catalogue counts.

#include "frame/evaluation.h"

namespace curvebank {

/// Approach to a limit by a negative power of X, from 0 at X = 1.
///     y = a·(1 - X^(-b))          p = (a, b)
/// X must not be <= 0.
MODEL(Pow2P1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0) return missing_value(y);
        y[1] = a * (1 - guarded_pow(X, -b));
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0) return missing_values(y, dy, 1, 2);
    const double P = guarded_pow(X, -b);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    dy[1] = 1 - P;
    y[1] = a * (1 - P);
    dy[2] = a * std::log(X) * P;
    if (error.raised()) return missing_derivative(dy, 2);
    return 0;
}

/// Power of 1 + X.
///     y = a·(1 + X)^b          p = (a, b)
/// 1 + X must not be <= 0.
MODEL(Pow2P2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2];
    const double B = x[1] + 1;

    if (flags & EVAL_VALUE) {
        if (B <= 0) return missing_value(y);
        y[1] = a * guarded_pow(B, b);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (B <= 0) return missing_values(y, dy, 1, 2);
    const double P = guarded_pow(B, b), L = std::log(B);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    dy[1] = P;
    dy[2] = L * a * P;
    y[1] = a * P;
    return 0;
}

/// Approach from 0 to 1 by a negative power of a straight line.
///     y = 1 - (1 + a·X)^(-b)          p = (a, b)
/// 1 + a·X must not be <= 0.
MODEL(Pow2P3)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];
    const double B = 1 + a * X;

    if (flags & EVAL_VALUE) {
        if (B <= 0) return missing_value(y);
        y[1] = 1 - guarded_pow(B, -b);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (B <= 0) return missing_values(y, dy, 1, 2);
    const double P = guarded_pow(B, -b);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    dy[1] = b * P * X / B;
    y[1] = 1 - P;
    dy[2] = std::log(B) * P;
    if (error.raised()) return missing_derivative(dy, 2);
    return 0;
}

/// Approach from 0 to 1 by a power of a straight line, through the point (xr, yr).
///     y = 1 - (1 - yr)^(ln(1 + a·X)/ln(1 + a·xr))          p = (xr, yr, a)
/// 1 - yr, 1 + a·X and 1 + a·xr must not be <= 0, and 1 + a·xr not 1.
MODEL(Ratkowsky2P1EVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xr = p[1], yr = p[2], a = p[3], X = x[1];
    const double B = 1 + a * X, Br = 1 + a * xr;
    const bool outside = 1 - yr <= 0 || B <= 0 || Br <= 0 || Br == 1;

    if (flags & EVAL_VALUE) {
        if (outside) return missing_value(y);
        const double lnB = std::log(B);
        if (error.raised()) return missing_value(error, y);
        const double L = std::log(Br);
        if (error.raised()) return missing_value(error, y);
        y[1] = 1 - guarded_pow(1 - yr, lnB / L);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (outside) return missing_values(y, dy, 1, 3);
    const double L = std::log(Br);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    const double lnB = std::log(B);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    const double E = lnB / L;
    const double P = guarded_pow(1 - yr, E);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    y[1] = 1 - P;
    dy[2] = E * P / (1 - yr);
    const double lnQ = std::log(1 - yr);
    dy[1] = lnQ * lnB * a * P / Br / (L * L);
    dy[3] = -P * lnQ * (X / B / L - lnB * xr / Br / (L * L));
    if (error.raised()) {
        mark_missing(dy, 1, 1);
        return missing_derivative(dy, 3);
    }
    return 0;
}

/// Approach to a limit by a negative power of X, scaled at the abscissa xr.
///     y = (1 - X^(-b))·yr·(1 - xr^(-b))          p = (xr, yr, b)
/// X and xr must not be <= 0. The factor of xr multiplies, although the curve would pass through (xr, yr) if it
/// divided.
MODEL(Ratkowsky2P2EVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xr = p[1], yr = p[2], b = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0 || xr <= 0) return missing_value(y);
        const double P = guarded_pow(X, -b);
        if (error.raised()) return missing_value(error, y);
        const double Pr = guarded_pow(xr, -b);
        if (error.raised()) return missing_value(error, y);
        y[1] = (1 - P) * yr * (1 - Pr);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0 || xr <= 0) return missing_values(y, dy, 1, 3);
    const double P = guarded_pow(X, -b);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    const double Pr = guarded_pow(xr, -b);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[2] = (1 - Pr) * (1 - P);
    y[1] = dy[2] * yr;
    dy[3] = (std::log(X) * (1 - Pr) * P + std::log(xr) * (1 - P) * Pr) * yr;
    dy[1] = b * yr / xr * (1 - P) * Pr;
    return 0;
}

/// Power of 1 + X through the point (xr, yr).
///     y = yr·((1 + X)/(1 + xr))^b          p = (xr, yr, b)
/// 1 + xr must not be 0, the ratio not <= 0. The value step makes no error test: an overflow passes as an infinity.
/// The derivative step tests.
MODEL(Ratkowsky2P3EVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xr = p[1], yr = p[2], b = p[3];
    const double D = xr + 1, B = (x[1] + 1) / D;

    if (flags & EVAL_VALUE) {
        if (D == 0 || B <= 0) return missing_value(y);
        y[1] = yr * guarded_pow(B, b);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0 || B <= 0) return missing_values(y, dy, 1, 3);
    dy[2] = guarded_pow(B, b);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    y[1] = yr * dy[2];
    dy[1] = -y[1] * b / D;
    dy[3] = std::log(B) * y[1];
    if (error.raised()) return missing_derivative(dy, 3);
    return 0;
}

}  // namespace curvebank
