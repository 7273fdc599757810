// A fit from beginning to end.

#include "curvebank/fit/fit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "fit/canonical.h"
#include "fit/descent.h"
#include "fit/statistics.h"
#include "fit/verdict.h"

namespace curvebank::fit {
namespace {

/// Where one way down ended, and what may be said of it.
struct Attempt {
    Standing standing;
    End end = End::no_value;
    Spread spread;
    Verdict verdict = Verdict::domain_left;
    std::vector<std::string> notes;
    int iterations = 0;
    double unit = 1;  ///< of the residuals

    bool better_than(const Attempt &other) const
    {
        if (is_success(verdict) != is_success(other.verdict) && comparable(other)) return is_success(verdict);
        return log_size() < other.log_size();
    }

private:
    /// Equal but for a trace: then a clean verdict counts more than the last digits.
    bool comparable(const Attempt &other) const
    {
        return std::fabs(log_size() - other.log_size()) <= 1e-6;
    }

    /// Of the sum of squares, whose unit each attempt chooses for itself.
    double log_size() const
    {
        if (end == End::no_value) return std::numeric_limits<double>::infinity();
        return std::log(standing.sum_of_squares()) + 2 * std::log(unit);
    }
};

/// The relative offset to go down to: four to five digits beyond the verdict's, so that the parameters have the digits
/// that the data can give.
constexpr double small_offset = 1e-11;

class Fit {
public:
    Fit(const Model &model, const Data &data, const Options &options)
        : data_(data),
          options_(options),
          parameters_(model, options),
          points_(data, model.variables().size(), model.outputs(), model.implicit()),
          problem_(model.implementation(), parameters_, points_, options.threads)
    {
        if (problem_.width() == 0) throw Error("every parameter is fixed: there is nothing to fit");
        if (problem_.residuals() < problem_.width())
            throw Error(std::to_string(points_.used()) + " points cannot determine " +
                        std::to_string(problem_.width()) + " parameters");
        if (!(options.confidence > 0 && options.confidence < 1))
            throw Error("the confidence level must lie between 0 and 1");
    }

    Result run()
    {
        const std::vector<double> &start = parameters_.start();
        Attempt best = attempt(start, false);
        const auto go_on = [&best] { return !is_success(best.verdict) && best.verdict != Verdict::stopped; };
        const auto try_from = [&](const std::vector<double> &p, bool projected) {
            Attempt other = attempt(p, projected);
            other.iterations += best.iterations;
            if (other.better_than(best))
                best = std::move(other);
            else
                best.iterations = other.iterations;
        };
        if (go_on() && problem_.separable()) try_from(start, true);
        if (go_on() && best.end != End::no_value)
            if (const auto elsewhere = off_plateau(best)) try_from(*elsewhere, problem_.separable());
        return report(std::move(best));
    }

private:
    Attempt attempt(const std::vector<double> &start, bool projected)
    {
        Descender descender(problem_, options_.max_iterations, watch());
        Attempt attempt;
        attempt.standing.p = start;
        if (!problem_.prepare(start)) {
            without_value(attempt);
            return attempt;
        }
        const Descent down{Values::fast, Reduction::products, projected, small_offset};
        std::vector<double> near = projected ? start : from_sample(start);
        // Linear parameters may differ from the start by any factor, and the scales of the others with them.
        if (projected && descender.solve_linear(near, down) && !problem_.prepare(near)) {
            without_value(attempt);
            return attempt;
        }
        attempt.end = descender.go(near, down);
        if (attempt.end == End::no_value && near != start) attempt.end = descender.go(start, down);
        descend_in_unit_of_data(descender, attempt.end, down);
        if (attempt.end != End::no_value) settle(descender, attempt);
        if (attempt.end == End::no_value && problem_.model().exact && !descender.stopped()) {
            // The formula went on where the contract has no values: once more by the contract alone.
            problem_.prepare(start);
            const Descent by_contract{Values::exact, Reduction::products, projected, small_offset};
            attempt.end = descender.go(start, by_contract);
            descend_in_unit_of_data(descender, attempt.end, by_contract);
            if (attempt.end != End::no_value) settle(descender, attempt);
        }
        attempt.iterations = descender.iterations();
        if (attempt.end == End::no_value) {
            attempt.standing.p = start;
            without_value(attempt);
            if (descender.stopped()) attempt.verdict = Verdict::stopped;
            return attempt;
        }
        std::vector<double> p = attempt.standing.p;
        if (make_canonical(problem_, p)) settle_at(descender, attempt, p);
        attempt.unit = problem_.residual_scale();
        attempt.verdict = judge(problem_, attempt.standing, attempt.end, attempt.spread, attempt.notes);
        for (const size_t j : without_influence(problem_, attempt.standing)) attempt.spread.determined[j] = false;
        return attempt;
    }

    /// A start from which there may be a way down where there was none: the given one with one parameter of another
    /// size, which gives a clearly lower sum of squares. A curve begun on its plateau has no slope to follow.
    std::optional<std::vector<double>> off_plateau(const Attempt &stuck)
    {
        constexpr int most_decades = 8;
        constexpr size_t most_points = 100000;
        constexpr double clearly = 0.999;
        const std::vector<double> &start = parameters_.start();
        if (stuck.end == End::no_value || problem_.residuals() > most_points || !problem_.prepare(start))
            return std::nullopt;
        Descender descender(problem_, options_.max_iterations, {});
        double least = clearly * problem_.sum_of_squares(stuck.standing.p, Values::fast);
        if (!std::isfinite(least)) least = std::numeric_limits<double>::max();
        std::optional<std::vector<double>> found;
        for (size_t j = 0; j < problem_.width(); ++j)
            for (int decades = -most_decades; decades <= most_decades; ++decades) {
                std::vector<double> p = start;
                double &number = p[parameters_.varied()[j]];
                number = std::clamp(number * std::pow(10.0, decades), parameters_.lower(j), parameters_.upper(j));
                parameters_.follow_ties(p);
                if (problem_.separable() && !descender.solve_linear(p, {})) continue;
                const double squares = problem_.sum_of_squares(p, Values::fast);
                if (!(squares < least)) continue;
                least = squares;
                found = p;
            }
        return found;
    }

    /// The verdict on an attempt that cannot go on from where its parameters are, with the reason.
    void without_value(Attempt &attempt)
    {
        const std::string place = problem_.where_no_value(attempt.standing.p);
        attempt.verdict = place.empty() ? Verdict::overflow : Verdict::domain_left;
        attempt.notes.push_back(place.empty() ? "the residuals or the derivatives are out of the range of numbers" : place);
    }

    /// A start far above the data sets a unit in which the squares of their residuals are 0. Each round takes as many
    /// digits off it as a double has.
    void descend_in_unit_of_data(Descender &descender, End &end, const Descent &down)
    {
        constexpr int most = 40;
        for (int round = 0; round < most && !problem_.in_unit_of_data(); ++round) {
            if (end == End::no_value || end == End::stopped || end == End::iteration_limit) return;
            const std::vector<double> p = descender.standing().p;
            const double before = problem_.residual_scale();
            if (!problem_.prepare(p) || !(problem_.residual_scale() < before)) return;
            end = descender.go(p, down);
        }
    }

    /// The last steps: values of the calling contract, an orthogonal factor, extended precision where it shows.
    void settle(Descender &descender, Attempt &attempt)
    {
        const std::vector<double> p = descender.standing().p;
        if (attempt.end == End::stopped) {
            descender.stay(p, {Values::exact, Reduction::orthogonal});
            if (!std::isfinite(descender.standing().sum_of_squares())) attempt.end = End::no_value;
        } else {
            if (!well_scaled(descender.standing())) problem_.prepare(p);
            attempt.end = descender.go(p, {Values::exact, Reduction::orthogonal, false, small_offset});
        }
        if (attempt.end == End::no_value) return;
        attempt.standing = descender.standing();
        attempt.spread = spread(attempt.standing.reduced, attempt.standing.held);
        if (!needs_polish(attempt)) return;
        descender.polish();
        settle_at(descender, attempt, descender.standing().p);
    }

    /// Whether no derivative has wandered so far from its scale that squares could leave the range.
    static bool well_scaled(const Standing &standing)
    {
        constexpr double far = 1e40;
        for (size_t j = 0; j < standing.reduced.width; ++j) {
            const double norm = standing.reduced.column_norm(j);
            if (!(norm < far && norm > 1 / far)) return false;
        }
        return true;
    }

    /// Takes the standing at p, unless the fit is worse there: undamped steps may lead anywhere.
    void settle_at(Descender &descender, Attempt &attempt, const std::vector<double> &p)
    {
        descender.stay(p, {Values::exact, Reduction::orthogonal});
        const Standing &there = descender.standing();
        const double blur = 4 * attempt.standing.rounding;
        if (!(std::sqrt(there.sum_of_squares()) <= std::sqrt(attempt.standing.sum_of_squares()) + blur)) return;
        attempt.standing = there;
        attempt.spread = spread(attempt.standing.reduced, attempt.standing.held);
    }

    /// Whether rounding may show: in the digits of a parameter, and beside its standard error, which the residuals give.
    bool needs_polish(const Attempt &attempt) const
    {
        constexpr double of_value = 1e-13, of_error = 1e-10;
        constexpr size_t most_points = 100000;
        if (!problem_.has_extended() || problem_.residuals() > most_points) return false;
        const size_t n = problem_.width();
        const Standing &standing = attempt.standing;
        const double rounding = problem_.rounding(standing.p, standing.reduced);
        const double degrees = static_cast<double>(problem_.residuals()) - static_cast<double>(n);
        if (degrees > 0 && rounding < of_error * std::sqrt(standing.sum_of_squares() / degrees)) return false;
        for (size_t j = 0; j < n; ++j) {
            const double error = rounding * std::sqrt(attempt.spread.inverse[j * n + j]);
            if (error > of_value * std::fabs(standing.p[parameters_.varied()[j]] / problem_.scale(j))) return true;
        }
        return false;
    }

    /// A start from a fixed sample of many points; the given one where that does not help.
    std::vector<double> from_sample(const std::vector<double> &start)
    {
        constexpr size_t many = 20000, some = 4096;
        if (points_.total() < many) return start;
        const Points::Sample sample = points_.sample(some);
        const Data data = sample.data();
        const Points few(data, points_.variables(), points_.outputs(), problem_.model().implicit);
        Problem problem(problem_.model(), parameters_, few, 1);
        if (few.used() < 2 * problem.width() || !problem.prepare(start)) return start;
        Descender descender(problem, options_.max_iterations, watch());
        const End end = descender.go(start, {Values::fast, Reduction::products, false, 1e-2});
        if (end != End::minimum && end != End::rounding && end != End::stopped) return start;
        const std::vector<double> &p = descender.standing().p;
        return problem_.sum_of_squares(p, Values::fast) < problem_.sum_of_squares(start, Values::fast) ? p : start;
    }

    Descender::Watch watch()
    {
        if (!options_.watch) return {};
        return [this](int iteration, double sum_of_squares, const std::vector<double> &p) {
            const double unit = problem_.residual_scale() * points_.weight_unit();
            return options_.watch({iteration, sum_of_squares * unit * unit, p});
        };
    }

    Result report(Attempt best)
    {
        Result result;
        result.verdict = best.verdict;
        result.notes = std::move(best.notes);
        result.iterations = best.iterations;
        result.evaluations = problem_.passes();
        result.absolute_sigma = data_.absolute_sigma;
        if (points_.left_out() > 0)
            result.notes.push_back(std::to_string(points_.left_out()) +
                                   " points with numbers that are not finite were left out");
        if (best.end == End::no_value || best.standing.reduced.triangle.empty())
            fill_without_values(problem_, best.standing.p, options_, result);
        else
            fill_statistics(problem_, best.standing, best.spread, data_, options_, result);
        return result;
    }

    const Data &data_;
    const Options &options_;
    Parameters parameters_;
    Points points_;
    Problem problem_;
};

}  // namespace

Result fit(const Model &model, const Data &data, const Options &options)
{
    return Fit(model, data, options).run();
}

}  // namespace curvebank::fit
