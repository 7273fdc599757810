// Counts what a program allocates, and lets an allocation fail, where the file is linked into it.

#pragma once

#include <cstddef>

namespace curvebank::test {

/// The calls of operator new by this thread so far.
size_t allocations();

/// Lets the call of operator new fail that comes after so many more, of all threads; negative: none.
void fail_allocation(long after);
/// Whether it has failed.
bool allocation_failed();

}  // namespace curvebank::test
