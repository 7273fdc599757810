// The Pearson type IV density, free of overflow.
//
// The normalisation after Heinrich (2004) contains factors that overflow or underflow for large m or nu, although
// they cancel in the density. Here all is referred to the maximum of the density, at z = -t with t = nu/(2·m):
// Stirling's formula for both gamma functions of |Γ(m + i·nu/2)/Γ(m)|² leaves
//
//     (1 + t²)^(m - 1/2)·exp(-nu·atan(t) + 2·(Re J(m + i·nu/2) - J(m)))
//
// where J is Binet's remainder of Stirling's formula, a small number. The first two factors go together with
// (1 + z²)^(-m) and exp(-nu·atan(z)) into exponents of the ratio (1 + z²)/(1 + t²) and of the angle
// atan(z) + atan(t), both of which vanish at the maximum.

#include "numerics/numcore.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <limits>

namespace {

/// Re J(a + i·b), J(s) = ln Γ(s) - (s - 1/2)·ln s + s - ln(2π)/2, for a > 0.
double binet(double a, double b)
{
    // The coefficients of 1/s, 1/s³, ... in Stirling's series.
    constexpr double stirling[] = {1.0 / 12, -1.0 / 360, 1.0 / 1260, -1.0 / 1680, 1.0 / 1188, -691.0 / 360360};
    constexpr double large = 15;  // from here on the series is exact to the last digit

    double sum = 0.0;
    for (; std::hypot(a, b) < large; ++a)  // J(s) = J(s + 1) + (s + 1/2)·ln(1 + 1/s) - 1
        sum += (a + 0.5) * 0.5 * std::log1p((2 * a + 1) / (a * a + b * b)) +
               b * std::atan2(b, a * (a + 1) + b * b) - 1;
    const double r = std::hypot(a, b), angle = std::atan2(b, a);
    double power = r;
    int n = 1;
    for (const double coefficient : stirling) {
        sum += coefficient * std::cos(n * angle) / power;
        power *= r * r;
        n += 2;
    }
    return sum;
}

/// Γ(m)/Γ(m - 1/2) for m > 1/2, as (m - 1/2)/m·Γ(m + 1)/Γ(m + 1/2).
double half_step_ratio(double m)
{
    const double exponent = m * std::log1p(0.5 / (m + 0.5)) - 0.5 + binet(m + 1, 0) - binet(m + 0.5, 0);
    return (m - 0.5) / m * std::sqrt(m + 1) * std::exp(exponent);
}

/// The density of z.
double density(double m, double nu, double z)
{
    constexpr double sqrt_pi = 1.7724538509055160273;
    const double t = nu / 2 / m, h = std::hypot(1.0, t), c = t / h;
    const double d = z / h + c;             // the distance from the maximum, over h
    const double excess = d * (d - 2 * c);  // (1 + z²)/(1 + t²) - 1
    const double log_ratio = std::fabs(excess) < 0.5 ? std::log1p(excess) : 2 * std::log(std::hypot(1.0, z) / h);
    const double angle = std::atan2(d, 1 / h - z * c);  // atan(z) + atan(t)
    const double below_maximum = std::min(m * (-log_ratio - 2 * (t * angle)), 0.0);
    const double remainder = 2 * (binet(m, nu / 2) - binet(m, 0));
    return half_step_ratio(m) / sqrt_pi / h * std::exp(remainder + below_maximum);
}

}  // namespace

double numcore_PearsonIV(double y0, double xc, double A, double w, double m, double nu, double x)
{
    const bool defined = w > 0 && m > 0.5 && std::isfinite(w) && std::isfinite(m) && std::isfinite(nu);
    if (!defined) return std::numeric_limits<double>::quiet_NaN();
    const double z = (x - xc) / w;
    if (std::isinf(z)) return y0;

    const int code_on_entry = errno;
    const double f = density(m, nu, z);
    errno = code_on_entry;
    return y0 + (w > 1 ? A / w * f : A * f / w);  // never overflows on the way to a finite value
}
