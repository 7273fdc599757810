// The parts of the diagnostic command that stand alone; the command itself, FuncTest, is declared for hosts.

#pragma once

#include <array>

#include "curvebank/curvebank.h"

namespace curvebank {

/// Sends "type NAME" to the window for every row of the catalogue.
void list_catalogue(void *window);

using Token = std::array<char, 256>;  // far more than any number or name takes

/// Reads one word of a list that spaces and commas separate, and answers the position of the next one: the string's
/// end after the last word, where a further call answers null. Null, and a word that does not count, also at a
/// character that is neither part of a word nor a separator, and where a word is longer than the token.
const char *next_token(const char *text, Token &token);

}  // namespace curvebank
