#include "fit/descent.h"

#include <algorithm>
#include <limits>

#include "fit/step.h"

namespace curvebank::fit {
namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double infinity = std::numeric_limits<double>::infinity();

bool all_finite(const std::vector<double> &p)
{
    return std::all_of(p.begin(), p.end(), [](double number) { return std::isfinite(number); });
}

}  // namespace

Room Descender::room(const std::vector<double> &p) const
{
    const Parameters &parameters = problem_.parameters();
    Room room;
    room.down.reserve(problem_.width());
    room.up.reserve(problem_.width());
    for (size_t j = 0; j < problem_.width(); ++j) {
        const double at = p[parameters.varied()[j]];
        room.down.push_back((parameters.lower(j) - at) / problem_.scale(j));
        room.up.push_back((parameters.upper(j) - at) / problem_.scale(j));
    }
    return room;
}

std::vector<double> Descender::moved(const std::vector<double> &p, const std::vector<double> &change) const
{
    const Parameters &parameters = problem_.parameters();
    std::vector<double> to = p;
    for (size_t j = 0; j < change.size(); ++j) {
        double &number = to[parameters.varied()[j]];
        number = std::clamp(number + problem_.scale(j) * change[j], parameters.lower(j), parameters.upper(j));
    }
    parameters.follow_ties(to);
    return to;
}

Standing Descender::stand(const std::vector<double> &p, const Descent &way)
{
    Standing there;
    there.p = p;
    there.reduced = problem_.pass(p, way.values, way.reduction);
    if (!there.reduced.has_values() || !there.reduced.has_derivatives()) {
        there.reduced.sum_of_squares = infinity;
        return there;
    }
    there.held = fit::held(there.reduced, room(p));
    there.projected = fit::projected(there.reduced, there.held);
    const auto free = static_cast<double>(std::count(there.held.begin(), there.held.end(), false));
    const double degrees = static_cast<double>(problem_.residuals()) - free;
    const double left = std::sqrt(std::max(0.0, there.sum_of_squares() - there.projected * there.projected));
    there.relative_offset = free == 0                  ? 0
                            : degrees > 0 && left > 0 ? there.projected / std::sqrt(free) / (left / std::sqrt(degrees))
                                                      : infinity;
    there.rounding = problem_.rounding(p, there.reduced);
    there.at_rounding = there.projected <= 4 * there.rounding;
    return there;
}

bool Descender::watched()
{
    if (watch_ && !watch_(iterations_, here_.sum_of_squares(), here_.p)) stopped_ = true;
    return !stopped_;
}

bool Descender::solve_linear(std::vector<double> &p, const Descent &way)
{
    const auto &linear = problem_.linear();
    const Reduced<double> reduced = problem_.pass(p, way.values, Reduction::orthogonal);
    if (!reduced.has_values() || !reduced.has_derivatives()) return false;
    std::vector<bool> still(problem_.width(), true);
    for (const size_t j : linear) still[j] = false;
    const std::vector<double> no_metric(problem_.width(), 0.0);
    p = moved(p, trust_region_step(reduced, room(p), still, no_metric, infinity).change);
    return all_finite(p);
}

End Descender::go(const std::vector<double> &start, const Descent &way)
{
    std::vector<double> first = start;
    if (way.projected && !solve_linear(first, way)) return End::no_value;
    here_ = stand(first, way);
    if (!std::isfinite(here_.sum_of_squares())) return End::no_value;

    // The radius is in units of the residuals: every parameter's derivative has its norm there. So it does not depend
    // on units, nor on where x begins.
    double radius = infinity;
    std::vector<double> metric(problem_.width(), 0.0);
    const auto renew_metric = [&] {
        for (size_t j = 0; j < metric.size(); ++j) metric[j] = std::max(metric[j], here_.reduced.column_norm(j));
        if (way.projected)
            for (const size_t j : problem_.linear()) metric[j] = 0;
    };
    renew_metric();
    constexpr double first_radius = 10;  // of the norm of the residuals
    radius = first_radius * std::sqrt(here_.sum_of_squares());

    constexpr int most_refusals = 60;
    const int most_slow = way.values == Values::fast ? 2 : 20;
    int refusals = 0, slow = 0;
    while (true) {
        if (here_.projected <= here_.rounding) return End::rounding;
        if (here_.relative_offset <= way.offset) return End::minimum;
        if (iterations_ >= max_iterations_) return End::iteration_limit;
        if (!watched()) return End::stopped;
        ++iterations_;

        const Step step = trust_region_step(here_.reduced, room(here_.p), here_.held, metric, radius);
        std::vector<double> to = moved(here_.p, step.change);
        if (to == here_.p) return End::no_step;
        bool possible = all_finite(to) && problem_.accepts(to);
        if (possible && way.projected) possible = solve_linear(to, way);
        Standing there;
        there.reduced.sum_of_squares = infinity;
        if (possible) there = stand(to, way);

        // So near a minimum that the sum of squares no longer tells: the projection does.
        const double before = here_.sum_of_squares(), after = there.sum_of_squares();
        const double blur = 4 * here_.rounding * std::sqrt(before);
        if (step.predicted <= std::max(64 * epsilon * before, blur)) {
            // Where residuals are large and curved, a whole step leads past the minimum.
            if (!(there.projected < here_.projected) || !std::isfinite(after)) {
                if (++slow > most_slow) return End::no_step;
                radius = 0.25 * std::min(radius, step.length);
                continue;
            }
            slow = there.projected > 0.5 * here_.projected ? slow + 1 : 0;
            radius = std::max(radius, 2 * step.length);
            here_ = std::move(there);
            if (slow > most_slow) return End::no_step;
            renew_metric();
            continue;
        }
        const double ratio = (before - after) / step.predicted;
        if (!(ratio > 0.25)) {
            // Where the model curves up, a parabola through both sums of squares and the slope tells how far to go back.
            double shrink = 0.25;
            if (std::isfinite(after)) {
                const double t = step.predicted / (step.predicted + (after - before));
                shrink = std::clamp(0.5 * t, 0.1, 0.5);
            }
            radius = shrink * std::min(radius, step.length);
        } else if (ratio > 0.75 || step.full) {
            radius = std::max(radius, 2 * step.length);
        }
        if (ratio > 1e-4) {
            refusals = 0;
            here_ = std::move(there);
            renew_metric();
        } else if (++refusals > most_refusals) {
            return End::no_step;
        }
    }
}

void Descender::polish()
{
    if (!problem_.has_extended()) return;
    constexpr int most = 12;
    long double before = std::numeric_limits<long double>::infinity();
    for (int i = 0; i < most; ++i) {
        const Reduced<long double> reduced = problem_.extended_pass(here_.p);
        if (!std::isfinite(static_cast<double>(reduced.sum_of_squares)) || !reduced.has_derivatives()) return;
        const std::vector<long double> change = gauss_newton_step(reduced, here_.held);
        long double longest = 0;
        for (size_t j = 0; j < change.size(); ++j)
            longest = std::max(longest, std::fabs(change[j]) * reduced.column_norm(j));
        if (!(longest < before / 2)) return;
        before = longest;
        const std::vector<double> to = moved(here_.p, std::vector<double>(change.begin(), change.end()));
        if (to == here_.p || !all_finite(to)) return;
        here_.p = to;
        ++iterations_;
    }
}

}  // namespace curvebank::fit
