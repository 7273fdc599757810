#include "host/report.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace curvebank::host {
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

std::string note(const ParameterEstimate &estimate)
{
    if (estimate.fixed) return "fixed";
    if (estimate.at_bound) return "at its bound";
    return "";
}

std::string derivatives(const FitResult &result, const ReportContext &context)
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

std::vector<double> Shares::of_term(int term) const
{
    std::vector<double> values;
    for (auto i = static_cast<size_t>(term); i < rows.size(); i += static_cast<size_t>(terms))
        values.push_back(rows[i]);
    return values;
}

std::string fit_report(const FitResult &result, const ReportContext &context, const Data &data,
                       const Shares &shares)
{
    std::string text = fmt::format("{}: {}\n    {} = {}\n\n", context.model->name, context.model->title,
                                   context.y_name, context.model->text());
    text += fmt::format("Data: {}, {} points", context.data_file, result.residuals.size());
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
        const ParameterEstimate &estimate = result.parameters[i];
        const std::string range =
            std::isnan(estimate.lower)
                ? note(estimate)
                : fmt::format("{:>16} {:>17}", digits(estimate.lower, 8), digits(estimate.upper, 8));
        text += fmt::format("{:<{}}  {:>21}  {:>14}  {:>34}\n", context.parameters[i].name, width,
                            digits(estimate.value, 13), digits(estimate.standard_error, 6), range);
    }
    for (int k = 0; shares.terms > 1 && k < shares.terms; ++k) {
        const std::vector<double> share = shares.of_term(k);
        const auto largest = std::max_element(share.begin(), share.end(), smaller_in_size);
        if (k == 0) text += "\n";
        text +=
            fmt::format("{:<28}largest share {} at {} = {}\n", fmt::format("Term {}", k + 1), digits(*largest, 6),
                        context.x_name, digits(data.x[0][static_cast<size_t>(largest - share.begin())], 6));
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

Comparison compare(const FitResult &result, const ReportContext &context, const std::vector<double> &certified)
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

Table fit_table(const FitResult &result, const ReportContext &context, const Data &data, const Shares &shares)
{
    Table table;
    table.names = {context.x_name, context.y_name};
    table.columns = {data.x[0], data.y};
    if (!data.weights.empty()) {
        table.names.push_back(context.weights_name);
        table.columns.push_back(data.weights);
    }
    table.names.insert(table.names.end(), {"fitted", "residual"});
    table.columns.insert(table.columns.end(), {result.fitted, result.residuals});
    for (int k = 0; k < shares.terms; ++k) {
        table.names.push_back(fmt::format("term{}", k + 1));
        table.columns.push_back(shares.of_term(k));
    }
    return table;
}

}  // namespace curvebank::host
