#include "tests/support/guard_pages.h"

#include <stdexcept>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace curvebank::test {
namespace {

#ifdef _WIN32
size_t page_size()
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
}

char *reserve(size_t bytes)
{
    return static_cast<char *>(VirtualAlloc(nullptr, bytes, MEM_RESERVE, PAGE_NOACCESS));
}

bool open(char *begin, size_t bytes)
{
    return VirtualAlloc(begin, bytes, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

void release(char *begin, size_t)
{
    VirtualFree(begin, 0, MEM_RELEASE);
}
#else
size_t page_size()
{
    return static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

char *reserve(size_t bytes)
{
    void *const begin = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return begin == MAP_FAILED ? nullptr : static_cast<char *>(begin);
}

bool open(char *begin, size_t bytes)
{
    return mprotect(begin, bytes, PROT_READ | PROT_WRITE) == 0;
}

void release(char *begin, size_t bytes)
{
    munmap(begin, bytes);
}
#endif

}  // namespace

GuardPages::GuardPages(size_t bytes)
{
    const size_t page = page_size(), usable = (bytes + page - 1) / page * page;
    char *const all = reserve(usable + 2 * page);
    if (!all || !open(all + page, usable)) throw std::runtime_error("no memory between guard pages");
    begin_ = all + page;
    end_ = begin_ + usable;
}

GuardPages::~GuardPages()
{
    const size_t page = page_size();
    release(begin_ - page, static_cast<size_t>(end_ - begin_) + 2 * page);
}

}  // namespace curvebank::test
