// Numbers as text.

#pragma once

#include <optional>
#include <string_view>

namespace curvebank::table {

/// A whole text as a finite number, with or without a sign; nothing where it is none.
std::optional<double> read_number(std::string_view text);

}  // namespace curvebank::table
