// An error that the user can act on; its text is one clear line.

#pragma once

#include <stdexcept>

namespace curvebank {

class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace curvebank
