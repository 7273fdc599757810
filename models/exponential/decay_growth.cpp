// Exponential decay and growth: one to three exponential terms over an offset.
//
// The value step looks for overflow in the error variable of the call. The derivative steps of most models here
// look in errno alone, whatever EVAL_USE_ERRPTR says, and only for the range error; ExpDec1, Exponential and
// ExpGrow* keep to the error variable there too. Every failure clears the error variable of the call.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double exponent_limit = 1000;  // value steps with a limit refuse a larger exponent without computing it

/// Sum of exponential terms, decaying (sign -1) or growing (sign +1):
///     y = y0 + sum of A·exp(sign·X/t)          p = (y0, then for each term: A, t)
/// With all amplitudes 0 the value is y0; otherwise no t may be 0, not even beside a zero amplitude. The
/// derivative step never lets a zero t pass.
template <int terms, int sign>
int32_t exponential_sum(int16_t flags, int32_t *perr, const double *p, const double *x, double *y, double *dy)
{
    constexpr int last = 2 * terms;  // the amplitudes are p[2], p[4], ..., p[last], each followed by its t
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], X = x[1];

    bool flat = true, zero_t = false;
    for (int i = 2; i <= last; i += 2) {
        if (p[i] != 0) flat = false;
        if (p[i + 1] == 0) zero_t = true;
    }

    if (flags & EVAL_VALUE) {
        y[1] = y0;
        if (!flat) {
            if (zero_t) return missing_value(error, y);
            for (int i = 2; i <= last; i += 2) y[1] += p[i] * guarded_exp(sign * X / p[i + 1]);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (zero_t) return missing_value(error, y);
    double E[last + 1];  // indexed as the amplitudes; dy stays unwritten until every exponential has passed
    for (int i = 2; i <= last; i += 2) {
        E[i] = guarded_exp(sign * X / p[i + 1]);
        if (ErrorVariable::runtime().range_error()) return missing_value(error, y);
    }
    dy[1] = 1.0;
    y[1] = y0;
    for (int i = 2; i <= last; i += 2) {
        const double A = p[i], t = p[i + 1];
        dy[i] = E[i];
        dy[i + 1] = -sign * (X / t) * A * E[i] / t;
        y[1] += A * E[i];
    }
    return 0;
}

/// Adds A·exp(-(X - x0)/t) to y[1]; answers false where the term cannot be computed. A term with A = 0 is
/// skipped, its t untested; any other is refused for t <= 0, which lets a NaN through.
bool add_decay(const ErrorVariable &error, double X, double x0, double A, double t, double *y)
{
    if (A == 0) return true;
    if (t <= 0) return false;
    y[1] += A * guarded_exp((x0 - X) / t);
    return !error.raised();
}

}  // namespace

/// Exponential decay.
///     y = y0 + A·exp(-X/t)          p = (y0, A, t)
/// The value for A = 0 is y0 whatever t is; otherwise, and for the derivatives, t must not be 0.
MODEL(ExpDec1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], A = p[2], t = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = y0;
        if (A != 0) {
            if (t == 0) return missing_value(error, y);
            y[1] = y0 + A * guarded_exp(-X / t);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (t == 0) return missing_value(error, y);
    const double E = guarded_exp(-X / t);
    if (error.raised()) return missing_value(error, y);
    dy[1] = 1.0;
    dy[2] = E;
    dy[3] = A * X * E / (t * t);
    y[1] = y0 + A * E;
    return 0;
}

/// Exponential decay of two terms.
///     y = y0 + A1·exp(-X/t1) + A2·exp(-X/t2)          p = (y0, A1, t1, A2, t2)
MODEL(ExpDec2)
{
    return exponential_sum<2, -1>(flags, perr, p, x, y, dy);
}

/// Exponential decay of three terms.
///     y = y0 + A1·exp(-X/t1) + A2·exp(-X/t2) + A3·exp(-X/t3)          p = (y0, A1, t1, A2, t2, A3, t3)
MODEL(ExpDec3)
{
    return exponential_sum<3, -1>(flags, perr, p, x, y, dy);
}

/// Exponential growth.
///     y = y0 + A·exp(X/t)          p = (y0, A, t)
/// The value for A = 0 is y0 whatever t is; otherwise t must not be 0 and X/t is limited. The derivative step
/// needs t ≠ 0 only: it has no limit and relies on the overflow showing in errno.
MODEL(ExpGro1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], A = p[2], t = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        y[1] = y0;
        if (A != 0) {
            if (t == 0 || X / t > exponent_limit) return missing_value(error, y);
            y[1] = y0 + A * guarded_exp(X / t);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (t == 0) return missing_value(error, y);
    const double E = guarded_exp(X / t);
    if (ErrorVariable::runtime().range_error()) return missing_value(error, y);
    dy[1] = 1.0;
    dy[2] = E;
    dy[3] = -(X / t) * A * E / t;
    y[1] = y0 + A * E;
    return 0;
}

/// Exponential growth of two terms.
///     y = y0 + A1·exp(X/t1) + A2·exp(X/t2)          p = (y0, A1, t1, A2, t2)
MODEL(ExpGro2)
{
    return exponential_sum<2, +1>(flags, perr, p, x, y, dy);
}

/// Exponential growth of three terms.
///     y = y0 + A1·exp(X/t1) + A2·exp(X/t2) + A3·exp(X/t3)          p = (y0, A1, t1, A2, t2, A3, t3)
MODEL(ExpGro3)
{
    return exponential_sum<3, +1>(flags, perr, p, x, y, dy);
}

/// Exponential by its rate, growing or decaying.
///     y = y0 + A·exp(R·X)          p = (y0, A, R)
/// The value step limits R·X, the derivative step does not; where the latter fails, it marks dy[1..3].
MODEL(Exponential)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], A = p[2], R = p[3], X = x[1];

    if (flags & EVAL_VALUE) {
        if (R * X > exponent_limit) return missing_value(error, y);
        y[1] = y0 + A * guarded_exp(R * X);
        if (error.raised()) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    const double E = guarded_exp(R * X);
    if (error.raised()) return missing_values(error, y, dy, 1, 3);
    dy[1] = 1.0;
    dy[2] = E;
    dy[3] = A * X * E;
    y[1] = y0 + A * E;
    return 0;
}

/// Exponential decay from a point of the x axis.
///     y = y0 + A·exp(-(X - x0)/t)          p = (y0, x0, A, t)
/// The value needs nParams >= 1 and, unless A = 0, t > 0 or NaN. The derivatives need t > 0, whatever A is.
MODEL(ExpDecay1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], x0 = p[2], A = p[3], t = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        y[1] = y0;
        if (!add_decay(error, X, x0, A, t, y)) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(t > 0)) return missing_values(error, y, dy, 1, 4);
    const double z = (X - x0) / t, a = A / t;
    const double E = guarded_exp(-z);
    if (ErrorVariable::runtime().range_error()) return missing_values(error, y, dy, 1, 4);
    dy[1] = 1.0;
    dy[2] = a * E;
    dy[3] = E;
    dy[4] = a * z * E;
    y[1] = y0 + A * E;
    return 0;
}

/// Exponential decay of two terms from a common point of the x axis.
///     y = y0 + A1·exp(-(X - x0)/t1) + A2·exp(-(X - x0)/t2)          p = (y0, x0, A1, t1, A2, t2)
/// The value needs nParams >= 1 and, for a term whose A is not 0, t > 0 or NaN. The derivatives need the same of
/// both t, whatever the amplitudes are.
MODEL(ExpDecay2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], x0 = p[2], A1 = p[3], t1 = p[4], A2 = p[5], t2 = p[6], X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        y[1] = y0;
        if (!add_decay(error, X, x0, A1, t1, y)) return missing_value(error, y);
        if (!add_decay(error, X, x0, A2, t2, y)) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (t1 <= 0 || t2 <= 0) return missing_values(error, y, dy, 1, 6);
    const double z1 = (X - x0) / t1, E1 = guarded_exp(-z1);
    if (ErrorVariable::runtime().range_error()) return missing_values(error, y, dy, 1, 6);
    const double z2 = (X - x0) / t2, E2 = guarded_exp(-z2);
    if (ErrorVariable::runtime().range_error()) return missing_values(error, y, dy, 1, 6);
    const double a1 = A1 / t1, a2 = A2 / t2;
    dy[1] = 1.0;
    dy[2] = E2 * a2 + E1 * a1;
    dy[3] = E1;
    dy[4] = E1 * z1 * a1;
    dy[5] = E2;
    dy[6] = E2 * z2 * a2;
    y[1] = y0 + A1 * E1 + A2 * E2;
    return 0;
}

/// Exponential decay of three terms from a common point of the x axis.
///     y = y0 + A1·exp(-(X - x0)/t1) + A2·exp(-(X - x0)/t2) + A3·exp(-(X - x0)/t3)
///     p = (y0, x0, A1, t1, A2, t2, A3, t3)
/// The value needs nParams >= 1 and, for a term whose A is not 0, t > 0 or NaN. The derivatives need every t > 0,
/// whatever the amplitudes are, and refuse a NaN.
MODEL(ExpDecay3)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], x0 = p[2], X = x[1];
    const double A1 = p[3], t1 = p[4], A2 = p[5], t2 = p[6], A3 = p[7], t3 = p[8];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        y[1] = y0;
        if (!add_decay(error, X, x0, A1, t1, y)) return missing_value(error, y);
        if (!add_decay(error, X, x0, A2, t2, y)) return missing_value(error, y);
        if (!add_decay(error, X, x0, A3, t3, y)) return missing_value(error, y);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (!(t1 > 0 && t2 > 0 && t3 > 0)) return missing_values(error, y, dy, 1, 8);
    const double z1 = (X - x0) / t1, E1 = guarded_exp(-z1);
    if (ErrorVariable::runtime().range_error()) return missing_values(error, y, dy, 1, 8);
    const double z2 = (X - x0) / t2, E2 = guarded_exp(-z2);
    if (ErrorVariable::runtime().range_error()) return missing_values(error, y, dy, 1, 8);
    const double z3 = (X - x0) / t3, E3 = guarded_exp(-z3);
    if (ErrorVariable::runtime().range_error()) return missing_values(error, y, dy, 1, 8);
    dy[1] = 1.0;
    dy[2] = E1 * A1 / t1 + E2 * A2 / t2 + E3 * A3 / t3;
    dy[3] = E1;
    dy[4] = E1 * z1 * A1 / t1;
    dy[5] = E2;
    dy[6] = E2 * z2 * A2 / t2;
    dy[7] = E3;
    dy[8] = E3 * z3 * A3 / t3;
    y[1] = y0 + A1 * E1 + A2 * E2 + A3 * E3;
    return 0;
}

/// Exponential growth from a point of the x axis.
///     y = y0 + A·exp((X - x0)/t)          p = (y0, x0, A, t)
/// The value needs nParams >= 1 and, unless A = 0, t > 0 or NaN. The derivatives need only t ≠ 0: a negative t,
/// which the value refuses, is computed there.
MODEL(ExpGrow1)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], x0 = p[2], A = p[3], t = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        y[1] = y0;
        if (A != 0) {
            if (t <= 0) return missing_value(error, y);
            y[1] += A * guarded_exp((X - x0) / t);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (t == 0) return missing_value(error, y);
    const double z = (X - x0) / t, E = guarded_exp(z);
    if (error.raised()) return missing_value(error, y);
    const double g = -A * E / t;
    dy[1] = 1.0;
    dy[2] = g;
    dy[3] = E;
    dy[4] = g * z;
    y[1] = y0 + A * E;
    return 0;
}

/// Exponential growth of two terms from a common point of the x axis.
///     y = y0 + A1·exp((X - x0)/t1) + A2·exp((X - x0)/t2)          p = (y0, x0, A1, t1, A2, t2)
/// The value needs nParams >= 1 and, for a term whose A is not 0, t > 0; the first term lets a NaN t through,
/// the second does not, and it is left out for nParams < 5. The derivatives always use both terms and need only
/// t1 ≠ 0 and t2 ≠ 0.
MODEL(ExpGrow2)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], x0 = p[2], A1 = p[3], t1 = p[4], A2 = p[5], t2 = p[6], X = x[1];

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return missing_value(error, y);
        y[1] = y0;
        if (A1 != 0) {
            if (t1 <= 0) return missing_value(error, y);
            y[1] += A1 * guarded_exp((X - x0) / t1);
            if (error.raised()) return missing_value(error, y);
        }
        if (nParams >= 5 && A2 != 0) {
            if (!(t2 > 0)) return missing_value(error, y);
            y[1] += A2 * guarded_exp((X - x0) / t2);
            if (error.raised()) return missing_value(error, y);
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (t1 == 0 || t2 == 0) return missing_value(error, y);
    const double z1 = (X - x0) / t1, E1 = guarded_exp(z1);
    if (error.raised()) return missing_value(error, y);
    const double z2 = (X - x0) / t2, E2 = guarded_exp(z2);
    if (error.raised()) return missing_value(error, y);
    dy[1] = 1.0;
    dy[2] = -A1 * E1 / t1 - A2 * E2 / t2;
    dy[3] = E1;
    dy[4] = -z1 * A1 * E1 / t1;
    dy[5] = E2;
    dy[6] = -z2 * A2 * E2 / t2;
    y[1] = y0 + A1 * E1 + A2 * E2;
    return 0;
}

}  // namespace curvebank
