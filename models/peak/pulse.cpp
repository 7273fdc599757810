// Pulses that start at x0, rise with the power n of a saturating exponential and decay with another exponential.
//
// The derivative step follows the value step in the same call. It looks for a range error of the exponentials in
// errno and for any error of the power in the chosen variable. A power that the runtime reports as underflowing,
// close to the start of a pulse with a high n, is an error too. At the very start, and so close to it that the
// first exponential rounds to 1, only the value and the derivatives of the amplitude and the baseline exist: the
// others are marked and the call fails without clearing an error variable.

#include "frame/evaluation.h"

namespace curvebank {

/// Pulse on a baseline of 0.
///     y = A·(1 - exp(-(X - x0)/t1))^n · exp(-(X - x0)/t2) for X > x0, else 0
///     p = (x0, A, t1, n, t2)
/// An amplitude of 0 gives the value 0 whatever the others are; otherwise the value step needs t1 and t2 other than
/// 0. The derivative step needs t1, t2 and n positive (a NaN fails) with any amplitude, and marks everything where
/// it fails. It treats X = x0 as inside the pulse.
MODEL(Pulse1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double x0 = p[1], A = p[2], t1 = p[3], n = p[4], t2 = p[5], X = x[1];
    const double d = X - x0;

    if (flags & EVAL_VALUE) {
        if (A == 0) {
            y[1] = 0.0;
        } else {
            if (t1 == 0 || t2 == 0) return missing_value(error, y);
            if (d <= 0) {
                y[1] = 0.0;
            } else {
                const double e1 = guarded_exp(-d / t1);
                const double rise = guarded_pow(1 - e1, n);
                y[1] = guarded_exp(-d / t2) * (rise * A);
                if (error.raised()) return missing_value(error, y);
            }
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(t1 > 0 && t2 > 0 && n > 0)) return missing_values(error, y, dy, 1, 5);
    if (d < 0) {
        dy[1] = dy[2] = dy[3] = dy[4] = dy[5] = 0.0;
        y[1] = 0.0;
        return 0;
    }
    const double u1 = -d / t1, u2 = -d / t2;
    const double e1 = guarded_exp(u1);
    const double e2 = guarded_exp(u2);
    if (ErrorVariable::runtime().range_error()) return missing_values(error, y, dy, 1, 5);
    const double G = guarded_pow(1 - e1, n) * e2;
    if (error.raised()) return missing_values(error, y, dy, 1, 5);
    const double pulse = A * G;
    dy[2] = G;
    y[1] = pulse;
    if (e1 == 1) {
        mark_missing(dy, 1, 1);
        mark_missing(dy, 3, 5);
        return 1;
    }
    const double r = e1 * n / ((1 - e1) * t1);
    dy[3] = pulse * u1 * r;
    dy[5] = -pulse * u2 / t2;
    dy[1] = (1 / t2 - r) * pulse;
    dy[4] = std::log(1 - e1) * pulse;
    return error.raised() ? missing_derivative(dy, 4) : 0;
}

/// Pulse over a baseline.
///     y = y0 + A·(1 - exp(-(X - x0)/t1))^n · exp(-(X - x0)/t2) for X >= x0, else y0
///     p = (y0, x0, A, t1, n, t2)
/// Queries are answered before EVAL_INIT. Both steps need t1, t2 and n positive (a NaN passes), the value step
/// nParams >= 1 as well. A NaN distance is outside the pulse for the value and inside it for the derivatives. A
/// derivative call marks all of dy for a parameter at fault, and all but the baseline's for an error of its
/// exponentials or power.
MODEL(Pulse)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], x0 = p[2], A = p[3], t1 = p[4], n = p[5], t2 = p[6], X = x[1];
    const double d = X - x0;

    if (flags & EVAL_VALUE) {
        if (nParams < 1 || t1 <= 0 || t2 <= 0 || n <= 0) return missing_value(error, y);
        y[1] = y0;
        if (d >= 0) {
            const double e1 = guarded_exp(-d / t1);
            if (error.raised()) return missing_value(error, y);
            const double e2 = guarded_exp(-d / t2);
            if (error.raised()) return missing_value(error, y);
            const double rise = guarded_pow(1 - e1, n);
            if (error.raised()) return missing_value(error, y);
            y[1] += rise * A * e2;
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (t1 <= 0 || t2 <= 0 || n <= 0) return missing_values(error, y, dy, 1, 6);
    dy[1] = 1.0;
    if (d < 0) {
        dy[2] = dy[3] = dy[4] = dy[5] = dy[6] = 0.0;
        y[1] = y0;
        return 0;
    }
    const double u1 = -d / t1, u2 = -d / t2;
    const double e1 = guarded_exp(u1);
    const double e2 = guarded_exp(u2);
    if (ErrorVariable::runtime().range_error()) return missing_values(error, y, dy, 2, 6);
    const double G = guarded_pow(1 - e1, n) * e2;
    if (error.raised()) return missing_values(error, y, dy, 2, 6);
    const double pulse = A * G;
    dy[3] = G;
    y[1] = pulse + y0;
    if (e1 == 1) {
        mark_missing(dy, 2, 2);
        mark_missing(dy, 4, 6);
        return 1;
    }
    const double r = e1 * n / ((1 - e1) * t1);
    dy[4] = pulse * u1 * r;
    dy[6] = -pulse * u2 / t2;
    dy[2] = (1 / t2 - r) * pulse;
    dy[5] = std::log(1 - e1) * pulse;
    if (error.raised()) {
        mark_missing(dy, 5, 5);
        return 1;
    }
    return 0;
}

}  // namespace curvebank
