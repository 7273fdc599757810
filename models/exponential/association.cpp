// Exponential association: the rise to a plateau, from X = 0 or from a start time.
//
// The models with start times never look for math errors: an exponential that overflows gives an infinite value
// and success. They write the value on derivative calls too, and where a time constant is 0, they mark every
// derivative whenever EVAL_DERIVS is set.

#include "frame/evaluation.h"

namespace curvebank {

/// Association of two phases.
///     y = y0 + A1·(1 - exp(-X/t1)) + A2·(1 - exp(-X/t2))          p = (y0, A1, t1, A2, t2)
/// The value needs nParams >= 1 and t ≠ 0 for a phase whose A is not 0; the second phase is left out for
/// nParams < 4. The derivatives always use both phases and need t1 ≠ 0 and t2 ≠ 0.
MODEL(ExpAssoc)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], A1 = p[2], t1 = p[3], A2 = p[4], t2 = p[5], X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        y[1] = y0;
        if (A1 != 0) {
            if (t1 == 0) return missing_value(error, y);
            y[1] += A1 * (1 - guarded_exp(-X / t1));
            if (error.raised()) return missing_value(error, y);
        }
        if (nParams >= 4 && A2 != 0) {
            if (t2 == 0) return missing_value(error, y);
            y[1] += A2 * (1 - guarded_exp(-X / t2));
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (t1 == 0 || t2 == 0) return missing_value(error, y);
    const double E1 = guarded_exp(-X / t1);
    if (error.raised()) return missing_value(error, y);
    const double E2 = guarded_exp(-X / t2);
    if (error.raised()) return missing_value(error, y);
    dy[1] = 1.0;
    dy[2] = 1 - E1;
    dy[3] = -A1 * X * E1 / (t1 * t1);
    dy[4] = 1 - E2;
    dy[5] = -A2 * X * E2 / (t2 * t2);
    y[1] = y0 + A1 * (1 - E1) + A2 * (1 - E2);
    return 0;
}

/// Association from a start time.
///     y = y0 + A·(1 - exp(-(X - TD)/t))          p = (TD, y0, A, t)
/// t must not be 0. The curve goes on to the left of TD.
MODEL(ExpAssoc1)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double TD = p[1], y0 = p[2], A = p[3], t = p[4], X = x[1];

    if (t == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 4);
        return missing_value(error, y);
    }
    const double E = guarded_exp(-(X - TD) / t);
    y[1] = y0 + A * (1 - E);
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = -A * E / t;
    dy[2] = 1.0;
    dy[3] = 1 - E;
    dy[4] = -A * (X - TD) * E / (t * t);
    return 0;
}

/// Association of two phases, the second of which starts at TD2.
///     y = y0 + A1·(1 - exp(-(X - TD1)/t1)) + [X >= TD2] A2·(1 - exp(-(X - TD2)/t2))
///     p = (TD1, TD2, y0, A1, A2, t1, t2)
/// t1 and t2 must not be 0. The first phase goes on to the left of TD1.
MODEL(ExpAssoc2)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double TD1 = p[1], TD2 = p[2], y0 = p[3], A1 = p[4], A2 = p[5], t1 = p[6], t2 = p[7], X = x[1];

    if (t1 == 0 || t2 == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 7);
        return missing_value(error, y);
    }
    // Where X and TD2 do not compare, being NaN, the value has no second phase but the derivatives have.
    const bool before = X < TD2;
    const double E1 = guarded_exp(-(X - TD1) / t1);
    const double E2 = before ? 0.0 : guarded_exp(-(X - TD2) / t2);
    y[1] = y0 + A1 * (1 - E1);
    if (X >= TD2) y[1] += A2 * (1 - E2);
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = -A1 * E1 / t1;
    dy[2] = before ? 0.0 : -A2 * E2 / t2;
    dy[3] = 1.0;
    dy[4] = 1 - E1;
    dy[5] = before ? 0.0 : 1 - E2;
    dy[6] = -A1 * (X - TD1) * E1 / (t1 * t1);
    dy[7] = before ? 0.0 : -A2 * (X - TD2) * E2 / (t2 * t2);
    return 0;
}

/// Association that starts at TD.
///     y = y0 + [X >= TD] A·(1 - exp(-(X - TD)/t))          p = (TD, y0, A, t)
/// t must not be 0. The derivatives are those of the open term for every X, also to the left of TD, where the
/// value is y0: a fit can still move TD towards such points.
MODEL(ExpAssocDelay1)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double TD = p[1], y0 = p[2], A = p[3], t = p[4], X = x[1];

    if (t == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 4);
        return missing_value(error, y);
    }
    y[1] = y0;
    if (X >= TD) y[1] += A * (1 - guarded_exp(-(X - TD) / t));
    if (!(flags & EVAL_DERIVS)) return 0;

    const double E = guarded_exp(-(X - TD) / t);
    dy[1] = -A * E / t;
    dy[2] = 1.0;
    dy[3] = 1 - E;
    dy[4] = -A * (X - TD) * E / (t * t);
    return 0;
}

/// Association of two phases that start at TD1 and TD2.
///     y = y0 + [X >= TD1] A1·(1 - exp(-(X - TD1)/t1)) + [X >= TD2] A2·(1 - exp(-(X - TD2)/t2))
///     p = (TD1, TD2, y0, A1, A2, t1, t2)
/// t1 and t2 must not be 0, whether their phases have started or not. The derivatives of a phase are 0 before its
/// start.
MODEL(ExpAssocDelay2)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double TD1 = p[1], TD2 = p[2], y0 = p[3], A1 = p[4], A2 = p[5], t1 = p[6], t2 = p[7], X = x[1];

    if (t1 == 0 || t2 == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 7);
        return missing_value(error, y);
    }
    const bool first = X >= TD1, second = X >= TD2;
    const double E1 = first ? guarded_exp(-(X - TD1) / t1) : 0.0;
    const double E2 = second ? guarded_exp(-(X - TD2) / t2) : 0.0;
    y[1] = y0;
    if (first) y[1] += A1 * (1 - E1);
    if (second) y[1] += A2 * (1 - E2);
    if (!(flags & EVAL_DERIVS)) return 0;

    for (int i = 1; i <= 7; ++i) dy[i] = 0.0;
    dy[3] = 1.0;
    if (first) {
        dy[1] = -A1 * E1 / t1;
        dy[4] = 1 - E1;
        dy[6] = -A1 * (X - TD1) * E1 / (t1 * t1);
    }
    if (second) {
        dy[2] = -A2 * E2 / t2;
        dy[5] = 1 - E2;
        dy[7] = -A2 * (X - TD2) * E2 / (t2 * t2);
    }
    return 0;
}

}  // namespace curvebank
