// Power laws: plain, shifted and two-sided, allometric, and Pareto's distribution.
//
// Power0, Power1, Power2 and the allometric curves compute value and derivatives in one call and clear the error
// variable on every failure. The others give derivatives only on calls without EVAL_VALUE and leave the error
// variable alone where X or a parameter is out of the domain, but for PowerEVP. Where the last logarithm of a
// derivative step fails, only its entry of dy is lost: value and other derivatives stay, the call answers 1.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

/// The exponent ln(a)/ln(b) into E, or false where a logarithm reports an error.
bool ratio_of_logarithms(double a, double b, const ErrorVariable &error, double &E)
{
    const double numerator = std::log(a);
    if (error.raised()) return false;
    E = numerator / std::log(b);
    return !error.raised();
}

}  // namespace

/// Power of X.
///     y = X^b          p = (b)
/// The value is whatever the power gives, for X <= 0 too. There the derivative step keeps the value, marks dy[1]
/// and answers 1. It calls pow without the guard.
MODEL(Power)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double b = p[1], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = guarded_pow(X, b);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = std::pow(X, b);
    if (error.raised()) return missing_values(error, y, dy, 1, 1);
    if (X <= 0) {
        mark_missing(dy, 1, 1);
        return 1;
    }
    dy[1] = std::log(X) * y[1];
    if (error.raised()) return missing_derivative(dy, 1);
    return 0;
}

/// Power of X through the point (xr, yr).
///     y = yr^(ln(X)/ln(xr))          p = (xr, yr)
/// X, xr and yr must not be <= 0. Every power is 1 at X = 1, so that xr = 1 is a success only for yr = 1, with
/// y = 1 and, on a derivative call, dy[1..2] marked; for any other yr it fails and clears nothing.
MODEL(PowerEVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xr = p[1], yr = p[2], X = x[1];
    double E = 0.0;

    if (flags & EVAL_VALUE) {
        if (X <= 0 || xr <= 0 || yr <= 0) return missing_value(error, y);
        if (xr == 1) {
            if (yr != 1) return missing_value(y);
            y[1] = 1.0;
            return 0;
        }
        if (!ratio_of_logarithms(X, xr, error, E)) return missing_value(error, y);
        y[1] = guarded_pow(yr, E);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0 || xr <= 0 || yr <= 0) return missing_values(error, y, dy, 1, 2);
    if (xr == 1) {
        mark_missing(dy, 1, 2);
        if (yr != 1) return missing_value(y);
        y[1] = 1.0;
        return 0;
    }
    if (!ratio_of_logarithms(X, xr, error, E)) return missing_values(error, y, dy, 1, 2);
    y[1] = guarded_pow(yr, E);
    const double L = std::log(yr);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    dy[2] = E * y[1] / yr;
    dy[1] = -L * E * y[1] / xr / std::log(xr);
    return 0;
}

/// Power of the distance from a centre, with offset.
///     y = y0 + A·|X - xc|^b          p = (y0, xc, A, b)
/// A value call needs nParams >= 1. At the centre the value step gives y0 and the derivative step y = 0, with
/// dy[2] and dy[4] marked: it still succeeds.
MODEL(Power0)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], xc = p[2], A = p[3], b = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        if (X == xc) {
            y[1] = y0;
        } else {
            y[1] = y0 + A * guarded_pow(std::fabs(X - xc), b);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    if (X == xc) {
        dy[2] = MISSING_VALUE;
        dy[3] = 0.0;
        dy[4] = MISSING_VALUE;
        y[1] = 0.0;
        return 0;
    }
    const double P = guarded_pow(std::fabs(X - xc), b);
    const double L = std::log(std::fabs(X - xc));
    if (error.raised()) return missing_values(error, y, dy, 2, 4);
    dy[2] = -A * b * P / (X - xc);
    dy[3] = P;
    dy[4] = L * P * A;
    y[1] = P * A + y0;
    return 0;
}

/// Power of the distance from a centre.
///     y = A·|X - xc|^b          p = (xc, A, b)
/// At the centre y = 0, and the derivative step marks dy[1] and dy[3] and succeeds. The derivatives refuse b <= 0,
/// which the value accepts; they make no error test, so that an overflow passes as an infinity.
MODEL(Power1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xc = p[1], A = p[2], b = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X == xc) {
            y[1] = 0.0;
        } else {
            y[1] = A * guarded_pow(std::fabs(X - xc), b);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (b <= 0) return missing_values(error, y, dy, 1, 3);
    if (X == xc) {
        dy[1] = MISSING_VALUE;
        dy[2] = 0.0;
        dy[3] = MISSING_VALUE;
        y[1] = 0.0;
        return 0;
    }
    const double P = guarded_pow(std::fabs(X - xc), b);
    dy[1] = -A * b * P / (X - xc);
    dy[2] = P;
    dy[3] = std::log(std::fabs(X - xc)) * A * P;
    y[1] = A * P;
    return 0;
}

/// Power of the distance from a centre, with an exponent of its own on either side.
///     y = A·(xc - X)^b1 left of the centre, A·(X - xc)^b2 right of it          p = (xc, A, b1, b2)
/// At the centre y = 0, and the derivative step marks all but dy[2] and succeeds. The derivatives refuse b1 <= 0
/// and b2 <= 0, which the value accepts. The value step finds the centre by comparing X with xc, the derivative
/// step by their difference, so that equal infinities are right of the centre there.
MODEL(Power2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xc = p[1], A = p[2], b1 = p[3], b2 = p[4], X = x[1];
    const double d = X - xc;

    if (flags & EVAL_VALUE) {
        if (X == xc) {
            y[1] = 0.0;
        } else {
            y[1] = A * guarded_pow(std::fabs(d), xc > X ? b1 : b2);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (b1 <= 0 || b2 <= 0) return missing_values(error, y, dy, 1, 4);
    if (d == 0) {
        dy[1] = MISSING_VALUE;
        dy[2] = 0.0;
        dy[3] = MISSING_VALUE;
        dy[4] = MISSING_VALUE;
        y[1] = 0.0;
        return 0;
    }
    if (d < 0) {
        dy[2] = guarded_pow(-d, b1);
        dy[1] = -b1 * A * dy[2] / d;
        dy[3] = std::log(-d) * A * dy[2];
        dy[4] = 0.0;
    } else {
        dy[2] = guarded_pow(d, b2);
        dy[1] = -b2 * A * dy[2] / d;
        dy[3] = 0.0;
        dy[4] = std::log(d) * A * dy[2];
    }
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    y[1] = A * dy[2];
    return 0;
}

/// Allometric curve.
///     y = a·X^b          p = (a, b)
/// X must not be <= 0. The value for a = 0 is 0 without a power.
MODEL(Allometric1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0) return missing_value(error, y);
        y[1] = 0.0;
        if (a != 0) {
            y[1] = a * guarded_pow(X, b);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0) return missing_values(error, y, dy, 1, 2);
    dy[1] = guarded_pow(X, b);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    y[1] = a * dy[1];
    dy[2] = std::log(X) * y[1];
    if (error.raised()) return missing_derivative(dy, 2);
    return 0;
}

/// Allometric curve with offset.
///     y = y0 + a·X^b          p = (y0, a, b)
/// X must not be <= 0. The value for a = 0 is y0 without a power. A derivative call whose power fails has already
/// written dy[1] = 1; one whose logarithm fails leaves y without y0.
MODEL(Allometric2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], a = p[2], b = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0) return missing_value(error, y);
        y[1] = y0;
        if (a != 0) {
            y[1] = y0 + a * guarded_pow(X, b);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1.0;
    dy[2] = guarded_pow(X, b);
    if (error.raised()) return missing_values(error, y, dy, 2, 3);
    y[1] = a * dy[2];
    dy[3] = std::log(X) * y[1];
    if (error.raised()) return missing_derivative(dy, 3);
    y[1] += y0;
    return 0;
}

/// Distribution function of Pareto for quantities from 1 up.
///     y = 1 - X^(-a)          p = (a)
/// X must not be <= 0.
MODEL(Pareto)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X <= 0) return missing_value(y);
        y[1] = 1 - guarded_pow(X, -a);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0) return missing_values(y, dy, 1, 1);
    const double P = guarded_pow(X, -a);
    dy[1] = std::log(X) * P;
    if (error.raised()) return missing_values(error, y, dy, 1, 1);
    y[1] = 1 - P;
    return 0;
}

/// Distribution function of Pareto through the point (xr, yr).
///     y = 1 - (1 - yr)^(ln(X)/ln(xr))          p = (xr, yr)
/// X and xr must not be <= 0, yr not >= 1. For xr = 1 the value is 0 and so is dy[1]; dy[2] is marked, and the call
/// succeeds.
MODEL(ParetoEVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xr = p[1], yr = p[2], X = x[1];
    double E = 0.0;

    if (flags & EVAL_VALUE) {
        if (X <= 0 || xr <= 0 || yr >= 1) return missing_value(y);
        if (xr == 1) {
            y[1] = 0.0;
            return 0;
        }
        if (!ratio_of_logarithms(X, xr, error, E)) return missing_value(error, y);
        y[1] = 1 - guarded_pow(1 - yr, E);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X <= 0 || xr <= 0 || yr >= 1) return missing_values(y, dy, 1, 2);
    if (xr == 1) {
        y[1] = 0.0;
        dy[1] = 0.0;
        dy[2] = MISSING_VALUE;
        return 0;
    }
    if (!ratio_of_logarithms(X, xr, error, E)) return missing_values(error, y, dy, 1, 2);
    const double P = guarded_pow(1 - yr, E);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    y[1] = 1 - P;
    const double t = P * E;
    dy[2] = t / (1 - yr);
    dy[1] = std::log(1 - yr) * t / xr / std::log(xr);
    if (error.raised()) {  // costs dy[1] alone
        error.clear();
        mark_missing(dy, 1, 1);
        return 1;
    }
    return 0;
}

}  // namespace curvebank
