// Reports of fits: certified problems, solved to their digits, and what is said of a fit that failed.

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "report/report.h"
#include "table/table.h"

using namespace curvebank;

TEST_CASE("certified problems, nonlinear ones from both sets of starting values")
{
    const struct {
        std::string model, data;
        int terms;
        double digits;
    } problems[] = {
        {"Parabola", "pontius", 1, 12},  {"PolyN", "filip", 11, 10},       {"Exp3P1", "mgh10", 1, 10},
        {"BoxLucas1", "misra1a", 1, 10}, {"Allometric1", "danwood", 1, 10}, {"RectHyperbola", "misra1d", 1, 10},
        {"Lanczos3", "lanczos3", 1, 10}, {"SLogistic1", "rat42", 1, 10},    {"Richards", "rat43", 1, 10},
        {"Gauss", "gauss1_peaks", 2, 10},
    };
    for (const auto &[name, data, terms, digits] : problems) {
        CAPTURE(name);
        const std::string files = EXAMPLES "/" + data;
        const table::Table points = table::read_table(files + ".csv"),
                           certified = table::read_table(files + "_certified.csv");
        const std::vector<double> &values = certified.columns[certified.column("value")];
        const fit::Model model = fit::Model::catalogue(name, terms);
        REQUIRE(values.size() == model.parameters().size());
        // The first two columns are names and values, the others starts.
        for (size_t start = 2; start < std::max<size_t>(3, certified.columns.size()); ++start) {
            fit::Options options;
            if (start < certified.columns.size())
                for (size_t i = 0; i < values.size(); ++i)
                    options.start.emplace_back(model.parameters()[i].name, certified.columns[start][i]);
            if (name == "Gauss") options.fixed = {"y0"};
            const fit::Result result = fit::fit(model, {{points.columns[0]}, {points.columns[1]}, {}, {}}, options);
            CHECK(result.verdict == fit::Verdict::converged);
            CHECK(report::compare(result, values).fewest_digits >= digits);
        }
    }
}

TEST_CASE("a report says what is absent, what is held and why a fit failed")
{
    fit::Result result;
    result.verdict = fit::Verdict::no_influence;
    result.notes = {"without influence on the curve where the data are: b"};
    result.parameters.resize(3);
    result.parameters[0] = {"a", 1.5, 0.25, 1, 2};
    result.parameters[1] = {"b", 2};
    result.parameters[2] = {"longer_name", 3};
    result.parameters[2].at_bound = true;
    report::ReportContext context{reference::find("Gauss2D"), "points.csv", "w", {"east", "north"}, {"height"}, 2};
    const report::Columns x = {{1, 2, 3}, {4, 5, 6}};
    const std::string text = report::fit_report(result, context, x, {{0, -7, NAN}, {1, 0, 0}});
    CAPTURE(text);
    for (const char *part : {
             "    height = z0 + sum over k of ",
             "points.csv, 3 points (2 rows skipped: a cell was missing, unreadable or not allowed), weighted by w\n",
             "\na                              1.5            0.25                 1                 2\n",
             "\nb                                2               -                                none\n",
             "\nlonger_name                      3               -                        at its bound\n",
             "\nTerm 1                      largest share -7 at east = 2, north = 5\n",
             "\nR squared                   -\n",
             "\nNOT CONVERGED               a parameter does nothing that the data could see\n"
             "                            without influence on the curve where the data are: b\n",
         })
        CHECK_MESSAGE(text.find(part) != text.npos, part);
}
