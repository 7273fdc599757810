// What sets the surfaces apart from the curves.

#pragma once

#include "frame/evaluation.h"

namespace curvebank {

/// The missing-value exit of a surface: the mark goes into x[2], and y[1] keeps the sum it has reached.
inline int32_t surface_missing(const ErrorVariable &error, double *x)
{
    error.clear();
    x[2] = MISSING_VALUE;
    return 1;
}

}  // namespace curvebank
