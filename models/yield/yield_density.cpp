// Yield-density and related response curves: reciprocals of polynomials in x, and powers of them.
//
// A denominator is refused only where it is exactly 0. Holliday and Nelder compute value and derivatives in one
// call; the others give derivatives only on calls without EVAL_VALUE. Every failure but those of Holliday1 clears
// the error variable, and in a derivative step marks every entry of dy.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

/// The partial of P = b^e with respect to b, from the power itself; at b = 0 from the power below, which may fail.
double base_partial(double b, double e, double P)
{
    return b == 0 ? e * guarded_pow(0, e - 1) : e * P / b;
}

/// Where b^e is 0 for every exponent near e, its partial with respect to e is 0 and takes no logarithm of b.
bool stays_zero(double b, double e)
{
    return b == 0 && e > 0;
}

}  // namespace

/// Reciprocal of a parabola: yield per area against plant density (Holliday, 1960).
///     y = 1 / (a + b·X + c·X²)          p = (a, b, c)
/// The denominator must not be 0.
MODEL(Holliday)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], X = x[1];
    const double D = a + b * X + c * (X * X);

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(error, y);
        y[1] = 1 / D;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(error, y, dy, 1, 3);
    y[1] = 1 / D;
    dy[1] = -y[1] / D;
    dy[2] = dy[1] * X;
    dy[3] = dy[1] * (X * X);
    return 0;
}

/// Reciprocal of a parabola by its value at X = 0 (Holliday, 1960).
///     y = a / (1 + b·X + c·X²)          p = (a, b, c)
/// The denominator must not be 0; where it is, the error variable stays as it was.
MODEL(Holliday1)
{
    if (flags & EVAL_INIT) return 1;
    const double a = p[1], b = p[2], c = p[3], X = x[1];
    const double D = 1 + b * X + c * (X * X);

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(y);
        y[1] = a / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(y, dy, 1, 3);
    y[1] = a / D;
    dy[1] = 1 / D;
    dy[2] = -y[1] * X / D;
    dy[3] = -y[1] * (X * X) / D;
    return 0;
}

/// Yield of a single plant against plant density, linear in the density (Bleasdale and Nelder, 1960).
///     y = (a + b·X)^(-1/c)          p = (a, b, c)
/// The base must be positive or NaN, and c not 0.
MODEL(BlNeldSmp)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], X = x[1];
    const double B = a + b * X, e = -1 / c;

    if (flags & EVAL_VALUE) {
        if (B <= 0 || c == 0) return missing_value(error, y);
        const double P = guarded_pow(B, e);
        if (error.raised()) return missing_value(error, y);
        y[1] = P;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (B <= 0 || c == 0) return missing_values(error, y, dy, 1, 3);
    const double P = guarded_pow(B, e);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    y[1] = P;
    dy[1] = e * P / B;
    dy[2] = dy[1] * X;
    dy[3] = std::log(B) * P / (c * c);
    return 0;
}

/// Yield of a single plant against a power of the plant density (Bleasdale and Nelder, 1960).
///     y = (a + b·X^f)^(-1/c)          p = (a, b, c, f)
/// c must not be 0; both powers must be in range. The derivatives also need the logarithm of a base that is
/// negative, or 0 under an exponent that is not positive, and fail there.
MODEL(BlNeld)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], f = p[4], X = x[1];
    const double e = -1 / c;

    if (flags & EVAL_VALUE) {
        if (c == 0) return missing_value(error, y);
        const double B = a + b * guarded_pow(X, f);
        if (error.raised()) return missing_value(error, y);
        const double P = guarded_pow(B, e);
        if (error.raised()) return missing_value(error, y);
        y[1] = P;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (c == 0) return missing_values(error, y, dy, 1, 4);
    const double Xf = guarded_pow(X, f);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    const double B = a + b * Xf;
    const double P = guarded_pow(B, e);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    y[1] = P;
    dy[1] = base_partial(B, e, P);
    dy[2] = dy[1] * Xf;
    dy[3] = stays_zero(B, e) ? 0.0 : std::log(B) * P / (c * c);
    dy[4] = stays_zero(X, f) ? 0.0 : std::log(X) * dy[1] * b * Xf;
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    return 0;
}

/// Yield of a single plant against plant density through two given points (Bleasdale and Nelder, 1960).
///     y = y1·y2·((x2 - x1) / ((X - x1)·y1^f + (x2 - X)·y2^f))^(1/f)          p = (x1, y1, x2, y2, f)
/// All coordinates must be positive and x1 < x2, where a NaN passes; the denominator must not be 0. f = 0 is not
/// refused. The catalogue counts the first three parameters; y2 and f stand behind them in the same array. Answers
/// 0 to EVAL_INIT.
MODEL(BlNeldEVP)
{
    if (flags & EVAL_INIT) return 0;
    const ErrorVariable error(flags, perr);
    const double x1 = p[1], y1 = p[2], x2 = p[3], y2 = p[4], f = p[5], X = x[1];
    const bool refused = x1 <= 0 || y1 <= 0 || x2 <= 0 || y2 <= 0 || x1 >= x2;
    const double e = 1 / f;

    if (flags & EVAL_VALUE) {
        if (refused) return missing_value(error, y);
        const double P1 = guarded_pow(y1, f);
        if (error.raised()) return missing_value(error, y);
        const double P2 = guarded_pow(y2, f);
        if (error.raised()) return missing_value(error, y);
        const double D = (X - x1) * P1 + (x2 - X) * P2;
        if (D == 0) return missing_value(error, y);
        const double P = guarded_pow((x2 - x1) / D, e);
        if (error.raised()) return missing_value(error, y);
        y[1] = y2 * y1 * P;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (refused) return missing_values(error, y, dy, 1, 5);
    const double P1 = guarded_pow(y1, f);
    if (error.raised()) return missing_values(error, y, dy, 1, 5);
    const double P2 = guarded_pow(y2, f);
    if (error.raised()) return missing_values(error, y, dy, 1, 5);
    const double D = (X - x1) * P1 + (x2 - X) * P2;
    if (D == 0) return missing_values(error, y, dy, 1, 5);
    const double B = (x2 - x1) / D;
    const double P = guarded_pow(B, e);
    if (error.raised()) return missing_values(error, y, dy, 1, 5);
    y[1] = y2 * y1 * P;

    const double slope = y2 * y1 * base_partial(B, e, P);  // of y against B
    const double D_f = (X - x1) * std::log(y1) * P1 + (x2 - X) * std::log(y2) * P2;
    dy[1] = slope * (B * P1 - 1) / D;
    dy[2] = y2 * P - slope * B * (X - x1) * (f * P1 / y1) / D;
    dy[3] = slope * (1 - B * P2) / D;
    dy[4] = y1 * P - slope * B * (x2 - X) * (f * P2 / y2) / D;
    dy[5] = -slope * B * D_f / D;
    if (!stays_zero(B, e)) dy[5] -= y2 * y1 * std::log(B) * P / (f * f);
    if (error.raised()) return missing_values(error, y, dy, 1, 5);
    return 0;
}

/// Hyperbola with a term in the square root: phosphate adsorbed by soil against its concentration (Gunary, 1970).
///     y = X / (a + b·X + c·√X)          p = (a, b, c)
/// Refuses X < 0, which lets a NaN through; the denominator must not be 0.
MODEL(Gunary)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], c = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (X < 0) return missing_value(error, y);
        const double D = a + b * X + c * std::sqrt(X);
        if (D == 0) return missing_value(error, y);
        y[1] = X / D;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (X < 0) return missing_values(error, y, dy, 1, 3);
    const double root = std::sqrt(X);
    const double D = a + b * X + c * root;
    if (D == 0) return missing_values(error, y, dy, 1, 3);
    y[1] = X / D;
    dy[1] = -y[1] / D;
    dy[2] = dy[1] * X;
    dy[3] = dy[1] * root;
    return 0;
}

/// Inverse polynomial: response to a dose over what is already there (Nelder, 1966).
///     y = u / (b0 + b1·u + b2·u²),  u = X + a          p = (a, b0, b1, b2)
/// The denominator must not be 0, not even where u is; elsewhere u = 0 gives 0 whatever the coefficients are.
MODEL(Nelder)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b0 = p[2], b1 = p[3], b2 = p[4];
    const double u = a + x[1];
    const double D = b0 + b1 * u + b2 * (u * u);

    if (flags & EVAL_VALUE) {
        if (D == 0) return missing_value(error, y);
        y[1] = u == 0 ? 0.0 : u / D;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (D == 0) return missing_values(error, y, dy, 1, 4);
    y[1] = u == 0 ? 0.0 : u / D;
    dy[1] = (1 - (2 * b2 * u + b1) * y[1]) / D;
    dy[2] = -y[1] / D;
    dy[3] = dy[2] * u;
    dy[4] = dy[2] * (u * u);
    return 0;
}

}  // namespace curvebank
