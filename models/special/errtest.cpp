// A model to see error reports with.

#include "frame/evaluation.h"

namespace curvebank {

/// Shows a host how the logarithm, the power and the exponential report their errors.
///     y = a·b, on calls without EVAL_VALUE a/b;  dy = (ln a, (-2)^c, exp a)          p = (a, b, c)
/// Computes everything on value calls too, in that order, never fails and leaves every code where it was reported.
/// x is not read.
MODEL(errtest)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double a = p[1], b = p[2], c = p[3];

    y[1] = flags & EVAL_VALUE ? b * a : a / b;
    dy[1] = std::log(a);
    dy[2] = guarded_pow(-2, c);
    dy[3] = guarded_exp(a);
    return 0;
}

}  // namespace curvebank
