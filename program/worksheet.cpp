#include "program/worksheet.h"

#include <cmath>
#include <limits>

#include "platform/error.h"
#include "program/arguments.h"

namespace curvebank::program {
namespace {

/// The callback has no context of its own: this is the worksheet that the running command works on.
thread_local Worksheet *current = nullptr;

}  // namespace

bool Worksheet::run(const std::string &name_text, const std::string &command_text, const std::string &column_text,
                    int message)
{
    numbers_.clear();
    failure_.clear();
    current = this;
    return FuncTest(nullptr, name_text.c_str(), command_text.c_str(), column_text.c_str(), answer,
                    static_cast<uint16_t>(message)) != 0;
}

intptr_t Worksheet::answer(intptr_t, int32_t request, const void *a, void *b)
{
    auto *column = static_cast<std::vector<double> *>(const_cast<void *>(a));
    switch (request) {
        case HOST_FIND_COLUMN:
            return current->find_column(static_cast<const char *>(a), static_cast<RowRange *>(b));
        case HOST_EVAL_NUMBER:
            return current->eval_number(static_cast<const char *>(a), static_cast<double *>(b));
        case HOST_GET_CELL:
        case HOST_SET_CELL:
            return access_cell(request, column, static_cast<CellRecord *>(b));
        default:
            return 0;  // nothing here needs to hear of updates
    }
}

intptr_t Worksheet::find_column(const char *name, RowRange *rows)
{
    const auto found = columns_.find(name);
    if (found == columns_.end()) return 0;
    if (rows) *rows = {0, static_cast<int64_t>(found->second.size())};
    return reinterpret_cast<intptr_t>(&found->second);
}

intptr_t Worksheet::eval_number(const char *text, double *value)
{
    try {
        *value = parse_number(text, "--params");
    } catch (const Error &error) {  // must not pass through the library, which is C to its callers
        failure_ = error.what();
        return 1;
    }
    numbers_.push_back(*value);
    return 0;
}

intptr_t Worksheet::access_cell(int32_t request, std::vector<double> *column, CellRecord *cell)
{
    if (!column || cell->row < 0 || static_cast<size_t>(cell->row) >= column->size()) return 1;
    double &stored = (*column)[static_cast<size_t>(cell->row)];
    if (request == HOST_SET_CELL) {
        stored = cell->value == MISSING_VALUE ? std::numeric_limits<double>::quiet_NaN() : cell->value;
        return 0;
    }
    cell->value = stored;
    return std::isnan(stored);
}

}  // namespace curvebank::program
