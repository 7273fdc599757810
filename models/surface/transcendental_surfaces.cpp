// Surfaces in waves, exponential decays and powers of X and Y.
//
// A call sums as many terms as nParams has room for over a common offset, and each term's share goes to y[2], y[3],
// ..., in the value step and again in the derivative step. Fourier2D counts its terms in nParams - 1, the offset
// aside; the others divide nParams itself.

#include "models/surface/surface.h"

namespace curvebank {
namespace {

constexpr int wave_size = 6;         // parameters a term of Fourier2D
constexpr int exponential_size = 3;  // of Exponential2D
constexpr int power_size = 5;        // of Power2D

}  // namespace

/// Waves in X and in Y.
///     z = z0 + sum of a·cos(X/w1) + b·sin(X/w1) + c·cos(Y/w2) + d·sin(Y/w2)
///     p = (z0, then for each term: a, b, c, d, w1, w2);  (nParams - 1)/6 terms
/// Both steps need nParams >= 1. The value step tests for errors after each term: an infinite argument of a wave,
/// or a code from before the call. The derivative step does not. A width of 0 is divided by.
MODEL(Fourier2D)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int terms = (nParams - 1) / wave_size;

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return surface_missing(error, x);
        y[1] = z0;
        for (int k = 0; k < terms; ++k) {
            const double *q = p + 2 + wave_size * k;
            const double a = q[0], b = q[1], c = q[2], d = q[3], w1 = q[4], w2 = q[5];
            const double term =
                a * std::cos(X / w1) + b * std::sin(X / w1) + c * std::cos(Y / w2) + d * std::sin(Y / w2);
            if (error.raised()) return surface_missing(error, x);
            y[2 + k] = term;
            y[1] += term;
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (nParams < 1) return surface_missing(error, x);
    dy[1] = 1.0;
    y[1] = z0;
    for (int k = 0; k < terms; ++k) {
        const int first = 2 + wave_size * k;
        const double *q = p + first;
        const double a = q[0], b = q[1], c = q[2], d = q[3], w1 = q[4], w2 = q[5];
        const double cX = std::cos(X / w1), sX = std::sin(X / w1), cY = std::cos(Y / w2), sY = std::sin(Y / w2);
        dy[first] = cX;
        dy[first + 1] = sX;
        dy[first + 2] = cY;
        dy[first + 3] = sY;
        dy[first + 4] = (sX * X * a - cX * X * b) / w1 / w1;
        dy[first + 5] = (sY * Y * c - cY * Y * d) / w2 / w2;
        y[2 + k] = a * cX + b * sX + c * cY + d * sY;
        y[1] += y[2 + k];
    }
    return 0;
}

/// Exponential decays in X and Y.
///     z = z0 + sum of A·exp(-X/t1)·exp(-Y/t2)
///     p = (z0, then for each term: A, t1, t2);  nParams/3 terms
/// Both steps test for errors after either exponential. An exponent above 300 is no error: its exponential is the
/// missing value, as a number, and the term next to 0. A time of 0 is divided by. A derivative call without terms
/// does not write dy[1], nor does one that fails in the first term.
MODEL(Exponential2D)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const double z0 = p[1], X = x[1], Y = x[2];
    const int terms = nParams / exponential_size;

    if (flags & EVAL_VALUE) {
        y[1] = z0;
        for (int k = 0; k < terms; ++k) {
            const double *q = p + 2 + exponential_size * k;
            const double A = q[0], t1 = q[1], t2 = q[2];
            const double EX = bounded_exp(-X / t1);
            if (error.raised()) return surface_missing(error, x);
            const double EY = bounded_exp(-Y / t2);
            if (error.raised()) return surface_missing(error, x);
            y[2 + k] = EX * A * EY;
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    y[1] = z0;
    for (int k = 0; k < terms; ++k) {
        const int b = 2 + exponential_size * k;
        const double A = p[b], t1 = p[b + 1], t2 = p[b + 2];
        const double EX = bounded_exp(-X / t1);
        if (error.raised()) return surface_missing(error, x);
        const double EY = bounded_exp(-Y / t2);
        if (error.raised()) return surface_missing(error, x);
        const double E = EX * EY;
        dy[1] = 1.0;
        dy[b] = E;
        dy[b + 1] = E * A * X / t1 / t1;
        dy[b + 2] = E * A * Y / t2 / t2;
        y[2 + k] = E * A;
        y[1] += y[2 + k];
    }
    return 0;
}

/// Powers of X and Y and their product.
///     z = z0 + sum of a·X^m + b·Y^n + c·X^m·Y^n
///     p = (z0, then for each term: a, m, b, n, c);  nParams/5 terms
/// Never fails: a sum that is not finite leaves the missing value in y[1] in a successful call, and x[2] is not
/// marked. EVAL_INIT answers 0; any other call, also one that computes nothing, cleans y[1] in this way. The
/// derivative with respect to m is the exact one for a negative X and 0 for all others, NaN included. That with
/// respect to n takes ln Y whatever Y is.
MODEL(Power2D)
{
    if (flags & EVAL_INIT) return 0;
    const double z0 = p[1], X = x[1], Y = x[2];
    const int terms = nParams / power_size;

    if (flags & EVAL_VALUE) {
        y[1] = z0;
        for (int k = 0; k < terms; ++k) {
            const double *q = p + 2 + power_size * k;
            const double a = q[0], m = q[1], b = q[2], n = q[3], c = q[4];
            const double PX = guarded_pow(X, m);
            const double PY = guarded_pow(Y, n);
            y[2 + k] = b * PY + a * PX + c * PX * PY;
            y[1] += y[2 + k];
        }
    }
    if (flags & EVAL_DERIVS) {
        dy[1] = 1.0;
        y[1] = z0;
        for (int k = 0; k < terms; ++k) {
            const int first = 2 + power_size * k;
            const double *q = p + first;
            const double a = q[0], m = q[1], b = q[2], n = q[3], c = q[4];
            const double PX = guarded_pow(X, m);
            const double PY = guarded_pow(Y, n);
            dy[first] = PX;
            dy[first + 1] = X < 0 ? PX * (c * PY + a) * std::log(-X) : 0.0;
            dy[first + 2] = PY;
            const double lnY = std::log(Y);
            dy[first + 3] = PX * c * PY * lnY + PY * b * lnY;
            dy[first + 4] = PX * PY;
            y[2 + k] = b * PY + a * PX + c * PX * PY;
            y[1] += y[2 + k];
        }
    }
    missing_if_not_finite(&y[1]);
    return 0;
}

}  // namespace curvebank
