// Random calls of a model, with special numbers among their arguments, and all that a call can change.

#pragma once

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

#include "catalogue/catalogue.h"
#include "tests/support/marks.h"

namespace curvebank::test {

constexpr int most_parameters = 60, fewest_parameters = -2;       // of a random call: 20 peaks, and none
constexpr int guard = 4;                                          // entries to watch beyond what a call may touch
constexpr size_t room = CURVEBANK_ROOM(most_parameters) + guard;  // of every array

/// A call's arguments and everything that it can change.
struct CallState {
    using Array = std::array<double, room>;

    int16_t flags = 0, nParams = 0;
    int32_t result = 0, runtime_code = 0, caller_code = 0;
    Array p{}, x{}, y{}, dy{};

    /// Calls the model with other arrays in the place of these. Without EVAL_USE_ERRPTR the caller's error variable
    /// is an address that cannot be read.
    void run(ModelFunc model, const double *own_p, double *own_x, double *own_y, double *own_dy)
    {
        auto *const unreadable = reinterpret_cast<int32_t *>(uintptr_t{16});
        errno = runtime_code;
        result = model(flags, flags & EVAL_USE_ERRPTR ? &caller_code : unreadable, nParams, nullptr, 0, own_p,
                       nullptr, own_x, own_y, own_dy);
        runtime_code = errno;
    }

    void run(ModelFunc model) { run(model, p.data(), x.data(), y.data(), dy.data()); }
};

inline bool same(const CallState::Array &a, const CallState::Array &b)
{
    return std::memcmp(a.data(), b.data(), sizeof a) == 0;
}

/// Whether two calls ended with the same bits.
inline bool same(const CallState &a, const CallState &b)
{
    return a.result == b.result && a.runtime_code == b.runtime_code && a.caller_code == b.caller_code &&
           same(a.p, b.p) && same(a.x, b.x) && same(a.y, b.y) && same(a.dy, b.dy);
}

/// The same, any NaN being like any other: its sign and payload depend on the order of operands.
inline bool alike(CallState a, CallState b)
{
    for (CallState *state : {&a, &b})
        for (auto *array : {&state->p, &state->x, &state->y, &state->dy})
            for (double &value : *array)
                if (std::isnan(value)) value = NAN;
    return same(a, b);
}

/// Random numbers and calls. Its state is its seed: a generator of its own for every call costs nothing, and any
/// call can be made again alone.
class Random {
public:
    explicit Random(uint64_t seed) : state_(seed) {}

    /// 64 random bits (SplitMix64).
    uint64_t bits()
    {
        uint64_t mixed = state_ += 0x9e3779b97f4a7c15;
        mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
        return mixed ^ (mixed >> 31);
    }

    /// A number from 0 to limit-1, which has 32 bits at the most.
    uint64_t below(uint64_t limit) { return ((bits() >> 32) * limit) >> 32; }

    /// A number from 0 to 1, which it does not reach.
    double fraction() { return static_cast<double>(bits() >> 11) * 0x1p-53; }

    /// A number of any kind, or a moderate positive one, with which most models get through.
    double number(bool moderate)
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        static constexpr double special[] = {0.0,    -0.0,   1.0,    -1.0,    2.0,          1e300,
                                             -1e300, 1e-300, 5e-324, -1e-308, infinity,     -infinity,
                                             NAN,    300.0,  -300.0, 700.0,   MISSING_VALUE};
        static constexpr double sizes[] = {1e-4, 1e-3, 1e-2, 0.1, 1, 10, 100, 1e3, 1e4, 1e5, 1e6, 1e7};
        const double u = fraction();
        if (moderate) return 5 * u;
        if (below(2)) return special[below(std::size(special))];
        return (u - 0.5) * sizes[below(std::size(sizes))];
    }

    /// Flags, count and error codes of any call. Many ask for neither a query nor an initialisation, few have flags
    /// without a meaning, one in three has a count of its own, and half find codes from before in the error
    /// variables.
    void request(const ModelCatalogEntry &row, CallState &state)
    {
        static constexpr int32_t codes[] = {0, 0, 0, 33, 34, 11};
        auto flags = below(32);
        if (below(4)) flags &= ~uint64_t{EVAL_INIT | EVAL_QUERY};
        if (below(32) == 0) flags |= bits() << 5;
        state.flags = static_cast<int16_t>(flags);
        state.nParams = static_cast<int16_t>(row.nParams);
        if (below(3) == 0)
            state.nParams = static_cast<int16_t>(fewest_parameters +
                                                 static_cast<int>(below(most_parameters - fewest_parameters + 1)));
        state.runtime_code = codes[below(std::size(codes))];
        state.caller_code = codes[below(std::size(codes))];
    }

    /// The arguments p[1..last_p] and x[1..last_x] of any call. One in five has x on a parameter, one in eight two
    /// equal parameters.
    void arguments(CallState &state, size_t last_p, size_t last_x)
    {
        const uint64_t wild = below(4);  // how many of four numbers are of any kind
        for (size_t i = 1; i <= last_p; ++i) state.p[i] = number(below(4) >= wild);
        for (size_t i = 1; i <= last_x; ++i) state.x[i] = number(below(4) >= wild);
        const auto parameter = [&]() -> double & { return state.p[1 + below(std::min<size_t>(last_p, 12))]; };
        if (below(5) == 0) state.x[1] = parameter();
        if (below(8) == 0) parameter() = parameter();
    }

    /// Any call of a model, its outputs untouched.
    CallState call(const ModelCatalogEntry &row)
    {
        CallState state;
        request(row, state);
        arguments(state, room - 1, room - 1);
        state.y.fill(untouched);
        state.dy.fill(untouched);
        return state;
    }

private:
    uint64_t state_;
};

}  // namespace curvebank::test
