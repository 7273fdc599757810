// Yield-density and related response curves: reciprocals of polynomials in x, and powers of them.
//
// A denominator is refused only where it is exactly 0. Holliday and Nelder compute value and derivatives in one
// call; the others give derivatives only on calls without EVAL_VALUE. Every failure but those of Holliday1 clears
// the error variable, and in a derivative step marks every entry of dy.

#include <algorithm>

#include "frame/evaluation.h"
#include "numerics/differences.h"

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

/// w·d - ln(1 + s·(e^d - 1)), where w = s·e^d/(1 + s·(e^d - 1)), for small d: terms that agree to first order. It
/// is the integral from 0 to d of t·w·(1 - w), w taken at t, here by the rule of Gauss and Legendre with five
/// points, which has full precision where |d| and |s·d| are at most 0.1.
double second_order(double s, double d)
{
    static constexpr double node[] = {0.0469100770306680036, 0.230765344947158454, 0.5, 0.769234655052841546,
                                      0.953089922969331996};
    static constexpr double weight[] = {0.118463442528094544, 0.239314335249683234, 0.284444444444444444,
                                        0.239314335249683234, 0.118463442528094544};
    const numerics::KeepErrno keep;
    double sum = 0.0;
    for (int i = 0; i < 5; ++i) {
        const double E = std::expm1(node[i] * d), D = 1 + s * E;
        sum += weight[i] * node[i] * (1 + E) / (D * D);
    }
    return s * (1 - s) * (d * d) * sum;
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

    if (B == 0) static_cast<void>(guarded_pow(0, e - 1));   // which the partial in B needs, and fails by
    if (!stays_zero(B, e)) static_cast<void>(std::log(B));  // a negative base fails, also where its power exists
    if (error.raised()) return missing_values(error, y, dy, 1, 5);

    // The denominator over x2 - x1 is a mean of P1 and P2 with the weights s and r, which together are 1. As one of
    // them and the other weight's part of their difference it keeps its digits where f is small, where the points
    // are nearly of one height and where X is far from both.
    const double s = (X - x1) / (x2 - x1), r = (x2 - X) / (x2 - x1);
    const double d = f * numerics::log_ratio(y1, y2), difference = numerics::power_difference(P1, P2, d);
    double mean = s * P1 + r * P2;
    if (s < 0 || r < 0) mean = s < 0 ? P2 + s * difference : P1 - r * difference;
    const double w1 = s * P1 / mean, w2 = r * P2 / mean;
    const bool first_is_minor = std::fabs(w1) < std::fabs(w2);
    const double major = first_is_minor ? P2 : P1,
                 excess = first_is_minor ? s * difference / P2 : -r * difference / P1;
    const double L = std::fabs(excess) < 0.5 ? numerics::log_of_one_plus(excess) : numerics::log_ratio(mean, major);
    const double height = (first_is_minor ? y1 : y2) * numerics::quiet_exp(-L / f);
    double by_f = first_is_minor ? w1 * d - L : -w2 * d - L;  // w1·ln(P1) + w2·ln(P2) - ln(mean)
    if (std::max({std::fabs(s), std::fabs(r), 1.0}) * std::fabs(d) < 0.1)
        by_f = std::fabs(s) < std::fabs(r) ? second_order(s, d) : second_order(r, -d);
    dy[1] = height * r / (x2 - x1) * (difference / f / mean);
    dy[2] = height / y1 * w2;
    dy[3] = height * s / (x2 - x1) * (difference / f / mean);
    dy[4] = height / y2 * w1;
    dy[5] = -height / f * by_f / f;
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
    dy[1] = (b0 / D - b2 * u * y[1]) / D;  // of 1 - u·D'/D, without the linear term, which drops out
    dy[2] = -y[1] / D;
    dy[3] = dy[2] * u;
    dy[4] = dy[2] * (u * u);
    return 0;
}

}  // namespace curvebank
