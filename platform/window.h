// Lines of text for a window, and the system's notion of letters and digits.

#pragma once

#include <array>

namespace curvebank::platform {

using Line = std::array<char, 64>;  // room for a short word and a catalogue name

/// The line of a format with one %s and a text for it. Both together must fit.
Line format_line(const char *format, const char *text);

/// Sends the line to a window and waits until it is processed. A null window receives nothing.
void send_line(void *window, const Line &line);

/// Whether the system counts this character, read as Latin-1, as a letter or a digit.
bool is_letter_or_digit(unsigned char c);

}  // namespace curvebank::platform
