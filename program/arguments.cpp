#include "program/arguments.h"

#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <boost/algorithm/string/split.hpp>
#include <boost/algorithm/string/trim.hpp>

#include "formula/evaluate.h"
#include "formula/formula.h"
#include "platform/error.h"
#include "table/number.h"

namespace curvebank::program {

double parse_number(const std::string &text, const std::string &option)
{
    if (const auto value = table::read_number(text)) return *value;
    try {
        return formula::evaluate<double>(formula::Formula::parse(text), {});
    } catch (const formula::FormulaError &) {
        throw Error(fmt::format("{}: {} is no number", option, text));
    }
}

std::vector<std::string> split(const std::string &text, char separator)
{
    std::vector<std::string> parts;
    boost::split(parts, text, [separator](char c) { return c == separator; });
    for (std::string &part : parts) boost::trim(part);
    return parts;
}

size_t find_parameter(const std::vector<reference::NamedParameter> &parameters, const std::string &name,
                      const std::string &option)
{
    for (size_t i = 0; i < parameters.size(); ++i)
        if (parameters[i].name == name) return i;
    std::vector<std::string> names;
    for (const auto &parameter : parameters) names.push_back(parameter.name);
    throw Error(fmt::format("{}: no parameter {}; the parameters are {}", option, name, fmt::join(names, ", ")));
}

std::vector<bool> assign(const std::string &text, const std::string &option,
                         const std::vector<reference::NamedParameter> &parameters, std::vector<double> &values)
{
    std::vector<bool> set(parameters.size(), false);
    if (text.empty()) return set;
    const std::vector<std::string> parts = split(text, ',');
    if (text.find('=') == std::string::npos) {
        if (parts.size() != parameters.size())
            throw Error(fmt::format("{}: {} values given, but there are {} parameters", option, parts.size(),
                                    parameters.size()));
        for (size_t i = 0; i < parts.size(); ++i) values[i] = parse_number(parts[i], option);
        set.assign(parameters.size(), true);
        return set;
    }
    for (const std::string &part : parts) {
        const size_t equals = part.find('=');
        if (equals == std::string::npos) throw Error(fmt::format("{}: {} is no name=value", option, part));
        const size_t i = find_parameter(parameters, part.substr(0, equals), option);
        values[i] = parse_number(part.substr(equals + 1), option);
        set[i] = true;
    }
    return set;
}

std::vector<double> parse_range(const std::string &text, const std::string &option)
{
    const std::vector<std::string> parts = split(text, ':');
    std::vector<double> x;
    if (parts.size() == 1) {
        for (const std::string &part : split(text, ',')) x.push_back(parse_number(part, option));
        return x;
    }
    if (parts.size() != 3) throw Error(option + " takes start:end:step or a list of numbers, not " + text);
    const double start = parse_number(parts[0], option), end = parse_number(parts[1], option),
                 step = parse_number(parts[2], option);
    // The end counts as reached where the steps miss it by their rounding only.
    const double steps = std::floor((end - start) / step * (1 + 1e-12) + 1e-9);
    if (!(steps >= 0 && steps < 1e7)) throw Error(option + ": " + text + " is no range of 1 to 10 million points");
    for (int i = 0; i <= static_cast<int>(steps); ++i) x.push_back(start + i * step);
    return x;
}

}  // namespace curvebank::program
