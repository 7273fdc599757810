#include "table/number.h"

#include <charconv>
#include <cmath>

namespace curvebank::table {

std::optional<double> read_number(std::string_view text)
{
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || stop != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

}  // namespace curvebank::table
