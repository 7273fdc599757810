#include "platform/shared_library.h"

#include <stdexcept>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace curvebank::platform {

#ifdef _WIN32

SharedLibrary::SharedLibrary(const std::string &file) : handle_(LoadLibraryA(file.c_str()))
{
    if (!handle_) throw std::runtime_error(file + ": Windows error " + std::to_string(GetLastError()));
}

SharedLibrary::~SharedLibrary()
{
    FreeLibrary(static_cast<HMODULE>(handle_));
}

SharedLibrary::Symbol SharedLibrary::symbol(const char *name) const
{
    return reinterpret_cast<Symbol>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

#else

SharedLibrary::SharedLibrary(const std::string &file) : handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (!handle_) throw std::runtime_error(dlerror());
}

SharedLibrary::~SharedLibrary()
{
    dlclose(handle_);
}

SharedLibrary::Symbol SharedLibrary::symbol(const char *name) const
{
    return reinterpret_cast<Symbol>(dlsym(handle_, name));
}

#endif

}  // namespace curvebank::platform
