// Straight lines that bend at breakpoints, and the step.
//
// None of them fails or looks at an error variable. The value is written on derivative calls too. A breakpoint
// belongs to the piece on its right.

#include "frame/evaluation.h"

namespace curvebank {

/// Step from one level to another.
///     y = a for X < x0, b otherwise          p = (a, b, x0)
/// Exactly at the step dy[3] is missing, and the call still a success; elsewhere it is 0.
MODEL(Step)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double a = p[1], b = p[2], x0 = p[3], X = x[1];

    const bool before = x0 > X;
    y[1] = before ? a : b;
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = before ? 1.0 : 0.0;
    dy[2] = before ? 0.0 : 1.0;
    dy[3] = X == x0 ? MISSING_VALUE : 0.0;
    return 0;
}

/// Straight line that bends once.
///     y = a1 + k1·X                         for X < xi
///     y = a1 + k1·xi + k2·(X - xi)          otherwise
///     p = (a1, k1, xi, k2)
MODEL(PWL2)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double a1 = p[1], k1 = p[2], xi = p[3], k2 = p[4], X = x[1];

    const bool before = X < xi;
    y[1] = before ? a1 + k1 * X : a1 + k1 * xi + k2 * (X - xi);
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    dy[2] = before ? X : xi;
    dy[3] = before ? 0.0 : k1 - k2;
    dy[4] = before ? 0.0 : X - xi;
    return 0;
}

/// Straight line that bends twice.
///     y = a1 + k1·X                                            for X < x1
///     y = a1 + k1·x1 + k2·(X - x1)                             for x1 <= X < x2
///     y = a1 + k1·x1 + k2·(x2 - x1) + k3·(X - x2)              otherwise
///     p = (a1, k1, x1, k2, x2, k3)
/// The breakpoints are taken in this order even where x2 < x1: the middle piece then falls away.
MODEL(PWL3)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double a1 = p[1], k1 = p[2], x1 = p[3], k2 = p[4], x2 = p[5], k3 = p[6], X = x[1];
    const bool derivatives = flags & EVAL_DERIVS;

    if (X < x1) {
        y[1] = a1 + k1 * X;
        if (!derivatives) return 0;
        dy[1] = 1.0;
        dy[2] = X;
        dy[3] = 0.0;
        dy[4] = 0.0;
        dy[5] = 0.0;
        dy[6] = 0.0;
    } else if (X < x2) {
        y[1] = a1 + k1 * x1 + k2 * (X - x1);
        if (!derivatives) return 0;
        dy[1] = 1.0;
        dy[2] = x1;
        dy[3] = k1 - k2;
        dy[4] = X - x1;
        dy[5] = 0.0;
        dy[6] = 0.0;
    } else {
        y[1] = a1 + k1 * x1 + k2 * (x2 - x1) + k3 * (X - x2);
        if (!derivatives) return 0;
        dy[1] = 1.0;
        dy[2] = x1;
        dy[3] = k1 - k2;
        dy[4] = x2 - x1;
        dy[5] = k2 - k3;
        dy[6] = X - x2;
    }
    return 0;
}

}  // namespace curvebank
