// The engine as its callers meet it: statistics against closed forms, bounds, weights, kinds of models, errors.

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "curvebank/fit/fit.h"

using namespace curvebank::fit;

namespace {

using Columns = std::vector<std::vector<double>>;

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

/// A model and the points to fit it to.
struct Problem {
    Model model;
    Columns x, y;
    std::vector<double> weights = {};
    Options options = {};

    /// Data on the curve itself, with noise.
    void follow(const std::vector<double> &p, double sd)
    {
        Noise noise;
        y.assign(model.outputs(), std::vector<double>(x[0].size()));
        std::vector<const double *> from;
        std::vector<double *> to;
        for (const auto &column : x) from.push_back(column.data());
        for (auto &column : y) to.push_back(column.data());
        model.values(p, from, x[0].size(), to);
        for (auto &column : y)
            for (double &value : column) value += sd * noise();
    }

    void start(const std::vector<double> &p)
    {
        options.start.clear();
        for (size_t i = 0; i < p.size(); ++i) options.start.emplace_back(model.parameters()[i].name, p[i]);
    }

    Result run() const { return fit(model, {{x.begin(), x.end()}, {y.begin(), y.end()}, weights, {}}, options); }
};

std::vector<double> steps(double low, double high, int points)
{
    std::vector<double> x;
    for (int i = 0; i < points; ++i) x.push_back(low + (high - low) * i / (points - 1));
    return x;
}

void check_found(const Result &result, const std::vector<double> &truth)
{
    CHECK(result.verdict == Verdict::converged);
    for (size_t i = 0; i < truth.size(); ++i) {
        CAPTURE(result.parameters[i].name);
        CHECK(std::fabs(result.parameters[i].value - truth[i]) < 4 * result.parameters[i].standard_error);
    }
}

}  // namespace

TEST_CASE("a straight line: all statistics against the closed form")
{
    Problem line{Model::catalogue("Line"), {{1, 2, 3, 4}}, {{2, 3, 5, 4}}};
    const Result result = line.run();
    CHECK(result.verdict == Verdict::converged);
    CHECK(result.parameters[0].value == doctest::Approx(1.5));
    CHECK(result.parameters[1].value == doctest::Approx(0.8));
    CHECK(result.sum_of_squares == doctest::Approx(1.8));
    CHECK(result.degrees_of_freedom == 2);
    CHECK(result.residual_sd == doctest::Approx(std::sqrt(0.9)));
    CHECK(result.r_squared == doctest::Approx(0.64));
    CHECK(result.adjusted_r_squared == doctest::Approx(1 - 0.9 / (5.0 / 3)));
    CHECK(result.aic == doctest::Approx(4 * std::log(1.8 / 4) + 2 * 3));
    CHECK(result.bic == doctest::Approx(4 * std::log(1.8 / 4) + std::log(4) * 3));
    CHECK(std::isnan(result.aicc));  // four points are too few to correct for three parameters
    CHECK(result.parameters[0].standard_error == doctest::Approx(std::sqrt(0.9 * (0.25 + 6.25 / 5))));
    CHECK(result.parameters[1].standard_error == doctest::Approx(std::sqrt(0.9 / 5)));
    CHECK(result.covariance[1] == doctest::Approx(-2.5 * 0.9 / 5));
    // Student's t for 2 degrees of freedom at 97.5 %
    CHECK(result.parameters[1].upper == doctest::Approx(0.8 + 4.30265272974946 * std::sqrt(0.18)));

    line.x = {{1, 2}};
    line.y = {{2, 2}};
    const Result two = line.run();
    CHECK(two.verdict == Verdict::exact);
    CHECK(two.parameters[0].value == doctest::Approx(2));
    CHECK(std::isnan(two.residual_sd));
    CHECK(std::isnan(two.parameters[0].standard_error));
}

TEST_CASE("weights count like repeated points")
{
    Problem weighted{Model::catalogue("Line"), {{1, 2, 3, 4}}, {{2, 3, 5, 4}}, {1, 2, 3, 4}};
    const Problem repeated{weighted.model, {{1, 2, 2, 3, 3, 3, 4, 4, 4, 4}}, {{2, 3, 3, 5, 5, 5, 4, 4, 4, 4}}};
    const Result a = weighted.run(), b = repeated.run();
    for (size_t i = 0; i < 2; ++i) CHECK(a.parameters[i].value == doctest::Approx(b.parameters[i].value));
    CHECK(a.sum_of_squares == doctest::Approx(b.sum_of_squares));
    CHECK(a.r_squared == doctest::Approx(b.r_squared));
    weighted.weights[0] = 0;
    CHECK_THROWS_AS(weighted.run(), Error);
}

TEST_CASE("fixed parameters and bounds")
{
    const std::vector<double> truth = {1, 2, 1.5, 3, 1, 0, 0, 6, 2, 4, 1, 0, 0};
    Problem peaks{Model::catalogue("InvsPoly", 2), {steps(-2, 10, 80)}, {}};
    peaks.follow(truth, 1e-6);
    peaks.start({0.5, 2.3, 1.2, 2, 1, 0, 0, 5.5, 1.5, 3, 1, 0, 0});
    const auto &parameters = peaks.model.parameters();
    for (const size_t i : {4, 5, 6, 10, 11, 12}) peaks.options.fixed.push_back(parameters[i].name);
    Result result = peaks.run();
    REQUIRE(result.verdict == Verdict::converged);
    CHECK(result.degrees_of_freedom == 80 - 7);
    for (size_t i = 0; i < truth.size(); ++i) {
        const Estimate &estimate = result.parameters[i];
        CHECK(estimate.value == doctest::Approx(truth[i]).epsilon(1e-5));
        CHECK(std::isnan(estimate.standard_error) == estimate.fixed);
    }

    peaks.options.upper = {{parameters[3].name, 2.5}};
    result = peaks.run();
    CHECK(result.verdict == Verdict::converged);
    CHECK((result.parameters[3].value == 2.5 && result.parameters[3].at_bound && !result.parameters[0].at_bound));
    peaks.options.upper[0].second = 1.5;
    CHECK_THROWS_AS(peaks.run(), Error);  // the start is above it

    // Nothing is left to estimate where a bound holds the only free parameter.
    Problem line{Model::catalogue("Line"), {steps(0, 5, 6)}, {}};
    line.follow({1, 2}, 1e-3);
    line.options.start = {{"a0", 0}, {"a1", 0}};
    line.options.fixed = {"a0"};
    line.options.upper = {{"a1", 0.1}};
    result = line.run();
    CHECK((result.verdict == Verdict::converged && result.parameters[1].at_bound));
    CHECK(result.parameters[1].value == 0.1);
    CHECK(result.degrees_of_freedom == 6);
    CHECK(std::isnan(result.parameters[1].standard_error));
}

TEST_CASE("a surface, an implicit circle and both outputs of a helix are found again from noisy points")
{
    Problem surface{Model::catalogue("Gauss2D"), Columns(2), {}};
    for (int i = 0; i < 400; ++i) {
        surface.x[0].push_back(-2 + 0.4 * (i % 20));
        surface.x[1].push_back(-4 + 0.3 * (i / 20));
    }
    surface.follow({1, 5, 2, 1.5, -1, 0.8}, 0.05);
    surface.start({0.5, 4, 1.5, 1, -0.5, 1});
    const Result hill = surface.run();
    check_found(hill, {1, 5, 2, 1.5, -1, 0.8});
    CHECK(hill.residual_sd == doctest::Approx(0.05).epsilon(0.1));

    Noise noise;
    Problem circle{Model::catalogue("Circle"), Columns(2), {}};
    for (int i = 0; i < 60; ++i) {
        const double angle = 0.11 * i;
        circle.x[0].push_back(3 + 2 * std::cos(angle) + 1e-3 * noise());
        circle.x[1].push_back(-1 + 2 * std::sin(angle) + 1e-3 * noise());
    }
    circle.start({2, -0.5, 1.5});  // from far off a circle of infinite radius fits too
    const Result round = circle.run();
    check_found(round, {3, -1, 2});
    CHECK(round.parameters[0].standard_error < 1e-3);

    Problem helix{Model::catalogue("Helix"), {steps(0, 9.8, 50)}, {}};
    helix.follow({1, 2, 3, 0.8, 0.5}, 1e-2);
    helix.start({0.8, 2.2, 2.5, 0.82, 0.4});
    const Result both = helix.run();
    check_found(both, {1, 2, 3, 0.8, 0.5});
    CHECK(both.degrees_of_freedom == 95);
    CHECK(both.residual_sd == doctest::Approx(1e-2).epsilon(0.2));
}

TEST_CASE("derivatives that a model lacks or writes otherwise do not harm its fit")
{
    Problem rational4{Model::catalogue("Rational4"), {steps(-1.5, 10, 30)}, {}};
    rational4.follow({3, 0.5, 2}, 1e-4);
    rational4.start({2, 1, 1});
    check_found(rational4.run(), {3, 0.5, 2});
    Problem halves{Model::catalogue("BiGaussian"), {steps(-5, 8, 60)}, {}};
    halves.follow({1, 2, 3, 1, 2}, 1e-2);
    halves.start({0.5, 1.5, 2, 1.5, 1.5});
    check_found(halves.run(), {1, 2, 3, 1, 2});
}

TEST_CASE("a minimum with large, curved residuals is reached, though whole steps lead past it")
{
    Problem decay{Model::catalogue("ExpDec1"), {steps(0, 49, 50)}, {{}}};
    Noise noise;
    for (int i = 0; i < 50; ++i) decay.y[0].push_back(1 + 0.2 * std::exp(-i / 0.6) + 0.1 * noise());
    const Result result = decay.run();
    CHECK(result.verdict == Verdict::converged);
    CHECK(result.relative_offset < 1e-9);
}

TEST_CASE("a request that cannot be carried out is an error, a fit that cannot go on a verdict")
{
    const Problem cubic{Model::catalogue("Cubic"), {{1}}, {{1}}};
    CHECK_THROWS_WITH_AS(cubic.run(), "1 points cannot determine 4 parameters", Error);

    Problem pole{Model::catalogue("Rational2"), {{0, 1, 2, 3}}, {{0, 1, 2, 3}}};
    pole.start({-1, 2, 3});
    const Result nowhere = pole.run();
    CHECK(nowhere.verdict == Verdict::domain_left);
    CHECK(nowhere.notes.at(0) == "the model has no value at x = 1 with these parameters");

    // From a start 200 orders of magnitude away.
    Problem far{Model::catalogue("ExpDec1"), {steps(0, 10, 100)}, {}};
    far.follow({1e200, 2e200, 2}, 1e198);
    const Result there = far.run();
    CHECK((!is_success(there.verdict) || there.r_squared > 0.99));

    Problem rational{Model::catalogue("Rational"), {steps(0, 10, 30)}, {}};  // a common factor cancels
    rational.follow({1, 2, 3, 0.5}, 1e-3);
    const Result free = rational.run();
    CHECK(free.verdict == Verdict::not_separated);
    CHECK(std::isnan(free.parameters[0].standard_error));

    Problem peak{Model::catalogue("GaussAmp"), {steps(-5, 5, 50)}, {}};
    peak.follow({1, 0, 1, 3}, 1e-2);
    peak.start({0, 1, 2, 1});
    peak.options.max_iterations = 1;
    CHECK(peak.run().verdict == Verdict::iteration_limit);
}
