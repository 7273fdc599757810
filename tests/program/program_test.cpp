// The command-line program as a user meets it: output, errors and exit codes.

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <sys/wait.h>

#include <doctest/doctest.h>

#include "catalogue/catalogue.h"

namespace {

struct Run {
    int exit_code;
    std::string output;  ///< of both streams
};

Run run(const std::string &arguments, const std::string &environment = "")
{
    const std::string command = environment + " '" PROGRAM "' " + arguments + " 2>&1";
    FILE *pipe = popen(command.c_str(), "r");
    Run result{-1, {}};
    std::array<char, 4096> buffer{};
    while (const size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe))
        result.output.append(buffer.data(), count);
    const int status = pclose(pipe);
    if (WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
    return result;
}

std::string text_of(const std::string &file)
{
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

bool contains(const Run &result, const std::string &text)
{
    return result.output.find(text) != std::string::npos;
}

std::string temporary(const std::string &name)
{
    return (std::filesystem::temp_directory_path() / ("curvebank_program_test_" + name)).string();
}

}  // namespace

TEST_CASE("list and show")
{
    const Run all = run("list"), some = run("list PEAKS");
    CHECK(all.exit_code == 0);
    CHECK(contains(all, "Parabola             1    1      3  Polynomial2             308  Parabola"));
    CHECK(contains(some, "InvsPoly"));
    CHECK(!contains(some, "Parabola"));
    const std::string size = std::to_string(curvebank::catalogue_size);
    CHECK(contains(all, "\n" + size + " models of the catalogue"));
    CHECK(text_of(DOCS "/../README.md").find("A library of " + size + " ") != std::string::npos);
    const Run rational4 = run("show rational4");
    CHECK(contains(rational4, "y = c + b / (a + x)"));
    CHECK(contains(rational4, "entry 1 is -b/(a + x)"));
    CHECK(contains(rational4, "Rational4 (ordinal 476)"));
    const Run gauss = run("show Gauss");
    CHECK(contains(gauss, "    name  unit  kind      range  meaning\n    y0    y     level            baseline\n"));
    CHECK(contains(gauss, "    w     x     width     > 0    width, twice the standard deviation\n"));
    CHECK(contains(gauss, "can move the curve along x and y\nFull width    sqrt(2*ln(2))*w at half"));
    CHECK(contains(run("show ModDiode"), "x is in volt, the residual has the unit of y: the constants"));
    CHECK(contains(run("show Voigt5"), "5 as listed; a call computes one term"));
    CHECK(contains(run("show HarrisEVP"), "3 by its count, but all 5 entries of p and dy are used"));
}

TEST_CASE("eval")
{
    const Run csv = run("eval Parabola --params a2=3,a0=1,a1=2 --x 0:1:0.5 --derivatives --csv");
    CHECK(csv.exit_code == 0);
    CHECK(csv.output == "x,y,dy/da0,dy/da1,dy/da2\n0,1,1,0,0\n0.5,2.75,1,0.5,0.25\n1,6,1,1,1\n");
    CHECK(run("eval Rational2 --params -1,2,3 --x 1,2 --csv").output == "x,y\n1,\n2,8\n");
    CHECK(run("eval InvsPoly --params 1,2,1,3,1,0,0,2,1,4,1,0,0 --x 2.5 --csv").output ==
          "x,y,term1,term2\n2.5,4.5,1.5,2\n");
    CHECK(contains(run("eval Line --params 1,2 --table '" EXAMPLES "/pontius.csv' --columns load"), "150000"));
}

TEST_CASE("surfaces, two outputs and implicit models")
{
    const std::string plot = temporary("surface.svg"), circle = temporary("circle.csv");
    const Run surface =
        run("eval Gauss2D --params 1,5,2,1.5,-1,0.8 --x 2,3.5 --y=-1,0 --csv --plot '" + plot + "'");
    CHECK(contains(surface, "x,y,z,term1\n2,-1,6,5\n3.5,-1,4.032653298563167,3.032653298563167\n2,0,"));
    CHECK(std::filesystem::file_size(plot) > 1000);
    CHECK(
        contains(run("eval Gauss2D --params z0=1,A=5,xc=2,w1=1.5,yc=-1,w2=0.8 --x 2 --y=-1 --csv"), "2,-1,6,5\n"));
    CHECK(run("eval Line3 --params 1,2,3,4 --x 1 --csv").output == "x,y1,y2\n1,3,7\n");

    std::ofstream(circle) << "x,y\n5,-1\n3,1.001\n1,-1\n3,-3\n4.414,0.414\n";
    const Run fit = run("fit Circle '" + circle + "' --start 2,0,1.5 --plot '" + plot + "'");
    CHECK((fit.exit_code == 0 && contains(fit, "0 = ((x-xc)/r)^2 + ((y-yc)/r)^2 - 1")));
    CHECK(contains(run("eval Gauss2D --params 1,5,2,1.5,-1,0.8 --x 1"), "has 2 independent variables"));
    CHECK(contains(run("fit Helix '" + circle + "'"), "no column 3; the columns are x, y"));
}

TEST_CASE("check shows a model's derivatives beside differences")
{
    const std::string points = temporary("points.csv");
    std::ofstream(points) << "n,t\n1,0.5\n2,\n3,1e1\n";
    const std::string line = "check line '" + points + "' --column t --params ";
    const Run check = run(line + "1e-3,pi");
    CHECK(check.exit_code == 0);
    CHECK(contains(check, "                 t              value             dy/da0         difference"));
    CHECK(contains(check, "               0.5      1.57179632679                  1"));
    CHECK(contains(check, "missing"));
    CHECK(contains(check, "\na1                3.14159265359"));
    CHECK(contains(run(line + "1,2+3"), "--params: Line takes 2 numbers separated by commas, 1 could be read"));
    CHECK(contains(run(line + "1,two"), "unknown name: two"));
    CHECK(contains(run("check PolyN '" + points + "' --params 1,2,3,4,5,6,7,8,9,10,11"), "takes 10 numbers"));
    // The differences of the tenth parameter have no column.
    CHECK(contains(run("check PolyN '" + points + "' --params 1,2,3,4,5,6,7,8,9,10"), "not compared"));
}

TEST_CASE("the document of the inexact derivatives is what check --all prints")
{
    const Run all = run("check --all");
    CHECK(all.exit_code == 0);
    CHECK(contains(all, "| Rational4 | 1 (d/da) | -b/(a + x), without the square of the exact partial |"));
    CHECK(text_of(DOCS "/derivatives.md").ends_with("\n" + all.output));
}

TEST_CASE("fit writes report, table and plot, and leaves out what it cannot use")
{
    const std::string data = temporary("data.csv"), table = temporary("fit.csv"), plot = temporary("fit.svg");
    std::ofstream(data) << "x,y,w\n0,1,1\n1,3,1\n2,oops,1\n3,7,1\n4,9.5,0\n5,11,2\n,4,1\n";
    const Run fit = run("fit Line '" + data + "' --weights w --csv '" + table + "' --plot '" + plot + "'");
    CHECK(fit.exit_code == 0);
    CHECK(contains(fit, "4 points (3 rows skipped"));
    CHECK(contains(fit, "Converged"));
    std::ifstream written(table);
    std::string header;
    std::getline(written, header);
    CHECK(header == "x,y,w,fitted,residual");
    CHECK(std::filesystem::file_size(plot) > 1000);
}

TEST_CASE("every error is one line and a non-zero exit")
{
    const std::string pontius = "'" EXAMPLES "/pontius.csv'";
    const struct {
        std::string arguments, message;
    } errors[] = {
        {"show Parabla", "no model is called Parabla; did you mean Parabola"},
        {"fit Line /no/such/file.csv", "cannot read /no/such/file.csv"},
        {"fit Line " + pontius + " --columns load,nothing", "no column nothing; the columns are load, deflection"},
        {"fit Line " + pontius + " --columns load",
         "--columns takes 2 names for Line: the independent variables, then the dependent ones"},
        {"fit Line " + pontius + " --start 1", "--start: 1 values given, but there are 2 parameters"},
        {"fit Line " + pontius + " --start b=1", "--start: no parameter b; the parameters are a0, a1"},
        {"fit Line " + pontius + " --fix a0,a1", "every parameter is fixed: there is nothing to fit"},
        {"fit Line " + pontius + " --nparams 3", "Line takes 2 parameters, not 3"},
        {"fit InvsPoly " + pontius + " --nparams 8",
         "InvsPoly takes 1 parameter and 6 for every term; 8 do not fit"},
        {"fit Rational4P " + pontius, "Rational4P is a placeholder: it computes nothing"},
        {"fit Line " + pontius + " --plot fit.pdf", "a plot is a .png or a .svg file, not fit.pdf"},
        {"eval Line --params 1,2,3 --x 1", "Line takes 2 parameters, not 3"},
        {"eval Line --params a0=1 --x 1", "--params: no value for a1"},
        {"eval Line --params 1,zwei --x 1", "--params: zwei is no number"},
        {"eval Line --params 1,2 --x 0:1:0", "--x: 0:1:0 is no range of 1 to 10 million points"},
        {"eval Line --params 1,2", "eval needs --x or --table"},
        {"check Line", "check needs a model, a table and --params, or --all"},
    };
    for (const auto &error : errors) {
        CAPTURE(error.arguments);
        const Run result = run(error.arguments);
        CHECK(result.exit_code == 1);
        CHECK(contains(result, "curvebank: " + error.message + "\n"));
    }
    CHECK(run("").exit_code != 0);
    CHECK(run("show").exit_code != 0);
}

TEST_CASE("no library, a wrong library, a fit that ends too early, digits that are not reached")
{
    const Run none = run("list", "CURVEBANK_LIBRARY=/no/such/library.so"),
              wrong = run("list", "CURVEBANK_LIBRARY=libm.so.6");
    CHECK((none.exit_code == 1 && contains(none, "curvebank: cannot load the library: /no/such/library.so")));
    CHECK((wrong.exit_code == 1 && contains(wrong, "libm.so.6 is not a Curvebank library")));

    const Run plot =
        run("fit Line '" EXAMPLES "/pontius.csv' --plot '" + temporary("none.png") + "'", "PATH=/nowhere");
    CHECK((plot.exit_code == 1 && contains(plot, "Converged")));
    CHECK(contains(plot, "curvebank: a plot needs gnuplot, which is not installed"));
    const Run early = run("fit InvsPoly '" EXAMPLES "/filip.csv' --max-iterations 1");
    CHECK(
        (early.exit_code == 2 && contains(early, "NOT CONVERGED") && contains(early, "the fit did not converge")));
    const Run digits =
        run("fit Parabola '" EXAMPLES "/pontius.csv' --certified '" EXAMPLES "/pontius_certified.csv' --digits 16");
    CHECK((digits.exit_code == 3 && contains(digits, "fewer than 16 certified digits")));
}
