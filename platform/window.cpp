#include "platform/window.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <cstdio>
#endif

#include "frame/curvebank.h"

namespace curvebank::platform {

#ifdef _WIN32

Line format_line(const char *format, const char *text)
{
    Line line{};
    wsprintfA(line.data(), format, text);
    return line;
}

/// The text stays 8-bit although the wide routine sends it: the message is an application's own, whose parameters
/// the system passes on unconverted.
void send_line(void *window, const Line &line)
{
    SendMessageW(static_cast<HWND>(window), FUNC_TEST_LINE, 0, reinterpret_cast<LPARAM>(line.data()));
}

bool is_letter_or_digit(unsigned char c)
{
    return IsCharAlphaNumericW(c) != FALSE;
}

#else

Line format_line(const char *format, const char *text)
{
    Line line{};
    std::snprintf(line.data(), line.size(), format, text);
    return line;
}

void send_line(void *window, const Line &line)
{
    auto *host = static_cast<HostWindow *>(window);
    if (host) host->procedure(host, FUNC_TEST_LINE, 0, reinterpret_cast<intptr_t>(line.data()));
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
