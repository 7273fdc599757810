// Problems whose least-squares results NIST certifies, with default options.

#include <fstream>
#include <map>
#include <sstream>

#include <doctest/doctest.h>

#include "formula/evaluate.h"
#include "tests/support/experiment.h"

using namespace curvebank::fit;
namespace formula = curvebank::formula;

namespace {

/// The rows of a table of the examples as texts, without comments and header.
std::vector<std::vector<std::string>> rows_of(const std::string &name)
{
    std::ifstream file(EXAMPLES "/" + name + ".csv");
    REQUIRE_MESSAGE(file.good(), name);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        rows.emplace_back();
        std::istringstream cells(line);
        for (std::string cell; std::getline(cells, cell, ',');) rows.back().push_back(cell);
    }
    rows.erase(rows.begin());
    return rows;
}

/// What NIST certifies of a data set.
struct Certified {
    std::vector<std::string> names;
    std::vector<double> value, deviation, start[2];
};

Certified certified(const std::string &set)
{
    Certified all;
    for (const auto &row : rows_of("nist_certified")) {
        if (row[0] != set) continue;
        all.names.push_back(row[1]);
        all.value.push_back(std::stod(row[2]));
        all.deviation.push_back(std::stod(row[3]));
        for (size_t i = 0; i < 2; ++i) all.start[i].push_back(std::stod(row[4 + i]));
    }
    return all;
}

void read_points(const std::string &set, Experiment &experiment)
{
    experiment.y.resize(1);
    for (const auto &row : rows_of(set)) {
        for (size_t i = 0; i + 1 < row.size(); ++i) experiment.x[i].push_back(std::stod(row[i]));
        experiment.y[0].push_back(std::stod(row.back()));
    }
}

/// How many digits two numbers share; those certified have 11 of values and deviations.
double digits(double found, double certified)
{
    const double error = std::fabs(found - certified) / std::fabs(certified);
    return std::isnan(error) ? 0 : std::min(11.0, -std::log10(error + 1e-17));
}

/// The least digits of values and of standard errors among the named estimates.
std::pair<double, double> worst_digits(const Result &result, const Certified &from)
{
    double value = 11, deviation = 11;
    for (size_t i = 0; i < from.names.size(); ++i) {
        const Estimate &estimate = at(result, from.names[i]);
        value = std::min(value, digits(estimate.value, from.value[i]));
        deviation = std::min(deviation, digits(estimate.standard_error, from.deviation[i]));
    }
    return {value, deviation};
}

using Names = std::vector<std::pair<std::string, std::string>>;

/// A problem in the parameters of NIST, and the model of the catalogue that it is: how that begins, and how NIST's
/// parameters come from it (by order where nothing is said).
struct Problem {
    std::string set, formula, model;
    Names starts, back;
    bool logarithm = false;  ///< of the value
};

const Problem problems[] = {
    {"misra1a", "b1*(1-exp(-b2*x))", "BoxLucas1", {}, {}},
    {"misra1b", "b1*(1-(1+b2*x/2)^(-2))", "", {}, {}},
    {"misra1c", "b1*(1-(1+2*b2*x)^(-.5))", "", {}, {}},
    {"misra1d", "b1*b2*x*((1+b2*x)^(-1))", "RectHyperbola", {}, {}},
    {"chwirut2", "exp(-b1*x)/(b2+b3*x)", "", {}, {}},
    {"danwood", "b1*x^b2", "Allometric1", {}, {}},
    {"gauss1",
     "b1*exp(-b2*x) + b3*exp(-(x-b4)^2/b5^2) + b6*exp(-(x-b7)^2/b8^2)",
     "ExpDec1 + Gauss",
     {{"d_y0", "0"},
      {"d_A", "b1"},
      {"d_t", "1/b2"},
      {"p_xc1", "b4"},
      {"p_w1", "sqrt(2)*b5"},
      {"p_A1", "b3*b5*sqrt(pi)"},
      {"p_xc2", "b7"},
      {"p_w2", "sqrt(2)*b8"},
      {"p_A2", "b6*b8*sqrt(pi)"}},
     {{"b1", "d_A"},
      {"b2", "1/d_t"},
      {"b3", "p_A1/(p_w1*sqrt(pi/2))"},
      {"b4", "p_xc1"},
      {"b5", "p_w1/sqrt(2)"},
      {"b6", "p_A2/(p_w2*sqrt(pi/2))"},
      {"b7", "p_xc2"},
      {"b8", "p_w2/sqrt(2)"}}},
    {"hahn1", "(b1+b2*x+b3*x^2+b4*x^3)/(1+b5*x+b6*x^2+b7*x^3)", "", {}, {}},
    {"lanczos3", "b1*exp(-b2*x) + b3*exp(-b4*x) + b5*exp(-b6*x)", "Lanczos3", {}, {}},
    {"mgh10", "b1*exp(b2/(x+b3))", "Exp3P1", {}, {}},
    {"nelson", "b1 - b2*x1*exp(-b3*x2)", "", {}, {}, true},
    {"rat42",
     "b1/(1+exp(b2-b3*x))",
     "SLogistic1",
     {{"a", "b1"}, {"xc", "b2/b3"}, {"r", "b3"}},
     {{"b1", "a"}, {"b2", "xc*r"}, {"b3", "r"}}},
    {"rat43",
     "b1/((1+exp(b2-b3*x))^(1/b4))",
     "Richards",
     {{"A", "b1"}, {"b", "-b2/b4"}, {"c", "b3/b4"}, {"d", "1/b4"}},
     {{"b1", "A"}, {"b2", "-b/d"}, {"b3", "c/d"}, {"b4", "1/d"}}},
};

Model model_of(const std::string &name)
{
    if (name != "ExpDec1 + Gauss") return Model::catalogue(name);
    return Model::sum({{"d_", Model::catalogue("ExpDec1")}, {"p_", Model::catalogue("Gauss", 2)}});
}

/// From both starts.
void check(Experiment &experiment, const Problem &problem, const Certified &from, double &sum, int &count)
{
    read_points(problem.set, experiment);
    if (problem.logarithm)
        for (double &y : experiment.y[0]) y = std::log(y);
    experiment.options.derived = problem.back;
    for (const auto &start : from.start) {
        experiment.options.start.clear();
        std::map<std::string, double> given;
        for (size_t i = 0; i < start.size(); ++i) given[from.names[i]] = start[i];
        for (const auto &[name, text] : problem.starts)
            experiment.options.start.emplace_back(name,
                                                  formula::evaluate<double>(formula::Formula::parse(text), given));
        if (problem.starts.empty())
            for (size_t i = 0; i < start.size(); ++i)
                experiment.options.start.emplace_back(from.names[i], start[i]);
        const Result result = experiment.run();
        CAPTURE(problem.set);
        CAPTURE(experiment.model.name());
        CAPTURE(word(result.verdict));
        CHECK(result.verdict == Verdict::converged);
        const auto [value, deviation] = worst_digits(result, from);
        CHECK(value >= 10);
        CHECK(deviation >= 6);
        sum += value;
        ++count;
    }
}

}  // namespace

TEST_CASE("certified nonlinear problems as NIST writes them")
{
    double sum = 0;
    int count = 0;
    for (const Problem &problem : problems) {
        const std::vector<std::string> variables =
            problem.set == "nelson" ? std::vector<std::string>{"x1", "x2"} : std::vector<std::string>{"x"};
        Experiment experiment(Model::formula(problem.formula, variables));
        Problem as_written = problem;
        as_written.starts.clear(), as_written.back.clear();
        check(experiment, as_written, certified(problem.set), sum, count);
    }
    CHECK(count == 26);
    CHECK(sum / count >= 10.5);
}

TEST_CASE("certified nonlinear problems by models of the catalogue")
{
    double sum = 0;
    int count = 0;
    for (const Problem &problem : problems) {
        if (problem.model.empty()) continue;
        Experiment experiment(model_of(problem.model));
        if (problem.set == "gauss1") experiment.options.fixed = {"d_y0"};
        Certified from = certified(problem.set);
        if (problem.back.empty())
            for (size_t i = 0; i < from.names.size(); ++i) from.names[i] = experiment.model.parameters()[i].name;
        check(experiment, problem, from, sum, count);
    }
    CHECK(count == 16);
    CHECK(sum / count >= 10.5);
}

TEST_CASE("certified linear problems, from zeros")
{
    const struct {
        std::string set, model;
        std::vector<double> deviation;
    } linear[] = {
        {"pontius", "Parabola", {0.107938612033077e-3, 0.157817399981659e-9, 0.486652849992036e-16}},
        {"filip",
         "PolyN",
         {298.084530995537, 559.779865474950, 466.477572127796, 227.204274477751, 71.6478660875927,
          15.2897178747400, 2.23691159816033, 0.221624321934227, 0.142363763154724e-1, 0.535617408889821e-3,
          0.896632837373868e-5}},
    };
    for (const auto &problem : linear) {
        CAPTURE(problem.set);
        Certified from;
        for (const auto &row : rows_of(problem.set + "_certified")) {
            from.names.push_back(row[0]);
            from.value.push_back(std::stod(row[1]));
        }
        from.deviation = problem.deviation;
        const int terms = problem.model == "PolyN" ? static_cast<int>(from.names.size()) : 1;
        Experiment experiment(Model::catalogue(problem.model, terms));
        read_points(problem.set, experiment);
        experiment.start(std::vector<double>(from.names.size()));
        const Result result = experiment.run();
        CAPTURE(word(result.verdict));
        CHECK(result.verdict == Verdict::converged);
        const auto [value, deviation] = worst_digits(result, from);
        CHECK(value >= 10);
        CHECK(deviation >= 6);
    }
}
