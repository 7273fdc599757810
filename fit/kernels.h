// The engine's inner loops over blocks of points, compiled once for every instruction set and chosen at run time.

#pragma once

#include <cstddef>

namespace curvebank::fit {

/// Points at once. A column of a block begins at a multiple of 64 bytes; its rows beyond the points are 0 up to the next
/// multiple of row_padding.
constexpr size_t block_rows = 256;
constexpr size_t row_padding = 8;

/// Columns of a block stand block_rows apart; triangles are square, row by row, with only their upper part in use.
struct Kernels {
    /// Adds the scalar products of all pairs of columns to the upper part of products.
    void (*add_products)(const double *columns, size_t rows, size_t width, double *products);

    /// Householder reduction: the triangle that has the same products as the given one and the columns together
    /// replaces it. The columns are used up.
    void (*reduce)(double *columns, size_t rows, size_t width, double *triangle);

    /// The largest size of a number in a column; NaN where one is.
    double (*largest)(const double *column, size_t rows);

    /// columns[j] = scale[j] * columns[j], row by row times factor where it is not null.
    void (*scale)(double *columns, size_t rows, size_t width, const double *scale, const double *factor);
};

/// Those for this machine.
const Kernels &kernels();

}  // namespace curvebank::fit
