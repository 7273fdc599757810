// Small problems of all kinds, sensible ones and nonsense: whatever is asked, the answer is an Error or an honest
// result. CURVEBANK_RANDOM_PROBLEMS sets how many are tried, CURVEBANK_RANDOM_FIRST the number of the first.

#include <cstdlib>
#include <cstring>
#include <map>

#include <doctest/doctest.h>
#include <boost/multiprecision/cpp_bin_float.hpp>

#include "fit/implementation.h"
#include "formula/evaluate.h"
#include "reference/reference.h"
#include "tests/support/experiment.h"

using namespace curvebank;
using namespace curvebank::fit;

namespace {

using Exact = boost::multiprecision::cpp_bin_float_50;

size_t number_from(const char *variable, size_t otherwise)
{
    const char *const text = std::getenv(variable);
    return text ? std::stoul(text) : otherwise;
}

/// Every model of the catalogue with a term or two, formulas, and a sum.
const std::vector<Model> &models()
{
    static const std::vector<Model> all = [] {
        std::vector<Model> list;
        for (const auto &entry : reference::models) {
            if (entry.placeholder) continue;
            list.push_back(Model::catalogue(entry.name));
            if (entry.most_terms() > 1 && list.size() % 3 == 0) list.push_back(Model::catalogue(entry.name, 2));
        }
        for (const char *text : {"a + b*x",
                                 "a*exp(-b*x)",
                                 "a*exp(-b*x) + c",
                                 "a*(1 - exp(-b*x))",
                                 "a*x^b",
                                 "a/(1 + exp(b - c*x))",
                                 "a*exp(b/(x + c))",
                                 "a*sin(b*x + c) + d",
                                 "a*sqrt(x - b)",
                                 "a*ln(x - b) + c",
                                 "a*exp(b)*x",
                                 "(a + b*x)/(1 + c*x)",
                                 "a*exp(-((x-b)/c)^2)",
                                 "x < a ? b : c",
                                 "abs(x - a)*b",
                                 "a^b^x",
                                 "1/(a - a) + x*b",
                                 "exp(exp(a*x))",
                                 "gamma(a*x)*b",
                                 "a + 0*b*x"})
            for (int i = 0; i < 3; ++i) list.push_back(Model::formula(text));
        list.push_back(Model::sum({{"g_", Model::catalogue("GaussAmp")}, {"d_", Model::catalogue("ExpDec1")}}));
        return list;
    }();
    return all;
}

/// A number of any size and sign.
double any_number(Random &random)
{
    if (random.chance(0.1)) return 0;
    const double digits = random.uniform(-10, 10);
    return random.chance(0.5)
               ? digits
               : std::ldexp(digits, static_cast<int>(random.uniform(-30, 30)) * (random.chance(0.1) ? 30 : 1));
}

/// Columns with sentinels on both sides.
class Guarded {
public:
    explicit Guarded(const std::vector<double> &column) : numbers_(column.size() + 2 * margin, sentinel)
    {
        std::copy(column.begin(), column.end(), numbers_.begin() + margin);
        copy_ = numbers_;
    }
    std::span<const double> column() const
    {
        return std::span(numbers_).subspan(margin, numbers_.size() - 2 * margin);
    }
    bool untouched() const
    {
        return std::memcmp(numbers_.data(), copy_.data(), copy_.size() * sizeof(double)) == 0;
    }

private:
    static constexpr size_t margin = 16;
    static constexpr double sentinel = -7.25e77;
    std::vector<double> numbers_, copy_;
};

/// Problem number so-and-so, the same on every system.
struct RandomProblem {
    explicit RandomProblem(size_t number)
        : random(static_cast<unsigned>(number)), experiment(models()[random.below(models().size())])
    {
        place_points();
        give_values();
        spoil_points();
        choose_options();
    }

    Random random;
    Experiment experiment;

private:
    void place_points()
    {
        const auto *const about = experiment.model.implementation().about;
        count = random.chance(0.1) ? random.below(4) : 4 + random.below(10);
        const double unit = random.chance(0.8) ? 1 : std::fabs(any_number(random));
        for (size_t i = 0; i < experiment.x.size(); ++i) {
            const double low = about ? about->sample_ranges[i].low : 0,
                         high = about ? about->sample_ranges[i].high : 5;
            const double kind = random.uniform(0, 1);
            for (size_t point = 0; point < count; ++point)
                experiment.x[i].push_back(kind < 0.9    ? unit * random.uniform(low, high)
                                          : kind < 0.95 ? low
                                                        : any_number(random));
        }
    }

    void give_values()
    {
        std::vector<double> p;
        for (const Parameter &parameter : experiment.model.parameters()) p.push_back(parameter.start);
        experiment.follow(p, random.chance(0.2) ? 0 : 0.05);
        const double kind = random.uniform(0, 1), unit = random.chance(0.8) ? 1 : any_number(random);
        for (auto &column : experiment.y)
            for (double &y : column) {
                if (kind < 0.1) y = 3;
                if (kind > 0.9) y = any_number(random);
                if (!std::isfinite(y)) y = random.noise();
                y *= unit;
            }
        if (experiment.model.implicit() && random.chance(0.5)) experiment.y.clear();
    }

    void spoil_points()
    {
        if (random.chance(0.1))
            for (size_t point = 1; point < count; point += 2)
                for (auto *columns : {&experiment.x, &experiment.y})
                    for (auto &column : *columns) column[point] = column[point - 1];
        if (random.chance(0.3)) {
            auto &column = random.chance(0.5) ? experiment.weights : experiment.sigma;
            const double unit = std::fabs(any_number(random)) + (random.chance(0.9) ? 0.1 : 0);
            for (size_t point = 0; point < count; ++point) column.push_back(unit * random.uniform(0.5, 2));
            experiment.data.absolute_sigma = random.chance(0.5);
        }
        if (random.chance(0.1) && count > 0) {
            auto &column = experiment.x[random.below(experiment.x.size())];
            const double bad[] = {NAN, INFINITY, -INFINITY};
            column[random.below(count)] = bad[random.below(3)];
            if (random.chance(0.8)) experiment.data.missing = Data::Missing::skip;
        }
    }

    void choose_options()
    {
        Options &options = experiment.options;
        const auto &parameters = experiment.model.parameters();
        const double kind = random.uniform(0, 1);
        for (const Parameter &parameter : parameters) {
            const double start = kind < 0.6   ? parameter.start * (1 + 0.2 * random.noise())
                                 : kind < 0.8 ? any_number(random)
                                              : parameter.start * any_number(random);
            options.start.emplace_back(parameter.name, start);
            if (random.chance(0.05)) options.fixed.push_back(parameter.name);
            if (random.chance(0.1))
                options.lower.emplace_back(parameter.name, start - std::fabs(any_number(random)));
            if (random.chance(0.1))
                options.upper.emplace_back(parameter.name, start + std::fabs(any_number(random)));
            if (random.chance(0.02)) {
                const std::string &other = parameters[random.below(parameters.size())].name;
                const char *const ties[] = {"2*", "1 + 0.5*", "1/", "ln("};
                const size_t which = random.below(4);
                options.ties.emplace_back(parameter.name, ties[which] + other + (which == 3 ? ")" : ""));
            }
        }
        if (random.chance(0.1)) options.derived = {{"d", "1/" + parameters[0].name}};
        options.max_iterations = static_cast<int>(random.below(30));
        options.threads = random.chance(0.01) ? 2 : 1;
    }

    size_t count = 0;
};

/// Whether a column of numbers holds no infinity.
bool no_infinity(const std::vector<double> &numbers)
{
    return std::none_of(numbers.begin(), numbers.end(), [](double number) { return std::isinf(number); });
}

/// Whether 50 digits are enough for the sine of every number.
bool in_reach(const Experiment &experiment)
{
    constexpr double far = 1e20;
    for (const auto &column : experiment.x)
        for (const double x : column)
            if (std::isfinite(x) && std::fabs(x) > far) return false;
    return true;
}

/// How far from a minimum the result is, in 50 digits: the relative offset, or 0 where the residuals' projection is
/// no more than rounding of the values makes it.
double exact_offset(const Experiment &experiment, const Result &result)
{
    const Model::Implementation &model = experiment.model.implementation();
    std::vector<std::string> names, order = model.variables;
    std::vector<Exact> at_point(model.variables.size());
    std::vector<size_t> free;
    for (size_t i = 0; i < result.parameters.size(); ++i) {
        const Estimate &estimate = result.parameters[i];
        names.push_back(estimate.name);
        order.push_back(estimate.name);
        at_point.emplace_back(estimate.value);
        if (!estimate.fixed && !estimate.at_bound) free.push_back(i);
    }
    const size_t n = free.size();
    std::vector<std::vector<Exact>> columns(n + 1);
    Exact size = 0;
    size_t rows = 0;
    for (size_t k = 0; k < model.outputs; ++k) {
        formula::Evaluator<Exact> evaluator(model.formulas[k].with_derivatives(names), order);
        std::vector<Exact> found(names.size() + 1);
        for (size_t point = 0; point < experiment.x[0].size(); ++point) {
            bool usable = true;
            for (size_t i = 0; i < experiment.x.size(); ++i) {
                at_point[i] = experiment.x[i][point];
                usable = usable && std::isfinite(experiment.x[i][point]);
            }
            if (!usable) continue;
            evaluator(at_point, found);
            const double weight = !experiment.weights.empty() ? std::sqrt(experiment.weights[point])
                                  : !experiment.sigma.empty() ? 1 / experiment.sigma[point]
                                                              : 1;
            const double y = experiment.y.empty() ? 0 : experiment.y[k][point];
            columns[n].push_back(weight * (found[0] - y));
            for (size_t c = 0; c < n; ++c) columns[c].push_back(weight * found[free[c] + 1]);
            size += Exact(weight) * weight * (Exact(y) * y + found[0] * found[0]);
            ++rows;
        }
    }
    const auto product = [rows](const std::vector<Exact> &a, const std::vector<Exact> &b) {
        Exact sum = 0;
        for (size_t row = 0; row < rows; ++row) sum += a[row] * b[row];
        return sum;
    };
    // What x, parameters and values are rounded to moves the curve so far.
    Exact rounding = sqrt(size);
    for (size_t c = 0; c < n; ++c) {
        const Exact moved =
            sqrt(product(columns[c], columns[c])) * fabs(at_point[model.variables.size() + free[c]]);
        if (moved > rounding) rounding = moved;
    }
    Exact explained = 0;
    for (size_t c = 0; c < n; ++c) {
        const Exact before = product(columns[c], columns[c]);
        for (int twice = 0; twice < 2; ++twice)
            for (size_t d = 0; d < c; ++d) {
                const Exact share = product(columns[d], columns[c]);
                for (size_t row = 0; row < rows; ++row) columns[c][row] -= share * columns[d][row];
            }
        const Exact squares = product(columns[c], columns[c]);
        if (squares <= before * Exact(1e-28)) continue;  // nothing that a double could see
        const Exact norm = sqrt(squares);
        for (Exact &number : columns[c]) number /= norm;
        const Exact share = product(columns[c], columns[n]);
        explained += share * share;
    }
    if (sqrt(explained) <= 64 * Exact(2.3e-16) * rounding || n == 0) return 0;
    const Exact left = product(columns[n], columns[n]) - explained;
    const double degrees = static_cast<double>(rows) - static_cast<double>(n);
    if (degrees <= 0 || left <= 0) return INFINITY;
    return static_cast<double>(sqrt(explained / static_cast<double>(n)) / sqrt(left / degrees));
}

/// What is wrong with a result; empty for nothing.
std::string complaint(const Experiment &experiment, const Result &result)
{
    const Options &options = experiment.options;
    if (result.evaluations > 1000 + 60 * options.max_iterations) return "too many evaluations";
    for (const Estimate &estimate : result.parameters) {
        if (!std::isfinite(estimate.value) && !estimate.tied) return estimate.name + " is not finite";
        for (const double number : {estimate.standard_error, estimate.lower, estimate.upper})
            if (std::isinf(number)) return "the error of " + estimate.name + " is infinite";
        if (estimate.standard_error < 0) return "the error of " + estimate.name + " is negative";
        for (const auto &[name, value] : options.lower)
            if (name == estimate.name && estimate.value < value) return name + " is below its bound";
        for (const auto &[name, value] : options.upper)
            if (name == estimate.name && estimate.value > value) return name + " is above its bound";
        for (const std::string &fixed : options.fixed)
            for (const auto &[name, value] : options.start)
                if (fixed == name && name == estimate.name && estimate.value != value)
                    return name + " is fixed and moved";
    }
    for (const Estimate &estimate : result.derived)
        if (std::isinf(estimate.value) || std::isinf(estimate.standard_error))
            return "a derived quantity is infinite";
    if (!no_infinity(result.covariance) || !no_infinity(result.correlation)) return "a covariance is infinite";
    if (!no_infinity({result.sum_of_squares, result.residual_sd, result.reduced_chi_square, result.r_squared,
                      result.adjusted_r_squared, result.aic, result.aicc, result.bic}))
        return "a statistic is infinite";
    if (result.r_squared > 1) return "r squared is above 1";
    return "";
}

}  // namespace

TEST_CASE("random problems: an Error or an honest result")
{
    const size_t first = number_from("CURVEBANK_RANDOM_FIRST", 0);
    const size_t count = number_from("CURVEBANK_RANDOM_PROBLEMS", 100000);
    constexpr size_t exact_every = 50;
    std::map<std::string, int> ends;
    int exact = 0, complaints = 0;
    for (size_t number = first; number < first + count && complaints < 20; ++number) {
        RandomProblem problem(number);
        Experiment &experiment = problem.experiment;
        std::vector<Guarded> columns;
        for (const auto *list : {&experiment.x, &experiment.y})
            for (const auto &column : *list) columns.emplace_back(column);
        columns.emplace_back(experiment.weights);
        columns.emplace_back(experiment.sigma);
        Data data = experiment.data;
        size_t next = 0;
        for (size_t i = 0; i < experiment.x.size(); ++i) data.x.push_back(columns[next++].column());
        for (size_t i = 0; i < experiment.y.size(); ++i) data.y.push_back(columns[next++].column());
        data.weights = columns[next++].column();
        data.sigma = columns[next].column();

        std::string what;
        Result result;
        try {
            result = fit::fit(experiment.model, data, experiment.options);
            ++ends[std::string(word(result.verdict))];
            what = complaint(experiment, result);
            if (what.empty() && result.verdict == Verdict::converged && number % exact_every == 0 &&
                experiment.model.implementation().formula_agrees && experiment.options.ties.empty() &&
                in_reach(experiment)) {
                ++exact;
                const double offset = exact_offset(experiment, result);
                if (!(offset <= 4e-6)) what = "the offset is " + std::to_string(1e6 * offset) + " millionths";
            }
        } catch (const Error &) {
            ++ends["refused"];
        } catch (const std::exception &error) {
            what = error.what();
        }
        for (const Guarded &column : columns)
            if (!column.untouched()) what = "the data were written to";
        if (what.empty()) continue;
        ++complaints;
        FAIL_CHECK("problem " << number << ", " << experiment.model.name() << ", "
                              << std::string(word(result.verdict)) << ": " << what);
    }
    std::string text;
    for (const auto &[end, times] : ends) text += end + " " + std::to_string(times) + ", ";
    MESSAGE(text << exact << " checked in 50 digits");
}
