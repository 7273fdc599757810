#include <cmath>
#include <filesystem>
#include <random>

#include <doctest/doctest.h>

#include "fit/fit.h"
#include "platform/error.h"
#include "report/report.h"
#include "table/table.h"

using curvebank::Error;
using curvebank::reference::ModelReference;
using namespace curvebank::fit;
using namespace curvebank::report;
using namespace curvebank::table;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// A fit of points to a model by name, from a start.
struct Setup {
    Setup(const std::string &name, std::vector<double> start)
        : library(CURVEBANK_LIBRARY_FILE),
          about(*curvebank::reference::find(name)),
          count(static_cast<int>(start.size())),
          evaluator(library.find(name), count, count)
    {
        options.start = std::move(start);
        data.x.resize(1);
    }

    void add(double x, double y)
    {
        data.x[0].push_back(x);
        data.y.push_back(y);
    }

    /// Points of the curve itself, moved up and down in turn by noise.
    void add_curve(const std::vector<double> &p, double low, double high, int points, double noise)
    {
        for (int i = 0; i < points; ++i) add(low + (high - low) * i / (points - 1), 0);
        evaluator.values(p, data.x, data.y);
        for (size_t i = 0; i < data.y.size(); ++i) data.y[i] += i % 2 == 0 ? noise : -noise;
    }

    FitResult run() { return fit(evaluator, about, data, options); }

    Library library;
    const ModelReference &about;
    int count;
    Evaluator evaluator;
    Data data;
    FitOptions options;
};

}  // namespace

TEST_CASE("a straight line: all statistics against the closed form")
{
    Setup line("Line", {0, 0});
    for (const auto &[x, y] : {std::pair{1.0, 2.0}, {2.0, 3.0}, {3.0, 5.0}, {4.0, 4.0}}) line.add(x, y);
    const FitResult result = line.run();
    CHECK(result.converged);
    CHECK(result.parameters[0].value == doctest::Approx(1.5));
    CHECK(result.parameters[1].value == doctest::Approx(0.8));
    CHECK(result.sum_of_squares == doctest::Approx(1.8));
    CHECK(result.degrees_of_freedom == 2);
    CHECK(result.residual_sd == doctest::Approx(std::sqrt(0.9)));
    CHECK(result.r_squared == doctest::Approx(0.64));
    CHECK(result.parameters[0].standard_error == doctest::Approx(std::sqrt(0.9 * (0.25 + 6.25 / 5))));
    CHECK(result.parameters[1].standard_error == doctest::Approx(std::sqrt(0.9 / 5)));
    // Student's t for 2 degrees of freedom at 97.5 %
    CHECK(result.parameters[1].upper == doctest::Approx(0.8 + 4.30265272974946 * std::sqrt(0.18)));
    CHECK(result.fitted[0] == doctest::Approx(2.3));
    CHECK(result.residuals[0] == doctest::Approx(-0.3));
}

TEST_CASE("as many points as parameters: a fit without statistics")
{
    Setup line("Line", {0, 0});
    line.add(1, 2);
    line.add(2, 2);
    const FitResult result = line.run();
    CHECK(result.converged);
    CHECK(result.parameters[0].value == doctest::Approx(2));
    CHECK(std::isnan(result.residual_sd));
    CHECK(std::isnan(result.r_squared));
    CHECK(std::isnan(result.parameters[0].standard_error));
}

TEST_CASE("weights count like repeated points")
{
    Setup weighted("Line", {0, 0}), repeated("Line", {0, 0});
    const double points[][2] = {{1, 2}, {2, 3}, {3, 5}, {4, 4}};
    for (const auto &[x, y] : points) {
        weighted.add(x, y);
        weighted.data.weights.push_back(x);
        for (int i = 0; i < x; ++i) repeated.add(x, y);
    }
    const FitResult a = weighted.run(), b = repeated.run();
    for (size_t i = 0; i < 2; ++i) CHECK(a.parameters[i].value == doctest::Approx(b.parameters[i].value));
    CHECK(a.sum_of_squares == doctest::Approx(b.sum_of_squares));
    CHECK(a.r_squared == doctest::Approx(b.r_squared));
    weighted.data.weights[0] = 0;
    CHECK_THROWS_AS(weighted.run(), Error);
}

TEST_CASE("certified problems, nonlinear ones from both sets of starting values")
{
    const struct {
        std::string model, data;
        double digits;
    } problems[] = {
        {"Parabola", "pontius", 12},  {"PolyN", "filip", 8},          {"Exp3P1", "mgh10", 10},
        {"BoxLucas1", "misra1a", 10}, {"Allometric1", "danwood", 10}, {"RectHyperbola", "misra1d", 10},
        {"Lanczos3", "lanczos3", 10}, {"SLogistic1", "rat42", 10},    {"Richards", "rat43", 10},
    };
    for (const auto &problem : problems) {
        CAPTURE(problem.model);
        const std::string files = EXAMPLES "/" + problem.data;
        const Table table = read_table(files + ".csv"), certified = read_table(files + "_certified.csv");
        const std::vector<double> &values = certified.columns[certified.column("value")];
        std::vector<std::vector<double>> starts = {certified.columns.begin() + 2, certified.columns.end()};
        if (starts.empty()) starts.emplace_back(values.size());
        for (const auto &start : starts) {
            Setup setup(problem.model, start);
            setup.data = {{table.columns[0]}, table.columns[1], {}};
            const FitResult result = setup.run();
            CHECK(result.converged);
            ReportContext context;
            context.model = &setup.about;
            context.parameters = setup.about.names(setup.count);
            CHECK(compare(result, context, values).fewest_digits >= problem.digits);
        }
    }
}

TEST_CASE("two peaks, fixed parameters and bounds")
{
    const std::vector<double> truth = {1, 2, 1.5, 3, 1, 0, 0, 6, 2, 4, 1, 0, 0};
    Setup peaks("InvsPoly", {0.5, 2.3, 1.2, 2, 1, 0, 0, 5.5, 1.5, 3, 1, 0, 0});
    peaks.add_curve(truth, -2, 10, 80, 1e-6);
    peaks.options.fixed = {false, false, false, false, true, true, true, false, false, false, true, true, true};
    FitResult result = peaks.run();
    REQUIRE(result.converged);
    for (size_t i = 0; i < truth.size(); ++i) {
        CHECK(result.parameters[i].value == doctest::Approx(truth[i]).epsilon(1e-5));
        CHECK(result.parameters[i].fixed == peaks.options.fixed[i]);
        CHECK(std::isnan(result.parameters[i].standard_error) == peaks.options.fixed[i]);
    }
    CHECK(result.degrees_of_freedom == 80 - 7);

    // Two overlapping peaks of certified data.
    const Table table = read_table(EXAMPLES "/gauss1_peaks.csv"),
                certified = read_table(EXAMPLES "/gauss1_peaks_certified.csv");
    for (const size_t start : {2, 3}) {
        Setup gauss("Gauss", certified.columns[start]);
        gauss.data = {{table.columns[0]}, table.columns[1], {}};
        gauss.options.fixed.assign(7, false);
        gauss.options.fixed[0] = true;
        const FitResult found = gauss.run();
        for (size_t i = 0; i < 7; ++i)
            CHECK(found.parameters[i].value == doctest::Approx(certified.columns[1][i]).epsilon(1e-9));
    }

    peaks.options.lower.assign(truth.size(), -infinity);
    peaks.options.upper.assign(truth.size(), infinity);
    peaks.options.upper[3] = 2.5;
    result = peaks.run();
    CHECK(result.converged);
    CHECK(result.parameters[3].value == doctest::Approx(2.5));
    CHECK(result.parameters[3].at_bound);
    CHECK(!result.parameters[0].at_bound);
    peaks.options.start[3] = 3;
    CHECK_THROWS_AS(peaks.run(), Error);

    // Nothing is left to estimate where a bound holds the only free parameter.
    Setup line("Line", {0, 0});
    line.add_curve({1, 2}, 0, 5, 6, 1e-3);
    line.options.fixed = {true, false};
    line.options.upper = {infinity, 0.1};
    result = line.run();
    CHECK((result.converged && !result.dependent && result.parameters[1].at_bound));
    CHECK(result.parameters[1].value == 0.1);
    CHECK(result.degrees_of_freedom == 6);
    CHECK(std::isnan(result.parameters[1].standard_error));
}

TEST_CASE("derivatives that are missing or not exact are replaced by numeric ones")
{
    Setup rational4("Rational4", {2, 1, 1});
    rational4.add_curve({3, 0.5, 2}, -1.5, 10, 30, 1e-4);
    FitResult result = rational4.run();
    CHECK(result.converged);
    CHECK(result.parameters[0].numeric_derivative);
    CHECK(!result.parameters[1].numeric_derivative);
    CHECK(result.parameters[0].value == doctest::Approx(3).epsilon(1e-3));

    ModelReference silent = rational4.about;  // the check at the start finds it out by itself
    silent.inexact = {};
    result = fit(rational4.evaluator, silent, rational4.data, rational4.options);
    CHECK(result.parameters[0].numeric_derivative);
    CHECK(!result.parameters[2].numeric_derivative);

    Setup centred("PolyCtr5", {0, 2, 0, 0, 0, 0, 0});
    centred.add_curve({1, 2, -2, 0.5, 0.25, -0.1, 0.05}, -1, 5, 40, 1e-3);
    centred.options.fixed = {false, true, false, false, false, false, false};
    result = centred.run();
    CHECK(result.converged);
    CHECK(result.parameters[2].numeric_derivative);
    CHECK(result.parameters[6].value == doctest::Approx(0.05).epsilon(1e-2));
}

TEST_CASE("parameters that the data cannot tell apart are reported")
{
    Setup rational("Rational", {1, 2, 3, 0.5});  // a common factor cancels
    rational.add_curve({1, 2, 3, 0.5}, 0, 10, 30, 1e-3);
    const FitResult result = rational.run();
    CHECK(result.dependent);
    CHECK(std::isnan(result.parameters[0].standard_error));
}

TEST_CASE("a fit that cannot begin or end says why")
{
    Setup pole("Rational2", {-1, 2, 3});
    for (const double x : {0.0, 1.0, 2.0, 3.0}) pole.add(x, x);
    CHECK_THROWS_WITH_AS(pole.run(), "the model has no value at x = 1 with the start values", Error);

    Setup few("Cubic", {0, 0, 0, 0});
    few.add(1, 1);
    CHECK_THROWS_WITH_AS(few.run(), "1 points cannot determine 4 parameters", Error);

    Setup short_run("InvsPoly", {0, 30, 1, 1, 1, 0, 0});
    short_run.add_curve({1, 2, 1.5, 3, 1, 0, 0}, -2, 10, 80, 1e-3);
    short_run.options.max_iterations = 1;
    const FitResult result = short_run.run();
    CHECK(!result.converged);
    CHECK(result.stop_reason == "the limit of iterations was reached");
}

namespace {

/// Normally distributed noise, the same in every run and on every system.
class Noise {
public:
    double operator()()
    {
        double sum = -6;  // twelve uniform numbers have variance 1
        for (int i = 0; i < 12; ++i) sum += static_cast<double>(generator_()) / 4294967296.0;
        return sum;
    }

private:
    std::mt19937 generator_{20260101};
};

}  // namespace

TEST_CASE("a surface, an implicit circle and both outputs of a helix are found again from noisy points")
{
    Noise noise;
    const std::vector<double> peak = {1, 5, 2, 1.5, -1, 0.8};
    Setup surface("Gauss2D", {0.5, 4, 1.5, 1, -0.5, 1});
    surface.data.x.resize(2);
    for (int i = 0; i < 400; ++i) {
        surface.data.x[0].push_back(-2 + 0.4 * (i % 20));
        surface.data.x[1].push_back(-4 + 0.3 * (i / 20));
    }
    surface.data.y.resize(400);
    surface.evaluator.values(peak, surface.data.x, surface.data.y);
    for (double &z : surface.data.y) z += 0.05 * noise();
    const FitResult hill = surface.run();
    CHECK(hill.converged);
    CHECK(hill.residual_sd == doctest::Approx(0.05).epsilon(0.1));
    for (size_t i = 0; i < peak.size(); ++i) {
        CHECK(std::fabs(hill.parameters[i].value - peak[i]) < 4 * hill.parameters[i].standard_error);
        CHECK(!hill.parameters[i].numeric_derivative);
    }

    Setup circle("Circle", {2, -0.5, 1.5});  // from far off a circle of infinite radius fits too
    circle.data.x.resize(2);
    for (int i = 0; i < 60; ++i) {
        const double angle = 0.11 * i;
        circle.data.x[0].push_back(3 + 2 * std::cos(angle) + 1e-3 * noise());
        circle.data.x[1].push_back(-1 + 2 * std::sin(angle) + 1e-3 * noise());
        circle.data.y.push_back(0);
    }
    const FitResult found = circle.run();
    CHECK(found.converged);
    for (const auto &[i, value] : {std::pair{0, 3.0}, {1, -1.0}, {2, 2.0}}) {
        const ParameterEstimate &estimate = found.parameters[static_cast<size_t>(i)];
        CHECK(std::fabs(estimate.value - value) < 4 * estimate.standard_error);
        CHECK(estimate.standard_error < 1e-3);
    }

    const std::vector<double> truth = {1, 2, 3, 0.8, 0.5};
    Setup helix("Helix", {0.8, 2.2, 2.5, 0.82, 0.4});
    for (int i = 0; i < 50; ++i) helix.data.x[0].push_back(0.2 * i);
    helix.data.y.resize(100);
    helix.evaluator.values(truth, helix.data.x, helix.data.y);
    for (double &y : helix.data.y) y += 1e-2 * noise();
    const FitResult both = helix.run();
    CHECK(both.converged);
    CHECK(both.degrees_of_freedom == 95);
    CHECK(both.residual_sd == doctest::Approx(1e-2).epsilon(0.2));
    for (size_t i = 0; i < truth.size(); ++i)
        CHECK(std::fabs(both.parameters[i].value - truth[i]) < 4 * both.parameters[i].standard_error);
}
