// Command-line arguments as a user writes them.

#pragma once

#include <string>
#include <vector>

#include "reference/reference.h"

namespace curvebank::program {

/// The parts between the separators, without surrounding blanks.
std::vector<std::string> split(const std::string &text, char separator);

/// A whole text as a number, or a formula without names, such as "2*pi". Throws Error naming the option.
double parse_number(const std::string &text, const std::string &option);

/// The position of a parameter. Throws Error naming the option and the parameters there are.
size_t find_parameter(const std::vector<reference::NamedParameter> &parameters, const std::string &name,
                      const std::string &option);

/// Reads "1,2,3" (one value a parameter) or "name=value,..." into values; says which were set. Throws Error.
std::vector<bool> assign(const std::string &text, const std::string &option,
                         const std::vector<reference::NamedParameter> &parameters, std::vector<double> &values);

/// Reads "start:end:step" or "x1,x2,...". Throws Error.
std::vector<double> parse_range(const std::string &text, const std::string &option);

}  // namespace curvebank::program
