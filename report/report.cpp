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

/// Orders by absolute value; a NaN is smaller than any number.
bool smaller_in_size(double a, double b)
{
    return std::isnan(a) ? !std::isnan(b) : std::fabs(a) < std::fabs(b);
}

std::string note(const fit::ParameterEstimate &estimate)
{
    if (estimate.fixed) return "fixed";
    if (estimate.at_bound) return "at its bound";
    return "";
}

std::string derivatives(const fit::FitResult &result, const ReportContext &context)
{
    std::vector<std::string> numeric;
    size_t free = 0;
    for (size_t i = 0; i < result.parameters.size(); ++i) {
        free += !result.parameters[i].fixed;
        if (result.parameters[i].numeric_derivative) numeric.push_back(context.parameters[i].name);
    }
    if (numeric.empty()) return "the model's own";
    if (numeric.size() == free) return "numeric: the model's own are missing or not the exact partials";
    return fmt::format("the model's own; numeric for {}, where the model's are missing or not the exact partials",
                       fmt::join(numeric, ", "));
}

}  // namespace

std::string fit_report(const fit::FitResult &result, const ReportContext &context, const fit::Data &data,
                       const fit::Rows &shares)
{
    const reference::ModelReference &about = *context.model;
    std::string text = fmt::format("{}: {}\n", about.name, about.title);
    text += fmt::format("    {} = {}\n", about.implicit ? "0" : context.y_names[0], about.text());
    if (!about.second.empty()) text += fmt::format("    {} = {}\n", context.y_names[1], about.second);
    text += fmt::format("\nData: {}, {} points", context.data_file, data.x[0].size());
    if (context.skipped_rows > 0)
        text +=
            fmt::format(" ({} rows skipped: a cell was missing, unreadable or not allowed)", context.skipped_rows);
    if (!context.weights_name.empty()) text += fmt::format(", weighted by {}", context.weights_name);
    text += "\n\n";

    size_t width = 9;
    for (const auto &parameter : context.parameters) width = std::max(width, parameter.name.size());
    const std::string interval = fmt::format("{:g}% confidence interval", 100 * result.confidence);
    text +=
        fmt::format("{:<{}}  {:>21}  {:>14}  {:>34}\n", "Parameter", width, "Estimate", "Standard error", interval);
    for (size_t i = 0; i < result.parameters.size(); ++i) {
        const fit::ParameterEstimate &estimate = result.parameters[i];
        const std::string range =
            std::isnan(estimate.lower)
                ? note(estimate)
                : fmt::format("{:>16} {:>17}", digits(estimate.lower, 8), digits(estimate.upper, 8));
        text += fmt::format("{:<{}}  {:>21}  {:>14}  {:>34}\n", context.parameters[i].name, width,
                            digits(estimate.value, 13), digits(estimate.standard_error, 6), range);
    }
    for (size_t k = 0; shares.width() > 1 && k < shares.width(); ++k) {
        const std::vector<double> share = shares.column(k);
        const auto largest = std::max_element(share.begin(), share.end(), smaller_in_size);
        if (k == 0) text += "\n";
        std::vector<std::string> place;
        for (size_t i = 0; i < data.x.size(); ++i) {
            const double x = data.x[i][static_cast<size_t>(largest - share.begin())];
            place.push_back(fmt::format("{} = {}", context.x_names[i], digits(x, 6)));
        }
        text += fmt::format("{:<28}largest share {} at {}\n", fmt::format("Term {}", k + 1), digits(*largest, 6),
                            fmt::join(place, ", "));
    }
    const auto line = [&text](const char *label, const std::string &value) {
        text += fmt::format("{:<28}{}\n", label, value);
    };
    text += "\n";
    line("Residual sum of squares", digits(result.sum_of_squares, 13));
    line("Residual standard deviation", digits(result.residual_sd, 13));
    line("R squared", digits(result.r_squared, 13));
    line("Degrees of freedom", fmt::format("{}", result.degrees_of_freedom));
    line("Iterations", fmt::format("{}", result.iterations));
    line("Derivatives", derivatives(result, context));
    line(result.converged ? "Converged" : "NOT CONVERGED", result.stop_reason);
    if (result.dependent)
        line("Warning", "the data do not determine all parameters separately; there are no standard errors");
    return text;
}

Comparison compare(const fit::FitResult &result, const ReportContext &context, const std::vector<double> &certified)
{
    Comparison comparison{fmt::format("{:<10}  {:>22}  {:>22}  {}\n", "Parameter", "Certified", "Found", "Digits"),
                          99};
    for (size_t i = 0; i < certified.size(); ++i) {
        const double found = result.parameters[i].value, error = std::fabs(found - certified[i]);
        // Certified values have 15 digits at the most; agreement beyond them is not counted.
        const double agree = error == 0 ? 15 : std::clamp(-std::log10(error / std::fabs(certified[i])), 0.0, 15.0);
        comparison.fewest_digits = std::min(comparison.fewest_digits, agree);
        comparison.text += fmt::format("{:<10}  {:>22.15g}  {:>22.15g}  {:>6.1f}\n", context.parameters[i].name,
                                       certified[i], found, agree);
    }
    return comparison;
}

}  // namespace curvebank::report
