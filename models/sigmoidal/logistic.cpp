// Logistic sigmoids, in a power of x and in an exponential of x.
//
// Where the power or exponential leaves the range, most take the limit of the curve and of its derivatives and
// report success. They look for that in errno whatever the flags say, and reset errno alone; a domain that fails
// clears the error variable that the flags choose. All give derivatives only on calls without EVAL_VALUE.

#include "frame/evaluation.h"

namespace curvebank {

/// Four-parameter logistic (De Lean, Munson and Rodbard, 1978).
///     y = A2 + (A1 - A2) / (1 + (X/x0)^h)          p = (A1, A2, x0, h)
/// A value call needs nParams >= 1, x0 other than 0 and X/x0 >= 0; a derivative call x0 > 0, h other than 0 and
/// X >= 0. A power out of range gives A2: an overflow, and where the C runtime reports it an underflow too,
/// although the curve tends to A1 there. The power is tested in errno; the chosen error variable is tested at the
/// end of the derivative step.
MODEL(Logistic)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double A1 = p[1], A2 = p[2], x0 = p[3], h = p[4], X = x[1];
    const double r = X / x0;

    if (flags & EVAL_VALUE) {
        if (nParams <= 0 || x0 == 0 || r < 0) return missing_value(error, y);
        const double e = guarded_pow(r, h);
        if (runtime.domain_error()) return missing_value(error, y);
        if (runtime.range_error()) return saturated(y, A2);
        y[1] = (A1 - A2) / (e + 1) + A2;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (x0 <= 0 || h == 0 || X < 0) return missing_values(error, y, dy, 1, 4);
    const double e = guarded_pow(r, h);
    if (runtime.domain_error()) return missing_values(error, y, dy, 1, 4);
    double s = 1 / (e + 1);
    if (runtime.range_error()) {
        s = 0.0;
        runtime.clear();
    }
    dy[1] = s;
    dy[2] = 1 - s;
    const double a = (A1 - A2) * s;
    dy[3] = a * h * (1 - s) / x0;
    const double b = -x0 * dy[3] / h;
    dy[4] = b != 0 ? std::log(r) * b : 0.0;  // at X = 0 the logarithm must not meet the vanishing factor
    if (error.raised()) return missing_values(error, y, dy, 4, 4);
    y[1] = a + A2;
    return 0;
}

/// Five-parameter logistic (Gottschalk and Dunn, 2005).
///     y = Amin + (Amax - Amin) / (1 + (x0/X)^h)^s          p = (Amin, Amax, x0, h, s)
/// Does not saturate. Nothing is tested but the error variable, once, when all is computed: a failed derivative
/// step leaves dy as computed.
MODEL(Logistic5)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double Amin = p[1], Amax = p[2], x0 = p[3], h = p[4], s = p[5], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = guarded_pow(guarded_pow(x0 / X, h) + 1, -s) * (Amax - Amin) + Amin;
        if (error.raised()) return missing_value(error, y);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double e = guarded_pow(x0 / X, h);
    const double E = e + 1;
    const double P1 = guarded_pow(E, -1 - s);
    const double r = guarded_pow(x0 / X, h - 1);
    const double P = guarded_pow(E, -s);
    dy[2] = P;
    dy[1] = 1 - P;
    dy[3] = (Amin - Amax) * h * s * r * P1 / X;
    dy[4] = std::log(x0 / X) * (Amin - Amax) * s * e * P1;
    dy[5] = std::log(E) * (Amin - Amax) * P;
    if (error.raised()) return missing_value(error, y);
    y[1] = (Amax - Amin) * P + Amin;
    return 0;
}

/// Logistic growth by amplitude, centre and rate (Verhulst, 1838).
///     y = a / (1 + exp(-r·(X - xc)))          p = (a, xc, r)
/// The amplitude must be positive. An overflow gives 0.
MODEL(SLogistic1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double a = p[1], xc = p[2], r = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (a <= 0) return missing_value(error, y);
        const double e = guarded_exp(-r * (X - xc));
        if (runtime.range_error()) return saturated(y, 0.0);
        y[1] = a / (e + 1);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (a <= 0) return missing_value(error, y);
    const double e = guarded_exp(-r * (X - xc));
    if (runtime.range_error()) {
        dy[1] = 0.0;
        dy[2] = 0.0;
        dy[3] = 0.0;
        return saturated(y, 0.0);
    }
    const double s = 1 / (e + 1);
    dy[1] = s;
    y[1] = s * a;
    const double v = y[1] * s * e;
    dy[2] = -r * v;
    dy[3] = (X - xc) * v;
    return 0;
}

/// Logistic growth by initial value, upper limit and steepest slope (Verhulst, 1838).
///     y = a / (1 + (a - y0)/y0 · exp(-4·W·X/a))          p = (y0, a, W)
/// Needs a > 0, y0 < a, y0 other than 0 and W > 0; a NaN fails. An overflow gives 0 in the value step. The
/// derivative step makes no error test: it computes with the infinite exponential and leaves the code in errno.
MODEL(SLogistic2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], a = p[2], W = p[3], X = x[1];
    const bool defined = a > 0 && y0 < a && y0 != 0 && W > 0;

    if (flags & EVAL_VALUE) {
        if (!defined) return missing_value(error, y);
        const double e = guarded_exp(-4 * W * X / a);
        if (ErrorVariable::runtime().range_error()) return saturated(y, 0.0);
        y[1] = a / ((a - y0) * e / y0 + 1);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!defined) return missing_values(error, y, dy, 1, 3);
    const double e = guarded_exp(-4 * W * X / a);
    const double D = (a - y0) * e / y0 + 1;
    dy[2] = (1 - ((a - y0) * 4 * e * W * X / y0 / a / a + e / y0) * a / D) / D;
    dy[3] = (a - y0) * 4 * e * X / y0 / D / D;
    dy[1] = ((a - y0) * (-e) / y0 - e) * (-a) / y0 / D / D;
    y[1] = a / D;
    return 0;
}

/// Logistic growth by upper limit, scale of the exponential and rate (Verhulst, 1838).
///     y = a / (1 + b·exp(-r·X))          p = (a, b, r)
/// All parameters must be positive; a NaN fails. An overflow gives 0.
MODEL(SLogistic3)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr), runtime = ErrorVariable::runtime();
    const double a = p[1], b = p[2], r = p[3], X = x[1];
    const bool defined = a > 0 && b > 0 && r > 0;

    if (flags & EVAL_VALUE) {
        if (!defined) return missing_value(error, y);
        const double e = guarded_exp(-r * X);
        if (runtime.range_error()) return saturated(y, 0.0);
        y[1] = a / (e * b + 1);
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!defined) return missing_values(error, y, dy, 1, 3);
    const double e = guarded_exp(-r * X);
    if (runtime.range_error()) {
        dy[1] = 0.0;
        dy[2] = 0.0;
        dy[3] = 0.0;
        return saturated(y, 0.0);
    }
    const double D = e * b + 1;
    dy[1] = 1 / D;
    dy[2] = -a * e / (D * D);
    dy[3] = -X * b * dy[2];
    y[1] = a / D;
    return 0;
}

/// Logistic growth between two levels.
///     y = A2 + (A1 - A2) / (1 + exp(-r·(X - x0)))          p = (A1, A2, x0, r)
/// Never fails. An overflow gives A2.
MODEL(Slogistic4)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable runtime = ErrorVariable::runtime();
    const double A1 = p[1], A2 = p[2], x0 = p[3], r = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        const double e = guarded_exp(-r * (X - x0));
        if (runtime.range_error()) return saturated(y, A2);
        const double s = 1 / (e + 1);
        y[1] = (A1 - A2) * s + A2;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double e = guarded_exp(-r * (X - x0));
    if (runtime.range_error()) {
        dy[1] = 0.0;
        dy[2] = 1.0;
        dy[3] = 0.0;
        dy[4] = 0.0;
        return saturated(y, A2);
    }
    const double s = 1 / (e + 1);
    dy[1] = s;
    dy[2] = 1 - s;
    const double v = (A1 - A2) * s * s * e;
    dy[3] = -r * v;
    dy[4] = (X - x0) * v;
    y[1] = (A1 - A2) * s + A2;
    return 0;
}

}  // namespace curvebank
