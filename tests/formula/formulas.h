// Formulas that the tests of printing and of derivatives go through.

#pragma once

#include <string>
#include <vector>

namespace curvebank::test {

/// Every operation at least once, and what its derivatives mind; names are x and parameters.
inline std::vector<std::string> formulas()
{
    std::vector<std::string> all = {
        "y0 + A*exp(-((x - xc)/w)^2/2)",
        "-x^2 + 2^-x^2 - (-x)^2/-a + a - (b - c) + (a + b)*-c/(x/b)/c*(b*x)",
        "(a^b)^c + a^b^c - (a*x)^(-b) + (a/b)^1.5*x^0.5 + a^-1 + b^-3 + c^2.0 + x^3 + 1e-3^a",
        "bottom + (top - bottom)*(1 + 10^((logx0 - x)*h))^-s",
        "a*(1 - exp(-(b*(x - c))^2))^d + (a*x/(b + c))^(d - 1)*exp(-(x/(a*b))^d) + (-x*-a/-b)^2.5 + (a*exp(x))^c",
        "x < a ? b : x <= b or x > c and not x >= d ? c*x^2 : x == a ? d : x != b ? a*b : 0",
        "(x < c ? a : b)*x^2/(x > c ? w1 : w2) + ((x < c and 1) ? ln(x + a) : a^x)",
        "exp(a*x) - expm1(b*x)*ln(a*x/b) + log1p(a*x) + log10(a*x^b) + log2(a + x) + sqrt(a*x + 1) + cbrt(b*x)",
        "sin(a*x)*cos(b*x)/tan(a + x/4) + asin(a*x/10) - acos(b*x/10)*atan(a*x) + atan2(a*x, b)",
        "sinh(a*x) + cosh(b*x)*tanh(a*x - b) + asinh(a*x) - acosh(a*x + 2) + atanh(b*x/10)",
        "abs(a*x - b) + sign(x - a)*b + floor(a*x)*x + min(a*x, b, c*x^2) - max(x, a, b*c)*max(a*b, c)",
        "a*erf((x - b)/c) + erfc(a*x)*b + gamma(a*x)/gamma(b) + lgamma(b + x) - digamma(a*x) + gamma(x)^a",
        "A*gammap(a, x/b) + gammap_density(a, b*x) + besseli0(a*x) - besseli1(b*x)/besseli1(a + x)",
        "2*a*(3*b*(0.5*x)) - (a - 0)*1*b + pi*a/4 + a/3 + (a + a)*(b - b) + 1.60217662e-19*1e19*a",
        "a*x - -(b - x) - (-a - (-b)) + -(-(a*-x)) - (-b/-c)",
    };
    return all;
}

}  // namespace curvebank::test
