#include "platform/name_compare.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace curvebank::platform {

#ifdef _WIN32

bool same_name(const char *a, const char *b)
{
    return a && b && lstrcmpiA(a, b) == 0;
}

#else

namespace {

/// Independent of the locale, as the C library's tolower is not.
char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

bool same_name(const char *a, const char *b)
{
    if (!a || !b) return false;
    while (*a && lower(*a) == lower(*b)) ++a, ++b;
    return lower(*a) == lower(*b);
}

#endif

}  // namespace curvebank::platform
