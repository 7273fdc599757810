// Bare loops: some models as a person writes them who needs that one curve and trusts the data.
//
// No flags, no guards, no error tests, no missing values: the formula, inlined into a loop over the points. Both
// the loops and the models take their mathematical functions from the C runtime, so that the ratio of the two times
// is what the calling contract costs.

#pragma once

#include <cstddef>
#include <vector>

namespace curvebank::bench {

/// Where point i has its numbers in every array of a loop: from i·stride on.
constexpr size_t stride = 16;

struct BareLoop {
    /// Evaluates the points. Arrays are 1-based, as those of a model: x[i·stride + 1] is the first variable of
    /// point i.
    using Function = void (*)(const double *p, const double *x, double *y, double *dy, size_t points);

    const char *name;  ///< of the model
    Function value;
    Function derivatives;  ///< and the value; null for a model without derivatives
};

const std::vector<BareLoop> &bare_loops();

}  // namespace curvebank::bench
