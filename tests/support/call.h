// One model call as a host makes it, with everything a test wants to look at afterwards.

#pragma once

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>

#include "curvebank/curvebank.h"
#include "platform/shared_library.h"
#include "tests/support/marks.h"

namespace curvebank::test {

/// The library under test, opened by file: the product itself, not the objects it is made of.
inline const platform::SharedLibrary &library()
{
    static const platform::SharedLibrary opened(CURVEBANK_LIBRARY_FILE);
    return opened;
}

/// The model of that catalogue name, or null.
inline ModelFunc model(const char *name)
{
    return library().function<ModelFunc (*)(const char *)>("get_funx")(name);
}

class Call {
public:
    static constexpr int room = CURVEBANK_ROOM(32);

    /// A model by its catalogue name or, where it has no row, by its export name.
    Call(const std::string &name, std::initializer_list<double> parameters, std::initializer_list<double> variables)
        : function_(model(name.c_str())), nParams(static_cast<int16_t>(parameters.size()))
    {
        if (!function_) function_ = library().function<ModelFunc>(name.c_str());
        if (!function_) throw std::runtime_error("no model " + name);
        std::copy(parameters.begin(), parameters.end(), p.begin() + 1);
        std::copy(variables.begin(), variables.end(), x.begin() + 1);
    }

    /// Calls the model on fresh outputs; both error variables hold the stale codes on entry.
    int run(int flags, int stale_errno = 0, int stale_caller = 0)
    {
        y.fill(untouched);
        dy.fill(untouched);
        caller_code = stale_caller;
        errno = stale_errno;
        const int result = function_(static_cast<int16_t>(flags), &caller_code, nParams, nullptr, 0, p.data(),
                                     nullptr, x.data(), y.data(), dy.data());
        runtime_code = errno;
        return result;
    }

    /// Whether dy[first..last] was left as it stood.
    bool dy_untouched(int first = 0, int last = room - 1) const
    {
        for (int i = first; i <= last; ++i)
            if (!same_bits(dy[static_cast<size_t>(i)], untouched)) return false;
        return true;
    }

    /// Whether exactly dy[first..last] is marked missing.
    bool dy_missing_only(int first, int last) const
    {
        for (int i = first; i <= last; ++i)
            if (!is_missing(dy[static_cast<size_t>(i)])) return false;
        return dy_untouched(0, first - 1) && dy_untouched(last + 1);
    }

    bool nothing_written() const
    {
        return dy_untouched() && same_bits(y[1], untouched) && same_bits(y[2], untouched);
    }

private:
    ModelFunc function_;

public:
    int16_t nParams;
    std::array<double, room> p{}, x{}, y{}, dy{};
    int32_t caller_code = 0;   ///< the caller's error variable after the call
    int32_t runtime_code = 0;  ///< errno after the call
};

}  // namespace curvebank::test
