// Surfaces that are linear in all their parameters: planes, polynomials, cosines and Chebyshev polynomials of X and
// Y.
//
// All but Plane sum as many terms as nParams has room for over a common offset, and each term's share goes to y[2],
// y[3], ... All terms of a surface have the same basis functions, so several terms only add their coefficients. A
// share is formed from coefficients times finished basis functions in parameter order, in the value step and again
// in the derivative step, whose entries are the basis functions themselves. Parabola2D and Poly2D count their terms
// in nParams - 1, the offset aside; the others divide nParams itself.

#include <array>
#include <cstddef>

#include "models/surface/surface.h"

namespace curvebank {
namespace {

template <size_t n>
double weighted_sum(const double *q, const std::array<double, n> &basis)
{
    double sum = q[0] * basis[0];
    for (size_t i = 1; i < n; ++i) sum += q[i] * basis[i];
    return sum;
}

/// The derivative step: the partials of every term, and the value once more.
template <size_t n>
int32_t linear_derivatives(int terms, std::array<double, n> (*basis_at)(double, double), const double *p,
                           const double *x, double *y, double *dy)
{
    dy[1] = 1.0;
    y[1] = p[1];
    for (int k = 0; k < terms; ++k) {
        const int b = 2 + static_cast<int>(n) * k;
        const std::array<double, n> basis = basis_at(x[1], x[2]);
        for (size_t i = 0; i < n; ++i) dy[b + static_cast<int>(i)] = basis[i];
        y[2 + k] = weighted_sum(p + b, basis);
        y[1] += y[2 + k];
    }
    return 0;
}

/// A surface that fails in either step where nParams < 1, and in the value step where an error code is found after
/// a term. No product sets one, so that code was there before the call; the derivative step does not look for it.
template <size_t n>
int32_t tested_surface(int16_t flags, int32_t *perr, int16_t nParams,
                       std::array<double, n> (*basis_at)(double, double), const double *p, double *x, double *y,
                       double *dy)
{
    if (flags & EVAL_INIT) return 1;
    const ErrorVariable error(flags, perr);
    const int terms = (nParams - 1) / static_cast<int>(n);

    if (flags & EVAL_VALUE) {
        if (nParams < 1) return surface_missing(error, x);
        y[1] = p[1];
        for (int k = 0; k < terms; ++k) {
            const double term = weighted_sum(p + 2 + static_cast<int>(n) * k, basis_at(x[1], x[2]));
            if (error.raised()) return surface_missing(error, x);
            y[2 + k] = term;
            y[1] += term;
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    if (nParams < 1) return surface_missing(error, x);
    return linear_derivatives(terms, basis_at, p, x, y, dy);
}

/// A surface that never fails. The basis functions are called once a term, so a call without terms leaves errno
/// alone whatever X and Y are.
template <size_t n>
int32_t untested_surface(int16_t flags, int16_t nParams, std::array<double, n> (*basis_at)(double, double),
                         const double *p, const double *x, double *y, double *dy)
{
    const int terms = nParams / static_cast<int>(n);

    if (flags & EVAL_VALUE) {
        y[1] = p[1];
        for (int k = 0; k < terms; ++k) {
            y[2 + k] = weighted_sum(p + 2 + static_cast<int>(n) * k, basis_at(x[1], x[2]));
            y[1] += y[2 + k];
        }
    }
    if (!(flags & EVAL_DERIVS)) return 0;

    return linear_derivatives(terms, basis_at, p, x, y, dy);
}

std::array<double, 4> squares(double X, double Y)
{
    return {X, Y, X * X, Y * Y};
}

std::array<double, 5> squares_and_product(double X, double Y)
{
    return {X, Y, X * X, Y * Y, X * Y};
}

std::array<double, 10> powers(double X, double Y)
{
    return {X, guarded_pow(X, 2), guarded_pow(X, 3), guarded_pow(X, 4), guarded_pow(X, 5),
            Y, guarded_pow(Y, 2), guarded_pow(Y, 3), guarded_pow(Y, 4), guarded_pow(Y, 5)};
}

std::array<double, 5> cosines(double X, double Y)
{
    const double cX = std::cos(X), c2X = std::cos(2 * X), cY = std::cos(Y), c2Y = std::cos(2 * Y);
    return {cX, c2X, cY, c2Y, cX * cY};
}

}  // namespace

/// Plane.
///     z = z0 + a·X + b·Y          p = (z0, a, b)
/// Never fails.
MODEL(Plane)
{
    if (flags & EVAL_INIT) return 1;
    const double z0 = p[1], a = p[2], b = p[3], X = x[1], Y = x[2];

    if (flags & EVAL_VALUE) y[1] = a * X + z0 + b * Y;
    if (!(flags & EVAL_DERIVS)) return 0;

    dy[1] = 1.0;
    dy[2] = X;
    dy[3] = Y;
    y[1] = a * X + z0 + b * Y;
    return 0;
}

/// Paraboloid without a mixed term.
///     z = z0 + sum of a·X + b·Y + c·X² + d·Y²
///     p = (z0, then for each term: a, b, c, d);  (nParams - 1)/4 terms
/// Needs nParams >= 1. A stale error code fails a value call that has a term.
MODEL(Parabola2D)
{
    return tested_surface(flags, perr, nParams, squares, p, x, y, dy);
}

/// Paraboloid with a mixed term.
///     z = z0 + sum of a·X + b·Y + c·X² + d·Y² + f·X·Y
///     p = (z0, then for each term: a, b, c, d, f);  (nParams - 1)/5 terms
/// The tests are those of Parabola2D.
MODEL(Poly2D)
{
    return tested_surface(flags, perr, nParams, squares_and_product, p, x, y, dy);
}

/// Polynomial of degree 5 in X plus one in Y.
///     z = z0 + sum of a1·X + ... + a5·X⁵ + b1·Y + ... + b5·Y⁵
///     p = (z0, then for each term: a1, ..., a5, b1, ..., b5);  nParams/10 terms
/// Never fails: a power out of range is an infinity or 0 and leaves its code in errno.
MODEL(Polynomial2D)
{
    if (flags & EVAL_INIT) return 1;
    return untested_surface(flags, nParams, powers, p, x, y, dy);
}

/// Cosine series of degree 2 with a mixed term.
///     z = z0 + sum of a1·cos X + a2·cos 2X + b1·cos Y + b2·cos 2Y + c·cos X·cos Y
///     p = (z0, then for each term: a1, a2, b1, b2, c);  nParams/5 terms
/// Never fails: the cosine of an infinity is a NaN and leaves its code in errno.
MODEL(Cosine)
{
    if (flags & EVAL_INIT) return 1;
    return untested_surface(flags, nParams, cosines, p, x, y, dy);
}

/// Chebyshev series of degree 2 with a mixed term: Cosine of acos X and acos Y.
///     z = z0 + sum of a1·T1(X) + a2·T2(X) + b1·T1(Y) + b2·T2(Y) + c·T1(X)·T1(Y),  T1(s) = s, T2(s) = 2·s² - 1
///     p = (z0, then for each term: a1, a2, b1, b2, c);  nParams/5 terms
/// Meant for X and Y from -1 to 1. Never fails: outside, or wherever else the sum is not finite, y[1] holds the
/// missing value in a successful call, and x[2] is not marked. The arc cosines are taken even where there is no
/// term, so errno tells of an X or Y outside on every call that computes something.
MODEL(Chebyshev2D)
{
    if (flags & EVAL_INIT) return 1;
    if (!(flags & (EVAL_VALUE | EVAL_DERIVS))) return 0;
    const double angles[] = {0.0, std::acos(x[1]), std::acos(x[2])};

    untested_surface(flags, nParams, cosines, p, angles, y, dy);
    missing_if_not_finite(&y[1]);
    return 0;
}

}  // namespace curvebank
