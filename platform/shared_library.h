// A shared library opened by file, as a host that does not link to it opens one.

#pragma once

#include <string>

namespace curvebank::platform {

class SharedLibrary {
public:
    /// Opens the library in that file; throws std::runtime_error with the system's reason.
    explicit SharedLibrary(const std::string &file);
    ~SharedLibrary();
    SharedLibrary(const SharedLibrary &) = delete;
    SharedLibrary &operator=(const SharedLibrary &) = delete;

    /// The exported function of that name, or null.
    template <typename Function>
    Function function(const char *name) const
    {
        return reinterpret_cast<Function>(symbol(name));
    }

#ifdef _WIN32
    /// The function exported under that ordinal, or null.
    template <typename Function>
    Function function(unsigned short ordinal) const
    {
        return reinterpret_cast<Function>(symbol(reinterpret_cast<const char *>(static_cast<size_t>(ordinal))));
    }
#endif

private:
    using Symbol = void (*)();
    Symbol symbol(const char *name) const;

    void *handle_;
};

}  // namespace curvebank::platform
