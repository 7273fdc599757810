// What a fit found, as text to read and as a table to go on with.

#pragma once

#include <string>
#include <vector>

#include "host/fit.h"
#include "host/table.h"

namespace curvebank::host {

/// What a report says besides the result itself.
struct ReportContext {
    const ModelReference *model = nullptr;
    std::vector<ParameterReference> parameters;  ///< names and meanings in order
    std::string data_file, weights_name;
    std::vector<std::string> x_names, y_names;  ///< an implicit model has no y
    size_t skipped_rows = 0;
};

/// values[first], values[first + step], ...: one column of values stored row by row.
std::vector<double> every(const std::vector<double> &values, size_t step, size_t first);

/// What each of several terms contributes at the points of the data.
struct Shares {
    int terms = 0;
    std::vector<double> rows;  ///< terms values a point

    std::vector<double> of_term(int term) const;
};

std::string fit_report(const FitResult &result, const ReportContext &context, const Data &data,
                       const Shares &shares);

/// Certified parameters beside the found ones, and the number of digits on which they agree.
struct Comparison {
    std::string text;
    double fewest_digits;
};
Comparison compare(const FitResult &result, const ReportContext &context, const std::vector<double> &certified);

/// The data with the fitted values, the residuals and each term's share.
Table fit_table(const FitResult &result, const ReportContext &context, const Data &data, const Shares &shares);

}  // namespace curvebank::host
