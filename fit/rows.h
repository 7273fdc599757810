// Numbers row by row, a row a point.

#pragma once

#include <span>
#include <vector>

namespace curvebank::fit {

/// values[first], values[first + width], ...: a column of values that stand row by row.
inline std::vector<double> every(std::span<const double> values, size_t width, size_t first)
{
    std::vector<double> column;
    for (size_t i = first; i < values.size(); i += width) column.push_back(values[i]);
    return column;
}

class Rows {
public:
    Rows() = default;
    Rows(size_t count, size_t width) : count_(count), width_(width), values_(count * width) {}

    size_t size() const { return count_; }
    size_t width() const { return width_; }

    std::span<double> operator[](size_t row) { return std::span(values_).subspan(row * width_, width_); }
    std::span<const double> operator[](size_t row) const
    {
        return std::span(values_).subspan(row * width_, width_);
    }

    std::vector<double> column(size_t i) const { return every(values_, width_, i); }

private:
    size_t count_ = 0, width_ = 0;
    std::vector<double> values_;
};

}  // namespace curvebank::fit
