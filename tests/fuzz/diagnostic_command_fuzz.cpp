// Commands of arbitrary text for FuncTest, with a host behind it that answers by the rules.
//
// The input is a script, a command a line: message code, name text, command text and column text, separated by '|';
// a text "-" is a null pointer, and a line that begins with '?' comes without a callback. A line that begins with
// '!' lists the requests that the host refuses from then on: find, number, get, set.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "curvebank/curvebank.h"

namespace {

constexpr std::pair<const char *, int32_t> requests[] = {
    {"find", HOST_FIND_COLUMN}, {"number", HOST_EVAL_NUMBER}, {"get", HOST_GET_CELL}, {"set", HOST_SET_CELL}};

void require(bool holds, const char *what)
{
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

/// A worksheet of a few rows; a handle is the address of a column.
struct Sheet {
    static constexpr RowRange rows{1, 4};
    using Column = std::array<double, rows.end>;

    std::map<std::string, Column> columns;
    std::set<int32_t> failing;

    Sheet()
    {
        for (const char *name : {"time", "value"}) columns[name] = {0, 0.75, 0, 2.5};
        for (char c = 'c'; c <= 'm'; ++c) columns[std::string("data1_") + c] = {};
    }

    Column *column(const void *handle)
    {
        for (auto &[name, column] : columns)
            if (&column == handle) return &column;
        require(!handle, "a handle that the host did not give");
        return nullptr;
    }

    intptr_t serve(int32_t request, const void *a, void *b)
    {
        if (failing.contains(request)) return request != HOST_FIND_COLUMN;
        switch (request) {
            case HOST_FIND_COLUMN: {
                const auto found = columns.find(a ? static_cast<const char *>(a) : "");
                if (found == columns.end()) return 0;
                if (b) *static_cast<RowRange *>(b) = rows;
                return reinterpret_cast<intptr_t>(&found->second);
            }
            case HOST_EVAL_NUMBER: {
                const auto *text = static_cast<const char *>(a);
                char *end = nullptr;
                *static_cast<double *>(b) = std::strtod(text, &end);
                return *text == '\0' || *end != '\0';
            }
            case HOST_GET_CELL:
            case HOST_SET_CELL: {
                Column *const cells = column(a);
                auto *const cell = static_cast<CellRecord *>(b);
                require(cell->row >= rows.first && cell->row < rows.end, "a row that is not bound");
                if (!cells) return 1;
                double &value = (*cells)[static_cast<size_t>(cell->row)];
                (request == HOST_GET_CELL ? cell->value : value) = request == HOST_GET_CELL ? value : cell->value;
                return 0;
            }
            case HOST_UPDATE_COLUMN:
                column(a);
                return 0;
            default:
                require(false, "an unknown request");
                return 0;
        }
    }

    static Sheet *current;
    static intptr_t answer(intptr_t, int32_t request, const void *a, void *b)
    {
        return current->serve(request, a, b);
    }
};

Sheet *Sheet::current = nullptr;

intptr_t receive(HostWindow *, uint32_t message, uintptr_t, intptr_t text)
{
    require(message == FUNC_TEST_LINE, "an unknown message");
    require(std::strlen(reinterpret_cast<const char *>(text)) > std::strlen("type "), "an empty line");
    return 0;
}

/// The text of the next field in memory of its own length, or null for "-".
class Field {
public:
    explicit Field(std::istream &line)
    {
        std::string text;
        std::getline(line, text, '|');
        if (text != "-") text_.assign(text.c_str(), text.c_str() + std::strlen(text.c_str()) + 1);
    }

    const char *get() const { return text_.empty() ? nullptr : text_.data(); }

private:
    std::vector<char> text_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    Sheet sheet;
    Sheet::current = &sheet;
    HostWindow window{receive};
    FuncTest(nullptr, "", "x", "", Sheet::answer, FUNC_TEST_BIND);  // forget the columns of the last script
    FuncTest(nullptr, "", "y", "", Sheet::answer, FUNC_TEST_BIND);
    sheet.failing = {HOST_FIND_COLUMN};
    FuncTest(nullptr, "", "deriv", "", Sheet::answer, 20);
    sheet.failing.clear();

    std::istringstream script(std::string(reinterpret_cast<const char *>(bytes), size));
    for (std::string text; std::getline(script, text);) {
        if (text.starts_with('!')) {
            for (const auto &[word, request] : requests)
                if (text.find(word) != std::string::npos) sheet.failing.insert(request);
            continue;
        }
        const HostCallback host = text.starts_with('?') ? nullptr : Sheet::answer;
        std::istringstream line(host ? text : text.substr(1));
        const Field code(line), name(line), command(line), column(line);
        const auto message = static_cast<uint16_t>(code.get() ? std::atoi(code.get()) : 0);
        const int32_t handled = FuncTest(&window, name.get(), command.get(), column.get(), host, message);
        require(handled == 0 || handled == 1, "an answer other than 0 and 1");
    }
    return 0;
}
