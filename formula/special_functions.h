// Special functions of a formula in any number type.

#pragma once

#include <cmath>
#include <limits>
#include <type_traits>

#include <boost/math/constants/constants.hpp>
#include <boost/math/special_functions/acosh.hpp>
#include <boost/math/special_functions/bessel.hpp>
#include <boost/math/special_functions/cbrt.hpp>
#include <boost/math/special_functions/digamma.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/trigamma.hpp>

#include "numerics/quiet_policy.h"

namespace curvebank::formula {

using numerics::Quiet;

/// The partial derivative of the regularised lower incomplete gamma function P(a, z) in a. It has no closed form;
/// this sums derivatives of the two expansions of P term by term, each on the side where its terms have one sign:
///
///   P(a, z) = sum over n of w(n),  w(n) = z^(a+n) exp(-z) / gamma(a+n+1),  dw(n)/da = w(n) (ln z -
///   digamma(a+n+1)),
///
/// for z up to a + 1/2, and beyond it Legendre's continued fraction for Q = 1 - P, every step of which (modified
/// Lentz) is differentiated with it. Both need some sqrt(a) steps; NaN where a hundred thousand do not suffice (a
/// near z, both beyond 10^8).
template <typename T>
T gammap_shape_of(const T &a, const T &z)
{
    using std::abs, std::isinf, std::log;
    constexpr int most_steps = 100'000;
    const T epsilon = std::numeric_limits<T>::epsilon();
    if (!(a > 0) || !(z >= 0) || isinf(a)) return std::numeric_limits<T>::quiet_NaN();
    if (z == 0 || isinf(z)) return T(0);

    if (z <= a + T(0.5) || z <= 1) {
        T weight = boost::math::gamma_p_derivative(T(a + 1), z, Quiet());
        T slope = log(z) - boost::math::digamma(T(a + 1), Quiet());
        T sum = 0;
        for (int n = 1; n < most_steps; ++n) {
            const T term = weight * slope, ratio = z / (a + n);
            sum += term;
            if (abs(term) <= epsilon * abs(sum) * (1 - ratio)) return sum;
            weight *= ratio;
            slope -= 1 / (a + n);
        }
        return std::numeric_limits<T>::quiet_NaN();
    }

    // f = 1/(b0 + a1/(b1 + a2/(b2 + ...))), a_i = i (a - i), b_i = z + 2 i + 1 - a; a prime marks the derivative in
    // a.
    T b = z + 1 - a, d = 1 / b, d_prime = d * d, f = d, f_prime = d_prime, inverse_c = 0, inverse_c_prime = 0;
    for (int i = 1; i < most_steps; ++i) {
        const T numerator = i * (a - i);
        b += 2;
        const T c = b + numerator * inverse_c, c_prime = i * inverse_c + numerator * inverse_c_prime - 1;
        const T d_slope = i * d + numerator * d_prime - 1;
        d = 1 / (b + numerator * d);
        d_prime = -d_slope * d * d;
        inverse_c = 1 / c;
        inverse_c_prime = -c_prime * inverse_c * inverse_c;
        const T factor = c * d, factor_prime = c_prime * d + c * d_prime;
        f_prime = f_prime * factor + f * factor_prime;
        f *= factor;
        if (abs(factor - 1) <= 2 * epsilon && abs(f * factor_prime) <= epsilon * abs(f_prime))
            return -z * boost::math::gamma_p_derivative(a, z, Quiet()) *
                   ((log(z) - boost::math::digamma(a, Quiet())) * f + f_prime);
    }
    return std::numeric_limits<T>::quiet_NaN();
}

template <typename T>
T gammap_shape(const T &a, const T &z)
{
    // Double precision would lose sqrt(a) times its rounding in the difference of logarithm and digamma.
    if constexpr (std::is_same_v<T, double>)
        return static_cast<double>(gammap_shape_of<long double>(a, z));
    else
        return gammap_shape_of<T>(a, z);
}

// Far below 0 the library's gamma functions ask for the parity of a number that fits no int. There is their
// reflection at 1/2, in which sin(pi x) takes the fraction of x alone.

template <typename T>
bool is_far_below_zero(const T &x)
{
    return std::is_floating_point_v<T> && x < -1e9;
}

/// pi/abs(sin(pi x)); NaN at the poles.
template <typename T>
T reflection(const T &x)
{
    using std::floor, std::sin;
    const T pi = boost::math::constants::pi<T>(), fraction = x - floor(x);
    return fraction == 0 ? std::numeric_limits<T>::quiet_NaN() : T(pi / sin(pi * fraction));
}

template <typename T>
T gamma(const T &x)
{
    if (is_far_below_zero(x)) return reflection(x) * 0;
    return boost::math::tgamma(x, Quiet());
}

/// The logarithm of abs(gamma(x)).
template <typename T>
T lgamma(const T &x)
{
    using std::log;
    if (is_far_below_zero(x)) return log(reflection(x)) - boost::math::lgamma(T(1 - x), Quiet());
    return boost::math::lgamma(x, Quiet());
}

template <typename T>
T trigamma(const T &x)
{
    if (is_far_below_zero(x)) return reflection(x) * reflection(x) - boost::math::trigamma(T(1 - x), Quiet());
    return boost::math::trigamma(x, Quiet());
}

/// P(a, z). With many digits the expansions need some sqrt(a) steps near z = a; NaN where those would take seconds.
template <typename T>
T gammap(const T &a, const T &z)
{
    using std::abs;
    if constexpr (!std::is_floating_point_v<T>)
        if (a > 1e10 && abs(z - a) < a / 10) return std::numeric_limits<T>::quiet_NaN();
    return boost::math::gamma_p(a, z, Quiet());
}

/// The modified Bessel function of order 0 or 1. With many digits the library's continued fraction needs as many
/// steps as the argument is large; beyond 1000 the asymptotic series has some 800 digits:
///
///   I(x) = exp(x)/sqrt(2 pi x) * sum over k of product over j <= k of ((2 j - 1)^2 - 4 order^2)/(8 j x).
template <typename T>
T besseli(int order, const T &x)
{
    using std::abs, std::exp, std::isinf, std::sqrt;
    if constexpr (!std::is_floating_point_v<T>)
        if (abs(x) > 1000) {
            const T size = abs(x);
            if (isinf(size)) return order == 1 ? x : size;
            T term = 1, sum = 1;
            for (int j = 1; abs(term) > std::numeric_limits<T>::epsilon(); ++j) {
                term *= ((2 * j - 1) * (2 * j - 1) - 4 * order) / (8 * j * size);
                sum += term;
            }
            const T half = exp(size / 2);  // the function itself may be in range where exp(x) is not
            const T value = half * (sum / sqrt(2 * boost::math::constants::pi<T>() * size)) * half;
            return order == 1 && x < 0 ? T(-value) : value;
        }
    return boost::math::cyl_bessel_i(order, x, Quiet());
}

}  // namespace curvebank::formula
