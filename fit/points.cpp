#include "fit/points.h"

#include <algorithm>
#include <cmath>

namespace curvebank::fit {
namespace {

std::string column_name(const char *axis, size_t index, size_t count)
{
    return count > 1 ? std::string(axis) + std::to_string(index + 1) : axis;
}

[[noreturn]] void refuse(const std::string &column, size_t point, double value, const char *why)
{
    throw Error(column + " of point " + std::to_string(point + 1) + " is " + std::to_string(value) + ": " + why);
}

void require_length(const std::string &column, size_t length, size_t wanted)
{
    if (length != wanted)
        throw Error(column + " has " + std::to_string(length) + " values, x has " + std::to_string(wanted));
}

}  // namespace

Points::Points(const Data &data, size_t variables, size_t outputs, bool implicit) : data_(data), outputs_(outputs)
{
    if (data.x.size() != variables)
        throw Error("the model has " + std::to_string(variables) + " variables, " + std::to_string(data.x.size()) +
                    " columns of x are given");
    if (data.y.size() != outputs && !(implicit && data.y.empty()))
        throw Error("the model has " + std::to_string(outputs) + " outputs, " + std::to_string(data.y.size()) +
                    " columns of y are given");
    if (!data.weights.empty() && !data.sigma.empty()) throw Error("either weights or sigma, not both");

    total_ = data.x[0].size();
    struct Column {
        std::string name;
        std::span<const double> values;
    };
    std::vector<Column> columns;
    for (size_t i = 0; i < variables; ++i) columns.push_back({column_name("x", i, variables), data.x[i]});
    for (size_t k = 0; k < data.y.size(); ++k) columns.push_back({column_name("y", k, outputs), data.y[k]});
    if (weighted())
        columns.push_back(data.sigma.empty() ? Column{"weights", data.weights} : Column{"sigma", data.sigma});
    for (const auto &[name, values] : columns) require_length(name, values.size(), total_);

    gaps_.assign(blocks(), false);
    for (size_t first = 0; first < total_; first += block_rows) {
        const size_t end = std::min(total_, first + block_rows);
        double sum = 0;  // not finite where a summand is not; a sum that overflows is looked at too, and found clean
        for (const auto &[name, values] : columns)
            for (size_t i = first; i < end; ++i) sum += values[i] * 0x1p-600;
        if (std::isfinite(sum)) continue;
        for (size_t i = first; i < end; ++i) {
            if (usable(i)) continue;
            if (data.missing == Data::Missing::skip) {
                gaps_[first / block_rows] = true;
                ++left_out_;
                continue;
            }
            for (const auto &[name, values] : columns)
                if (!std::isfinite(values[i])) refuse(name, i, values[i], "not a finite number");
        }
    }
    double largest_weight = 0;
    for (size_t i = 0; i < total_; ++i) {
        if (left_out_ > 0 && !usable(i)) continue;
        for (const auto &y : data.y) largest_y_ = std::max(largest_y_, std::fabs(y[i]));
        if (!weighted()) continue;
        const double given = columns.back().values[i];
        if (!(given > 0)) refuse(columns.back().name, i, given, "it must be positive");
        largest_weight = std::max(largest_weight, root_weight(i));
    }
    if (largest_weight > 0) weight_unit_ = std::ldexp(1.0, std::ilogb(largest_weight));
}

bool Points::usable(size_t point) const
{
    const auto finite = [point](std::span<const double> column) { return std::isfinite(column[point]); };
    return std::all_of(data_.x.begin(), data_.x.end(), finite) &&
           std::all_of(data_.y.begin(), data_.y.end(), finite) && (data_.weights.empty() || finite(data_.weights)) &&
           (data_.sigma.empty() || finite(data_.sigma));
}

double Points::root_weight(size_t point) const
{
    return data_.sigma.empty() ? std::sqrt(data_.weights[point]) : 1 / data_.sigma[point];
}

void Points::load(size_t number, Block &block) const
{
    const size_t first = number * block_rows, end = std::min(total_, first + block_rows);
    const size_t variables = data_.x.size(), columns = variables + outputs_ + 1;
    block.x.resize(variables);
    block.y.assign(outputs_, nullptr);
    if (block.columns.empty()) block.columns.resize(columns * block_rows);
    const auto own = [&block](size_t column) { return block.columns.data() + column * block_rows; };

    block.count = end - first;
    if (!gaps_[number]) {
        for (size_t i = 0; i < variables; ++i) block.x[i] = data_.x[i].data() + first;
        for (size_t k = 0; k < data_.y.size(); ++k) block.y[k] = data_.y[k].data() + first;
    } else {
        block.count = 0;
        for (size_t point = first; point < end; ++point) {
            if (!usable(point)) continue;
            for (size_t i = 0; i < variables; ++i) own(i)[block.count] = data_.x[i][point];
            for (size_t k = 0; k < data_.y.size(); ++k) own(variables + k)[block.count] = data_.y[k][point];
            ++block.count;
        }
        for (size_t i = 0; i < variables; ++i) block.x[i] = own(i);
        for (size_t k = 0; k < data_.y.size(); ++k) block.y[k] = own(variables + k);
    }
    block.weight = nullptr;
    if (!weighted()) return;
    double *const weight = own(variables + outputs_);
    size_t row = 0;
    for (size_t point = first; point < end; ++point)
        if (!gaps_[number] || usable(point)) weight[row++] = root_weight(point) / weight_unit_;
    std::fill(weight + row, weight + block_rows, 0.0);
    block.weight = weight;
}

double Points::norm_of_y(double unit) const
{
    Block block;
    double squares = 0;
    for (size_t number = 0; number < blocks(); ++number) {
        load(number, block);
        for (const double *const y : block.y)
            for (size_t row = 0; y && row < block.count; ++row) {
                const double scaled = (block.weight ? block.weight[row] : 1) * (y[row] / unit);
                squares += scaled * scaled;
            }
    }
    return std::sqrt(squares);
}

double Points::squares_about_mean(double unit) const
{
    Block block;
    double total = 0;
    for (size_t k = 0; k < data_.y.size(); ++k) {
        double sum = 0, weights = 0, squares = 0;
        for (size_t number = 0; number < blocks(); ++number) {
            load(number, block);
            for (size_t row = 0; row < block.count; ++row) {
                const double weight = block.weight ? block.weight[row] * block.weight[row] : 1;
                sum += weight * (block.y[k][row] / unit);
                weights += weight;
            }
        }
        const double mean = sum / weights;
        for (size_t number = 0; number < blocks(); ++number) {
            load(number, block);
            for (size_t row = 0; row < block.count; ++row) {
                const double off = (block.weight ? block.weight[row] : 1) * (block.y[k][row] / unit - mean);
                squares += off * off;
            }
        }
        total += squares;
    }
    return total;
}

Points::Sample Points::sample(size_t count) const
{
    Sample sample;
    sample.x.resize(data_.x.size());
    sample.y.resize(data_.y.size());
    // A step that is no whole number of points cannot follow a period in the data.
    const double step = static_cast<double>(total_) / static_cast<double>(count);
    constexpr double golden = 0.6180339887498949;
    for (size_t k = 0; k < count; ++k) {
        const double inside = std::fmod(static_cast<double>(k) * golden, 1.0);
        const auto point = std::min(total_ - 1, static_cast<size_t>((static_cast<double>(k) + inside) * step));
        if (left_out_ > 0 && !usable(point)) continue;
        for (size_t i = 0; i < data_.x.size(); ++i) sample.x[i].push_back(data_.x[i][point]);
        for (size_t i = 0; i < data_.y.size(); ++i) sample.y[i].push_back(data_.y[i][point]);
        if (weighted()) {
            const double root = root_weight(point) / weight_unit_;
            sample.weights.push_back(root * root);
        }
    }
    return sample;
}

Data Points::Sample::data() const
{
    Data data;
    data.x.assign(x.begin(), x.end());
    data.y.assign(y.begin(), y.end());
    data.weights = weights;
    return data;
}

}  // namespace curvebank::fit
