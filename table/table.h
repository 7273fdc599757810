// Tables of numbers in text files.

#pragma once

#include <string>
#include <vector>

namespace curvebank::table {

/// Columns of equal length. A cell that is missing, unreadable or not finite holds NaN.
struct Table {
    std::vector<std::string> names;
    std::vector<std::vector<double>> columns;

    size_t rows() const { return columns.empty() ? 0 : columns.front().size(); }

    /// The column of that name (ignoring case) or, where no column has it, of that number from 1.
    /// Throws Error naming the columns there are.
    size_t column(const std::string &name) const;
};

/// Reads a text file of rows separated by commas, semicolons or tabs, quoted as in CSV. Lines that begin with # are
/// comments. The first row is the header unless all its cells are numbers. Throws Error.
Table read_table(const std::string &file);

/// Writes the columns as CSV with a header, every number with all its digits, NaN as an empty cell. Throws Error.
void write_table(const std::string &file, const Table &table);

/// The table as CSV text.
std::string csv_text(const Table &table);

}  // namespace curvebank::table
