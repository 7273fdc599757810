#include "platform/names.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace curvebank::platform {

#ifdef _WIN32

bool same_name(const char *a, const char *b)
{
    return a && b && lstrcmpiA(a, b) == 0;
}

bool is_letter_or_digit(unsigned char c)
{
    return IsCharAlphaNumericW(c) != FALSE;
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

/// The letters and digits of Latin-1, superscript digits among them, whatever the locale.
bool is_letter_or_digit(unsigned char c)
{
    if (c < 0x80) return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    constexpr unsigned char multiplication = 0xd7, division = 0xf7;
    if (c >= 0xc0) return c != multiplication && c != division;
    return c == 0xaa || c == 0xb2 || c == 0xb3 || c == 0xb5 || c == 0xb9 || c == 0xba;  // ª ² ³ µ ¹ º
}

#endif

}  // namespace curvebank::platform
