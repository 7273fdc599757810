// The vocabulary of a model: what every evaluation does, under one short name each.

#pragma once

#include <cerrno>
#include <cstring>

#include "curvebank/model_func.h"
#include "frame/guards.h"
#include "platform/error_codes.h"

/// Opens a model: a C function with the signature of ModelFunc. X stands for x[1] in the formulas.
#define MODEL(name)                                                                                              \
    extern "C" int32_t name([[maybe_unused]] int16_t flags, [[maybe_unused]] int32_t *perr,                      \
                            [[maybe_unused]] int16_t nParams, void *, int32_t, [[maybe_unused]] const double *p, \
                            void *, [[maybe_unused]] double *x, [[maybe_unused]] double *y,                      \
                            [[maybe_unused]] double *dy)

namespace curvebank {

/// Where this call looks for math errors: errno, or *perr with EVAL_USE_ERRPTR.
class ErrorVariable {
public:
    ErrorVariable(int16_t flags, int32_t *perr) : code_(flags & EVAL_USE_ERRPTR ? perr : &errno) {}

    /// errno, for the models that look there whatever the flags say.
    static ErrorVariable runtime() { return ErrorVariable(0, nullptr); }

    /// The error test. Codes other than the range and the domain error do not count.
    bool raised() const { return range_error() || domain_error(); }
    bool range_error() const { return *code_ == platform::range_error_code; }
    bool domain_error() const { return *code_ == platform::domain_error_code; }

    void clear() const { *code_ = 0; }

private:
    int32_t *code_;
};

/// Marks dy[first..last] as not computed.
inline void mark_missing(double *dy, int first, int last)
{
    for (int i = first; i <= last; ++i) dy[i] = MISSING_VALUE;
}

/// Leaves a call whose value cannot be computed, the error variable untouched.
inline int32_t missing_value(double *y)
{
    y[1] = MISSING_VALUE;
    return 1;
}

/// The missing-value exit of most models: the cleared error variable lets the next call start clean.
inline int32_t missing_value(const ErrorVariable &error, double *y)
{
    error.clear();
    return missing_value(y);
}

/// The same two exits for a derivative step that marks dy[first..last] as well.
inline int32_t missing_values(double *y, double *dy, int first, int last)
{
    mark_missing(dy, first, last);
    return missing_value(y);
}

inline int32_t missing_values(const ErrorVariable &error, double *y, double *dy, int first, int last)
{
    error.clear();
    return missing_values(y, dy, first, last);
}

/// Leaves a derivative step that fails late: that costs dy[entry] alone, the value and the other
/// entries stay. It is errno that is reset, whichever error variable told of the error.
inline int32_t missing_derivative(double *dy, int entry)
{
    ErrorVariable::runtime().clear();
    dy[entry] = MISSING_VALUE;
    return 1;
}

/// Leaves a call whose exponential or power is out of range with the limit of the curve, as a success. It is errno
/// that is reset, whichever error variable told of the overflow.
inline int32_t saturated(double *y, double limit)
{
    ErrorVariable::runtime().clear();
    y[1] = limit;
    return 0;
}

/// Answers a query with a status word, which goes into the first four bytes of dy[0].
inline int32_t reply_to_query(double *dy, int32_t status, int32_t reply)
{
    std::memcpy(dy, &status, sizeof status);
    return reply;
}

/// The usual answer to a query.
inline int32_t reply_to_query(double *dy)
{
    return reply_to_query(dy, 0, QUERY_REPLY);
}

}  // namespace curvebank
