// The small triangle that is left of all points.

#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

namespace curvebank::fit {

/// Householder reduction: the triangle (width x width, row by row, upper part) that has the same products as the given
/// one and the columns together replaces it. Column j begins at columns + j * stride; the columns are used up.
template <typename T>
void reduce_columns(T *columns, size_t stride, size_t rows, size_t width, T *triangle)
{
    for (size_t k = 0; k < width; ++k) {
        T *const reflector = columns + k * stride;
        T *const row = triangle + k * width;
        T below = 0;
        for (size_t i = 0; i < rows; ++i) below += reflector[i] * reflector[i];
        if (below == 0) continue;
        const T alpha = row[k], length = std::sqrt(alpha * alpha + below);
        const T beta = alpha > 0 ? -length : length, head = alpha - beta, tau = (beta - alpha) / beta;
        row[k] = beta;
        for (size_t j = k + 1; j < width; ++j) {
            T *const column = columns + j * stride;
            T product = 0;
            for (size_t i = 0; i < rows; ++i) product += reflector[i] * column[i];
            const T w = tau * (row[j] + product / head);
            row[j] -= w;
            for (size_t i = 0; i < rows; ++i) column[i] -= w / head * reflector[i];
        }
    }
}

/// What one pass over the points leaves of them: the upper triangle R of J | r, with R'R = (J | r)'(J | r), where J holds
/// the derivatives with respect to the parameters varied and r the residuals, model less data, all in scaled units.
template <typename T>
struct Reduced {
    size_t width = 0;  ///< columns of J
    T sum_of_squares = 0;
    std::vector<T> triangle;  ///< row by row, of width + 1

    T at(size_t row, size_t column) const { return triangle[row * (width + 1) + column]; }

    /// What is left of the residuals when all that any step could remove is removed: a norm.
    T unexplained() const { return std::fabs(at(width, width)); }

    T column_norm(size_t j) const
    {
        T squares = 0;
        for (size_t row = 0; row <= j; ++row) squares += at(row, j) * at(row, j);
        return std::sqrt(squares);
    }

    bool has_values() const { return std::isfinite(static_cast<double>(sum_of_squares)); }
    bool has_derivatives() const
    {
        for (const T &number : triangle)
            if (!std::isfinite(static_cast<double>(number))) return false;
        return true;
    }
};

}  // namespace curvebank::fit
