#include "catalogue/diagnostic_command.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstddef>

#include "catalogue/catalogue.h"
#include "platform/names.h"
#include "platform/window.h"

namespace curvebank {
namespace {

static_assert(offsetof(CellRecord, value) == 8, "hosts fill and read cells by offset");

constexpr int output_columns = 20;
constexpr int max_parameters = 20;
constexpr double fd_step = 1e-8;  // absolute: a parameter of 1e9 is not moved at all and its difference is 0

/// What one command leaves for the next: the columns and rows to work on. The only state of the library.
struct Bindings {
    const void *x = nullptr, *y = nullptr;
    RowRange rows{0, 0};
    std::array<const void *, output_columns + 1> outputs{};  // from 1
};

Bindings bound;

/// The requests to the host, by name. Handles go to it as they are, null ones too.
class Host {
public:
    explicit Host(HostCallback callback) : callback_(callback) {}

    const void *find_column(const char *name, RowRange *rows) const
    {
        return std::bit_cast<const void *>(callback_(0, HOST_FIND_COLUMN, name, rows));
    }

    bool eval_number(const char *text, double *value) const
    {
        return callback_(0, HOST_EVAL_NUMBER, text, value) == 0;
    }

    bool get_cell(const void *column, int64_t row, double *value) const
    {
        CellRecord cell{static_cast<int32_t>(row), MISSING_VALUE};
        const bool read = callback_(0, HOST_GET_CELL, column, &cell) == 0;
        *value = cell.value;
        return read;
    }

    void set_cell(const void *column, int64_t row, double value) const
    {
        CellRecord cell{static_cast<int32_t>(row), value};
        callback_(0, HOST_SET_CELL, column, &cell);
    }

    void update(const void *column) const
    {
        RowRange rows = bound.rows;
        callback_(0, HOST_UPDATE_COLUMN, column, &rows);
    }

    /// The same two for output columns, from 1. Those beyond the bound ones do not exist.
    void set_output(int index, int64_t row, double value) const
    {
        if (index <= output_columns) set_cell(bound.outputs[static_cast<size_t>(index)], row, value);
    }

    void update_outputs(int first, int last) const
    {
        for (int i = first; i <= last && i <= output_columns; ++i) update(bound.outputs[static_cast<size_t>(i)]);
    }

private:
    HostCallback callback_;
};

/// A model with its arrays, which have room for any model and for all parameters that can be given.
struct Evaluation {
    using Array = std::array<double, CURVEBANK_ROOM(std::max(catalogue_largest_count, max_parameters))>;

    ModelFunc model;
    int16_t nParams;
    Array p{}, x{}, y{}, dy{};

    /// Calls the model as a fitting host does: error variable clear, outputs missing until the model writes them,
    /// nothing left over from the call before. Returns the value.
    double call(int flags, double X)
    {
        x.fill(0);
        x[1] = X;
        y.fill(MISSING_VALUE);
        dy.fill(MISSING_VALUE);
        errno = 0;
        model(static_cast<int16_t>(flags), nullptr, nParams, nullptr, 0, p.data(), nullptr, x.data(), y.data(),
              dy.data());
        return y[1];
    }

    /// The forward difference at X of the parameter p[k], where the value is y0.
    double forward_difference(int k, double X, double y0)
    {
        double &parameter = p[static_cast<size_t>(k)];
        const double saved = parameter;
        parameter = saved + fd_step;
        const double moved = call(EVAL_VALUE, X);
        parameter = saved;
        return y0 == MISSING_VALUE || moved == MISSING_VALUE ? MISSING_VALUE : (moved - y0) / fd_step;
    }
};

/// Parameters are read beyond the model's count, because some models read further.
bool read_parameters(const Host &host, const char *list, Evaluation::Array &p)
{
    Token token;
    for (size_t i = 1; i <= max_parameters && (list = next_token(list, token)); ++i)
        if (!host.eval_number(token.data(), &p[i])) return false;
    return true;
}

void analytic_pass(const Host &host, Evaluation &evaluation)
{
    const int n = evaluation.nParams;
    for (int64_t row = bound.rows.first; row < bound.rows.end; ++row) {
        double X = 0;
        if (!host.get_cell(bound.x, row, &X)) continue;
        host.set_cell(bound.y, row, evaluation.call(EVAL_DERIVS, X));
        for (int k = 1; k <= n; ++k) host.set_output(k, row, evaluation.dy[static_cast<size_t>(k)]);
    }
    host.update(bound.y);
    host.update_outputs(1, n);
}

void difference_pass(const Host &host, Evaluation &evaluation)
{
    const int n = evaluation.nParams;
    for (int64_t row = bound.rows.first; row < bound.rows.end; ++row) {
        double X = 0;
        if (!host.get_cell(bound.x, row, &X)) continue;
        const double y0 = evaluation.call(EVAL_VALUE, X);
        host.set_output(n + 1, row, y0);
        for (int k = 1; k <= n; ++k) host.set_output(n + 1 + k, row, evaluation.forward_difference(k, X, y0));
    }
    host.update_outputs(n + 1, 2 * n + 2);  // one more than was written, as hosts expect
}

/// Models of several variables are evaluated with the others at 0: there is one x column.
bool evaluate(const Host &host, const char *name, const char *list)
{
    const ModelFunc model = get_funx(name);
    if (!model) return false;
    Evaluation evaluation{model, static_cast<int16_t>(catalogue_param_count(name))};
    if (!read_parameters(host, list, evaluation.p)) return false;
    analytic_pass(host, evaluation);
    difference_pass(host, evaluation);
    return true;
}

bool bind_variable(const Host &host, const char *variable, const char *column)
{
    if (platform::same_name(variable, "x")) {
        bound.x = host.find_column(column, &bound.rows);
        return bound.x != nullptr;
    }
    if (platform::same_name(variable, "y")) {
        bound.y = host.find_column(column, nullptr);
        return bound.y != nullptr;
    }
    return false;
}

void bind_outputs(const Host &host)
{
    char name[] = "data1_?";
    for (size_t i = 1; i <= output_columns; ++i) {
        name[sizeof name - 2] = static_cast<char>('c' + i - 1);
        bound.outputs[i] = host.find_column(name, nullptr);
    }
}

/// The text that may be a command in a message of that code, or null.
const char *tested_text(uint16_t message, const char *name_text, const char *command_text)
{
    if (message == FUNC_TEST_MODEL) return name_text;
    return message >= 17 && message <= 20 ? command_text : nullptr;
}

bool is_word_character(char c)
{
    return platform::is_letter_or_digit(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '.';
}

bool is_separator(char c)
{
    return c == ' ' || c == ',';
}

}  // namespace

void list_catalogue(void *window)
{
    for (const ModelCatalogEntry &row : catalogue)
        platform::send_line(window, platform::format_line("type %s", row.name));
}

const char *next_token(const char *text, Token &token)
{
    token[0] = '\0';
    if (!text || *text == '\0') return nullptr;
    size_t length = 0;
    for (; is_word_character(*text); ++text) {
        if (length + 1 == token.size()) return nullptr;
        token[length++] = *text;
    }
    token[length] = '\0';
    if (*text != '\0' && !is_separator(*text)) return nullptr;
    while (is_separator(*text)) ++text;
    return text;
}

}  // namespace curvebank

int32_t FuncTest(void *window, const char *name_text, const char *command_text, const char *column_text,
                 HostCallback callback, uint16_t message)
{
    using namespace curvebank;
    const char *command = tested_text(message, name_text, command_text);
    if (message == FUNC_TEST_LIST && platform::same_name(command, "list")) {
        list_catalogue(window);
        return 1;
    }
    if (!command || !callback) return 0;
    const Host host(callback);
    if (message == FUNC_TEST_BIND) return bind_variable(host, command, column_text);
    if (platform::same_name(command, "deriv")) {
        bind_outputs(host);
        return 1;
    }
    return evaluate(host, command, command_text);
}
