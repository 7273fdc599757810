// Periodic curves: the sine and its square, a damped sine, a sawtooth and two square waves.
//
// An infinite argument of a sine puts the domain error into errno, so a sine has its place among the error tests.
// Every failure clears the error variable of the call. A failed value step ends the call with dy unwritten. The
// sines answer queries, before EVAL_INIT. The sawtooth and the square waves mark y alone when they fail, and write
// the value on derivative calls too.

#include "frame/evaluation.h"

namespace curvebank {
namespace {

constexpr double pi = 3.141592653589793;

}  // namespace

/// Sine.
///     y = y0 + A·sin(π·(X - xc)/w)          p = (y0, xc, w, A);  w is half a period
/// w must not be 0. No error test: the sine of an infinity is a NaN, a success that leaves its code in errno.
MODEL(Sine)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], xc = p[2], w = p[3], A = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        if (w == 0) return missing_value(error, y);
        y[1] = y0 + std::sin((X - xc) * pi / w) * A;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (w == 0) return missing_values(error, y, dy, 1, 4);
    const double a = (X - xc) * pi / w;
    const double s = std::sin(a);
    dy[4] = s;
    dy[2] = std::cos(a) * (-A * pi) / w;
    dy[3] = (X - xc) * dy[2] / w;
    dy[1] = 1.0;
    y[1] = y0 + s * A;
    return 0;
}

/// Squared sine.
///     y = y0 + A·sin²(π·(X - xc)/w)          p = (y0, xc, w, A);  w is the period
/// w must not be 0. Both steps test for errors after the sine, so a code from before the call fails it.
MODEL(SineSqr)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], xc = p[2], w = p[3], A = p[4], X = x[1];

    if (flags & EVAL_VALUE) {
        if (w == 0) return missing_value(error, y);
        const double s = std::sin((X - xc) * pi / w);
        if (error.raised()) return missing_value(error, y);
        y[1] = y0 + s * A * s;
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (w == 0) return missing_values(error, y, dy, 1, 4);
    const double a = (X - xc) * pi / w;
    const double s = std::sin(a);
    if (error.raised()) return missing_values(error, y, dy, 1, 4);
    dy[4] = s * s;
    dy[2] = std::cos(a) * (A * -2 * pi) * s / w;
    dy[3] = (X - xc) * dy[2] / w;
    dy[1] = 1.0;
    y[1] = y0 + s * s * A;
    return 0;
}

/// Sine under an exponential decay.
///     y = y0 + A·exp(-X/t0)·sin(π·(X - xc)/w)          p = (y0, xc, w, t0, A);  w is half a period
/// t0 and w must not be 0, and the exponential must not overflow. The value step tests for errors after the sine,
/// the derivative step before it, where the sine of an infinity is a NaN and a success.
MODEL(SineDamp)
{
    if (flags & EVAL_QUERY) return reply_to_query(dy);
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double y0 = p[1], xc = p[2], w = p[3], t0 = p[4], A = p[5], X = x[1];

    if (flags & EVAL_VALUE) {
        if (t0 == 0 || w == 0) return missing_value(error, y);
        const double e = guarded_exp(-X / t0);
        const double s = std::sin((X - xc) * pi / w);
        if (error.raised()) return missing_value(error, y);
        y[1] = y0 + s * (e * A);
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (t0 == 0 || w == 0) return missing_values(error, y, dy, 1, 5);
    const double e = guarded_exp(-X / t0);
    if (error.raised()) return missing_values(error, y, dy, 1, 5);
    const double a = (X - xc) * pi / w;
    dy[5] = std::sin(a) * e;
    dy[4] = dy[5] * A * X / t0 / t0;
    dy[2] = std::cos(a) * (-A * e * pi) / w;
    dy[3] = (X - xc) * dy[2] / w;
    dy[1] = 1.0;
    y[1] = y0 + dy[5] * A;
    return 0;
}

/// Sawtooth: a line that starts anew with every period.
///     y = y0 + a·(X - x0 - kT)/T,  k = floor((X - x0)/T)          p = (x0, y0, a, T)
/// T must not be 0. dy[3] and dy[4] are defined by X itself: they are taken on the line that runs on from X = 0
/// through all periods.
MODEL(SawtoothWave)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double x0 = p[1], y0 = p[2], a = p[3], T = p[4], X = x[1];

    if (T == 0) return missing_value(error, y);
    const double folded = X - std::floor((X - x0) / T) * T;
    y[1] = (folded - x0) * (a / T) + y0;
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = -a / T;
    dy[2] = 1.0;
    dy[3] = X / T;
    dy[4] = -a * X / (T * T);
    return 0;
}

/// Square wave: each level for half a period.
///     y = a for kT <= X - x0 < (k + 1/2)·T, else b;  k = floor((X - x0)/T)          p = (a, b, x0, T)
/// T must not be 0; a negative T is for values only, its derivatives always take the level for b. The middle of a
/// period belongs to b. Each step has a comparison of its own, so rounding may part them at an edge. dy[3] and
/// dy[4] are 0, at the edges too.
MODEL(SquareWave)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], x0 = p[3], T = p[4], X = x[1];

    if (T == 0) return missing_value(error, y);
    const double k = std::floor((X - x0) / T);
    const double folded = X - T * k;
    y[1] = x0 + T * 0.5 > folded ? a : b;
    if (!(flags & EVAL_DERIVS)) return 0;

    const bool first = X >= T * k + x0 && (k + 0.5) * T + x0 > X;
    dy[1] = first ? 1.0 : 0.0;
    dy[2] = first ? 0.0 : 1.0;
    dy[3] = 0.0;
    dy[4] = 0.0;
    return 0;
}

/// Square wave of adjustable duty: the first level for a fraction d of the period.
///     y = a for kT <= X - x0 <= (k + d)·T, else b;  k = floor((X - x0)/T)          p = (a, b, x0, d, T)
/// T must not be 0; for a negative T the derivatives do not follow the value. The edge where a ends belongs to a in
/// the value, to b in the derivatives. dy[3], dy[4] and dy[5] are 0, at the edges too.
MODEL(SquareWaveMod)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const ErrorVariable error(flags, perr);
    const double a = p[1], b = p[2], x0 = p[3], d = p[4], T = p[5], X = x[1];

    if (T == 0) return missing_value(error, y);
    const double k = std::floor((X - x0) / T);
    const double folded = X - T * k;
    y[1] = T * d + x0 >= folded ? a : b;
    if (!(flags & EVAL_DERIVS)) return 0;

    const bool first = X >= T * k + x0 && (k + d) * T + x0 > X;
    dy[1] = first ? 1.0 : 0.0;
    dy[2] = first ? 0.0 : 1.0;
    dy[3] = 0.0;
    dy[4] = 0.0;
    dy[5] = 0.0;
    return 0;
}

}  // namespace curvebank
