// Names and words as the system reads them: when two are the same, and which characters they are made of.

#pragma once

namespace curvebank::platform {

/// Whether two names are equal, ignoring case. A null name equals no name.
bool same_name(const char *a, const char *b);

/// Whether the system counts this character, read as Latin-1, as a letter or a digit.
bool is_letter_or_digit(unsigned char c);

}  // namespace curvebank::platform
