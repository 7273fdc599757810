// What is computed in somebody else's name must not show in the error number that the models read.

#pragma once

#include <cerrno>

namespace curvebank::numerics {

/// Gives errno back at the end of its scope as it was at the start.
class KeepErrno {
public:
    KeepErrno() : code_(errno) {}
    ~KeepErrno() { errno = code_; }
    KeepErrno(const KeepErrno &) = delete;
    KeepErrno &operator=(const KeepErrno &) = delete;

private:
    int code_;
};

}  // namespace curvebank::numerics
