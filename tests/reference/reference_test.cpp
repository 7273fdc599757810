// The reference tables against the library: what a person reads about a model is what the library computes.

#include <algorithm>
#include <cmath>

#include <doctest/doctest.h>

#include "catalogue/catalogue.h"
#include "fit/evaluator.h"
#include "fit/known_model.h"
#include "formula/formula.h"
#include "program/check.h"
#include "program/expression.h"
#include "reference/reference.h"
#include "tests/support/model_formula.h"

using namespace curvebank;
using namespace curvebank::fit;
using curvebank::program::Expression;
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

/// Parameters, points, and the evaluator to call there.
struct Sample {
    explicit Sample(const ModelReference &entry, int terms = 1)
        : p(sample_of(entry, terms)),
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

void check_derivatives(const ModelReference &entry, int terms)
{
    CAPTURE(entry.name);
    Sample sample(entry, terms);
    if (!entry.derivatives) {
        Rows own(sample.x[0].size(), sample.p.size());
        sample.evaluator.derivatives(sample.p, sample.x, own);
        for (size_t r = 0; r < own.size(); ++r)
            for (const double dy : own[r]) CHECK(std::isnan(dy));
        return;
    }
    size_t listed = 0;
    for (size_t i = 0; i < sample.p.size(); ++i) listed += entry.inexact_at(static_cast<int>(i) + 1) != nullptr;
    size_t found = 0;
    for (const auto &inexact : program::inexact_entries(find_model(library(), entry.name), sample.p, sample.x)) {
        CHECK_MESSAGE(!inexact.holds.empty(), "dy[" << inexact.entry << "] is off its differences");
        ++found;
    }
    CHECK(found == listed);
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

TEST_CASE("every formula gives the library's value over its sample range, of as many terms as a call computes")
{
    const auto worst_share = [](const ModelReference &entry, int terms) {
        const Sample sample(entry, terms);
        CHECK(sample.failures == 0);
        double worst = 0;
        const auto outputs = static_cast<size_t>(sample.evaluator.outputs());
        for (size_t i = 0; i < sample.y.size(); ++i) {
            Values at;
            for (size_t axis = 0; axis < sample.x.size(); ++axis)
                at[ModelReference::variables[axis]] = sample.x[axis][i / outputs];
            const double expected = formula_value(entry, sample.p, at, i % outputs);
            worst = std::max(
                worst, std::fabs(sample.y[i] - expected) / std::max(std::fabs(expected), 1e-3 * sample.largest));
        }
        return worst;
    };
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        CAPTURE(entry.name);
        CHECK(worst_share(entry, 1) <= entry.tolerance);
        if (!entry.repeated.empty()) CHECK((worst_share(entry, 3) <= entry.tolerance) == (entry.most_terms() >= 3));
    }
}

TEST_CASE("every derivative is the exact partial or listed as inexact, of all terms")
{
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        check_derivatives(entry, 1);
        if (entry.most_terms() > 1) check_derivatives(entry, 3);
    }
}

TEST_CASE("the models marked linear are those whose formula is linear in all parameters")
{
    const auto linear_in_all = [](std::string_view text, const auto &parameters) {
        if (text.empty()) return true;
        std::vector<std::string> names;
        for (const auto &parameter : parameters) names.emplace_back(parameter.name);
        return formula::Formula::parse(text).linear_in(names).size() == names.size();
    };
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        CHECK_MESSAGE(entry.linear == (linear_in_all(entry.formula, entry.parameters) &&
                                       linear_in_all(entry.second, entry.parameters) &&
                                       linear_in_all(entry.term, entry.repeated)),
                      entry.name);
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
