#include "fit/differences.h"

#include <cmath>
#include <limits>

namespace curvebank::fit {
namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double none = std::numeric_limits<double>::quiet_NaN();

using Column = std::vector<double>;

/// The best estimate so far at every point of an output, and its error.
struct Best {
    Column derivative, error, before;  ///< before: the plain difference of the step before, whose step was twice as long

    explicit Best(size_t count)
        : derivative(count, none), error(count, std::numeric_limits<double>::infinity()), before(count, none)
    {
    }

    void offer(size_t point, double difference, double rounding)
    {
        const double extrapolated = difference + (difference - before[point]) / (step_ratio * step_ratio - 1);
        const double estimate = std::fabs(extrapolated - difference) + rounding;
        if (estimate < error[point]) {
            derivative[point] = extrapolated;
            error[point] = estimate;
        } else if (std::isnan(derivative[point]) && std::isfinite(difference)) {
            derivative[point] = difference;
        }
        before[point] = difference;
    }

    static constexpr double step_ratio = 4;
};

}  // namespace

void difference(const Source &source, Source::Memory &memory, std::vector<double> p, size_t j, const double *const *x, size_t count,
                double *const *value, double *const *derivative, size_t outputs)
{
    const double centre = p[j], size = centre != 0 ? std::fabs(centre) : 1;
    std::vector<Column> low(outputs, Column(count)), high(outputs, Column(count));
    std::vector<double *> to_low, to_high;
    for (size_t k = 0; k < outputs; ++k) to_low.push_back(low[k].data()), to_high.push_back(high[k].data());
    const auto values_at = [&](double moved, std::vector<double *> &to) {
        p[j] = moved;
        source.set_parameters(memory, p.data());
        source.run(memory, x, count, to.data(), nullptr);
    };

    std::vector<Best> best(outputs, Best(count));
    for (double step = size / 4; step > 1e3 * epsilon * size; step /= Best::step_ratio) {
        const double p_low = centre - step, p_high = centre + step;
        values_at(p_low, to_low);
        values_at(p_high, to_high);
        for (size_t k = 0; k < outputs; ++k)
            for (size_t i = 0; i < count; ++i) {
                const double a = low[k][i], b = high[k][i], here = value[k][i];
                const double rounding = epsilon * (std::fabs(a) + std::fabs(b)) / (p_high - p_low);
                if (std::isfinite(a) && std::isfinite(b))
                    best[k].offer(i, (b - a) / (p_high - p_low), rounding);
                else if (std::isfinite(b))
                    best[k].offer(i, (b - here) / (p_high - centre), rounding);
                else if (std::isfinite(a))
                    best[k].offer(i, (here - a) / (centre - p_low), rounding);
            }
    }
    p[j] = centre;
    source.set_parameters(memory, p.data());
    for (size_t k = 0; k < outputs; ++k)
        if (derivative[k]) std::copy(best[k].derivative.begin(), best[k].derivative.end(), derivative[k]);
}

void fill_missing(const Source &source, Source::Memory &memory, const std::vector<double> &p, const Points::Block &block,
                  const std::vector<double *> &values, const std::vector<double *> &jacobian)
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

WithDifferences::WithDifferences(std::shared_ptr<const Source> values, std::vector<bool> by_differences, size_t outputs)
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
