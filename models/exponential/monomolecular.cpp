// First-order kinetics: saturation by one or two reactions, monomolecular growth, decay to a straight line, and
// relative growth.

#include "frame/evaluation.h"

namespace curvebank {

/// One reaction of first order (Box and Lucas, 1959).
///     y = a·(1 - exp(-b·X))          p = (a, b)
MODEL(BoxLucas1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = a * (1 - guarded_exp(-b * X));
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double E = guarded_exp(-b * X);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    dy[1] = 1 - E;
    dy[2] = a * X * E;
    y[1] = a * (1 - E);
    return 0;
}

/// One reaction of first order by its factor per unit of X.
///     y = a·(1 - b^X)          p = (a, b)
/// Needs b > 0; the derivative step refuses b <= 0 and so lets a NaN pass.
MODEL(BoxLucas1Mod)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        if (!(b > 0)) return missing_value(error, y);
        y[1] = a * (1 - guarded_pow(b, X));
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (b <= 0) return missing_values(error, y, dy, 1, 2);
    const double Q = guarded_pow(b, X);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    dy[1] = 1 - Q;
    dy[2] = -a * X * Q / b;
    y[1] = a * (1 - Q);
    return 0;
}

/// One reaction of first order through a given point (xr, yr).
///     y = yr·(1 - b^X) / (1 - b^xr)          p = (xr, yr, b)
/// Needs b > 0, b != 1 and xr != 0. Three parameters are read, though the catalogue counts two. The power of
/// the normaliser is tested in errno alone, for 34: where it is found the curve is 0, a result and no failure,
/// and errno keeps the code. A value call that meets it ends without derivatives.
MODEL(BoxLucas1EVP)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const ErrorVariable runtime = ErrorVariable::runtime();
    const double xr = p[1], yr = p[2], b = p[3], X = x[1];
    const bool defined = b > 0 && xr != 0 && b != 1;

    if (flags & EVAL_VALUE) {
        if (!defined) return missing_value(error, y);
        const double Q = guarded_pow(b, X);
        if (error.raised()) return missing_value(error, y);
        const double R = guarded_pow(b, xr);
        if (runtime.range_error()) {
            y[1] = 0.0;
            return 0;
        }
        y[1] = yr * (1 - Q) / (1 - R);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!defined) return missing_values(error, y, dy, 1, 3);
    const double Q = guarded_pow(b, X);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    const double R = guarded_pow(b, xr);
    if (runtime.range_error()) {
        y[1] = dy[1] = dy[2] = dy[3] = 0.0;
        return 0;
    }
    dy[2] = (1 - Q) / (1 - R);
    y[1] = yr * dy[2];
    dy[1] = std::log(b) * y[1] * R / (1 - R);
    dy[3] = (y[1] * xr * R - yr * X * Q) / b / (1 - R);
    return 0;
}

/// Intermediate product of two reactions in succession (Box and Lucas, 1959).
///     y = a·(exp(-b·X) - exp(-a·X)) / (a - b)          p = (a, b)
/// Needs a != b. A value call with a = 0 ends with y = 0, without derivatives.
MODEL(BoxLucas2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], X = x[1];
    const double D = a - b;

    if (flags & EVAL_VALUE) {
        if (a == b) return missing_value(error, y);
        if (a == 0) {
            y[1] = 0.0;
            return 0;
        }
        const double E1 = guarded_exp(-a * X);
        if (error.raised()) return missing_value(error, y);
        const double E2 = guarded_exp(-b * X);
        if (error.raised()) return missing_value(error, y);
        y[1] = a * (E2 - E1) / D;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (a == b) return missing_values(error, y, dy, 1, 2);
    const double E1 = guarded_exp(-a * X);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    const double E2 = guarded_exp(-b * X);
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    const double S = E2 - E1;
    dy[1] = (S - a * S / D + a * X * E1) / D;
    dy[2] = (a * S / D - a * X * E2) / D;
    y[1] = a * S / D;
    return 0;
}

/// Monomolecular growth from 0 at xc.
///     y = A·(1 - exp(-r·(X - xc)))          p = (A, xc, r)
/// At X = xc, and in the value step with A = 0, no exponential is computed. The derivative step tests errno,
/// for 34 alone; on failure it clears the error variable of the call.
MODEL(MnMolecular)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A = p[1], xc = p[2], r = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X == xc || A == 0) {
            y[1] = 0.0;
        } else {
            y[1] = A * (1 - guarded_exp(-r * (X - xc)));
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X == xc) {
        y[1] = 0.0;
        dy[1] = 0.0;
        dy[2] = -r * A;
        dy[3] = A * X;  // defined so, where the exact partial is 0
        return 0;
    }
    const double E = guarded_exp(-r * (X - xc));
    if (ErrorVariable::runtime().range_error()) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1 - E;
    dy[2] = -r * A * E;
    dy[3] = (X - xc) * A * E;
    y[1] = A * (1 - E);
    return 0;
}

/// Monomolecular growth by the distance from its limit at X = 0.
///     y = A - b·exp(-r·X)          p = (A, b, r)
/// A derivative step that fails keeps dy[1] = 1.
MODEL(MnMolecular1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A = p[1], b = p[2], r = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = A - b * guarded_exp(-r * X);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    const double E = guarded_exp(-r * X);
    if (error.raised()) return missing_values(error, y, dy, 2, 3);
    dy[2] = -E;
    dy[3] = b * X * E;
    y[1] = A - b * E;
    return 0;
}

/// Exponential decay to a straight line.
///     y = A·exp(-X/t) + c + b·X          p = (A, t, c, b)
/// With t = 0 the line alone. The derivative step has no error test: an exponential that overflows there gives
/// infinite results and leaves its code in errno.
MODEL(ExpLinear)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A = p[1], t = p[2], c = p[3], b = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        if (t == 0) {
            y[1] = c + b * X;
        } else {
            y[1] = A * guarded_exp(-X / t) + c + b * X;
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[3] = 1.0;
    dy[4] = X;
    if (t == 0) {
        dy[1] = dy[2] = 0.0;
        y[1] = c + b * X;
        return 0;
    }
    const double E = guarded_exp(-X / t);
    dy[1] = E;
    dy[2] = A * E * X / (t * t);
    y[1] = A * E + c + b * X;
    return 0;
}

/// Relative growth, 1 at xc.
///     y = exp(r·(X - xc))          p = (xc, r)
/// At X = xc and with r = 0 no exponential is computed. Derivatives only on calls without EVAL_VALUE. dy[1] is
/// +r·y throughout, where the exact partial is -r·y.
MODEL(ExpGrowth)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double xc = p[1], r = p[2], X = x[1];

    if (flags & EVAL_VALUE) {
        if (r == 0 || X == xc) {
            y[1] = 1.0;
            return 0;
        }
        y[1] = guarded_exp(r * (X - xc));
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X == xc) {
        y[1] = 1.0;
        dy[1] = r;
        dy[2] = 0.0;
        return 0;
    }
    if (r == 0) {
        y[1] = 1.0;
        dy[1] = 0.0;
        dy[2] = X - xc;
        return 0;
    }
    const double E = guarded_exp(r * (X - xc));
    if (error.raised()) return missing_values(error, y, dy, 1, 2);
    y[1] = E;
    dy[2] = (X - xc) * E;
    dy[1] = r * E;
    return 0;
}

}  // namespace curvebank
