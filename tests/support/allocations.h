// Counts what a program allocates, where the file is linked into it.

#pragma once

#include <cstddef>

namespace curvebank::test {

/// The calls of operator new by this thread so far.
size_t allocations();

}  // namespace curvebank::test
