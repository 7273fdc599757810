#include "platform/window.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <cstdio>
#endif

#include "curvebank/curvebank.h"

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

#endif

}  // namespace curvebank::platform
