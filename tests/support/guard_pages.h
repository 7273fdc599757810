// Memory between two pages that nobody may touch, so that a step beyond either end of an array stops the program.

#pragma once

#include <cstddef>

namespace curvebank::test {

class GuardPages {
public:
    explicit GuardPages(size_t bytes);
    ~GuardPages();
    GuardPages(const GuardPages &) = delete;
    GuardPages &operator=(const GuardPages &) = delete;

    /// The first usable byte, the page before it being closed.
    char *begin() const { return begin_; }
    /// Where the closed page after the last usable byte begins; the usable bytes are whole pages.
    char *end() const { return end_; }

private:
    char *begin_, *end_;
};

}  // namespace curvebank::test
