// Exponentials with a start or a turning point: delayed decay, and growth followed by decay.

#include "frame/evaluation.h"

namespace curvebank {

/// Delayed decay by up to three exponentials.
///     y = y0                                                                              for X < x0
///     y = y0 + A1·exp((x0 - X)/t1) + A2·exp((x0 - X)/t2) + A3·exp((x0 - X)/t3)            from x0 on
///     p = (y0, x0, A1, t1, A2, t2, A3, t3)
/// Value only; initialisation calls are answered 0. The second and the third term need at least 5 and 7
/// parameters. A term of amplitude 0 is skipped; any other refuses a time constant <= 0. The third term has no
/// error test: alone, it does not see a code left over from an earlier computation.
MODEL(Kinetic)
{
    if (flags & EVAL_INIT || !(flags & EVAL_VALUE)) return 0;
    const ErrorVariable error(flags, perr);
    if (nParams < 1) return missing_value(error, y);
    const double y0 = p[1], x0 = p[2], X = x[1];

    y[1] = y0;
    if (X < x0) return 0;
    if (p[3] != 0) {
        const double A1 = p[3], t1 = p[4];
        if (t1 <= 0) return missing_value(error, y);
        y[1] += A1 * guarded_exp((x0 - X) / t1);
        if (error.raised()) return missing_value(error, y);
    }
    if (nParams > 4 && p[5] != 0) {
        const double A2 = p[5], t2 = p[6];
        if (t2 <= 0) return missing_value(error, y);
        y[1] += A2 * guarded_exp((x0 - X) / t2);
        if (error.raised()) return missing_value(error, y);
    }
    if (nParams >= 7 && p[7] != 0) {
        const double A3 = p[7], t3 = p[8];
        if (t3 <= 0) return missing_value(error, y);
        y[1] += A3 * guarded_exp((x0 - X) / t3);
    }
    return 0;
}

/// Exponential growth up to xc, exponential decay from there.
///     y = y0 + A2 + A1·(exp(-xc/t1) - exp(-X/t1))          for X < xc, t1 != 0
///     y = y0 + A2·exp(-(X - xc)/t2)                        from xc on, t2 != 0
///     p = (y0, xc, A1, t1, A2, t2)
/// Initialisation calls are evaluated like any other. The value is written on derivative calls too, and a time
/// constant of 0 on the side of X marks dy[1..6] on every call with EVAL_DERIVS. The error variables are neither
/// read nor cleared: an exponential that overflows gives an infinite value and leaves its code in errno.
MODEL(ExpGrowDec)
{
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double y0 = p[1], xc = p[2], A1 = p[3], t1 = p[4], A2 = p[5], t2 = p[6], X = x[1];
    const bool growing = X < xc;  // a NaN is on the decaying side

    if ((growing ? t1 : t2) == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 6);
        return missing_value(y);
    }
    if (growing) {
        const double Ec = guarded_exp(-xc / t1), E = guarded_exp(-X / t1);
        y[1] = y0 + A2 + A1 * (Ec - E);
        if (!(flags & EVAL_DERIVS)) return 0;

        dy[1] = 1.0;
        dy[2] = -(A1 / t1) * Ec;
        dy[3] = Ec - E;
        dy[4] = (A1 / (t1 * t1)) * (xc * Ec - X * E);
        dy[5] = 1.0;
        dy[6] = 0.0;
    } else {
        const double E = guarded_exp(-(X - xc) / t2);
        y[1] = y0 + A2 * E;
        if (!(flags & EVAL_DERIVS)) return 0;

        dy[1] = 1.0;
        dy[2] = (A2 / t2) * E;
        dy[3] = dy[4] = 0.0;
        dy[5] = E;
        dy[6] = (X - xc) * A2 / (t2 * t2) * E;
    }
    return 0;
}

/// Growth by three exponentials up to xc, decay by two from there.
///     y = y0 + A4 + A5 + sum of Ak·(exp(-xc/tk) - exp(-X/tk)), k = 1..3          for X < xc, t1, t2, t3 != 0
///     y = y0 + A4·exp(-(X - xc)/t4) + A5·exp(-(X - xc)/t5)                       from xc on, t4, t5 != 0
///     p = (y0, xc, A1, t1, A2, t2, A3, t3, A4, t4, A5, t5)
/// Initialisation calls, derivative calls, failures and error variables are treated as in ExpGrowDec. Within the
/// domain every call computes the exponentials of both sides, so that an overflow on the other side shows in
/// errno.
MODEL(ExpGrow3Dec2)
{
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double y0 = p[1], xc = p[2], X = x[1];
    const double A1 = p[3], t1 = p[4], A2 = p[5], t2 = p[6], A3 = p[7], t3 = p[8];
    const double A4 = p[9], t4 = p[10], A5 = p[11], t5 = p[12];
    const bool growing = X < xc;  // a NaN is on the decaying side

    if (growing ? t1 == 0 || t2 == 0 || t3 == 0 : t4 == 0 || t5 == 0) {
        if (flags & EVAL_DERIVS) mark_missing(dy, 1, 12);
        return missing_value(y);
    }
    const double E1 = guarded_exp(-X / t1), Ec1 = guarded_exp(-xc / t1);
    const double E2 = guarded_exp(-X / t2), Ec2 = guarded_exp(-xc / t2);
    const double E3 = guarded_exp(-X / t3), Ec3 = guarded_exp(-xc / t3);
    const double E4 = guarded_exp(-(X - xc) / t4), E5 = guarded_exp(-(X - xc) / t5);

    if (growing) {
        y[1] = y0 + A4 + A5 + A1 * (Ec1 - E1) + A2 * (Ec2 - E2) + A3 * (Ec3 - E3);
        if (!(flags & EVAL_DERIVS)) return 0;

        dy[1] = 1.0;
        dy[2] = -((A1 / t1) * Ec1 + (A2 / t2) * Ec2 + (A3 / t3) * Ec3);
        dy[3] = Ec1 - E1;
        dy[4] = A1 * xc / (t1 * t1) * Ec1 - A1 * X / (t1 * t1) * E1;
        dy[5] = Ec2 - E2;
        dy[6] = A2 * xc / (t2 * t2) * Ec2 - A2 * X / (t2 * t2) * E2;
        dy[7] = Ec3 - E3;
        dy[8] = A1 * xc / (t3 * t3) * Ec3 - A3 * X / (t3 * t3) * E3;  // A1 where the exact partial has A3
        dy[9] = dy[11] = 1.0;
        dy[10] = dy[12] = 0.0;
    } else {
        y[1] = y0 + A4 * E4 + A5 * E5;
        if (!(flags & EVAL_DERIVS)) return 0;

        dy[1] = 1.0;
        dy[2] = (A4 / t4) * E4 + (A5 / t5) * E5;
        for (int i = 3; i <= 8; ++i) dy[i] = 0.0;
        dy[9] = E4;
        dy[10] = (X - xc) * A4 / (t4 * t4) * E4;
        dy[11] = E5;
        dy[12] = (X - xc) * A5 / (t5 * t5) * E5;
    }
    return 0;
}

}  // namespace curvebank
