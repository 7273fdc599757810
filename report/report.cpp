#include "report/report.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace curvebank::report {
namespace {

/// A number with enough digits to see a good fit's precision, or a dash where there is none.
std::string digits(double value, int count)
{
    return std::isnan(value) ? "-" : fmt::format("{:.{}g}", value, count);
}

/// The ends of an interval, with enough digits to see its width.
std::string interval_text(const fit::Estimate &estimate)
{
    const double size = std::max(std::fabs(estimate.lower), std::fabs(estimate.upper));
    const double width = estimate.upper - estimate.lower, beyond = width > 0 ? std::log10(size / width) : 0;
    const int count = std::clamp(static_cast<int>(beyond) + 4, 8, 15);
    return fmt::format("{:>16} {:>17}", digits(estimate.lower, count), digits(estimate.upper, count));
}

/// Orders by absolute value; a NaN is smaller than any number.
bool smaller_in_size(double a, double b)
{
    return std::isnan(a) ? !std::isnan(b) : std::fabs(a) < std::fabs(b);
}

/// Why a parameter has no interval.
std::string_view note(const fit::Estimate &estimate)
{
    if (estimate.fixed) return "fixed";
    if (estimate.at_bound) return "at its bound";
    return "none";
}

/// The place of the largest of a term's shares.
std::string largest_share(const std::vector<double> &share, const ReportContext &context, const Columns &x)
{
    const auto largest = std::max_element(share.begin(), share.end(), smaller_in_size);
    std::vector<std::string> place;
    for (size_t i = 0; i < x.size(); ++i)
        place.push_back(
            fmt::format("{} = {}", context.x_names[i], digits(x[i][static_cast<size_t>(largest - share.begin())], 6)));
    return fmt::format("largest share {} at {}", digits(*largest, 6), fmt::join(place, ", "));
}

}  // namespace

std::string_view sentence(fit::Verdict verdict)
{
    switch (verdict) {
        case fit::Verdict::converged: return "the parameters are at a minimum of the sum of squares";
        case fit::Verdict::exact: return "the curve goes through the data but for rounding";
        case fit::Verdict::no_influence: return "a parameter does nothing that the data could see";
        case fit::Verdict::not_separated: return "the data do not determine all parameters separately";
        case fit::Verdict::runs_to_infinity: return "the fit improves the further a parameter grows";
        case fit::Verdict::no_better_than_constant: return "a constant would do as well";
        case fit::Verdict::no_progress: return "no step improves the fit, and yet it is at no minimum";
        case fit::Verdict::iteration_limit: return "the limit of iterations was reached";
        case fit::Verdict::domain_left: return "the model's domain was left";
        case fit::Verdict::overflow: return "the numbers became too large";
        case fit::Verdict::stopped: return "the fit was stopped";
    }
    return "";
}

std::string fit_report(const fit::Result &result, const ReportContext &context, const Columns &x,
                       const Columns &shares)
{
    const reference::ModelReference &about = *context.model;
    std::string text = fmt::format("{}: {}\n", about.name, about.title);
    text += fmt::format("    {} = {}\n", about.implicit ? "0" : context.y_names[0], about.text());
    if (!about.second.empty()) text += fmt::format("    {} = {}\n", context.y_names[1], about.second);
    text += fmt::format("\nData: {}, {} points", context.data_file, x[0].size());
    if (context.skipped_rows > 0)
        text +=
            fmt::format(" ({} rows skipped: a cell was missing, unreadable or not allowed)", context.skipped_rows);
    if (!context.weights_name.empty()) text += fmt::format(", weighted by {}", context.weights_name);
    text += "\n\n";

    size_t width = 9;
    for (const auto &estimate : result.parameters) width = std::max(width, estimate.name.size());
    const std::string interval = fmt::format("{:g}% confidence interval", 100 * result.confidence);
    text +=
        fmt::format("{:<{}}  {:>21}  {:>14}  {:>34}\n", "Parameter", width, "Estimate", "Standard error", interval);
    for (const fit::Estimate &estimate : result.parameters) {
        const std::string range = std::isnan(estimate.lower) ? std::string(note(estimate)) : interval_text(estimate);
        text += fmt::format("{:<{}}  {:>21}  {:>14}  {:>34}\n", estimate.name, width, digits(estimate.value, 13),
                            digits(estimate.standard_error, 6), range);
    }
    const auto line = [&text](std::string_view label, std::string_view value) {
        text += fmt::format("{:<28}{}\n", label, value);
    };
    text += "\n";
    if (shares.size() > 1) {
        for (size_t k = 0; k < shares.size(); ++k)
            line(fmt::format("Term {}", k + 1), largest_share(shares[k], context, x));
        text += "\n";
    }
    line("Residual sum of squares", digits(result.sum_of_squares, 13));
    line("Residual standard deviation", digits(result.residual_sd, 13));
    line("Degrees of freedom", fmt::format("{}", result.degrees_of_freedom));
    line("R squared", digits(result.r_squared, 13));
    line("Adjusted R squared", digits(result.adjusted_r_squared, 13));
    line("AICc", digits(result.aicc, 10));
    line("Relative offset", digits(result.relative_offset, 3));
    line("Iterations", fmt::format("{}", result.iterations));
    text += "\n";
    line(is_success(result.verdict) ? "Converged" : "NOT CONVERGED", sentence(result.verdict));
    for (const std::string &remark : result.notes) line("", remark);
    return text;
}

Comparison compare(const fit::Result &result, const std::vector<double> &certified)
{
    Comparison comparison{fmt::format("{:<10}  {:>22}  {:>22}  {}\n", "Parameter", "Certified", "Found", "Digits"),
                          99};
    for (size_t i = 0; i < certified.size(); ++i) {
        const double found = result.parameters[i].value, error = std::fabs(found - certified[i]);
        // Certified values have 15 digits at the most; agreement beyond them is not counted.
        const double agree = error == 0 ? 15 : std::clamp(-std::log10(error / std::fabs(certified[i])), 0.0, 15.0);
        comparison.fewest_digits = std::min(comparison.fewest_digits, agree);
        comparison.text += fmt::format("{:<10}  {:>22.15g}  {:>22.15g}  {:>6.1f}\n", result.parameters[i].name,
                                       certified[i], found, agree);
    }
    return comparison;
}

}  // namespace curvebank::report
