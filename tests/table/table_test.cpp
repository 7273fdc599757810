#include <cmath>
#include <filesystem>
#include <fstream>

#include <doctest/doctest.h>

#include "platform/error.h"
#include "table/number.h"
#include "table/table.h"

using curvebank::Error;
using namespace curvebank::table;

namespace {

Table read(const std::string &text)
{
    const std::string file = (std::filesystem::temp_directory_path() / "curvebank_table_test.csv").string();
    std::ofstream(file) << text;
    return read_table(file);
}

}  // namespace

TEST_CASE("headers, comments, quotes, separators and line ends")
{
    const Table table =
        read("\xEF\xBB\xBF# from the lab\r\ntime,\"signal, \"\"raw\"\"\"\r\n1,+2.5e-3\r\n\r\n\"3\", 4 \r\n");
    CHECK(table.names == std::vector<std::string>{"time", "signal, \"raw\""});
    CHECK(table.columns[0] == std::vector<double>{1, 3});
    CHECK(table.columns[1] == std::vector<double>{2.5e-3, 4});
    CHECK(table.column("TIME") == 0);
    CHECK(table.column("2") == 1);
    CHECK_THROWS_AS(table.column("3"), Error);
    CHECK_THROWS_AS(table.column("1.5"), Error);

    const Table plain = read("1;2\n3;4\n");
    CHECK(plain.names == std::vector<std::string>{"column1", "column2"});
    CHECK(plain.columns[1] == std::vector<double>{2, 4});
    CHECK(read("a\tb\n1\t2\n").columns[1][0] == 2);
}

TEST_CASE("cells without a finite number are missing, and so are cells that are not there")
{
    const Table table = read("x,y\n1,\n2,n/a\n3,nan\n4,inf\n5\n6,7x\n7,8,9\n");
    REQUIRE(table.rows() == 7);
    for (size_t row = 0; row < 6; ++row) CHECK(std::isnan(table.columns[1][row]));
    CHECK(table.columns[1][6] == 8);
}

TEST_CASE("a number is a whole text, finite, with or without a sign")
{
    CHECK(read_number("+2.5e-3") == 2.5e-3);
    CHECK(read_number("-.5") == -0.5);
    for (const char *text : {"", "+", "+-1", "++1", "1 ", "1,5", "0x10", "nan", "inf", "1e999"})
        CHECK_MESSAGE(!read_number(text), text);
}

TEST_CASE("what is no table is refused")
{
    CHECK_THROWS_AS(read_table("/no/such/file.csv"), Error);
    CHECK_THROWS_AS(read("# nothing\n"), Error);
    CHECK_THROWS_AS(read("x,y\n\"1,2\n"), Error);
    CHECK_THROWS_AS(write_table("/no/such/folder/file.csv", Table{}), Error);
}

TEST_CASE("numbers survive writing and reading to the last bit")
{
    const std::string file = (std::filesystem::temp_directory_path() / "curvebank_written.csv").string();
    const Table table{{"x", "y"}, {{0.1, 1e-308}, {1.0 / 3, std::nan("")}}};
    write_table(file, table);
    const Table again = read_table(file);
    CHECK(again.columns[0] == table.columns[0]);
    CHECK(again.columns[1][0] == table.columns[1][0]);
    CHECK(std::isnan(again.columns[1][1]));
}
