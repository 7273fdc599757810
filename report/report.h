// What a fit found, as text to read.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "curvebank/fit/fit.h"
#include "reference/reference.h"

namespace curvebank::report {

using Columns = std::vector<std::vector<double>>;

/// What a report says besides the result itself.
struct ReportContext {
    const reference::ModelReference *model = nullptr;
    std::string data_file, weights_name;
    std::vector<std::string> x_names, y_names;  ///< an implicit model has no y
    size_t skipped_rows = 0;
};

/// How a fit ended, as a person says it.
std::string_view sentence(fit::Verdict verdict);

/// The result of a fit to points at x, where each of several terms has the shares in a column of its own.
std::string fit_report(const fit::Result &result, const ReportContext &context, const Columns &x,
                       const Columns &shares);

/// Certified parameters beside the found ones, and the number of digits on which they agree.
struct Comparison {
    std::string text;
    double fewest_digits;
};
Comparison compare(const fit::Result &result, const std::vector<double> &certified);

}  // namespace curvebank::report
