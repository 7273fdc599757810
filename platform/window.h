// Lines of text for a window.

#pragma once

#include <array>

namespace curvebank::platform {

using Line = std::array<char, 64>;  // room for a short word and a catalogue name

/// The line of a format with one %s and a text for it. Both together must fit.
Line format_line(const char *format, const char *text);

/// Sends the line to a window and waits until it is processed. A null window receives nothing.
void send_line(void *window, const Line &line);

}  // namespace curvebank::platform
