// The built-in stand-ins for the host's math library.
//
// Where a result is steep in a rounded quantity (the tails of the normal and the gamma distribution: a rounding of
// z counts z² times in Φ(z)), everything is formed in long double, whose eleven bits more absorb that.

#include "numerics/numcore.h"

#include <cmath>
#include <limits>

#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/log1p.hpp>

#include "numerics/keep_errno.h"
#include "numerics/quiet_policy.h"

using curvebank::numerics::KeepErrno;
using curvebank::numerics::Quiet;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr long double sqrt_half = 0.707106781186547524400844362104849039L;
constexpr long double two_pi = 6.28318530717958647692528676655900577L;
constexpr long double pi = 3.14159265358979323846264338327950288L;
constexpr double great_shape = 1e9;
constexpr double least_reflected = -2147483648.0;  // Boost.Math's reflection counts whole numbers in an int

/// P(a, z) for a shape so great that Boost.Math's series take too many terms: the uniform asymptotic expansion
/// (Temme, 1979), of which the first coefficient suffices, in powers of eta, which is tiny wherever P is neither 0
/// nor 1.
long double great_shape_gamma_p(long double a, long double z)
{
    const long double delta = (z - a) / a;
    const long double half_eta2 = -boost::math::log1pmx(delta, Quiet());
    const long double exponent = a * half_eta2;
    if (!(exponent < 1000)) return delta < 0 ? 0 : 1;
    const long double eta = std::copysign(std::sqrt(2 * half_eta2), delta);
    const long double c0 = -1 / 3.0L + eta * (1 / 12.0L + eta * (-2 / 135.0L + eta * (1 / 864.0L + eta / 2835)));
    const long double remainder = c0 * std::exp(-exponent) / std::sqrt(two_pi * a);
    const long double tail = boost::math::erfc(std::sqrt(exponent), Quiet()) / 2;
    return (delta < 0 ? tail : 1 - tail) - remainder;
}

}  // namespace

double normcdf(double z, int, void *)
{
    const KeepErrno keep;
    if (std::isnan(z)) return z;
    if (std::isinf(z)) return z > 0 ? 1.0 : 0.0;
    return static_cast<double>(boost::math::erfc(-z * sqrt_half, Quiet()) / 2);
}

double gamcdf(double x, double shape, double scale, int, void *)
{
    const KeepErrno keep;
    if (std::isnan(x) || !(shape > 0) || !(scale > 0)) return not_a_number;
    if (x <= 0) return 0.0;
    const double z = x / scale;
    if (std::isnan(z)) return not_a_number;
    if (z == 0) return 0.0;
    if (std::isinf(shape)) return std::isinf(z) ? not_a_number : 0.0;
    if (std::isinf(z)) return 1.0;
    const long double quotient = static_cast<long double>(x) / scale;
    if (shape > great_shape) return static_cast<double>(great_shape_gamma_p(shape, quotient));
    return static_cast<double>(boost::math::gamma_p(static_cast<long double>(shape), quotient, Quiet()));
}

double wblcdf(double x, double scale, double shape, void *)
{
    const KeepErrno keep;
    return -std::expm1(-std::pow(x / scale, shape));
}

double wblpdf(double x, double scale, double shape, void *)
{
    const KeepErrno keep;
    const double z = x / scale;
    return shape / scale * std::pow(z, shape - 1) * std::exp(-std::pow(z, shape));
}

double numcore_log_gamma(double t)
{
    const KeepErrno keep;
    if (std::isnan(t)) return t;
    if (std::isinf(t) || (t <= 0 && std::floor(t) == t)) return infinity;
    if (t >= least_reflected) return static_cast<double>(boost::math::lgamma(static_cast<long double>(t), Quiet()));
    // Γ(t)·Γ(-t) = -π / (t·sin(π·t))
    const long double z = -static_cast<long double>(t), distance = std::fabs(z - std::nearbyint(z));
    return static_cast<double>(std::log(pi) - boost::math::lgamma(z, Quiet()) -
                               std::log(z * std::sin(pi * distance)));
}
