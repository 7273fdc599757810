#include "fit/verdict.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace curvebank::fit {
namespace {

constexpr double small_offset = 1e-6;  // relative to the statistical spread: Bates and Watts (1981) propose 1e-3

const std::string &name_of(const Problem &problem, size_t j)
{
    return problem.parameters().names()[problem.parameters().varied()[j]];
}

/// What a parameter adds to the curve, to first order: its derivative times itself.
double contribution(const Problem &problem, const Standing &standing, size_t j)
{
    const double p = standing.p[problem.parameters().varied()[j]];
    return standing.reduced.column_norm(j) * std::fabs(p / problem.scale(j));
}

/// The parameters that can be moved together unseen.
std::string combination_text(const Problem &problem, const Spread &spread)
{
    std::string text;
    for (size_t j = 0; j < problem.width(); ++j)
        if (std::fabs(spread.combination[j]) > 0.1) text += (text.empty() ? "" : ", ") + name_of(problem, j);
    return text;
}

/// A parameter far beyond what the data can tell, whose share of the curve others have to take away again.
std::vector<size_t> running_away(const Problem &problem, const Standing &standing, const Spread &spread)
{
    std::vector<size_t> found;
    const double degrees = static_cast<double>(problem.residuals()) - static_cast<double>(problem.width());
    if (!(degrees > 0) || problem.model().implicit) return found;
    const double sd = std::sqrt(standing.sum_of_squares() / degrees);
    for (size_t j = 0; j < problem.width(); ++j) {
        if (standing.held[j]) continue;
        const double p = std::fabs(standing.p[problem.parameters().varied()[j]] / problem.scale(j));
        const double error = sd * std::sqrt(spread.inverse[j * problem.width() + j]);
        if (error > 10 * p && contribution(problem, standing, j) > 30 * problem.size_of_data()) found.push_back(j);
    }
    return found;
}

/// A curve that is as good as the mean is the mean, all but. One that is worse is no minimum of a model that has a
/// constant.
bool no_better_than_constant(const Problem &problem, const Standing &standing)
{
    const Model::Implementation &model = problem.model();
    if (model.all_linear || model.implicit || problem.width() < 2) return false;
    const double total = problem.squares_about_mean();
    constexpr double trace = 1e-6;
    const double worse = standing.sum_of_squares() - total;
    const bool has_constant = std::any_of(model.constants.begin(), model.constants.end(), [&](size_t i) {
        return !problem.parameters().is_fixed(i) && !problem.parameters().bounded(i);
    });
    return total > 0 && (std::fabs(worse) <= trace * total || (worse > 0 && has_constant));
}

std::string join(const Problem &problem, const std::vector<size_t> &which)
{
    std::string text;
    for (const size_t j : which) text += (text.empty() ? "" : ", ") + name_of(problem, j);
    return text;
}

}  // namespace

std::vector<size_t> without_influence(const Problem &problem, const Standing &standing)
{
    constexpr double trace = 100 * std::numeric_limits<double>::epsilon();
    std::vector<size_t> found;
    for (size_t j = 0; j < problem.width(); ++j) {
        if (standing.held[j]) continue;
        const size_t i = problem.parameters().varied()[j];
        const double size = std::max(std::fabs(standing.p[i]), std::fabs(problem.parameters().start()[i]));
        const double length = standing.reduced.column_norm(j);
        if (length == 0 || (size > 0 && length * size / problem.scale(j) <= trace * problem.size_of_data()))
            found.push_back(j);
    }
    return found;
}

Verdict judge(const Problem &problem, const Standing &standing, End end, const Spread &spread,
              std::vector<std::string> &notes)
{
    if (end == End::stopped) return Verdict::stopped;
    if (end == End::no_value) return Verdict::domain_left;

    if (const auto idle = without_influence(problem, standing); !idle.empty()) {
        notes.push_back("without influence on the curve where the data are: " + join(problem, idle));
        return Verdict::no_influence;
    }
    if (const auto away = running_away(problem, standing, spread); !away.empty()) {
        notes.push_back("grows without limit while the sum of squares falls: " + join(problem, away));
        return Verdict::runs_to_infinity;
    }
    if (spread.unseen > 0) {
        notes.push_back("the data do not tell these parameters from each other: " + combination_text(problem, spread));
        return Verdict::not_separated;
    }
    if (no_better_than_constant(problem, standing)) {
        return Verdict::no_better_than_constant;
    }
    for (size_t j = 0; j < problem.width(); ++j)
        if (standing.held[j]) notes.push_back(name_of(problem, j) + " is held at its bound");
    const bool exact = standing.sum_of_squares() <= std::pow(4 * problem.rounding(standing.p, standing.reduced), 2);
    if (exact) return Verdict::exact;
    if (standing.at_rounding || standing.relative_offset <= small_offset) return Verdict::converged;
    return end == End::iteration_limit ? Verdict::iteration_limit : Verdict::no_progress;
}

std::string_view word(Verdict verdict)
{
    switch (verdict) {
        case Verdict::converged: return "converged";
        case Verdict::exact: return "exact";
        case Verdict::no_influence: return "no influence";
        case Verdict::not_separated: return "not separated";
        case Verdict::runs_to_infinity: return "runs to infinity";
        case Verdict::no_better_than_constant: return "no better than a constant";
        case Verdict::no_progress: return "no progress";
        case Verdict::iteration_limit: return "iteration limit";
        case Verdict::domain_left: return "domain left";
        case Verdict::overflow: return "overflow";
        case Verdict::stopped: return "stopped";
    }
    return "";
}

}  // namespace curvebank::fit
