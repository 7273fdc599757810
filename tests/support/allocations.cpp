#include "tests/support/allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local size_t count = 0;

}  // namespace

size_t curvebank::test::allocations()
{
    return count;
}

void *operator new(size_t size)
{
    ++count;
    if (void *memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, size_t) noexcept
{
    std::free(memory);
}
