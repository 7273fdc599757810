// A worksheet in memory, as the library's diagnostic command works on one.

#pragma once

#include <map>
#include <string>
#include <vector>

#include "curvebank/curvebank.h"

namespace curvebank::program {

/// Named columns of numbers; NaN is an empty cell.
class Worksheet {
public:
    /// Adds or replaces a column. Its rows are those of the range that a host reports for it.
    void add(const std::string &name, std::vector<double> cells) { columns_[name] = std::move(cells); }

    const std::vector<double> &column(const std::string &name) const { return columns_.at(name); }

    /// Runs one command on this worksheet and says whether it was handled.
    bool run(const std::string &name_text, const std::string &command_text, const std::string &column_text,
             int message);

    /// The values of the last command's parameters, and why one had none (empty otherwise).
    const std::vector<double> &numbers() const { return numbers_; }
    const std::string &failure() const { return failure_; }

private:
    static intptr_t answer(intptr_t, int32_t request, const void *a, void *b);
    intptr_t find_column(const char *name, RowRange *rows);
    intptr_t eval_number(const char *text, double *value);
    static intptr_t access_cell(int32_t request, std::vector<double> *column, CellRecord *cell);

    std::map<std::string, std::vector<double>> columns_;  // a map, because handles are addresses of columns
    std::vector<double> numbers_;
    std::string failure_;
};

}  // namespace curvebank::program
