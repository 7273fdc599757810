// The reference tables against the library: what a person reads about a model is what the library computes.

#include <algorithm>
#include <cmath>

#include <doctest/doctest.h>

#include "catalogue/catalogue.h"
#include "fit/evaluator.h"
#include "fit/known_model.h"
#include "program/check.h"
#include "program/expression.h"
#include "reference/reference.h"

using namespace curvebank;
using namespace curvebank::fit;
using program::Expression;
using reference::ModelReference;

namespace {

const Library &library()
{
    static const Library opened(CURVEBANK_LIBRARY_FILE);
    return opened;
}

fit::Model model_of(const ModelReference &entry)
{
    if (!entry.export_only) return library().find(entry.name);
    return {library().exported(entry.name), 1, 1, static_cast<int>(entry.parameters.size())};
}

/// The sample of an entry: parameters, points, and the evaluator to call there.
struct Sample {
    explicit Sample(const ModelReference &entry)
        : p(entry.sample_parameters.begin(), entry.sample_parameters.end()),
          x(entry.sample_ranges.size()),
          evaluator(model_of(entry), entry.repeated.empty() ? model_of(entry).nParams : static_cast<int>(p.size()),
                    static_cast<int>(p.size()))
    {
        const int steps = x.size() == 1 ? 20 : 6;
        const auto points = static_cast<int>(std::pow(steps + 1, x.size()));
        for (int point = 0; point < points; ++point)
            for (int i = 0, index = point; i < static_cast<int>(x.size()); ++i, index /= steps + 1) {
                const auto [low, high] = entry.sample_ranges[static_cast<size_t>(i)];
                x[static_cast<size_t>(i)].push_back(low + (high - low) * (index % (steps + 1)) / steps);
            }
        y.resize(x[0].size() * static_cast<size_t>(evaluator.outputs()));
        failures = evaluator.values(p, x, y);
        largest = std::fabs(
            *std::max_element(y.begin(), y.end(), [](double a, double b) { return std::fabs(a) < std::fabs(b); }));
    }

    std::vector<double> p;
    Variables x;
    Evaluator evaluator;
    std::vector<double> y;
    size_t failures;
    double largest;
};

/// The value of output k (from 0) at a point, by the text of the entry.
double formula_value(const ModelReference &entry, const std::vector<double> &p, const Variables &x, size_t point,
                     size_t output)
{
    std::map<std::string, double> variables;
    for (size_t i = 0; i < x.size(); ++i) variables[ModelReference::variables[i]] = x[i][point];
    for (size_t i = 0; i < entry.parameters.size(); ++i) variables[std::string(entry.parameters[i].name)] = p[i];
    if (output > 0) return Expression(std::string(entry.second))(variables);
    double value = entry.formula.empty() ? 0.0 : Expression(std::string(entry.formula))(variables);
    for (int k = 1; k <= entry.terms(static_cast<int>(p.size())); ++k) {
        variables["k"] = k;
        const size_t first = entry.parameters.size() + static_cast<size_t>(k - 1) * entry.repeated.size();
        for (size_t i = 0; i < entry.repeated.size(); ++i)
            variables[std::string(entry.repeated[i].name)] = p[first + i];
        value += Expression(std::string(entry.term))(variables);
    }
    return value;
}

}  // namespace

TEST_CASE("every model has its entry, and every entry its model")
{
    for (const auto &row : catalogue) CHECK_MESSAGE(reference::find(row.name) != nullptr, row.name);
    for (const ModelReference &entry : reference::models) {
        CAPTURE(entry.name);
        const Model model = model_of(entry);
        REQUIRE((model.function != nullptr));
        CHECK(!entry.title.empty());
        if (entry.placeholder) continue;
        CHECK(!entry.domain.empty());
        CHECK(entry.formula.size() + entry.term.size() > 0);
        CHECK(entry.names(static_cast<int>(entry.sample_parameters.size())).size() ==
              entry.sample_parameters.size());
        CHECK(entry.sample_parameters.size() >= static_cast<size_t>(model.nParams));
        REQUIRE(entry.sample_ranges.size() >= static_cast<size_t>(model.nIndep));
        for (const auto &[low, high] : entry.sample_ranges) CHECK(low < high);
        CHECK(entry.second.empty() == (model.nDep == 1));
    }
}

TEST_CASE("every formula gives the library's value over its sample range")
{
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        CAPTURE(entry.name);
        const Sample sample(entry);
        CHECK(sample.failures == 0);
        const auto outputs = static_cast<size_t>(sample.evaluator.outputs());
        for (size_t i = 0; i < sample.y.size(); ++i) {
            const double expected = formula_value(entry, sample.p, sample.x, i / outputs, i % outputs);
            const double allowed = entry.tolerance * std::max(std::fabs(expected), 1e-3 * sample.largest);
            CHECK_MESSAGE(std::fabs(sample.y[i] - expected) <= allowed,
                          entry.name << " at x = " << sample.x[0][i / outputs] << ": " << sample.y[i]
                                     << ", formula " << expected);
        }
    }
}

TEST_CASE("every derivative is the exact partial or listed as inexact")
{
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        CAPTURE(entry.name);
        Sample sample(entry);
        if (!entry.derivatives) {
            Rows own(sample.x[0].size(), sample.p.size());
            sample.evaluator.derivatives(sample.p, sample.x, own);
            for (size_t r = 0; r < own.size(); ++r)
                for (const double dy : own[r]) CHECK(std::isnan(dy));
            continue;
        }
        size_t found = 0;
        for (const auto &inexact : program::inexact_entries(find_model(library(), entry.name), sample.x)) {
            CHECK_MESSAGE(!inexact.holds.empty(), "dy[" << inexact.entry << "] is off its differences");
            ++found;
        }
        CHECK(found == entry.inexact.size());
    }
}

TEST_CASE("models marked linear are linear in all their parameters")
{
    for (const ModelReference &entry : reference::models) {
        if (!entry.linear) continue;
        CAPTURE(entry.name);
        Sample sample(entry);
        std::vector<double> doubled = sample.p, y(sample.y.size());
        for (double &value : doubled) value *= 2;
        sample.evaluator.values(doubled, sample.x, y);
        for (size_t r = 0; r < y.size(); ++r) CHECK(y[r] == doctest::Approx(2 * sample.y[r]));
    }
}

TEST_CASE("names: case is ignored, near misses are suggested")
{
    CHECK(reference::find("PARABOLA")->name == "Parabola");
    CHECK(reference::find("Parabolla") == nullptr);
    CHECK(reference::nearest_names("parabla") == std::vector<std::string_view>{"Parabola"});
    CHECK(reference::nearest_names("").empty());
    CHECK(reference::find("InvsPoly")->names(13)[7].name == "xc2");
}

TEST_CASE("what is no expression is refused")
{
    CHECK_THROWS(Expression("1 +"));
    CHECK_THROWS(Expression("a*x")({{"x", 1.0}}));
    CHECK(Expression("erf(0) + gamma(4) + lgamma(1) + pi")({}) == doctest::Approx(6 + 3.141592653589793));
}
