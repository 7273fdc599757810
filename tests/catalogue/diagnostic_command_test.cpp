// The diagnostic command as a host meets it: the built library opened by file, a window, a worksheet behind the
// callback.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include "catalogue/catalogue.h"
#include "tests/support/call.h"
#include "tests/support/message_window.h"

using namespace curvebank;

namespace {

auto command()
{
#ifdef _WIN32
    return test::library().function<decltype(&FuncTest)>(static_cast<unsigned short>(5));
#else
    return test::library().function<decltype(&FuncTest)>("FuncTest");
#endif
}

/// Columns of three cells, and a record of what was asked. A handle is the address of a column.
struct Sheet {
    static constexpr double empty = -5.5e55;  // what no cell was written with
    static constexpr size_t unreadable = 1;   // the row whose x cannot be read

    RowRange rows{0, 3};
    std::map<std::string, std::vector<double>> columns;
    std::vector<std::string> searched, tokens;
    std::multiset<const void *> updated;
    std::set<int32_t> failing;
    std::string inner;  // the parameters of a straight line to evaluate inside the next request for a cell

    explicit Sheet(bool bind = true)
    {
        for (const char *name : {"time", "value"}) columns[name].assign(3, empty);
        for (char c = 'c'; c <= 'x'; ++c) columns[std::string("data1_") + c].assign(3, empty);
        columns["time"] = {0.75, 0.0, 2.5};
        if (!bind) return;
        CHECK(run("", "x", "time", FUNC_TEST_BIND) == 1);
        CHECK(run("", "Y", "value", FUNC_TEST_BIND) == 1);
        CHECK(run("", "Deriv", "", 20) == 1);
    }

    int run(const char *name, const char *text, const char *column, int message)
    {
        current = this;
        return command()(nullptr, name, text, column, answer, static_cast<uint16_t>(message));
    }

    int evaluate(const char *name, const std::string &parameters)
    {
        return run(name, parameters.c_str(), "", FUNC_TEST_MODEL);
    }

    /// Output column i from 1, those beyond the 20 that the command knows included.
    const std::vector<double> &output(int i) const
    {
        return columns.at(std::string("data1_") + static_cast<char>('c' + i - 1));
    }

    static Sheet *current;

    static intptr_t answer(intptr_t, int32_t request, const void *a, void *b)
    {
        return current->failing.contains(request) ? request != HOST_FIND_COLUMN : current->serve(request, a, b);
    }

    intptr_t serve(int32_t request, const void *a, void *b)
    {
        auto *cell = static_cast<CellRecord *>(b);
        auto *column = static_cast<std::vector<double> *>(const_cast<void *>(a));
        switch (request) {
            case HOST_FIND_COLUMN: {
                searched.emplace_back(a ? static_cast<const char *>(a) : "");
                const auto found = columns.find(searched.back());
                if (found == columns.end()) return 0;
                if (b) *static_cast<RowRange *>(b) = rows;
                return reinterpret_cast<intptr_t>(&found->second);
            }
            case HOST_EVAL_NUMBER: {
                tokens.emplace_back(static_cast<const char *>(a));
                char *end = nullptr;
                *static_cast<double *>(b) = std::strtod(tokens.back().c_str(), &end);
                return *end != '\0';
            }
            case HOST_GET_CELL:
                if (!inner.empty()) CHECK(evaluate("Line", std::exchange(inner, "")) == 1);
                if (!column || cell->row == unreadable) return 1;
                cell->value = column->at(static_cast<size_t>(cell->row));
                return 0;
            case HOST_SET_CELL:
                if (column) column->at(static_cast<size_t>(cell->row)) = cell->value;
                return 0;
            case HOST_UPDATE_COLUMN: {
                const auto *written = static_cast<const RowRange *>(b);
                CHECK((written->first == rows.first && written->end == rows.end));
                updated.insert(a);
                return 0;
            }
            default:
                FAIL("unknown request " << request);
                return 0;
        }
    }
};

Sheet *Sheet::current = nullptr;

using Array = std::array<double, test::Call::room>;

struct Arrays {
    Array p{}, x{}, y, dy;

    Arrays()
    {
        y.fill(MISSING_VALUE);
        dy.fill(MISSING_VALUE);
    }
};

bool same(double a, double b)
{
    return test::same_bits(a, b) || (std::isnan(a) && std::isnan(b));
}

}  // namespace

TEST_SUITE("diagnostic command")
{
    TEST_CASE("list sends every row of the catalogue to the window, in order")
    {
        std::vector<std::string> lines;
        const test::MessageWindow window([&](uint32_t message, uintptr_t wparam, intptr_t lparam) {
            CHECK((message == 1024 && wparam == 0));
            lines.emplace_back(reinterpret_cast<const char *>(lparam));
        });
        CHECK(command()(window.handle(), nullptr, "List", nullptr, nullptr, 18) == 1);
        REQUIRE(lines.size() == catalogue_size);
        CHECK(lines.front() == "type Shah");
        for (size_t i = 0; i < lines.size(); ++i) CHECK(lines[i] == std::string("type ") + catalogue[i].name);
        for (const int other : {17, 19, 20, 3073, 0})
            CHECK(command()(window.handle(), "list", "list", "", Sheet::answer, static_cast<uint16_t>(other)) == 0);
        CHECK(command()(nullptr, nullptr, "list", nullptr, nullptr, 18) == 1);
        CHECK(lines.size() == catalogue_size);
    }

    TEST_CASE("columns are bound by x, y and deriv, each in its own messages")
    {
        Sheet sheet;
        REQUIRE(sheet.searched.size() == 22);
        CHECK((sheet.searched[2] == "data1_c" && sheet.searched[21] == "data1_v"));
        CHECK(sheet.run("", "x", "nowhere", 19) == 0);
        CHECK(sheet.run("", "y", "nowhere", 19) == 0);
        for (const auto &[text, message] : {std::pair{"x", 18},
                                            {"y", 17},
                                            {"x", 3073},
                                            {"deriv", 19},
                                            {"Line", 19},
                                            {"deriv", 16},
                                            {"deriv", 21}})
            CHECK(sheet.run("", text, "time", message) == 0);
        CHECK(sheet.run("deriv", "", "", 3073) == 1);
    }

    TEST_CASE("a straight line and its derivatives")
    {
        Sheet sheet;
        REQUIRE(sheet.evaluate("line", "1, 2") == 1);
        CHECK((sheet.columns["value"] == std::vector<double>{2.5, Sheet::empty, 6}));
        CHECK((sheet.output(1) == std::vector<double>{1, Sheet::empty, 1}));
        CHECK((sheet.output(2) == std::vector<double>{0.75, Sheet::empty, 2.5}));
        CHECK(sheet.output(3) == sheet.columns["value"]);
        CHECK(sheet.output(4)[2] == doctest::Approx(1));
        CHECK(sheet.output(5)[2] == doctest::Approx(2.5));
        CHECK(sheet.output(6)[2] == Sheet::empty);
    }

    TEST_CASE("a command that the callback runs leaves the rows of the command around it alone")
    {
        Sheet sheet;
        sheet.inner = "5 6";
        REQUIRE(sheet.evaluate("Line", "1 2") == 1);
        CHECK((sheet.columns["value"] == std::vector<double>{2.5, Sheet::empty, 6}));
        CHECK((sheet.output(3) == std::vector<double>{2.5, Sheet::empty, 6}));
    }

    TEST_CASE("every model fills the columns with what direct calls give")
    {
        // The second row of parameters makes many models fail, so that the missing value goes round as well.
        for (const double sign : {1.0, -1.0})
            for (const auto &row : catalogue) {
                const std::string name = row.name;
                CAPTURE(name);
                Sheet sheet;
                std::string parameters;
                for (int k = 1; k <= 20; ++k) parameters += std::to_string(sign * (0.25 + 0.125 * k)) + " ";
                REQUIRE(sheet.evaluate(row.name, parameters) == (row.function != nullptr));
                if (!row.function) continue;

                const int n = row.nParams;
                const ModelFunc model = test::model(row.name);
                // On missing outputs, because one model multiplies an entry that it may not have written.
                const auto call = [&](int flags, size_t at, int moved) {
                    Arrays direct;
                    for (int k = 1; k <= 20; ++k) direct.p[static_cast<size_t>(k)] = sign * (0.25 + 0.125 * k);
                    if (moved > 0) direct.p[static_cast<size_t>(moved)] += 1e-8;
                    direct.x[1] = sheet.columns["time"][at];
                    errno = 0;
                    model(static_cast<int16_t>(flags), nullptr, static_cast<int16_t>(n), nullptr, 0,
                          direct.p.data(), nullptr, direct.x.data(), direct.y.data(), direct.dy.data());
                    // The command's arrays have as many entries as these: half of them must be more than enough.
                    for (const Array &written : {direct.y, direct.dy})
                        CHECK(std::all_of(written.begin() + test::Call::room / 2, written.end(), test::is_missing));
                    return direct;
                };
                std::multiset<const void *> updated{&sheet.columns["value"]};
                for (int k = 1; k <= std::min(2 * n + 2, 20); ++k) updated.insert(&sheet.output(k));
                CHECK(sheet.updated == updated);
                for (const size_t at : {size_t{0}, size_t{2}}) {
                    const Arrays analytic = call(EVAL_DERIVS, at, 0);
                    const double y0 = call(EVAL_VALUE, at, 0).y[1];
                    std::vector<double> expected(&analytic.dy[1], &analytic.dy[1] + n);
                    expected.push_back(y0);
                    for (int k = 1; k <= n; ++k) {
                        const double y = call(EVAL_VALUE, at, k).y[1];
                        const bool missing = test::is_missing(y0) || test::is_missing(y);
                        expected.push_back(missing ? MISSING_VALUE : (y - y0) / 1e-8);
                    }
                    expected.resize(20, Sheet::empty);  // models of more than nine parameters lose the last ones
                    expected.resize(22, Sheet::empty);  // and no further column is touched
                    CHECK(same(sheet.columns["value"][at], analytic.y[1]));
                    for (int k = 1; k <= 22; ++k)
                        CHECK(same(sheet.output(k)[at], expected[static_cast<size_t>(k) - 1]));
                }
            }
    }

    TEST_CASE("the parameter list ends where it cannot go on")
    {
        const std::string longest(255, '0'), too_long(256, '0');
        using Tokens = std::vector<std::string>;
        const std::vector<std::pair<std::string, Tokens>> cases = {
            {"", {}},
            {"1, 2,3", {"1", "2", "3"}},
            {"4 ,", {"4"}},
            {"1;2", {}},
            {"1 2 -3.5e-1;4", {"1", "2"}},
            {"1,2+3", {"1"}},
            {"7\t8", {}},
            {"1," + longest + ",2", {"1", longest, "2"}},
            {"1," + too_long + ",2", {"1"}},
            {std::string(100000, '1'), {}},
            {"1 \x80", {"1"}},
            {"1 2\xd7 3", {"1"}},
        };
        for (const auto &[list, tokens] : cases) {
            Sheet sheet;
            CHECK(sheet.evaluate("Line", list) == 1);
            CHECK(sheet.tokens == tokens);
        }

        Sheet sheet;
        std::string hundreds;
        for (int i = 0; i < 500; ++i) hundreds += "1,";
        CHECK(sheet.evaluate("Line", hundreds) == 1);
        CHECK(sheet.tokens.size() == 20);
        for (const char *not_a_number : {"1 two", "\xe9\xb5\xff", "nan_"})
            CHECK(sheet.evaluate("Line", not_a_number) == 0);
        CHECK(sheet.evaluate("Line", " 1") == 1);  // an empty first parameter: the host's to judge
        CHECK((sheet.tokens.back() == "1" && sheet.tokens.end()[-2].empty()));
        CHECK(sheet.run("", "Line", "", 17) == 0);  // the model's own name is its first parameter then
        CHECK(sheet.tokens.back() == "Line");
    }

    TEST_CASE("nothing is assumed of the host")
    {
        CHECK(command()(nullptr, "Line", "1 2", "", nullptr, 3073) == 0);
        for (const int message : {17, 18, 19, 20, 3073}) {
            Sheet sheet(false);
            CHECK(sheet.run(nullptr, nullptr, nullptr, message) == 0);
            CHECK(sheet.run("no such model", "", "", message) == 0);
        }
        CHECK(Sheet().evaluate("Line", "") == 1);
        CHECK(Sheet().run("Line", nullptr, nullptr, 3073) == 1);

        for (const RowRange range : {RowRange{2, 2}, RowRange{3, 0}}) {
            Sheet sheet(false);
            sheet.rows = range;
            REQUIRE(sheet.run("", "x", "time", 19) == 1);
            REQUIRE(sheet.run("", "y", "value", 19) == 1);
            CHECK(sheet.evaluate("Line", "1 2") == 1);
            CHECK(sheet.columns["value"] == std::vector<double>(3, Sheet::empty));
            CHECK(sheet.updated.contains(&sheet.columns["value"]));
        }
        for (const int32_t request :
             {HOST_FIND_COLUMN, HOST_EVAL_NUMBER, HOST_GET_CELL, HOST_SET_CELL, HOST_UPDATE_COLUMN}) {
            Sheet sheet;
            sheet.failing = {request};
            const bool find = request == HOST_FIND_COLUMN;
            CHECK(sheet.run("", "x", "time", 19) == !find);  // a failed search leaves null handles
            CHECK(sheet.run("", "y", "value", 19) == !find);
            CHECK(sheet.run("deriv", "", "", 3073) == 1);
            CHECK(sheet.evaluate("Line", "1 2") == (request != HOST_EVAL_NUMBER));
            const bool written = request == HOST_UPDATE_COLUMN;
            CHECK((sheet.columns["value"][0] == 2.5) == written);
            CHECK(sheet.updated.count(nullptr) == (find ? 7 : 0));
        }
    }
}
