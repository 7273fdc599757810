// Sum of three exponentials without an offset.

#include "frame/evaluation.h"

namespace curvebank {

/// Sum of three decaying exponentials (Lanczos, 1956).
///     y = A1·exp(-k1·X) + A2·exp(-k2·X) + A3·exp(-k3·X)          p = (A1, k1, A2, k2, A3, k3)
/// Queries are answered before EVAL_INIT. The exponentials are formed whatever else the flags ask for, and a range
/// error in errno fails even a call that asks for nothing; the value and the derivatives are tested in the chosen
/// error variable. A derivative call that fails there keeps the dy it has written.
MODEL(Lanczos3)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double A1 = p[1], k1 = p[2], A2 = p[3], k2 = p[4], A3 = p[5], k3 = p[6], X = x[1];
    const double e1 = guarded_exp(-k1 * X), e2 = guarded_exp(-k2 * X), e3 = guarded_exp(-k3 * X);
    if (ErrorVariable::runtime().range_error()) return missing_value(error, y);

    if (flags & EVAL_VALUE) {
        y[1] = e2 * A2 + e1 * A1 + e3 * A3;
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = e1;
    dy[2] = -A1 * X * e1;
    dy[3] = e2;
    dy[4] = -A2 * X * e2;
    dy[5] = e3;
    dy[6] = -A3 * X * e3;
    y[1] = e2 * A2 + e1 * A1 + e3 * A3;
    if (error.raised()) return missing_value(error, y);
    return 0;
}

}  // namespace curvebank
