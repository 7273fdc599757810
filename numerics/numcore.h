/* The host's math library: the functions that the models call in its name.
 *
 * The built-in functions (numcore_builtin.cpp) stand in for it; a build with CURVEBANK_NUMCORE links the host's
 * own. What follows describes the built-in ones. They are defined for all arguments, a NaN giving NaN, and leave
 * errno as they found it. docs/numcore.md has their measured accuracy.
 */
#ifndef CURVEBANK_NUMCORE_H
#define CURVEBANK_NUMCORE_H

#ifdef __cplusplus
extern "C" {
#endif

/* The tail that the library asks for, always. The built-in functions know no other; nor do they use *report*,
 * which the library passes as null. */
enum { NUMCORE_LOWER_TAIL = 2 };

/* Standard normal distribution: the probability of a value up to z. Accurate down to the least normal number, which
 * is reached at z = -37.5; exactly 0 from about -38.5 on. */
double normcdf(double z, int tail, void *report);

/* Gamma distribution: the probability P(shape, x/scale) of a value up to x. NaN for shape <= 0 or scale <= 0 and
 * for x and scale both infinite; otherwise 0 for x <= 0. An infinite shape gives 0 (NaN for an infinite x/scale),
 * an infinite x/scale 1. Shapes from 1e-3 to 1e5 have been measured. */
double gamcdf(double x, double shape, double scale, int tail, void *report);

/* Weibull distribution: the probability 1 - exp(-(x/scale)^shape) of a value up to x, with full relative accuracy
 * where it is small. Meant for x, scale and shape > 0; elsewhere it is what the formula gives. */
double wblcdf(double x, double scale, double shape, void *report);

/* Weibull distribution: the density (shape/scale)·(x/scale)^(shape - 1)·exp(-(x/scale)^shape), as that product.
 * Meant for x, scale and shape > 0; elsewhere it is what the formula gives. */
double wblpdf(double x, double scale, double shape, void *report);

/* ln|Γ(t)|; +infinity at the poles 0, -1, -2, ... and for an infinite t. */
double numcore_log_gamma(double t);

/* Pearson type IV peak: an asymmetric peak with power-law tails (Pearson, 1895; Heinrich, 2004).
 *     y0 + A/w·k·(1 + z²)^(-m)·exp(-nu·atan(z)),  z = (x - xc)/w,
 *     k = Γ(m)/(√π·Γ(m - 1/2))·|Γ(m + i·nu/2)/Γ(m)|², by which the peak has the area A
 * The peak stands at xc - w·nu/(2·m), skewed to the left for nu > 0; nu = 0 is the symmetric type VII. Defined for
 * w > 0, m > 1/2 and finite parameters, and finite there unless the value itself exceeds the range of a double;
 * elsewhere the result is NaN. At infinite x it is the baseline. The peak is accurate to about 1e-14, which for
 * large m grows as the square root of m, both with respect to the height at the maximum. */
double numcore_PearsonIV(double y0, double xc, double A, double w, double m, double nu, double x);

#ifdef __cplusplus
}
#endif

#endif
