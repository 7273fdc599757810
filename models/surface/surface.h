// The exits of surfaces, the models z = f(X, Y) of two independent variables.
//
// A surface that cannot be computed says so in x[2], its second variable, and leaves y[1] as it stands: for a sum
// of peaks that is the sum of those that came before. A host calls again only after it has put Y back.

#pragma once

#include "frame/evaluation.h"

namespace curvebank {

/// The missing-value exit of a surface.
inline int32_t surface_missing(const ErrorVariable &error, double *x)
{
    error.clear();
    x[2] = MISSING_VALUE;
    return 1;
}

/// The same exit for a derivative step that marks dy[first..last] as well.
inline int32_t surface_missing(const ErrorVariable &error, double *x, double *dy, int first, int last)
{
    mark_missing(dy, first, last);
    return surface_missing(error, x);
}

}  // namespace curvebank
