// What a fit found, as text to read and as a table to go on with.

#pragma once

#include <string>
#include <vector>

#include "fit/fit.h"

namespace curvebank::report {

/// What a report says besides the result itself.
struct ReportContext {
    const reference::ModelReference *model = nullptr;
    std::vector<reference::NamedParameter> parameters;  ///< names and meanings in order
    std::string data_file, weights_name;
    std::vector<std::string> x_names, y_names;  ///< an implicit model has no y
    size_t skipped_rows = 0;
};

/// The report, with what each of several terms contributes at the points of the data.
std::string fit_report(const fit::FitResult &result, const ReportContext &context, const fit::Data &data,
                       const fit::Rows &shares);

/// Certified parameters beside the found ones, and the number of digits on which they agree.
struct Comparison {
    std::string text;
    double fewest_digits;
};
Comparison compare(const fit::FitResult &result, const ReportContext &context,
                   const std::vector<double> &certified);

}  // namespace curvebank::report
