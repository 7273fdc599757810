// The reference tables against the library: what a person reads about a model is what the library computes.

#include <algorithm>
#include <cerrno>
#include <cmath>

#include <doctest/doctest.h>

#include "catalogue/catalogue.h"
#include "formula/formula.h"
#include "program/check.h"
#include "reference/reference.h"
#include "tests/support/model_formula.h"

using namespace curvebank;
using namespace curvebank::program;
using reference::ModelReference;

namespace {

/// Parameters, points, and the model's values there.
struct Sample {
    explicit Sample(const ModelReference &entry, int terms = 1)
        : known(find_model(entry.name)),
          p(sample_of(entry, terms)),
          x(entry.sample_ranges.size()),
          evaluator(known, shape(known, static_cast<int>(p.size())))
    {
        const int steps = x.size() == 1 ? 20 : 6;
        const auto points = static_cast<int>(std::pow(steps + 1, x.size()));
        for (int point = 0; point < points; ++point)
            for (int i = 0, index = point; i < static_cast<int>(x.size()); ++i, index /= steps + 1) {
                const auto [low, high] = entry.sample_ranges[static_cast<size_t>(i)];
                x[static_cast<size_t>(i)].push_back(low + (high - low) * (index % (steps + 1)) / steps);
            }
        y = evaluator.values(p, x);
        for (const auto &column : y)
            for (const double value : column) largest = std::max(largest, std::fabs(value));
    }

    KnownModel known;
    std::vector<double> p;
    Columns x;
    Evaluator evaluator;
    Columns y;
    double largest = 0;
};

/// Whether a call that is told to compute three terms does.
bool computes_three_terms(const ModelReference &entry)
{
    const std::vector<double> terms = sample_of(entry, 3);
    std::vector<double> p(CURVEBANK_ROOM(terms.size())), x(CURVEBANK_ROOM_X), y(p), dy(p);
    std::copy(terms.begin(), terms.end(), p.begin() + 1);
    Values at;
    for (size_t i = 0; i < entry.sample_ranges.size(); ++i)
        at[ModelReference::variables[i]] = x[i + 1] = entry.sample_ranges[i].high;
    errno = 0;
    find_model(entry.name).function(EVAL_VALUE, nullptr, static_cast<int16_t>(terms.size()), nullptr, 0, p.data(),
                                    nullptr, x.data(), y.data(), dy.data());
    return y[1] == doctest::Approx(formula_value(entry, terms, at, 0)).epsilon(1e-6);
}

void check_entries(const ModelReference &entry, int terms)
{
    Sample sample(entry, terms);
    if (!entry.derivatives) {
        for (const auto &column : sample.evaluator.derivatives(sample.p, sample.x))
            for (const double dy : column) CHECK(std::isnan(dy));
        return;
    }
    std::vector<bool> inexact(sample.p.size(), false);
    for (const InexactEntry &found : inexact_entries(sample.known, sample.p, sample.x))
        inexact[static_cast<size_t>(found.entry) - 1] = true;
    for (size_t i = 0; i < inexact.size(); ++i)
        CHECK_MESSAGE(inexact[i] == (entry.inexact_at(static_cast<int>(i) + 1) != nullptr),
                      entry.name << " dy[" << i + 1 << "]");
}

}  // namespace

TEST_CASE("every model has its entry, and every entry its model")
{
    for (const auto &row : catalogue) CHECK_MESSAGE(reference::find(row.name) != nullptr, row.name);
    for (const ModelReference &entry : reference::models) {
        CAPTURE(entry.name);
        const KnownModel model = find_model(entry.name);
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
        double worst = 0;
        for (size_t output = 0; output < sample.y.size(); ++output)
            for (size_t i = 0; i < sample.y[output].size(); ++i) {
                Values at;
                for (size_t axis = 0; axis < sample.x.size(); ++axis)
                    at[ModelReference::variables[axis]] = sample.x[axis][i];
                const double expected = formula_value(entry, sample.p, at, output);
                const double error = std::fabs(sample.y[output][i] - expected) /
                                     std::max(std::fabs(expected), 1e-3 * sample.largest);
                worst = std::isnan(error) ? HUGE_VAL : std::max(worst, error);
            }
        return worst;
    };
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        CAPTURE(entry.name);
        CHECK(worst_share(entry, 1) <= entry.tolerance);
        if (entry.most_terms() >= 3) CHECK(worst_share(entry, 3) <= entry.tolerance);
        if (!entry.repeated.empty()) CHECK(computes_three_terms(entry) == (entry.most_terms() >= 3));
    }
}

TEST_CASE("every derivative is the exact partial or listed as inexact, of all terms")
{
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        CAPTURE(entry.name);
        check_entries(entry, 1);
        if (entry.most_terms() > 1) check_entries(entry, 3);
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
