// The vocabulary of a model: what every evaluation does, under one short name each.

#pragma once

#include <cerrno>
#include <cstring>

#include "frame/guards.h"
#include "frame/model_func.h"

/// Opens a model: a C function with the signature of ModelFunc. X stands for x[1] in the formulas.
#define MODEL(name)                                                                                              \
    extern "C" int32_t name([[maybe_unused]] int16_t flags, [[maybe_unused]] int32_t *perr,                      \
                            [[maybe_unused]] int16_t nParams, void *, int32_t, [[maybe_unused]] const double *p, \
                            void *, [[maybe_unused]] double *x, [[maybe_unused]] double *y,                      \
                            [[maybe_unused]] double *dy)

namespace curvebank {

static_assert(ERANGE == 34 && EDOM == 33, "hosts rely on these two error codes");

/// Where this call looks for math errors: errno, or *perr with EVAL_USE_ERRPTR.
class ErrorVariable {
public:
    ErrorVariable(int16_t flags, int32_t *perr) : code_(flags & EVAL_USE_ERRPTR ? perr : &errno) {}

    /// The error test. Codes other than the range and the domain error do not count.
    bool raised() const { return *code_ == ERANGE || *code_ == EDOM; }

    void clear() const { *code_ = 0; }

private:
    int32_t *code_;
};

/// Leaves a call whose value cannot be computed, the error variable untouched.
inline int32_t missing_value(double *y)
{
    y[1] = MISSING_VALUE;
    return 1;
}

/// Leaves a call whose value cannot be computed; the cleared error variable lets the next call start clean.
inline int32_t missing_value(const ErrorVariable &error, double *y)
{
    error.clear();
    return missing_value(y);
}

/// Marks dy[first..last] as not computed.
inline void mark_missing(double *dy, int first, int last)
{
    for (int i = first; i <= last; ++i) dy[i] = MISSING_VALUE;
}

/// Answers a query with a mask, which goes into the first four bytes of dy[0].
inline int32_t reply_with_mask(double *dy, int32_t mask)
{
    std::memcpy(dy, &mask, sizeof mask);
    return QUERY_MASK;
}

}  // namespace curvebank
