// The C door: what goes in arrives in the engine, what comes out is the engine's, and nothing is thrown.

#include "curvebank/fit.h"

#include <cmath>
#include <cstring>
#include <memory>

#include <doctest/doctest.h>

#include "curvebank/fit/fit.h"
#include "tests/support/allocations.h"

namespace fit = curvebank::fit;

namespace {

constexpr double none = fit::absent;

struct Destroy {
    void operator()(curvebank_fit_model *model) const { curvebank_fit_model_destroy(model); }
    void operator()(curvebank_fit_result *result) const { curvebank_fit_result_destroy(result); }
};
using Model = std::unique_ptr<curvebank_fit_model, Destroy>;
using Result = std::unique_ptr<curvebank_fit_result, Destroy>;

Model catalogue(const char *name, int terms = 1)
{
    curvebank_fit_model *model = nullptr;
    char message[200];
    REQUIRE_MESSAGE(curvebank_fit_model_catalogue(name, terms, &model, message, sizeof message) == 0, message);
    return Model(model);
}

Model formula(const char *text, std::vector<const char *> variables = {})
{
    curvebank_fit_model *model = nullptr;
    char message[200];
    REQUIRE_MESSAGE(curvebank_fit_model_formula(text, static_cast<int>(variables.size()), variables.data(), &model,
                                                message, sizeof message) == 0,
                    message);
    return Model(model);
}

Result run(const Model &model, const curvebank_fit_request &request)
{
    curvebank_fit_result *result = nullptr;
    char message[200];
    REQUIRE_MESSAGE(curvebank_fit_run(model.get(), &request, &result, message, sizeof message) == 0, message);
    return Result(result);
}

/// A peak on a baseline, with noise that is the same everywhere: four decimals.
struct Peak {
    std::vector<double> x, y, sigma;

    explicit Peak(int points = 40)
    {
        uint32_t random = 1;
        for (int i = 0; i < points; ++i) {
            random = random * 1664525u + 1013904223u;
            const double at = 10.0 * i / points;
            x.push_back(at);
            const double curve = 1 + 3 * std::exp(-0.5 * std::pow((at - 4.2) / 0.8, 2));
            y.push_back(std::round((curve + 0.1 * (random / 4294967296.0 - 0.5)) * 1e4) / 1e4);
            sigma.push_back(0.02 + 0.001 * i);
        }
    }

    curvebank_fit_request request() const
    {
        curvebank_fit_request request{};
        request.size = sizeof request;
        request.points = static_cast<int64_t>(x.size());
        request.x = x.data();
        request.y = y.data();
        return request;
    }
};

double at(const Result &result, int array, int i)
{
    return curvebank_fit_result_array(result.get(), array)[i];
}

double number(const Result &result, int which)
{
    return curvebank_fit_result_number(result.get(), which);
}

}  // namespace

TEST_CASE("a fit ends at the same parameters on every system")
{
    const Peak peak;
    struct Case {
        Model model;
        std::vector<double> start, values, errors;
    } cases[] = {
        {catalogue("GaussAmp"),
         {0.5, 5, 1, 2},
         {1.003572016858281, 4.191483944727141, 0.7899102434554035, 3.018672065494038},
         {0.005459410314610853, 0.004111983997350065, 0.004581499692369391, 0.01414575561071162}},
        {formula("base + h*exp(-abs((x-c)/s)^k)"),
         {0.5, 2, 4.5, 1, 2},
         {1.004979261055421, 3.00697946044245, 4.191476588980711, 1.119068957118095, 2.028858264913019},
         {0.005720836025026586, 0.01993614997493704, 0.004128974226339012, 0.006874801258395708,
          0.03518207349683629}},
    };
    for (const Case &test : cases) {
        auto request = peak.request();
        request.start = test.start.data();
        const Result result = run(test.model, request);
        CHECK(curvebank_fit_result_verdict(result.get()) == CURVEBANK_FIT_CONVERGED);
        const int count = curvebank_fit_model_parameter_count(test.model.get());
        for (int i = 0; i < count; ++i) {
            const auto k = static_cast<size_t>(i);
            INFO(std::string(curvebank_fit_model_parameter_name(test.model.get(), i)));
            CHECK(at(result, CURVEBANK_FIT_VALUES, i) == doctest::Approx(test.values[k]).epsilon(1e-10));
            CHECK(at(result, CURVEBANK_FIT_STANDARD_ERRORS, i) == doctest::Approx(test.errors[k]).epsilon(1e-8));
        }
    }
}

TEST_CASE("every member of a request arrives, and every number of the result comes back")
{
    Peak peak;
    peak.y[7] = none;
    const fit::Model two = fit::Model::catalogue("GaussAmp", 2);
    const Model model = catalogue("gaussamp", 2);
    const auto index = [&](const char *name) {
        const int i = curvebank_fit_model_parameter_index(model.get(), name);
        REQUIRE(i >= 0);
        return static_cast<size_t>(i);
    };
    const auto count = static_cast<size_t>(curvebank_fit_model_parameter_count(model.get()));
    REQUIRE(count == 7);

    std::vector<double> start(count, none), lower(count, none), upper(count, none);
    std::vector<int> fixed(count, -1);
    std::vector<const char *> ties(count, nullptr);
    start[index("xc1")] = 4;
    start[index("xc2")] = 8;
    start[index("A2")] = 0.1;
    fixed[index("xc2")] = 1;
    lower[index("A2")] = 0.05;
    upper[index("y0")] = 0.95;
    ties[index("w2")] = "0.5*w1";
    const char *names[] = {"area", "ratio"}, *expressions[] = {"A1*w1*sqrt(2*pi)", "A2/A1"};
    auto request = peak.request();
    request.sigma = peak.sigma.data();
    request.absolute_sigma = 1;
    request.skip_missing = 1;
    request.start = start.data();
    request.fixed = fixed.data();
    request.lower = lower.data();
    request.upper = upper.data();
    request.ties = ties.data();
    request.derived_count = 2;
    request.derived_names = names;
    request.derived_expressions = expressions;
    request.confidence = 0.9;
    request.threads = -1;
    const Result result = run(model, request);

    fit::Data data{.x = {peak.x}, .y = {peak.y}, .weights = {}, .sigma = peak.sigma, .absolute_sigma = true};
    data.missing = fit::Data::Missing::skip;
    fit::Options options;
    options.start = {{"xc1", 4}, {"xc2", 8}, {"A2", 0.1}};
    options.fixed = {"xc2"};
    options.lower = {{"A2", 0.05}};
    options.upper = {{"y0", 0.95}};
    options.ties = {{"w2", "0.5*w1"}};
    options.derived = {{"area", "A1*w1*sqrt(2*pi)"}, {"ratio", "A2/A1"}};
    options.confidence = 0.9;
    const fit::Result expected = fit::fit(two, data, options);

    CHECK(curvebank_fit_is_success(curvebank_fit_result_verdict(result.get())));
    CHECK(curvebank_fit_result_verdict(result.get()) == static_cast<int>(expected.verdict));
    CHECK(curvebank_fit_verdict_word(curvebank_fit_result_verdict(result.get())) == fit::word(expected.verdict));
    REQUIRE(curvebank_fit_result_note_count(result.get()) == static_cast<int>(expected.notes.size()));
    for (size_t i = 0; i < expected.notes.size(); ++i)
        CHECK(curvebank_fit_result_note(result.get(), static_cast<int>(i)) == expected.notes[i]);

    const auto same = [](double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; };
    const auto check_columns = [&](const std::vector<fit::Estimate> &estimates, int first) {
        for (size_t i = 0; i < estimates.size(); ++i) {
            const int k = static_cast<int>(i);
            CHECK(same(at(result, first, k), estimates[i].value));
            CHECK(same(at(result, first + 1, k), estimates[i].standard_error));
            CHECK(same(at(result, first + 2, k), estimates[i].lower));
            CHECK(same(at(result, first + 3, k), estimates[i].upper));
        }
    };
    check_columns(expected.parameters, CURVEBANK_FIT_VALUES);
    check_columns(expected.derived, CURVEBANK_FIT_DERIVED_VALUES);
    for (size_t i = 0; i < count * count; ++i) {
        CHECK(same(at(result, CURVEBANK_FIT_COVARIANCE, static_cast<int>(i)), expected.covariance[i]));
        CHECK(same(at(result, CURVEBANK_FIT_CORRELATION, static_cast<int>(i)), expected.correlation[i]));
    }
    CHECK(same(number(result, CURVEBANK_FIT_SUM_OF_SQUARES), expected.sum_of_squares));
    CHECK(same(number(result, CURVEBANK_FIT_RELATIVE_OFFSET), expected.relative_offset));
    CHECK(same(number(result, CURVEBANK_FIT_REDUCED_CHI_SQUARE), expected.reduced_chi_square));
    CHECK(same(number(result, CURVEBANK_FIT_BIC), expected.bic));
    CHECK(number(result, CURVEBANK_FIT_ITERATIONS) == expected.iterations);
    CHECK(number(result, CURVEBANK_FIT_POINTS) == 39);
    CHECK(number(result, CURVEBANK_FIT_LEFT_OUT) == 1);
    CHECK(number(result, CURVEBANK_FIT_DEGREES_OF_FREEDOM) == static_cast<double>(expected.degrees_of_freedom));
    CHECK(curvebank_fit_result_parameter_state(result.get(), static_cast<int>(index("xc2"))) ==
          CURVEBANK_FIT_FIXED);
    CHECK(curvebank_fit_result_parameter_state(result.get(), static_cast<int>(index("w2"))) == CURVEBANK_FIT_TIED);
    CHECK(curvebank_fit_result_parameter_state(result.get(), static_cast<int>(index("y0"))) ==
          CURVEBANK_FIT_AT_BOUND);
    CHECK(curvebank_fit_result_parameter_state(result.get(), static_cast<int>(index("w1"))) == 0);

    const double further[] = {3, 4, 5};
    double values[3], half_widths[3];
    REQUIRE(curvebank_fit_result_band(result.get(), model.get(), 3, further, 1, 0.9, values, half_widths, nullptr,
                                      0) == 0);
    const double *const column = further;
    const fit::Band band = fit::band(two, expected, {&column, 1}, 3, fit::BandKind::prediction, 0.9);
    for (size_t i = 0; i < 3; ++i)
        CHECK((same(values[i], band.value[i]) && same(half_widths[i], band.half_width[i])));
}

TEST_CASE("columns stand one behind the other, and models add up")
{
    const Model plane = formula("a + b*u + c*v", {"u", "v"});
    const std::vector<double> x = {0, 1, 2, 3, 4, 5, 0, 0, 1, 1, 3, 2}, y = {1, 3, 4.5, 6.5, 7.5, 10};
    auto request = curvebank_fit_request{};
    request.size = sizeof request;
    request.points = 6;
    request.x = x.data();
    request.y = y.data();
    const Result result = run(plane, request);
    CHECK(at(result, CURVEBANK_FIT_VALUES, 0) == doctest::Approx(1));
    CHECK(at(result, CURVEBANK_FIT_VALUES, 1) == doctest::Approx(2));
    CHECK(at(result, CURVEBANK_FIT_VALUES, 2) == doctest::Approx(-0.5));
    double values[6];
    REQUIRE(curvebank_fit_model_values(plane.get(), curvebank_fit_result_array(result.get(), CURVEBANK_FIT_VALUES),
                                       6, x.data(), values, nullptr, 0) == 0);
    for (size_t i = 0; i < 6; ++i) CHECK(values[i] == doctest::Approx(y[i]));

    Model peak = catalogue("GaussAmp"), line = formula("a + b*x");
    const curvebank_fit_model *parts[] = {peak.get(), line.get()};
    const char *prefixes[] = {"p_", ""};
    curvebank_fit_model *made = nullptr;
    REQUIRE(curvebank_fit_model_sum(2, prefixes, parts, &made, nullptr, 0) == 0);
    const Model sum(made);
    peak.reset();
    line.reset();
    const int a = curvebank_fit_model_parameter_index(sum.get(), "a");
    CHECK(curvebank_fit_model_parameter_index(sum.get(), "p_y0") == 0);
    CHECK(curvebank_fit_model_parameter_is_fixed(sum.get(), a) == 1);
    CHECK(curvebank_fit_model_parameter_start(sum.get(), a) == 0);
    const Peak data;
    std::vector<double> start(6, none);
    start[1] = 4;
    auto of_peak = data.request();
    of_peak.start = start.data();
    CHECK(curvebank_fit_is_success(curvebank_fit_result_verdict(run(sum, of_peak).get())));
}

TEST_CASE("what cannot be carried out is a code and a line that says why")
{
    const Peak peak;
    const Model model = catalogue("GaussAmp");
    const auto refused = [&](auto change) {
        auto request = peak.request();
        change(request);
        auto *result = reinterpret_cast<curvebank_fit_result *>(1);
        char message[300] = "";
        CHECK(curvebank_fit_run(model.get(), &request, &result, message, sizeof message) ==
              CURVEBANK_FIT_BAD_REQUEST);
        CHECK(result == nullptr);
        return std::string(message);
    };
    using Request = curvebank_fit_request;
    const double outside[] = {5, 5, 5, 5};
    const char *tie[] = {"A1 +", nullptr, nullptr, nullptr}, *null = nullptr;
    CHECK(refused([](Request &request) { request.size = 8; }).find("size") != std::string::npos);
    CHECK(refused([](Request &request) { request.x = nullptr; }) == "x is NULL");
    CHECK(refused([](Request &request) { request.y = nullptr; }) == "y is NULL");
    CHECK(refused([](Request &request) { request.points = -1; }).find("-1") != std::string::npos);
    CHECK(refused([](Request &request) { request.points = INT64_MAX; }).find("points") != std::string::npos);
    CHECK(refused([](Request &request) { request.points = 0; }).find("0 points") != std::string::npos);
    CHECK(refused([&](Request &request) { request.upper = outside, request.lower = outside; }) ==
          "every parameter is fixed: there is nothing to fit");
    CHECK(refused([&](Request &request) { request.ties = tie; }).find("y0") == 0);
    CHECK(refused([&](Request &request) { request.derived_count = 1, request.derived_names = &null; }) ==
          "a derived name is NULL");
    CHECK(refused([](Request &request) { request.confidence = 95; }).find("confidence") != std::string::npos);

    char message[8];
    curvebank_fit_model *made = nullptr;
    CHECK(curvebank_fit_model_catalogue("NoSuchModel", 1, &made, message, sizeof message) ==
          CURVEBANK_FIT_BAD_REQUEST);
    CHECK(std::string(message) == "no mode");
    CHECK(curvebank_fit_model_catalogue(nullptr, 1, &made, nullptr, 0) == CURVEBANK_FIT_BAD_REQUEST);
    CHECK(curvebank_fit_model_formula("a*x +", 0, nullptr, &made, nullptr, 0) == CURVEBANK_FIT_BAD_REQUEST);
    CHECK(curvebank_fit_model_formula("a*x", 0, nullptr, nullptr, nullptr, 0) == CURVEBANK_FIT_BAD_REQUEST);
    const curvebank_fit_model *part = model.get();
    const char *no_name = "2*";
    CHECK(curvebank_fit_model_sum(1, &no_name, &part, &made, nullptr, 0) == CURVEBANK_FIT_BAD_REQUEST);
    CHECK(made == nullptr);

    CHECK(std::string(curvebank_fit_model_parameter_name(model.get(), 4)).empty());
    CHECK(std::isnan(curvebank_fit_result_number(nullptr, CURVEBANK_FIT_AIC)));
    CHECK(std::string(curvebank_fit_verdict_word(-1)).empty());
}

TEST_CASE("a watcher sees every iteration and stops the fit")
{
    struct Seen {
        int calls = 0;
        double last = 0, y0 = 0;
    } seen;
    const Peak peak;
    auto request = peak.request();
    request.watch_context = &seen;
    request.watch = [](void *context, int iteration, double sum_of_squares, const double *parameters) {
        auto &of = *static_cast<Seen *>(context);
        ++of.calls;
        of.last = sum_of_squares;
        of.y0 = parameters[0];
        return iteration >= 2 ? 1 : 0;
    };
    const Result result = run(catalogue("GaussAmp"), request);
    CHECK(curvebank_fit_result_verdict(result.get()) == CURVEBANK_FIT_STOPPED);
    CHECK(seen.calls >= 2);
    CHECK(at(result, CURVEBANK_FIT_VALUES, 0) == seen.y0);
    CHECK(number(result, CURVEBANK_FIT_SUM_OF_SQUARES) == doctest::Approx(seen.last));
}

// On Windows the library brings an allocator of its own, which this program cannot replace.
#ifndef _WIN32
TEST_CASE("wherever memory ends, the door says so")
{
    const Peak peak(600);
    auto request = peak.request();
    request.threads = 2;
    const char *name = "area", *expression = "A*w";
    request.derived_count = 1;
    request.derived_names = &name;
    request.derived_expressions = &expression;
    const auto fit_once = [&] {
        curvebank_fit_model *model = nullptr;
        curvebank_fit_result *result = nullptr;
        int code = curvebank_fit_model_formula("y0 + A*exp(-0.5*((x-4)/w)^2)", 0, nullptr, &model, nullptr, 0);
        if (code == 0) code = curvebank_fit_run(model, &request, &result, nullptr, 0);
        CHECK((code == 0) == (result != nullptr));
        curvebank_fit_result_destroy(result);
        curvebank_fit_model_destroy(model);
        return code;
    };
    for (long after = 0;; ++after) {
        curvebank::test::fail_allocation(after);
        const int code = fit_once();
        const bool failed = curvebank::test::allocation_failed();
        curvebank::test::fail_allocation(-1);
        if (!failed) break;
        // Threads that cannot be had are done without.
        const bool told = code == CURVEBANK_FIT_OUT_OF_MEMORY || code == CURVEBANK_FIT_OK;
        REQUIRE_MESSAGE(told, "allocation ", after, " gives ", code);
    }
}
#endif
