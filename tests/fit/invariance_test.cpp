// Units and origins are a matter of taste: the same data in others give the same fit.

#include <map>
#include <sstream>

#include <doctest/doctest.h>

#include "tests/support/experiment.h"
#include "tests/support/transformed.h"

using namespace curvebank;
using namespace curvebank::fit;
using reference::ModelReference;

namespace {

/// Noisy data about the sample of a model, at places that keep all their digits when they are moved that far.
Experiment at_sample(const DescribedModel &about, double noise_share, const Values &shift)
{
    const ModelReference &entry = about.entry;
    const int terms = entry.repeated.empty() ? 1 : entry.terms(static_cast<int>(about.sample.size()));
    Experiment experiment(Model::catalogue(entry.name, terms));
    const size_t variables = experiment.x.size();
    const size_t steps = variables == 1 ? 60 : variables == 2 ? 9 : 5;
    size_t points = 1;
    for (size_t i = 0; i < variables; ++i) points *= steps;
    for (size_t point = 0; point < points; ++point)
        for (size_t i = 0, index = point; i < variables; ++i, index /= steps) {
            const auto [low, high] = entry.sample_ranges[i];
            // Off the round numbers at which piecewise curves break.
            const double share = (static_cast<double>(index % steps) + 0.37) / static_cast<double>(steps);
            const double by = shift.count(about.variables[i]) ? shift.at(about.variables[i]) : 0;
            experiment.x[i].push_back(by + (low + (high - low) * share) - by);
        }
    experiment.follow(about.sample, 0);
    Random random(19);
    for (auto &y : experiment.y) {
        const auto [low, high] = std::minmax_element(y.begin(), y.end());
        const double noise = noise_share * (*high - *low);
        for (double &value : y) value += noise * random.noise();
    }
    std::vector<double> start = about.sample;
    for (double &number : start) number *= 1 + 0.01 * random.uniform(-1, 1);
    for (size_t i = 0; i < start.size(); ++i)
        if (experiment.model.parameters()[i].fixed) start[i] = about.sample[i];
    experiment.start(start);
    if (entry.implicit) {
        // Points near the curve: those of the grid are not, but their residuals are data as good.
        for (double &value : experiment.y[0]) value = 0;
    }
    return experiment;
}

std::vector<double> starts_of(const Experiment &experiment)
{
    std::vector<double> start;
    for (const auto &[name, value] : experiment.options.start) start.push_back(value);
    return start;
}

/// What is wrong with a fit that should have ended at those parameters, with those errors (NaN: not known).
std::string differences(const Result &result, const std::vector<double> &expected,
                        const std::vector<double> &errors)
{
    if (!is_success(result.verdict)) return std::string(word(result.verdict)) + "; " + notes_of(result);
    std::string text;
    for (size_t i = 0; i < expected.size(); ++i) {
        const Estimate &found = result.parameters[i];
        if (found.fixed) continue;
        const double place = 2 * (std::nextafter(std::fabs(expected[i]), HUGE_VAL) - std::fabs(expected[i]));
        const double off = std::fabs(found.value - expected[i]);
        char line[160];
        if (!(off <= std::max(1e-3 * found.standard_error, place))) {
            std::snprintf(line, sizeof line, "%s = %.17g, not %.17g +- %.3g; ", found.name.c_str(), found.value,
                          expected[i], found.standard_error);
            text += line;
        }
        if (!std::isnan(errors[i]) && !(std::fabs(found.standard_error - errors[i]) <= 1e-3 * errors[i])) {
            std::snprintf(line, sizeof line, "the error of %s is %.6g, not %.6g; ", found.name.c_str(),
                          found.standard_error, errors[i]);
            text += line;
        }
    }
    return text;
}

std::string text_of(double number)
{
    std::ostringstream text;
    text << number;
    return text.str();
}

/// Whether numbers in other units are doubles that still know what they were: the base of an exponential, say, is
/// all but 1 where x counts millionths.
bool can_come_back(const Scaling &scaling, const std::vector<double> &scaled, const std::vector<double> &original)
{
    Values inverse;
    for (const auto &[name, factor] : scaling.factors) inverse[name] = 1 / factor;
    const std::vector<double> back =
        Scaling(*scaling.model, scaling.model->entry.units, inverse).parameters(scaled);
    for (size_t i = 0; i < back.size(); ++i)
        if (!(std::fabs(back[i] - original[i]) <= 1e-12 * std::fabs(original[i]))) return false;
    return true;
}

std::vector<double> errors_of(const Result &result)
{
    std::vector<double> errors;
    for (const Estimate &estimate : result.parameters) errors.push_back(estimate.standard_error);
    return errors;
}

/// The terms of the sample, or one where terms share a parameter, so that only its sum counts.
DescribedModel described(const ModelReference &entry)
{
    DescribedModel about(entry, 1);
    if (entry.domain.find("only") == entry.domain.npos || entry.repeated.empty()) return about;
    about.sample.resize(entry.parameters.size() + entry.repeated.size());
    about.parameters.resize(about.sample.size());
    return about;
}

/// Whether no other parameter decides what becomes of it.
bool of_variables_alone(const Unit &unit, const DescribedModel &about)
{
    const std::vector<std::string> names = formula::Formula::parse(unit.factor).names();
    return std::none_of(about.parameters.begin(), about.parameters.end(), [&](const auto &parameter) {
        return std::find(names.begin(), names.end(), parameter.about->name) != names.end();
    });
}

struct Tally {
    int compared = 0, unfit = 0, lost = 0;
    std::map<std::string, std::string> failures;

    void check(const std::map<std::string, std::string> &reasons)
    {
        for (const auto &[name, text] : failures) CHECK_MESSAGE(reasons.count(name) == 1, (name + ": " + text));
        for (const auto &[name, reason] : reasons)
            CHECK_MESSAGE(failures.count(name) == 1, (name + " is listed, and yet it does not fail"));
    }
};

}  // namespace

TEST_CASE("scaled variables: the same fit")
{
    Tally tally;
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        const DescribedModel about = described(entry);
        const Experiment experiment = at_sample(about, 1e-4, {});
        const Result plain = experiment.run();
        if (!is_success(plain.verdict)) {
            ++tally.unfit;
            continue;
        }
        std::vector<std::vector<std::string>>
            together;  // several values would weigh otherwise, each in its own unit
        for (const std::string &variable : about.variables) together.push_back({variable});
        together.push_back(about.values);
        for (const std::vector<std::string> &scaled : together)
            for (const double factor : {1e-20, 1e-7, 1e7, 1e20}) {
                Values factors;
                for (const auto &names : {about.variables, about.values})
                    for (const std::string &name : names) factors[name] = 1;
                for (const std::string &name : scaled) factors[name] = factor;
                const Scaling scaling(about, entry.units, factors);
                const std::vector<double> expected = scaling.parameters(values_of(plain));
                if (!can_come_back(scaling, expected, values_of(plain))) {
                    ++tally.lost;
                    continue;
                }
                Experiment other = experiment;
                for (size_t i = 0; i < other.x.size(); ++i)
                    for (double &x : other.x[i]) x *= scaling.factors.at(about.variables[i]);
                for (size_t k = 0; k < other.y.size(); ++k)
                    for (double &y : other.y[k]) y = scaling.value(y, k);
                other.start(scaling.parameters(starts_of(experiment)));
                std::vector<double> errors = errors_of(plain);
                for (size_t i = 0; i < errors.size(); ++i) {
                    const Unit unit(about.parameters[i].about->unit);
                    if (unit.form == Unit::product && of_variables_alone(unit, about))
                        errors[i] *= std::fabs(expected[i] / plain.parameters[i].value);
                    else if (unit.form != Unit::logarithm && unit.form != Unit::decadic_logarithm)
                        errors[i] = NAN;
                }
                ++tally.compared;
                const std::string text = differences(other.run(), expected, errors);
                if (!text.empty())
                    tally.failures[std::string(entry.name)] +=
                        scaled[0] + " * " + text_of(factor) + ": " + text + "\n";
            }
    }
    // Some samples leave parameters undetermined, with a verdict that says so, and some units leave none of their
    // digits.
    CHECK(tally.unfit <= 20);
    CHECK(tally.lost <= 40);
    CHECK(tally.compared >= 2000);
    tally.check({});
}

TEST_CASE("variables that begin elsewhere: the same fit")
{
    constexpr double noise_share = 5e-4;  // so that the last place of a distant position is little beside its error
    Tally tally;
    for (const ModelReference &entry : reference::models) {
        if (entry.placeholder) continue;
        const DescribedModel about = described(entry);
        for (const std::string &variable : about.variables) {
            if (std::find(entry.shifts.begin(), entry.shifts.end(), variable) == entry.shifts.end()) continue;
            const size_t axis = static_cast<size_t>(
                std::find(about.variables.begin(), about.variables.end(), variable) - about.variables.begin());
            const auto [low, high] = entry.sample_ranges[axis];
            for (const double widths : {1e3, 1e8}) {
                const double by = std::ldexp(1.0, std::ilogb(widths * (high - low)));
                const Experiment experiment = at_sample(about, noise_share, {{variable, by}});
                const Result plain = experiment.run();
                if (!is_success(plain.verdict)) {
                    ++tally.unfit;
                    continue;
                }
                Experiment other = experiment;
                for (double &x : other.x[axis]) x += by;
                std::vector<double> expected = values_of(plain), start = starts_of(experiment);
                for (size_t i = 0; i < start.size(); ++i) {
                    expected[i] += by * share_of_shift(about, variable, i);
                    start[i] += by * share_of_shift(about, variable, i);
                }
                other.start(start);
                ++tally.compared;
                const std::string text = differences(other.run(), expected, errors_of(plain));
                if (!text.empty())
                    tally.failures[std::string(entry.name)] += variable + " + " + text_of(by) + ": " + text + "\n";
            }
        }
    }
    CHECK(tally.unfit <= 20);
    CHECK(tally.compared >= 200);
    tally.check({{"SchulzFlory", "its centre is a power of ten, which leaves the range of numbers"}});
}
