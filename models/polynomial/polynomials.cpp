// Polynomials, and the straight line through a point of the x axis.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

/// A polynomial of fixed degree:
///     y = p1 + p2·X + p3·X² + ...
/// The value is formed by Horner's rule, the value of the derivative step from the powers in rising order.
template <int degree>
int32_t polynomial(int16_t flags, const double *p, const double *x, double *y, double *dy)
{
    constexpr int terms = degree + 1;
    if (flags & EVAL_INIT) return 1;
    const double X = x[1];

    if (flags & EVAL_VALUE) {
        double sum = p[terms];
        for (int i = terms - 1; i >= 1; --i) sum = sum * X + p[i];
        y[1] = sum;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    double sum = p[1];
    for (int i = 2; i <= terms; ++i) {
        dy[i] = dy[i - 1] * X;
        sum += p[i] * dy[i];
    }
    y[1] = sum;
    return 0;
}

}  // namespace

/// Constant.
///     y = a0          p = (a0)
MODEL(Constant)
{
    return polynomial<0>(flags, p, x, y, dy);
}

/// Straight line.
///     y = a0 + a1·X          p = (a0, a1)
MODEL(Line)
{
    return polynomial<1>(flags, p, x, y, dy);
}

/// Parabola.
///     y = a0 + a1·X + a2·X²          p = (a0, a1, a2)
MODEL(Parabola)
{
    return polynomial<2>(flags, p, x, y, dy);
}

/// Cubic.
///     y = a0 + a1·X + a2·X² + a3·X³          p = (a0, ..., a3)
MODEL(Cubic)
{
    return polynomial<3>(flags, p, x, y, dy);
}

/// Polynomial of degree 4.
///     y = a0 + a1·X + ... + a4·X⁴          p = (a0, ..., a4)
MODEL(Poly4)
{
    return polynomial<4>(flags, p, x, y, dy);
}

/// Polynomial of degree 5.
///     y = a0 + a1·X + ... + a5·X⁵          p = (a0, ..., a5)
MODEL(Poly5)
{
    return polynomial<5>(flags, p, x, y, dy);
}

/// Quintic about a centre.
///     y = a0 + a1·d + a2·d² + a3·d³ + a4·d⁴ + a5·d⁵,  d = X - xc          p = (a0, xc, a1, ..., a5)
/// Value only: derivatives are never written, and every call answers 0, initialisation calls included.
MODEL(PolyCtr5)
{
    if (flags & EVAL_INIT || !(flags & EVAL_VALUE)) return 0;
    const double a0 = p[1], xc = p[2], a1 = p[3], a2 = p[4], a3 = p[5], a4 = p[6], a5 = p[7];
    const double d = x[1] - xc;

    y[1] = ((((a5 * d + a4) * d + a3) * d + a2) * d + a1) * d + a0;
    return 0;
}

/// Polynomial with as many terms as the call passes parameters.
///     y = a1 + a2·X + ... + an·X^(n-1),  n = nParams          p = (a1, ..., an)
/// The value step refuses n < 1; the derivative step always computes the first term.
MODEL(PolyN)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        double sum = 0.0, power = 1.0;
        for (int i = 1; i <= nParams; ++i) {
            if (p[i] != 0) sum += p[i] * power;  // a zero coefficient must not meet an overflowed power
            power *= X;
        }
        y[1] = sum;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    double sum = p[1];
    for (int i = 2; i <= nParams; ++i) {
        dy[i] = dy[i - 1] * X;
        sum += dy[i] * p[i];
    }
    y[1] = sum;
    return 0;
}

/// Straight line by its slope and its zero.
///     y = b·(X - x0)          p = (b, x0)
/// Derivatives only on calls without EVAL_VALUE.
MODEL(LineMod)
{
    if (flags & EVAL_INIT) return 1;
    const double b = p[1], x0 = p[2];

    if (flags & EVAL_VALUE) {
        y[1] = (x[1] - x0) * b;
        return 0;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = x[1] - x0;
    y[1] = dy[1] * b;
    dy[2] = -b;
    return 0;
}

}  // namespace curvebank
