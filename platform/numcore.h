// The host's math library, as far as the models use it. A host that has a numcore of its own links that; the
// stand-ins built here serve everywhere else. All leave errno as they find it and never throw.

#pragma once

extern "C" {

/// Pearson type IV peak: an asymmetric peak with power-law tails (Pearson, 1895; Heinrich, 2004).
///     y0 + A/w·k·(1 + z²)^(-m)·exp(-nu·atan(z)),  z = (x - xc)/w,
///     k = Γ(m)/(√π·Γ(m - 1/2))·|Γ(m + i·nu/2)/Γ(m)|², by which the peak has the area A
/// The peak stands at xc - w·nu/(2·m), skewed to the left for nu > 0; nu = 0 is the symmetric type VII. Defined for
/// w > 0, m > 1/2 and finite parameters, and finite there unless the value itself exceeds the range of a double;
/// elsewhere the result is NaN. At infinite x it is the baseline. The peak is accurate to about 1e-14, which for
/// large m grows as the square root of m, both with respect to the height at the maximum.
double numcore_PearsonIV(double y0, double xc, double A, double w, double m, double nu, double x);

}  // extern "C"
