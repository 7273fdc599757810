#include "table/table.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>

#include <csv.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "platform/error.h"
#include "platform/names.h"
#include "table/number.h"

namespace curvebank::table {
namespace {

using Row = std::vector<std::string>;

constexpr double missing = std::numeric_limits<double>::quiet_NaN();

/// The file without its comments and byte order mark.
std::string read_text(const std::string &file)
{
    std::ifstream in(file);
    if (!in) throw Error("cannot read " + file);
    std::string text, line;
    while (std::getline(in, line)) {
        if (text.empty() && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
        if (!line.starts_with('#')) text += line + '\n';
    }
    if (in.bad()) throw Error("cannot read " + file);
    return text;
}

char separator(const std::string &text)
{
    const std::string first = text.substr(0, text.find('\n'));
    for (const char c : {'\t', ';'})
        if (first.find(c) != std::string::npos) return c;
    return ',';
}

std::vector<Row> split(const std::string &text, const std::string &file)
{
    struct State {
        std::vector<Row> rows;
        Row row;
    } state;
    csv_parser parser;
    if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI) != 0) throw Error("cannot read " + file);
    csv_set_delim(&parser, static_cast<unsigned char>(separator(text)));
    const auto cell = [](void *field, size_t length, void *data) {
        static_cast<State *>(data)->row.emplace_back(static_cast<const char *>(field), length);
    };
    const auto end_of_row = [](int, void *data) {
        auto *target = static_cast<State *>(data);
        target->rows.push_back(std::move(target->row));
        target->row.clear();
    };
    const bool read = csv_parse(&parser, text.data(), text.size(), cell, end_of_row, &state) == text.size() &&
                      csv_fini(&parser, cell, end_of_row, &state) == 0;
    csv_free(&parser);
    if (!read)
        throw Error(file + " is no table: its quotes do not match in row " + std::to_string(state.rows.size() + 1));
    return std::move(state.rows);
}

}  // namespace

size_t Table::column(const std::string &name) const
{
    for (size_t i = 0; i < names.size(); ++i)
        if (platform::same_name(names[i].c_str(), name.c_str())) return i;
    const double position = read_number(name).value_or(missing);
    if (position >= 1 && position <= static_cast<double>(names.size()) && position == std::floor(position))
        return static_cast<size_t>(position) - 1;
    throw Error(fmt::format("no column {}; the columns are {}", name, fmt::join(names, ", ")));
}

Table read_table(const std::string &file)
{
    std::vector<Row> rows = split(read_text(file), file);
    if (rows.empty()) throw Error(file + " is empty");

    Table table;
    const Row first = rows.front();
    const bool header =
        std::any_of(first.begin(), first.end(), [](const auto &cell) { return !read_number(cell); });
    if (header) {
        table.names = first;
        rows.erase(rows.begin());
    } else {
        for (size_t i = 1; i <= first.size(); ++i) table.names.push_back("column" + std::to_string(i));
    }
    table.columns.resize(table.names.size());
    for (const Row &row : rows)
        for (size_t i = 0; i < table.columns.size(); ++i)
            table.columns[i].push_back(i < row.size() ? read_number(row[i]).value_or(missing) : missing);
    return table;
}

std::string csv_text(const Table &table)
{
    std::string text = fmt::format("{}\n", fmt::join(table.names, ","));
    for (size_t row = 0; row < table.rows(); ++row) {
        for (size_t i = 0; i < table.columns.size(); ++i) {
            const double value = table.columns[i][row];
            if (i > 0) text += ',';
            if (!std::isnan(value)) text += fmt::format("{}", value);
        }
        text += '\n';
    }
    return text;
}

void write_table(const std::string &file, const Table &table)
{
    std::ofstream out(file);
    out << csv_text(table);
    out.close();
    if (!out) throw Error("cannot write " + file);
}

}  // namespace curvebank::table
