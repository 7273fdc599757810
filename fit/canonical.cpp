#include "fit/canonical.h"

#include <algorithm>
#include <cmath>

namespace curvebank::fit {
namespace {

using reference::Kind;

/// Whether a parameter is free of every wish: not fixed, tied or bounded.
bool left_alone(const Parameters &parameters, size_t i)
{
    return !parameters.is_fixed(i) && !parameters.is_tied(i) && !parameters.bounded(i);
}

/// Whether both are the same curve, to a rounding error, at points spread over the data.
bool same_curve(Problem &problem, const std::vector<double> &a, const std::vector<double> &b)
{
    constexpr double rounding = 1e-13;
    constexpr size_t some = 16;
    const std::vector<double> before = problem.values_at_some(a, some), after = problem.values_at_some(b, some);
    double size = 0;
    for (const double value : before) size = std::max(size, std::fabs(value));
    for (size_t i = 0; i < before.size(); ++i)
        if (!(std::fabs(before[i] - after[i]) <= rounding * size)) return false;
    return true;
}

/// What a term is sorted by: its first position, or else its first scale, width or rate.
const reference::ParameterReference *const *sort_key(const Model::Implementation &model,
                                                     const Model::Implementation::Terms &terms)
{
    const auto first = model.about_parameters.begin() + static_cast<std::ptrdiff_t>(terms.first);
    const auto last = first + static_cast<std::ptrdiff_t>(terms.size);
    for (const Kind kind : {Kind::position, Kind::scale, Kind::width, Kind::rate}) {
        const auto found = std::find_if(first, last, [kind](const auto *about) { return about->kind == kind; });
        if (found != last) return &*found;
    }
    return nullptr;
}

bool sort_terms(const Problem &problem, const Model::Implementation::Terms &terms, std::vector<double> &p)
{
    const auto *const key = sort_key(problem.model(), terms);
    if (!key || terms.count < 2) return false;
    for (size_t i = terms.first; i < terms.first + terms.size * terms.count; ++i)
        if (!left_alone(problem.parameters(), i)) return false;
    const auto offset = static_cast<size_t>(key - &problem.model().about_parameters[terms.first]);
    std::vector<std::vector<double>> blocks;
    for (size_t k = 0; k < terms.count; ++k) {
        const auto first = p.begin() + static_cast<std::ptrdiff_t>(terms.first + k * terms.size);
        blocks.emplace_back(first, first + static_cast<std::ptrdiff_t>(terms.size));
    }
    std::stable_sort(blocks.begin(), blocks.end(),
                     [offset](const auto &a, const auto &b) { return a[offset] < b[offset]; });
    const std::vector<double> before = p;
    for (size_t k = 0; k < terms.count; ++k)
        std::copy(blocks[k].begin(), blocks[k].end(),
                  p.begin() + static_cast<std::ptrdiff_t>(terms.first + k * terms.size));
    return p != before;
}

/// Turns a parameter's sign where its range asks for a positive one: alone, or together with one other of its term.
bool turn_sign(Problem &problem, size_t i, std::vector<double> &p)
{
    const auto *const about = problem.model().about_parameters[i];
    if (!about || !(about->range.low >= 0) || !(p[i] < 0) || !left_alone(problem.parameters(), i)) return false;
    std::vector<double> turned = p;
    turned[i] = -p[i];
    if (same_curve(problem, p, turned)) {
        p = turned;
        return true;
    }
    for (size_t other = 0; other < p.size(); ++other) {
        if (other == i || !left_alone(problem.parameters(), other)) continue;
        turned[other] = -p[other];
        if (same_curve(problem, p, turned)) {
            p = turned;
            return true;
        }
        turned[other] = p[other];
    }
    return false;
}

}  // namespace

bool make_canonical(Problem &problem, std::vector<double> &p)
{
    const Model::Implementation &model = problem.model();
    bool changed = false;
    for (size_t i = 0; i < p.size(); ++i) changed = turn_sign(problem, i, p) || changed;
    for (const auto &terms : model.repeated) {
        // Some models treat their first term differently: only what leaves the curve as it is counts.
        std::vector<double> sorted = p;
        if (sort_terms(problem, terms, sorted) && same_curve(problem, p, sorted)) {
            p = sorted;
            changed = true;
        }
    }
    if (changed) problem.parameters().follow_ties(p);
    return changed;
}

}  // namespace curvebank::fit
