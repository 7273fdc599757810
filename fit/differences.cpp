#include "fit/differences.h"

#include <cmath>
#include <limits>

namespace curvebank::fit {
namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double none = std::numeric_limits<double>::quiet_NaN();

using Column = std::vector<double>;

constexpr double step_ratio = 8;

/// The plain differences of one step at every point of an output, and what rounding makes of them.
struct Level {
    double width;  ///< of the whole step
    Column difference, rounding;
};

/// Of a ladder of differences at one point, the smallest step first: each is extrapolated from the next, and the
/// one taken is closest to all smaller steps beside their rounding. Smaller steps are right but for rounding;
/// larger ones may agree among each other because they both miss the feature. How rough the values are, which may
/// be more than their rounding, shows in the smallest steps.
double best_of(const std::vector<Level> &ladder, size_t point)
{
    double best = none, least = std::numeric_limits<double>::infinity(), rough = 0;
    const auto apart = [&](size_t k) {
        return std::fabs(ladder[k].difference[point] - ladder[k + 1].difference[point]);
    };
    for (size_t k = 0; k < 3 && k + 2 < ladder.size(); ++k)
        // Where differences move apart as steps grow, it is the curve and no roughness that shows.
        if (apart(k) > ladder[k].rounding[point] && !(apart(k + 1) > apart(k)))
            rough = std::max(rough, 2 * apart(k) * ladder[k].width);
    std::vector<double> estimates, roundings;
    for (size_t k = 0; k < ladder.size(); ++k) {
        const double here = ladder[k].difference[point],
                     rounding = std::max(ladder[k].rounding[point], rough / ladder[k].width);
        if (!std::isfinite(here)) continue;
        const double next = k + 1 < ladder.size() ? ladder[k + 1].difference[point] : none;
        const double extrapolated =
            std::isfinite(next) ? here + (here - next) / (step_ratio * step_ratio - 1) : here;
        double error = 0;
        for (size_t i = 0; i < estimates.size(); ++i)
            error = std::max(error, std::fabs(extrapolated - estimates[i]) - roundings[i]);
        error += rounding;
        if (error < least || estimates.empty()) {
            least = error;
            best = extrapolated;
        }
        estimates.push_back(extrapolated);
        roundings.push_back(rounding);
    }
    return best;
}

}  // namespace

void difference(const Source &source, Source::Memory &memory, std::vector<double> p, size_t j,
                const double *const *x, size_t count, double *const *value, double *const *derivative,
                size_t outputs)
{
    const double centre = p[j];
    std::vector<Column> low(outputs, Column(count)), high(outputs, Column(count));
    std::vector<double *> to_low, to_high;
    for (size_t k = 0; k < outputs; ++k) to_low.push_back(low[k].data()), to_high.push_back(high[k].data());
    const auto values_at = [&](double moved, std::vector<double *> &to) {
        p[j] = moved;
        source.set_parameters(memory, p.data());
        source.run(memory, x, count, to.data(), nullptr);
    };
    const auto changes = [&](double step) {
        values_at(step, to_high);
        for (size_t k = 0; k < outputs; ++k)
            for (size_t i = 0; i < count; ++i)
                if (!(std::fabs(high[k][i] - value[k][i]) <= epsilon * std::fabs(value[k][i]))) return true;
        return false;
    };

    // Rounding of the parameter ends the ladder; of one that is 0, where the values no longer change.
    double least = 1e3 * epsilon * std::fabs(centre);
    int levels = 14;
    if (centre == 0) {
        int unseen = -1000, seen = 1000;
        while (seen - unseen > 1)
            (changes(std::ldexp(1.0, (seen + unseen) / 2)) ? seen : unseen) = (seen + unseen) / 2;
        least = std::ldexp(1.0, seen);
        levels = 18;
    }

    std::vector<std::vector<Level>> ladders(outputs);
    for (double step = least; levels > 0; step *= step_ratio, --levels) {
        const double p_low = centre - step, p_high = centre + step;
        values_at(p_low, to_low);
        values_at(p_high, to_high);
        for (size_t k = 0; k < outputs; ++k) {
            Level level{p_high - p_low, Column(count, none), Column(count)};
            for (size_t i = 0; i < count; ++i) {
                const double a = low[k][i], b = high[k][i], here = value[k][i];
                level.rounding[i] =
                    8 * epsilon * (std::fabs(here) + std::max(std::fabs(a), std::fabs(b))) / (p_high - p_low);
                if (std::isfinite(a) && std::isfinite(b))
                    level.difference[i] = (b - a) / (p_high - p_low);
                else if (std::isfinite(b))
                    level.difference[i] = (b - here) / (p_high - centre);
                else if (std::isfinite(a))
                    level.difference[i] = (here - a) / (centre - p_low);
            }
            ladders[k].push_back(std::move(level));
        }
    }
    p[j] = centre;
    source.set_parameters(memory, p.data());
    for (size_t k = 0; k < outputs; ++k)
        for (size_t i = 0; derivative[k] && i < count; ++i) derivative[k][i] = best_of(ladders[k], i);
}

void fill_missing(const Source &source, Source::Memory &memory, const std::vector<double> &p,
                  const Points::Block &block, const std::vector<double *> &values,
                  const std::vector<double *> &jacobian)
{
    const size_t all = p.size(), outputs = values.size();
    std::vector<Column> found(outputs, Column(block.count));
    std::vector<double *> to;
    for (Column &column : found) to.push_back(column.data());
    for (size_t j = 0; j < all; ++j) {
        bool missing = false;
        for (size_t k = 0; k < outputs; ++k)
            for (size_t i = 0; jacobian[k * all + j] && i < block.count; ++i)
                missing = missing || !std::isfinite(jacobian[k * all + j][i]);
        if (!missing) continue;
        difference(source, memory, p, j, block.x.data(), block.count, values.data(), to.data(), outputs);
        for (size_t k = 0; k < outputs; ++k)
            for (size_t i = 0; jacobian[k * all + j] && i < block.count; ++i)
                if (!std::isfinite(jacobian[k * all + j][i])) jacobian[k * all + j][i] = found[k][i];
    }
}

namespace {

struct DifferenceMemory : Source::Memory {
    std::unique_ptr<Source::Memory> inner;
    std::vector<double> p;
};

}  // namespace

WithDifferences::WithDifferences(std::shared_ptr<const Source> values, std::vector<bool> by_differences,
                                 size_t outputs)
    : values_(std::move(values)), by_differences_(std::move(by_differences)), outputs_(outputs)
{
}

std::unique_ptr<Source::Memory> WithDifferences::memory() const
{
    auto memory = std::make_unique<DifferenceMemory>();
    memory->inner = values_->memory();
    memory->p.resize(by_differences_.size());
    return memory;
}

void WithDifferences::set_parameters(Memory &memory, const double *parameters) const
{
    auto &own = static_cast<DifferenceMemory &>(memory);
    own.p.assign(parameters, parameters + by_differences_.size());
    values_->set_parameters(*own.inner, parameters);
}

void WithDifferences::run(Memory &memory, const double *const *x, size_t count, double *const *value,
                          double *const *jacobian) const
{
    auto &own = static_cast<DifferenceMemory &>(memory);
    values_->run(*own.inner, x, count, value, jacobian);
    if (!jacobian) return;
    for (size_t j = 0; j < by_differences_.size(); ++j) {
        if (!by_differences_[j]) continue;
        std::vector<double *> columns;
        bool wanted = false;
        for (size_t k = 0; k < outputs_; ++k) {
            columns.push_back(jacobian[k * by_differences_.size() + j]);
            wanted = wanted || columns.back();
        }
        if (wanted) difference(*values_, *own.inner, own.p, j, x, count, value, columns.data(), outputs_);
    }
}

}  // namespace curvebank::fit
