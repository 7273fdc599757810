#include "tests/support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

thread_local size_t count = 0;
std::atomic<long> left = -1;
std::atomic<bool> failed = false;

}  // namespace

size_t curvebank::test::allocations()
{
    return count;
}

void curvebank::test::fail_allocation(long after)
{
    failed = false;
    left = after;
}

bool curvebank::test::allocation_failed()
{
    return failed;
}

void *operator new(size_t size)
{
    ++count;
    if (left >= 0 && left-- == 0) {
        failed = true;
        throw std::bad_alloc();
    }
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
