// Asymptotic regression: the exponential approach to a limit in seven parameterisations.
//
// The seven differ in more than their parameters. Whether X = 0 or a vanishing amplitude is a case of its own,
// and which error variable a failing derivative step clears, is said at each curve.

#include "frame/evaluation.h"

namespace curvebank {

/// Approach to a limit by a factor per unit of X.
///     y = a - b·c^X          p = (a, b, c)
/// Needs 0 < c < 1; the power is taken, and may fail, even where b is 0. A derivative call outside the domain
/// leaves the error variable alone.
MODEL(Asymptotic1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (!(c > 0 && c < 1)) return missing_value(error, y);
        y[1] = a - b * guarded_pow(c, X);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(c > 0 && c < 1)) return missing_values(y, dy, 1, 3);
    const double Q = guarded_pow(c, X);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1.0;
    dy[2] = -Q;
    dy[3] = b * dy[2] * X / c;
    y[1] = a - b * Q;
    return 0;
}

/// Approach to a limit by a rate.
///     y = a - b·exp(-r·X)          p = (a, b, r)
/// Needs r > 0. A value call with b = 0 ends with y = a, without derivatives.
MODEL(Asymptotic2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], r = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (!(r > 0)) return missing_value(error, y);
        if (b == 0) {
            y[1] = a;
            return 0;
        }
        y[1] = a - b * guarded_exp(-r * X);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(r > 0)) return missing_values(error, y, dy, 1, 3);
    const double E = guarded_exp(-r * X);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1.0;
    dy[2] = -E;
    dy[3] = b * X * E;
    y[1] = a - b * E;
    return 0;
}

/// Rise from 0 at xc to a limit.
///     y = a·(1 - exp(-r·(X - xc)))          p = (a, xc, r)
/// Needs r > 0. A derivative step whose exponential fails clears errno, whichever error variable it tested.
MODEL(Asymptotic3)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], xc = p[2], r = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (!(r > 0)) return missing_value(error, y);
        y[1] = a * (1 - guarded_exp(-r * (X - xc)));
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(r > 0)) return missing_values(error, y, dy, 1, 3);
    const double E = guarded_exp(-r * (X - xc));
    if (error.raised()) return missing_values(ErrorVariable::runtime(), y, dy, 1, 3);
    dy[1] = 1 - E;
    dy[2] = -a * r * E;
    dy[3] = a * (X - xc) * E;
    y[1] = a * (1 - E);
    return 0;
}

/// Approach from the value at X = 0 to a limit, by a factor per unit of X.
///     y = a + (y0 - a)·b^X          p = (a, b, y0)
/// Needs 0 < b < 1. Derivatives only on calls without EVAL_VALUE. A derivative step whose power fails keeps
/// what it has written but for dy[2], and clears errno, whichever error variable it tested.
MODEL(Asymptotic4)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], y0 = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (!(b > 0 && b < 1)) return missing_value(error, y);
        y[1] = a + (y0 - a) * guarded_pow(b, X);
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(b > 0 && b < 1)) return missing_values(error, y, dy, 1, 3);
    const double Q = guarded_pow(b, X);
    dy[1] = 1 - Q;
    dy[3] = Q;
    dy[2] = (X / b) * (y0 - a) * Q;
    y[1] = a + (y0 - a) * Q;
    if (error.raised()) return missing_derivative(dy, 2);
    return 0;
}

/// Approach from the value at X = 0 to a limit, by a rate.
///     y = a + (y0 - a)·exp(-r·X)          p = (a, r, y0)
/// r <= 0 is refused; a derivative call that refuses it leaves the error variable alone. A value call at X = 0
/// or with y0 = a ends with that value, without derivatives.
MODEL(Asymptotic5)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], r = p[2], y0 = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (r <= 0) return missing_value(error, y);
        if (X == 0) {
            y[1] = y0;
            return 0;
        }
        if (y0 == a) {
            y[1] = a;
            return 0;
        }
        y[1] = (y0 - a) * guarded_exp(-r * X) + a;
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (r <= 0) return missing_values(y, dy, 1, 3);
    if (X == 0) {
        y[1] = y0;
        dy[1] = 0.0;
        dy[2] = 0.0;
        dy[3] = -1.0;  // defined so, where the exact partial is +1
        return 0;
    }
    const double E = guarded_exp(-r * X);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1 - E;
    dy[3] = E;
    dy[2] = -X * (y0 - a) * E;
    y[1] = a + (y0 - a) * E;
    return 0;
}

/// Approach to a limit, the amplitude given by its logarithm.
///     y = a - exp(-(r·X + b))          p = (a, b, r)
/// Needs r > 0.
MODEL(Asymptotic6)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], r = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (!(r > 0)) return missing_value(error, y);
        y[1] = a - guarded_exp(-(r * X + b));
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(r > 0)) return missing_values(error, y, dy, 1, 3);
    const double E = guarded_exp(-(r * X + b));
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1.0;
    dy[2] = E;
    dy[3] = X * E;
    y[1] = a - E;
    return 0;
}

/// Rise by A above the value at X = 0.
///     y = y0 + A·(1 - exp(-r·X))          p = (y0, A, r)
/// Needs r > 0; the derivative step refuses r <= 0 and so lets a NaN pass. A value call at X = 0 ends with
/// y = y0, without derivatives.
MODEL(Asymptotic7)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], A = p[2], r = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (!(r > 0)) return missing_value(error, y);
        if (X == 0) {
            y[1] = y0;
            return 0;
        }
        y[1] = y0 + A * (1 - guarded_exp(-r * X));
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (r <= 0) return missing_values(error, y, dy, 1, 3);
    if (X == 0) {
        y[1] = y0;
        dy[1] = 1.0;
        dy[2] = 0.0;
        dy[3] = A * X;
        return 0;
    }
    const double E = guarded_exp(-r * X);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1.0;
    dy[2] = 1 - E;
    dy[3] = A * X * E;
    y[1] = y0 + A * (1 - E);
    return 0;
}

}  // namespace curvebank
