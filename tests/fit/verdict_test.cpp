// What fits end with: parameters, errors and verdicts, where numbers are awkward, starts poor and data say little.

#include <cstring>

#include <doctest/doctest.h>

#include "tests/support/experiment.h"

using namespace curvebank::fit;
using doctest::Approx;

namespace {

Experiment of_catalogue(std::string_view name, int terms = 1)
{
    return Experiment(Model::catalogue(name, terms));
}

Experiment of_formula(std::string_view text)
{
    return Experiment(Model::formula(text));
}

Approx about(double value, double difference)
{
    return Approx(value).epsilon(difference).scale(0);
}

/// Values and standard errors are those of the other fit to a relative difference.
void check_same(const Result &a, const Result &b, double difference = 1e-9)
{
    for (const Estimate &estimate : a.parameters) {
        CAPTURE(estimate.name);
        const Estimate &other = at(b, estimate.name);
        CHECK(estimate.value == about(other.value, difference));
        CHECK(std::isnan(estimate.standard_error) == std::isnan(other.standard_error));
        if (!std::isnan(other.standard_error))
            CHECK(estimate.standard_error == about(other.standard_error, difference));
    }
    CHECK(a.sum_of_squares == about(b.sum_of_squares, difference));
    CHECK(a.degrees_of_freedom == b.degrees_of_freedom);
}

}  // namespace

TEST_CASE("a feature far from 0 has the value and the errors that it has at 0")
{
    const struct {
        std::string model;
        double centre, step;
        std::vector<double> truth, start;
        size_t position;
    } features[] = {
        {"GaussAmp", 2459003, 0.25, {1, 0.1, 1, 3}, {0.8, -0.6, 1.4, 2}, 1},
        {"Boltzman", 1.7e9, 30, {2, 7, 10, 240}, {1.5, 8, -200, 150}, 2},
        {"Lorentz", 6562.8, 0.03125, {1, 0.01, 0.15, 0.4}, {0.9, 0.06, 0.2, 0.3}, 1},
    };
    for (const auto &feature : features) {
        CAPTURE(feature.model);
        Experiment near = of_catalogue(feature.model), far = near;
        for (int i = -30; i <= 30; ++i) {
            far.x[0].push_back(feature.centre + i * feature.step);
            near.x[0].push_back(far.x[0].back() - feature.centre);  // exact: both are close
        }
        near.follow(feature.truth, 0.03);
        far.y = near.y;
        near.start(feature.start);
        std::vector<double> start = feature.start;
        start[feature.position] += feature.centre;
        far.start(start);
        const Result a = near.run(), b = far.run();
        CHECK(a.verdict == Verdict::converged);
        CHECK(b.verdict == Verdict::converged);
        for (size_t i = 0; i < a.parameters.size(); ++i) {
            const double shift = i == feature.position ? feature.centre : 0;
            const double error = a.parameters[i].standard_error, place = std::fabs(b.parameters[i].value) * 4.5e-16;
            CHECK(std::fabs(b.parameters[i].value - shift - a.parameters[i].value) <=
                  std::max(1e-3 * error, place));
            CHECK(b.parameters[i].standard_error == about(error, 1e-3));
        }
        CHECK(b.r_squared > 0.97);
    }
}

TEST_CASE("from poor starts no flat line is called a fit")
{
    const struct {
        std::string model;
        double low, high;
        std::vector<double> truth;
        std::vector<std::vector<double>> choices;  ///< of every parameter's start
    } curves[] = {
        {"Logistic", 0.1, 12, {1, 5, 2, 3}, {{0, 1}, {1, 100}, {0.01, 1, 500}, {0.1, 2, 40}}},
        {"Gauss", -1, 5, {1, 2, 1.5, 3}, {{0, 3}, {-6, 2, 30}, {0.01, 1, 50}, {1, 500}}},
        {"SGompertz", -2, 10, {5, 2, 0.8}, {{0.1, 5, 300}, {-40, 2, 60}, {0.01, 1, 30}}},
    };
    for (const auto &curve : curves) {
        CAPTURE(curve.model);
        Experiment poor = of_catalogue(curve.model);
        poor.points(40, curve.low, curve.high);
        poor.follow(curve.truth, 0.05);
        std::vector<std::vector<double>> starts = {{}};
        for (const auto &choices : curve.choices) {
            std::vector<std::vector<double>> longer;
            for (const auto &start : starts)
                for (const double choice : choices) {
                    longer.push_back(start);
                    longer.back().push_back(choice);
                }
            starts = longer;
        }
        int found = 0;
        for (const auto &start : starts) {
            std::string text;
            for (const double number : start) text += std::to_string(number) + " ";
            CAPTURE(text);
            poor.start(start);
            const Result result = poor.run();
            CAPTURE(word(result.verdict));
            if (is_success(result.verdict)) CHECK(result.r_squared > 0.1);
            found += is_success(result.verdict) && result.r_squared > 0.98;
        }
        CHECK(3 * found > static_cast<int>(starts.size()));  // the others see nothing of the curve where they are
    }
}

TEST_CASE("a saturating exponential, begun where it has no slope left")
{
    Experiment growth = of_formula("b1*(1 - exp(-b2*x))");
    growth.x[0] = {2, 4, 6, 9, 12, 16, 20};
    growth.y = {{22.1, 44.9, 49.7, 66.8, 68.2, 79.1, 76.4}};
    growth.options.start = {{"b1", 70}, {"b2", 0.2}};
    const Result best = growth.run();
    CHECK(best.verdict == Verdict::converged);
    for (const double rate : {1.0, 2.0, 3.0, 5.0, 8.0, 50.0, 1e4}) {
        CAPTURE(rate);
        growth.options.start = {{"b1", 1}, {"b2", rate}};
        const Result result = growth.run();
        CAPTURE(word(result.verdict));
        if (is_success(result.verdict)) check_same(result, best, 1e-6);
        if (rate <= 3) CHECK(is_success(result.verdict));
    }
}

TEST_CASE("numbers of any size are ordinary numbers")
{
    Experiment peak = of_catalogue("GaussAmp");
    peak.points(50, -1, 5);
    peak.follow({1, 2, 0.75, 3}, 0.02);
    peak.start({0.5, 2.4, 1, 2});
    const Result plain = peak.run();
    CHECK(plain.verdict == Verdict::converged);
    for (double &y : peak.y[0]) y *= 1e-20;
    peak.start({0.5e-20, 2.4, 1, 2e-20});
    const Result tiny = peak.run();
    CHECK(tiny.verdict == Verdict::converged);
    CHECK(tiny.r_squared == Approx(plain.r_squared));
    CHECK(at(tiny, "A").value == about(1e-20 * at(plain, "A").value, 1e-9));
    CHECK(at(tiny, "A").standard_error == about(1e-20 * at(plain, "A").standard_error, 1e-9));

    Experiment decay = of_catalogue("ExpDec1");
    decay.points(40, 0, 10);
    decay.follow({1e200, 2e200, 2}, 1e198);
    decay.start({1e200, 1e200, 1});
    const Result huge = decay.run();
    CHECK(huge.verdict == Verdict::converged);
    for (const Estimate &estimate : huge.parameters) CHECK(std::isfinite(estimate.standard_error));
    CHECK(at(huge, "t").value == Approx(2).epsilon(0.05));
    CHECK(std::isnan(huge.sum_of_squares));
    CHECK(std::isnan(huge.reduced_chi_square));
    CHECK(huge.residual_sd == about(1e198, 0.3));
    CHECK(std::isfinite(huge.aic));

    // Only the start is huge: no success but with the constant that the data have.
    decay.follow({1, 4, 2}, 0.01);
    for (const double start : {1e20, 1e120, 1e200}) {
        decay.start({start, 4, 1.5});
        const Result back = decay.run();
        CHECK((!is_success(back.verdict) || std::fabs(at(back, "y0").value - 1) < 0.02));
        for (const Estimate &estimate : back.parameters) CHECK(!std::isinf(estimate.standard_error));
    }

    Experiment line = of_catalogue("Line");
    line.y.resize(1);
    Random random(3);
    double squares = 0;
    for (int i = 0; i < 50; ++i) {
        line.x[0].push_back(1e12 + i);
        line.y[0].push_back(3 + 0.25 * i + 0.01 * random.noise());
        squares += (i - 24.5) * (i - 24.5);
    }
    const Result steep = line.run();
    CAPTURE(word(steep.verdict));
    CHECK(steep.verdict == Verdict::converged);
    CHECK(steep.iterations < 30);
    CHECK(at(steep, "a1").value == about(0.25, 1e-3));
    CHECK(at(steep, "a1").standard_error == about(steep.residual_sd / std::sqrt(squares), 1e-5));
}

TEST_CASE("requests that cannot be carried out are refused with a reason")
{
    CHECK_THROWS_WITH_AS(Model::catalogue("Voigt5", 3), doctest::Contains("computes 1 term"), Error);
    CHECK_THROWS_WITH_AS(Model::catalogue("Parabolla"), doctest::Contains("did you mean Parabola"), Error);
    CHECK_THROWS_AS(Model::formula("a*exp("), Error);
    CHECK_THROWS_AS(Model::formula("2*x"), Error);

    Experiment line = of_formula("a + b*x");
    line.points(4, 1, 4);
    line.follow({1, 2}, 0.1);
    const auto refuses = [&](const char *text, const auto &change) {
        Experiment changed = line;
        change(changed);
        CHECK_THROWS_WITH_AS(changed.run(), doctest::Contains(text), Error);
    };
    refuses("no parameter is called c", [](auto &e) { e.options.start = {{"c", 1}}; });
    refuses("depends on itself", [](auto &e) { e.options.ties = {{"a", "2*b"}, {"b", "a + 1"}}; });
    refuses("tied and fixed", [](auto &e) { e.options.ties = {{"a", "b"}}, e.options.fixed = {"a"}; });
    refuses("no parameter is called q", [](auto &e) { e.options.derived = {{"t", "ln(q)"}}; });
    refuses("outside its bounds", [](auto &e) { e.options.start = {{"a", 3}}, e.options.upper = {{"a", 2}}; });
    refuses("every parameter is fixed", [](auto &e) { e.options.fixed = {"a", "b"}; });
    refuses("cannot determine", [](auto &e) { e.x[0].resize(1), e.y[0].resize(1); });
    refuses("y has 3 values", [](auto &e) { e.y[0].pop_back(); });
    refuses("weights of point 2", [](auto &e) { e.weights = {1, 0, 1, 1}; });
    refuses("y of point 3", [](auto &e) { e.y[0][2] = NAN; });
    refuses("confidence", [](auto &e) { e.options.confidence = 1; });
}

TEST_CASE("a straight line: all statistics and both bands against the closed form")
{
    Experiment line = of_catalogue("Line");
    line.x[0] = {1, 2, 3, 4};
    line.y = {{2, 3, 5, 4}};
    const Result result = line.run();
    CHECK(result.verdict == Verdict::converged);
    CHECK(at(result, "a0").value == Approx(1.5));
    CHECK(at(result, "a1").value == Approx(0.8));
    CHECK(result.sum_of_squares == Approx(1.8));
    CHECK(result.degrees_of_freedom == 2);
    CHECK(result.residual_sd == Approx(std::sqrt(0.9)));
    CHECK(result.r_squared == Approx(0.64));
    CHECK(result.adjusted_r_squared == Approx(1 - 0.9 / (5.0 / 3)));
    CHECK(at(result, "a0").standard_error == Approx(std::sqrt(0.9 * (0.25 + 6.25 / 5))));
    CHECK(at(result, "a1").standard_error == Approx(std::sqrt(0.9 / 5)));
    CHECK(result.correlation[1] == Approx(-2.5 / std::sqrt(7.5)));
    constexpr double student = 4.30265272974946;  // 2 degrees of freedom at 97.5 %
    CHECK(at(result, "a1").upper == Approx(0.8 + student * std::sqrt(0.18)));
    const double deviance = 4 * std::log(1.8 / 4);
    CHECK(result.aic == Approx(deviance + 6));
    CHECK(result.bic == Approx(deviance + 3 * std::log(4.0)));
    CHECK(std::isnan(result.aicc));  // four points are too few for its correction

    const std::vector<double> places = {-1, 2.5, 7};
    const double *const x[] = {places.data()};
    const Band curve = band(line.model, result, x, 3, BandKind::confidence);
    const Band further = band(line.model, result, x, 3, BandKind::prediction);
    for (size_t i = 0; i < 3; ++i) {
        const double leverage = 0.25 + (places[i] - 2.5) * (places[i] - 2.5) / 5;
        CHECK(curve.value[i] == Approx(1.5 + 0.8 * places[i]));
        CHECK(curve.half_width[i] == Approx(student * std::sqrt(0.9 * leverage)));
        CHECK(further.half_width[i] == Approx(student * std::sqrt(0.9 * (1 + leverage))));
    }
}

TEST_CASE("weights, sigma and points that are missing")
{
    Experiment weighted = of_catalogue("Line"), repeated = weighted;
    const double points[][2] = {{1, 2}, {2, 3}, {3, 5}, {4, 4}};
    weighted.y.resize(1), repeated.y.resize(1);
    for (const auto &[x, y] : points) {
        weighted.x[0].push_back(x), weighted.y[0].push_back(y);
        weighted.weights.push_back(x);
        for (int i = 0; i < x; ++i) repeated.x[0].push_back(x), repeated.y[0].push_back(y);
    }
    const Result a = weighted.run(), b = repeated.run();
    for (size_t i = 0; i < 2; ++i) CHECK(a.parameters[i].value == Approx(b.parameters[i].value));
    CHECK(a.sum_of_squares == Approx(b.sum_of_squares));
    CHECK(a.r_squared == Approx(b.r_squared));
    CHECK(a.covariance[3] * 2 == Approx(b.covariance[3] * 8));  // 2 degrees of freedom, and 8

    // Sigma and the weights that it means are the same; its unit cancels unless it is absolute.
    Experiment with_sigma = weighted;
    with_sigma.weights.clear();
    for (const double weight : weighted.weights) with_sigma.sigma.push_back(1 / std::sqrt(weight));
    check_same(with_sigma.run(), a);
    for (double &sigma : with_sigma.sigma) sigma *= 7;
    CHECK(at(with_sigma.run(), "a1").standard_error == Approx(at(a, "a1").standard_error));
    with_sigma.data.absolute_sigma = true;
    const Result absolute = with_sigma.run();
    double sum = 0, mean = 0, squares = 0;
    for (size_t i = 0; i < 4; ++i) {
        const double w = 1 / (with_sigma.sigma[i] * with_sigma.sigma[i]), x = with_sigma.x[0][i];
        sum += w, mean += w * x, squares += w * x * x;
    }
    const Estimate &slope = at(absolute, "a1");
    CHECK(slope.standard_error == Approx(1 / std::sqrt(squares - mean * mean / sum)));
    CHECK(slope.upper - slope.value == Approx(1.959963984540054 * slope.standard_error));
    CHECK(absolute.aic == Approx(absolute.sum_of_squares + 4));

    Experiment gaps = weighted;
    gaps.data.missing = Data::Missing::skip;
    const std::pair<double, double> bad[] = {{NAN, 1}, {2, INFINITY}, {-INFINITY, NAN}};
    for (int i = 0; i < 3; ++i) {
        gaps.x[0].insert(gaps.x[0].begin() + 2 * i, bad[i].first);
        gaps.y[0].insert(gaps.y[0].begin() + 2 * i, bad[i].second);
        gaps.weights.insert(gaps.weights.begin() + 2 * i, 3.0);
    }
    const Result skipped = gaps.run();
    check_same(skipped, a, 1e-14);
    CHECK(skipped.left_out == 3);
    CHECK(skipped.points == 4);
    CHECK(notes_of(skipped).find("3 points") != std::string::npos);
}

TEST_CASE("tied parameters: the same as the formula with the ties written in")
{
    Experiment tied = of_formula("A1*exp(-((x-m1)/w1)^2) + A2*exp(-((x-m2)/w2)^2) + c");
    tied.points(80, -3, 6);
    tied.follow({3, 0, 1, 1.7, 2.5, 1, 0.2}, 0.02);
    tied.options.start = {{"A1", 2}, {"m1", 0.3}, {"w1", 1.3}, {"m2", 2.9}, {"c", 0}};
    tied.options.ties = {{"A2", "0.5*A1 + c*w2"}, {"w2", "w1"}};  // a chain, its end first
    Experiment written = of_formula("A1*exp(-((x-m1)/w1)^2) + (0.5*A1 + c*w1)*exp(-((x-m2)/w1)^2) + c");
    written.x = tied.x, written.y = tied.y;
    written.options.start = tied.options.start;
    written.options.derived = {{"A2", "0.5*A1 + c*w1"}};
    const Result a = tied.run(), b = written.run();
    CHECK(a.verdict == Verdict::converged);
    CHECK(a.degrees_of_freedom == b.degrees_of_freedom);
    CHECK(a.sum_of_squares == Approx(b.sum_of_squares).epsilon(1e-12));
    for (const char *name : {"A1", "m1", "w1", "m2", "c", "A2"}) {
        CHECK(at(a, name).value == Approx(at(b, name).value).epsilon(1e-10));
        CHECK(at(a, name).standard_error == Approx(at(b, name).standard_error).epsilon(1e-9));
    }
    CHECK(at(a, "A2").tied);
    CHECK(at(a, "w2").value == at(a, "w1").value);
    CHECK(at(a, "w2").standard_error == at(a, "w1").standard_error);

    const std::vector<double> places = {-2, 0.5, 3};
    const double *const x[] = {places.data()};
    const Band one = band(tied.model, a, x, 3, BandKind::confidence);
    const Band two = band(written.model, b, x, 3, BandKind::confidence);
    for (size_t i = 0; i < 3; ++i) CHECK(one.half_width[i] == Approx(two.half_width[i]).epsilon(1e-8));
}

TEST_CASE("derived quantities and the band of a curve: the delta method by hand")
{
    Experiment decay = of_formula("a*exp(-b*x)");
    decay.points(30, 0, 6);
    decay.follow({4, 0.7}, 0.05);
    decay.options.derived = {{"half_life", "ln(2)/b"}, {"area", "a/b"}};
    const Result result = decay.run();
    const double a = at(result, "a").value, b = at(result, "b").value;
    const double aa = result.covariance[0], ab = result.covariance[1], bb = result.covariance[3];
    CHECK(at(result, "half_life").value == Approx(std::log(2) / b));
    CHECK(at(result, "half_life").standard_error == Approx(std::log(2) / (b * b) * std::sqrt(bb)));
    CHECK(at(result, "area").standard_error ==
          Approx(std::sqrt(aa / (b * b) - 2 * ab * a / (b * b * b) + bb * a * a / (b * b * b * b))));
    CHECK(at(result, "a").standard_error == Approx(std::sqrt(aa)));

    constexpr double student = 2.048407141795244;  // 28 degrees of freedom at 97.5 %
    const std::vector<double> places = {0, 1.5, 9};
    const double *const x[] = {places.data()};
    const Band curve = band(decay.model, result, x, 3, BandKind::confidence);
    for (size_t i = 0; i < 3; ++i) {
        const double by_a = std::exp(-b * places[i]), by_b = -a * places[i] * by_a;
        const double variance = by_a * by_a * aa + 2 * by_a * by_b * ab + by_b * by_b * bb;
        CHECK(curve.half_width[i] == about(student * std::sqrt(variance), 1e-9));
    }
}

TEST_CASE("bounds: held there with the errors of a fixed parameter, left where the minimum is inside")
{
    Experiment decay = of_formula("a*exp(-b*x) + c");
    decay.points(40, 0, 8);
    decay.follow({4, 0.7, -0.3}, 0.05);
    decay.options.start = {{"a", 2}, {"b", 0.3}, {"c", 0.5}};
    Experiment fixed = decay;
    decay.options.lower = {{"c", 0}};
    fixed.options.start[2].second = 0;
    fixed.options.fixed = {"c"};
    const Result held = decay.run(), without = fixed.run();
    CHECK(held.verdict == Verdict::converged);
    CHECK(at(held, "c").value == 0);
    CHECK(at(held, "c").at_bound);
    CHECK(std::isnan(at(held, "c").standard_error));
    CHECK(notes_of(held).find("c is held at its bound") != std::string::npos);
    for (const char *name : {"a", "b"}) {
        CHECK(at(held, name).value == Approx(at(without, name).value).epsilon(1e-9));
        CHECK(at(held, name).standard_error == Approx(at(without, name).standard_error).epsilon(1e-9));
    }
    CHECK(held.degrees_of_freedom == without.degrees_of_freedom);

    // Begun at bounds that the minimum is not at.
    decay.options.lower = {{"b", 0.1}, {"c", -1}};
    decay.options.upper = {{"a", 9}};
    decay.options.start = {{"a", 9}, {"b", 0.1}, {"c", -1}};
    const Result inside = decay.run();
    decay.options.lower.clear(), decay.options.upper.clear();
    check_same(inside, decay.run(), 1e-8);
    CHECK(inside.verdict == Verdict::converged);
    CHECK(!at(inside, "c").at_bound);

    // All of them held.
    decay.options.start = {{"a", 1}, {"b", 1.5}, {"c", 0.5}};
    decay.options.lower = {{"a", 0}, {"b", 1}, {"c", 0.5}};
    decay.options.upper = {{"a", 1}, {"b", 2}, {"c", 1}};
    const Result corner = decay.run();
    CAPTURE(word(corner.verdict));
    CHECK(is_success(corner.verdict));
    CHECK(values_of(corner) == std::vector<double>{1, 1, 0.5});
    for (const Estimate &estimate : corner.parameters) {
        CHECK(estimate.at_bound);
        CHECK(std::isnan(estimate.standard_error));
    }
}

TEST_CASE("a sum of models: prefixes, and one constant")
{
    Experiment sum(Model::sum({{"d_", Model::catalogue("ExpDec1")}, {"g_", Model::catalogue("GaussAmp", 2)}}));
    const auto &parameters = sum.model.parameters();
    REQUIRE(parameters.size() == 10);
    CHECK(parameters[0].name == "d_y0");
    CHECK(parameters[3].name == "g_y0");
    CHECK(parameters[3].start == 0);
    CHECK(parameters[3].fixed);
    CHECK(parameters[9].name == "g_A2");
    sum.points(120, 0, 12);
    const std::vector<double> truth = {0.5, 4, 3, 0, 4, 0.5, 2, 8, 0.8, 1.5};
    sum.follow(truth, 0.01);
    sum.start({0, 3, 2, 0, 4.2, 0.6, 1, 7.7, 1, 1});
    const Result result = sum.run();
    CHECK(result.verdict == Verdict::converged);
    for (size_t i = 0; i < truth.size(); ++i) {
        const Estimate &found = result.parameters[i];
        CHECK(found.fixed == (i == 3));
        CHECK((found.fixed || std::fabs(found.value - truth[i]) < 5 * found.standard_error));
    }
    sum.options.free = {"g_y0"};
    const Result both = sum.run();
    CHECK(both.verdict == Verdict::not_separated);
    CHECK(notes_of(both).find("d_y0, g_y0") != std::string::npos);
    CHECK(std::isnan(at(both, "g_y0").standard_error));
    CHECK(std::isfinite(at(both, "g_w1").standard_error));
    CHECK_THROWS_AS(Model::sum({{"", Model::catalogue("ExpDec1")}, {"", Model::catalogue("Gauss")}}), Error);
}

TEST_CASE("two outputs, and equations without one")
{
    Experiment helix = of_catalogue("Helix");
    helix.points(60, -4, 6);
    helix.follow({1, 2, 3, 1.5, 0.4}, 0.02);
    helix.start({0.5, 2.5, 2, 1.4, 0.8});
    const Result traced = helix.run();
    CHECK(traced.verdict == Verdict::converged);
    CHECK(traced.degrees_of_freedom == 115);
    CHECK(at(traced, "r").value == about(3, 0.01));
    // Both outputs as one curve, the second after the first.
    Experiment unrolled(
        Model::formula("k < 1 ? xc + r*cos(omega*x + phi) : yc + r*sin(omega*x + phi)", {"x", "k"}));
    unrolled.y.resize(1);
    for (size_t k = 0; k < 2; ++k)
        for (size_t i = 0; i < 60; ++i) {
            unrolled.x[0].push_back(helix.x[0][i]);
            unrolled.x[1].push_back(static_cast<double>(k));
            unrolled.y[0].push_back(helix.y[k][i]);
        }
    unrolled.options.start = helix.options.start;
    check_same(traced, unrolled.run(), 1e-7);

    Experiment circle = of_catalogue("Circle");
    Random random(11);
    for (int i = 0; i < 40; ++i) {
        circle.x[0].push_back(1 + 3 * std::cos(0.1 * i) + 0.01 * random.noise());
        circle.x[1].push_back(2 + 3 * std::sin(0.1 * i) + 0.01 * random.noise());
    }
    circle.start({0, 0, 2});
    const Result round = circle.run();
    CHECK(round.verdict == Verdict::converged);
    Experiment equation(Model::formula("((x-xc)/r)^2 + ((y-yc)/r)^2 - 1", {"x", "y"}));
    equation.x = circle.x;
    equation.y = {std::vector<double>(40)};
    equation.options.start = circle.options.start;
    check_same(round, equation.run(), 1e-6);
    CHECK(at(round, "r").value == about(3, 0.01));
    CHECK(std::isnan(round.r_squared));
}

TEST_CASE("the watcher stops a fit, which gives what it has")
{
    Experiment decay = of_formula("a*exp(-b*x) + c");
    decay.points(40, 0, 8);
    decay.follow({4, 0.7, -0.3}, 0.05);
    decay.options.start = {{"a", 1}, {"b", 0.1}, {"c", 1}};
    for (const int after : {1, 3}) {
        int calls = 0;
        std::vector<double> seen;
        double squares = 0;
        decay.options.watch = [&](const Progress &progress) {
            seen.assign(progress.parameters.begin(), progress.parameters.end());
            squares = progress.sum_of_squares;
            return ++calls < after;
        };
        const Result result = decay.run();
        CHECK(result.verdict == Verdict::stopped);
        CHECK(calls == after);
        CHECK(values_of(result) == seen);
        CHECK(result.sum_of_squares == Approx(squares));
        CHECK(std::isfinite(at(result, "a").standard_error));
    }
}

TEST_CASE("data that say little: each has its verdict, and names what it is about")
{
    Experiment scaled = of_formula("a*exp(b)*x + c");
    scaled.points(20, 1, 4);
    scaled.follow({2, 0.5, 1}, 0.1);
    const Result twins = scaled.run();
    CAPTURE(notes_of(twins));
    CHECK(twins.verdict == Verdict::not_separated);
    CHECK(notes_of(twins).find("a, b") != std::string::npos);
    CHECK(notes_of(twins).find(", c") == std::string::npos);
    CHECK(std::isnan(at(twins, "a").standard_error));
    CHECK(std::isfinite(at(twins, "c").standard_error));

    Experiment beyond = of_formula("x < 100 ? a + b*x : c");
    beyond.points(20, 1, 4);
    beyond.follow({2, 0.5, 1}, 0.1);
    const Result idle = beyond.run();
    CHECK(idle.verdict == Verdict::no_influence);
    CHECK(notes_of(idle).find(": c") != std::string::npos);
    CHECK(std::isnan(at(idle, "c").standard_error));

    // No degrees of freedom: a curve through the points, without errors.
    Experiment line = of_catalogue("Line");
    line.x[0] = {1, 2};
    line.y = {{2, 2.5}};
    Experiment growth = of_formula("a*(1 - exp(-b*x))");
    growth.x[0] = {1, 4};
    growth.y = {{1, 2}};
    for (const Experiment *through : {&line, &growth}) {
        const Result result = through->run();
        CHECK(is_success(result.verdict));
        CHECK(result.degrees_of_freedom == 0);
        CHECK(std::isnan(result.residual_sd));
        for (const Estimate &estimate : result.parameters) CHECK(std::isnan(estimate.standard_error));
    }

    // Residuals that are rounding.
    Experiment peak = of_catalogue("GaussAmp");
    peak.points(50, -1, 5);
    peak.follow({1, 2, 0.75, 3}, 0);
    peak.start({0.5, 2.4, 1, 2});
    const Result exact = peak.run();
    CHECK(exact.verdict == Verdict::exact);
    CHECK(at(exact, "xc").value == about(2, 1e-14));
    CHECK(std::isnan(exact.aic));
    CHECK(exact.r_squared == Approx(1));

    // A flat line is no peak.
    for (double &y : peak.y[0]) y = 1;
    const Result flat = peak.run();
    CAPTURE(word(flat.verdict));
    CHECK(flat.verdict != Verdict::converged);

    // The model has no value at the start, and says where.
    Experiment outside = of_formula("a*sqrt(x - b)");
    outside.points(10, 1, 4);
    outside.follow({2, 0.5}, 0.1);
    outside.options.start = {{"a", 1}, {"b", 2}};
    const Result nowhere = outside.run();
    CHECK(nowhere.verdict == Verdict::domain_left);
    CHECK(notes_of(nowhere).find("x = 1") != std::string::npos);
    CHECK(values_of(nowhere) == std::vector<double>{1, 2});
}

TEST_CASE("one description for one curve: terms in order of position, widths positive")
{
    Experiment peaks = of_catalogue("GaussAmp", 3);
    peaks.points(150, 0, 15);
    peaks.follow({0.5, 3, 0.5, 2, 7, 0.8, 1, 12, 0.6, 3}, 0.01);
    peaks.start({0.4, 3.2, 0.6, 1, 6.8, 0.6, 1.5, 11.8, 0.5, 2});
    const Result ordered = peaks.run();
    CHECK(ordered.verdict == Verdict::converged);
    peaks.start({0.4, 11.8, 0.5, 2, 6.8, -0.6, 1.5, 3.2, 0.6, 1});
    const Result sorted = peaks.run();
    check_same(sorted, ordered, 1e-9);
    for (size_t i = 0; i < sorted.covariance.size(); ++i)
        CHECK(std::fabs(sorted.covariance[i] - ordered.covariance[i]) < 1e-10);
    // What the person fixed keeps its place.
    peaks.options.fixed = {"xc1"};
    CHECK(at(peaks.run(), "xc1").value == 11.8);
}

TEST_CASE("any number of threads gives the same bits")
{
    Experiment peaks = of_catalogue("GaussAmp", 2);
    peaks.points(50000, 0, 15);
    peaks.follow({0.5, 3, 0.5, 2, 7, 0.8, 1}, 0.05);
    peaks.start({0.4, 3.2, 0.6, 1, 6.8, 0.6, 1.5});
    peaks.options.threads = 1;
    const Result one = peaks.run();
    CHECK(one.verdict == Verdict::converged);
    for (const int threads : {2, 3}) {
        peaks.options.threads = threads;
        const Result many = peaks.run();
        CHECK(values_of(many) == values_of(one));
        CHECK(std::memcmp(many.covariance.data(), one.covariance.data(), one.covariance.size() * sizeof(double)) ==
              0);
        CHECK(std::memcmp(&many.sum_of_squares, &one.sum_of_squares, sizeof(double)) == 0);
        CHECK(many.evaluations == one.evaluations);
    }
}
