// What the contract promises of a call, whatever the model and its arguments are.

#pragma once

#include <algorithm>
#include <string>

#include "reference/reference.h"
#include "tests/support/random_call.h"

namespace curvebank::test {

inline bool all_untouched(const CallState::Array &a, size_t first)
{
    return std::all_of(a.begin() + static_cast<long>(first), a.end(),
                       [](double v) { return same_bits(v, untouched); });
}

/// What of the contract a call broke, or an empty text. Its outputs were `untouched` before.
inline std::string fault(const ModelCatalogEntry &row, const reference::ModelReference &about,
                         const CallState &before, const CallState &after)
{
    using reference::InitCalls;
    const bool silent_init = about.init == InitCalls::answers_1 || about.init == InitCalls::answers_0;
    const bool query = after.result == QUERY_REPLY || after.result == QUERY_MASK;
    if (query ? !(before.flags & EVAL_QUERY) : after.result != 0 && after.result != 1) return "result";
    if (!(before.flags & EVAL_USE_ERRPTR) && after.caller_code != before.caller_code) return "caller's variable";
    if (query && !(all_untouched(after.y, 0) && all_untouched(after.dy, 1))) return "query";
    if (!query && !same_bits(after.dy[0], untouched)) return "dy[0]";
    if (!same_bits(after.y[0], untouched)) return "y[0]";
    if (!(before.flags & EVAL_DERIVS) && !all_untouched(after.dy, 1) && about.name != "errtest")
        return "dy without EVAL_DERIVS";
    if ((before.flags & EVAL_INIT) && !query && silent_init &&
        !(all_untouched(after.y, 0) && all_untouched(after.dy, 0) && after.runtime_code == before.runtime_code &&
          after.caller_code == before.caller_code))
        return "initialisation";
    if (!same(after.p, before.p)) return "p";
    CallState::Array marked = before.x;
    if (after.result == 1 && row.nIndep > 1 && is_missing(after.x[2])) marked[2] = MISSING_VALUE;
    if (!same(marked, after.x)) return "x";
    return "";
}

}  // namespace curvebank::test
