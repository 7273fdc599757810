// Other processes that this one starts.

#pragma once

#include <string>

namespace curvebank::platform {

enum class ProgramEnd { success, failure, not_found };

/// Runs a program, found by its name, on this input and waits for its end. One that ends before it has read all is
/// no danger to the caller.
ProgramEnd run_program(const std::string &name, const std::string &input);

}  // namespace curvebank::platform
