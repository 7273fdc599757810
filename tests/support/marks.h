// How a test tells what a call wrote.

#pragma once

#include <cstring>

#include "curvebank/model_func.h"

namespace curvebank::test {

/// What output entries hold before a call, so that an entry the model does not write can be told.
constexpr double untouched = 7.25e77;

inline bool same_bits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

inline bool is_missing(double value)
{
    return same_bits(value, MISSING_VALUE);
}

}  // namespace curvebank::test
