#include "program/commands.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "program/known_model.h"
#include "reference/reference.h"

namespace curvebank::program {
namespace {

using reference::ModelReference;

std::string sample_range(const ModelReference &about)
{
    std::vector<std::string> ranges;
    for (size_t i = 0; i < about.sample_ranges.size(); ++i)
        ranges.push_back(fmt::format("{} from {} to {}", ModelReference::variables[i], about.sample_ranges[i].low,
                                     about.sample_ranges[i].high));
    return fmt::format("{}", fmt::join(ranges, ", "));
}

std::string range_text(const reference::RangeReference &range)
{
    if (std::isfinite(range.high)) return fmt::format("{} to {}", range.low, range.high);
    return std::isfinite(range.low) ? fmt::format("> {}", range.low) : "";
}

/// The parameters as a table, every column as wide as its longest text.
void print_parameters(const ModelReference &about)
{
    std::vector<std::array<std::string, 5>> rows = {{"name", "unit", "kind", "range", "meaning"}};
    for (const auto &parameters : {about.parameters, about.repeated})
        for (const auto &parameter : parameters)
            rows.push_back({std::string(parameter.name), std::string(parameter.unit),
                            std::string(word(parameter.kind)), range_text(parameter.range),
                            std::string(parameter.meaning)});
    std::array<size_t, 4> widths{};
    for (const auto &row : rows)
        for (size_t i = 0; i < widths.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    for (const auto &row : rows) {
        std::string line = "    ";
        for (size_t i = 0; i < widths.size(); ++i)
            if (widths[i] > 0) line += fmt::format("{:<{}}  ", row[i], widths[i]);
        fmt::print("{}{}\n", line, row.back());
    }
}

/// What ties the unit of a variable, or of the "residual", to the others, in words.
std::string tie_text(const reference::UnitReference &tie)
{
    const std::string subject = tie.variable == "residual" ? "the residual" : std::string(tie.variable);
    if (tie.expression == "1") return subject + " has no unit";
    if (tie.expression == "volt") return subject + " is in volt";
    return fmt::format("{} has the unit of {}", subject, tie.expression);
}

std::string width_text(const ModelReference &about, std::string_view width)
{
    if (width.empty()) return "";
    if (width == "numeric") return "at half of the maximum: no closed form";
    return fmt::format("{} at half of the maximum{}", width,
                       about.fwhm_approximate ? ", to 5 % for shapes like that of the sample" : "");
}

}  // namespace

void show(const std::string &name)
{
    const KnownModel model = find_model(name);
    const ModelReference *const about = model.about;
    const ExportedModel *exported = find_export(about->name);
    const auto line = [](const char *label, std::string_view text) {
        if (!text.empty()) fmt::print("{:<14}{}\n", label, text);
    };
    fmt::print("{}: {}\n\n", about->name, about->title);
    const auto first_value = static_cast<size_t>(std::min(about->variable_count(), 2));
    const char *value = about->implicit ? "0" : ModelReference::variables[first_value];
    line("Formula", about->placeholder
                        ? about->text()
                        : fmt::format("{}{} = {}", value, about->second.empty() ? "" : "1", about->text()));
    if (!about->second.empty()) line("", fmt::format("{}2 = {}", value, about->second));
    if (about->tolerance > ModelReference().tolerance)
        line("", fmt::format("an approximation of what the library computes, to {:g} of it", about->tolerance));
    line("Domain", about->domain);
    line("Source", about->source);
    line("Variables", fmt::format("{} independent, {} dependent", model.nIndep, model.nDep));
    std::string count = std::to_string(model.nParams);
    if (!about->repeated.empty())
        count += about->most_terms() > 1
                     ? fmt::format(" as listed; {} more for every further term", about->repeated.size())
                     : " as listed; a call computes one term";
    else if (std::cmp_greater(about->parameters.size(), model.nParams))
        count += fmt::format(" by its count, but all {} entries of p and dy are used", about->parameters.size());
    line("Parameters", count);
    if (!about->placeholder) print_parameters(*about);
    if (!about->second.empty())
        line("Units", fmt::format("{0} is the unit of {0}1, {1} that of {0}2", value,
                                  ModelReference::variables[first_value + 1]));
    std::vector<std::string> ties;
    for (const auto &tie : about->units) ties.push_back(tie_text(tie));
    line(about->second.empty() ? "Units" : "",
         fmt::format("{}{}{}", fmt::join(ties, ", "), about->units_why.empty() ? "" : ": ", about->units_why));
    if (!about->shifts.empty())
        line("Shifts",
             fmt::format("the parameters can move the curve along {}", fmt::join(about->shifts, " and ")));
    line("Full width", width_text(*about, about->fwhm));
    line("Second width", width_text(*about, about->fwhm_second));
    line("Export", exported ? fmt::format("{} (ordinal {})", exported->name, exported->ordinal)
                            : "only through the catalogue");
    if (!about->derivatives) line("Derivatives", "none: the model gives its value only");
    for (const auto &[entry, what] : about->inexact)
        line("Derivatives", fmt::format("entry {} is {}", entry, what));
    if (!about->sample_parameters.empty())
        line("Sample", fmt::format("{} for {}", fmt::join(about->sample_parameters, ", "), sample_range(*about)));
}

}  // namespace curvebank::program
