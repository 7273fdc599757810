// The built-in functions against 50-digit references, on grids that reach into the tails.

#include <cerrno>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <doctest/doctest.h>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/expm1.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/multiprecision/cpp_dec_float.hpp>

#include "numerics/error_function.h"
#include "numerics/numcore.h"

namespace {

using Exact = boost::multiprecision::cpp_dec_float_50;
using curvebank::numerics::error_function;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// The largest relative error of one function over its grid.
class Accuracy {
public:
    void compare(double computed, const Exact &exact)
    {
        if (exact == 0 && computed == 0) return;
        if (fabs(exact) < std::numeric_limits<double>::min()) return;  // subnormal numbers have fewer digits
        const double error = static_cast<double>(fabs(Exact(computed) / exact - 1));
        if (!(error <= largest_)) largest_ = error;
        ++points_;
    }

    void check(const std::string &name, double bound) const
    {
        MESSAGE(name << ": largest relative error " << largest_ << " of " << points_ << " points");
        CHECK_MESSAGE(largest_ <= bound, name);
    }

private:
    double largest_ = 0;
    int points_ = 0;
};

std::vector<double> range(double first, double last, double step)
{
    std::vector<double> points;
    for (double at = first; at <= last; at += step) points.push_back(at);
    return points;
}

/// Shapes and scales that are no round binary numbers.
const std::vector<double> weibull_shapes = {0.1, 0.7, 1, 2.3, 5.1}, weibull_scales = {0.013, 1, 370};

}  // namespace

TEST_SUITE("numcore")
{
    TEST_CASE("normcdf: to 1e-300 in the lower tail")
    {
        Accuracy all;
        for (const double z : range(-37.45, 9, 0.0517))
            all.compare(normcdf(z, NUMCORE_LOWER_TAIL, nullptr), boost::math::erfc(-Exact(z) / sqrt(Exact(2))) / 2);
        all.check("normcdf", 2e-16);
    }

    TEST_CASE("error function")
    {
        Accuracy all;
        for (const double t : range(-6.5, 6.5, 0.0373)) all.compare(error_function(t), boost::math::erf(Exact(t)));
        for (double t = 1e-300; t < 1; t *= 1234.5) all.compare(error_function(t), boost::math::erf(Exact(t)));
        all.check("error_function", 2e-16);
    }

    TEST_CASE("gamcdf: shapes from 1e-3 to 1e5, around the mean and into both tails")
    {
        Accuracy near, far;
        for (const double shape : {1e-3, 0.02, 0.5, 1.0, 3.7, 40.1, 600.3, 1e4 + 0.1, 1e5})
            for (const double scale : {1.0, 0.37, 12.1}) {
                std::vector<double> means = {1e-200, 1e-20, 1e-4, 0.3, 1, 1.7, 4, 20};
                for (const double sigmas : range(-36, 9, 3.9)) means.push_back(1 + sigmas / std::sqrt(shape));
                for (const double mean : means) {
                    if (mean <= 0) continue;
                    const double x = mean * shape * scale;
                    const Exact exact = boost::math::gamma_p(Exact(shape), Exact(x) / scale);
                    (exact > 1e-15 ? near : far)
                        .compare(gamcdf(x, shape, scale, NUMCORE_LOWER_TAIL, nullptr), exact);
                }
            }
        for (const double sigmas : {-7.0, 0.3}) {  // beyond Boost.Math's own series
            const double shape = 1.1e9, x = shape + sigmas * std::sqrt(shape);
            near.compare(gamcdf(x, shape, 1, NUMCORE_LOWER_TAIL, nullptr),
                         boost::math::gamma_p(Exact(shape), Exact(x)));
        }
        near.check("gamcdf above 1e-15", 1e-15);
        far.check("gamcdf below 1e-15", 1e-14);
    }

    TEST_CASE("Weibull: ordinary arguments and the tails")
    {
        Accuracy cdf, pdf_near, pdf_far;
        for (const double shape : weibull_shapes)
            for (const double scale : weibull_scales)
                for (double t = 1e-250; t < 650; t *= t < 1e-3 ? 917.3 : 1.37) {
                    const double x = scale * std::pow(t, 1 / shape);
                    if (x < 1e-290) continue;
                    const Exact z = Exact(x) / scale, power = pow(z, Exact(shape));
                    cdf.compare(wblcdf(x, scale, shape, nullptr), -boost::math::expm1(-power));
                    (t < 40 ? pdf_near : pdf_far)
                        .compare(wblpdf(x, scale, shape, nullptr), shape / Exact(scale) * power / z * exp(-power));
                }
        cdf.check("wblcdf", 1e-14);
        pdf_near.check("wblpdf, exponent up to 40", 1e-13);
        pdf_far.check("wblpdf, exponent up to 650", 1e-12);
    }

    TEST_CASE("numcore_log_gamma: between the poles too")
    {
        Accuracy all;
        for (const double t : range(-30.03, 60, 0.0931))
            all.compare(numcore_log_gamma(t), log(abs(tgamma(Exact(t)))));
        for (double t = 1e-300; t < 1e5; t *= 77.7)
            all.compare(numcore_log_gamma(t), boost::math::lgamma(Exact(t)));
        for (const double t :
             {1 - 1e-9, 1 + 1e-9, 2 - 1e-9, 2 + 1e-9, -2147483647.25, -2147483648.75, -4.1e13 - 0.125})
            all.compare(numcore_log_gamma(t), boost::math::lgamma(Exact(t)));
        all.check("numcore_log_gamma", 2e-16);
    }

    TEST_CASE("outside the domain, at infinity and for NaN; errno stays as it was")
    {
        const double values[] = {NAN, -infinity, -1e300, -2, -0.5, -0.0, 1e-310, 0.7, 3, 1e300, infinity};
        const auto gamma = [](double x, double shape, double scale) {
            errno = 12;
            const double probability = gamcdf(x, shape, scale, NUMCORE_LOWER_TAIL, nullptr);
            CHECK(errno == 12);
            return probability;
        };
        for (const double a : values) {
            errno = 34;
            const double normal = normcdf(a, NUMCORE_LOWER_TAIL, nullptr), erf = error_function(a);
            CHECK((std::isnan(a) ? std::isnan(normal) && std::isnan(erf) : erf >= -1 && erf <= 1 && normal <= 1));
            CHECK(std::isnan(numcore_log_gamma(a)) == std::isnan(a));
            for (const double b : values)
                for (const double c : values) {
                    wblcdf(a, b, c, nullptr);
                    wblpdf(a, b, c, nullptr);
                    const double probability = gamma(a, b, c);
                    errno = 34;
                    const bool defined = !std::isnan(a) && b > 0 && c > 0 &&
                                         !(b == infinity && a / c == infinity) && !(a == infinity && c == a);
                    CHECK_MESSAGE(std::isnan(probability) != defined, a << " " << b << " " << c);
                    if (defined) CHECK((probability >= 0 && probability <= 1));
                }
            CHECK(errno == 34);
        }
        CHECK((normcdf(-infinity, 2, nullptr) == 0 && normcdf(infinity, 2, nullptr) == 1 &&
               normcdf(0, 2, nullptr) == 0.5));
        CHECK((gamma(-1, infinity, 1) == 0 && gamma(5, infinity, 1) == 0 && gamma(infinity, 2, 1) == 1));
        CHECK((gamma(1e-300, 0.001, 1e300) == 0 && gamma(1e300, 2, 1e-300) == 1));
        CHECK((numcore_log_gamma(-3) == infinity && numcore_log_gamma(-infinity) == infinity));
        CHECK((error_function(-infinity) == -1 && std::signbit(error_function(-0.0))));
    }
}
