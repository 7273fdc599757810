// The error function, as the models see it.

#pragma once

namespace curvebank::numerics {

/// erf(t) = 2/√π · the integral of exp(-s²) from 0 to t, for all t; ±1 for an infinite t, NaN for NaN. Leaves errno
/// as it found it. docs/numcore.md has its measured accuracy.
double error_function(double t);

}  // namespace curvebank::numerics
