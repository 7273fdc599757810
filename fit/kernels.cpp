// Compiled once for every instruction set, which CURVEBANK_KERNELS names. Nothing here may be shared with other files:
// the linker would keep one copy, of whichever instruction set.

#include "fit/kernels.h"

namespace curvebank::fit {
namespace CURVEBANK_KERNELS {
namespace {

#if defined(__AVX512F__)
constexpr size_t lanes = 8;
#elif defined(__AVX__)
constexpr size_t lanes = 4;
#else
constexpr size_t lanes = 2;
#endif

typedef double Lanes __attribute__((vector_size(lanes * sizeof(double)), aligned(8), may_alias));

inline Lanes load(const double *from)
{
    return *reinterpret_cast<const Lanes *>(from);
}

inline void store(double *to, Lanes value)
{
    *reinterpret_cast<Lanes *>(to) = value;
}

inline double sum(Lanes value)
{
    double total = 0;
    for (size_t i = 0; i < lanes; ++i) total += value[i];
    return total;
}

/// The scalar products of `Left` columns with `Right` others, which share their loads.
template <size_t Left, size_t Right>
inline void products(const double *left, const double *right, size_t rows, double (&result)[Left][Right])
{
    Lanes sums[Left][Right] = {};
    for (size_t row = 0; row < rows; row += lanes) {
        Lanes a[Left], b[Right];
        for (size_t i = 0; i < Left; ++i) a[i] = load(left + i * block_rows + row);
        for (size_t j = 0; j < Right; ++j) b[j] = load(right + j * block_rows + row);
        for (size_t i = 0; i < Left; ++i)
            for (size_t j = 0; j < Right; ++j) sums[i][j] += a[i] * b[j];
    }
    for (size_t i = 0; i < Left; ++i)
        for (size_t j = 0; j < Right; ++j) result[i][j] = sum(sums[i][j]);
}

template <size_t Left, size_t Right>
inline void add_tile(const double *columns, size_t rows, size_t width, size_t i, size_t j, double *triangle)
{
    double tile[Left][Right];
    products<Left, Right>(columns + i * block_rows, columns + j * block_rows, rows, tile);
    for (size_t a = 0; a < Left; ++a)
        for (size_t b = 0; b < Right; ++b)
            if (j + b >= i + a) triangle[(i + a) * width + j + b] += tile[a][b];
}

void add_products(const double *columns, size_t rows, size_t width, double *triangle)
{
    size_t i = 0;
    for (; i + 2 <= width; i += 2) {
        size_t j = i;
        for (; j + 4 <= width; j += 4) add_tile<2, 4>(columns, rows, width, i, j, triangle);
        if (j + 2 <= width) add_tile<2, 2>(columns, rows, width, i, j, triangle), j += 2;
        if (j < width) add_tile<2, 1>(columns, rows, width, i, j, triangle);
    }
    if (i < width) add_tile<1, 1>(columns, rows, width, i, i, triangle);
}

/// column[j] -= weight[j] * reflector, for `Count` columns.
template <size_t Count>
inline void subtract(const double *reflector, size_t rows, const double *weight, double *columns)
{
    for (size_t row = 0; row < rows; row += lanes) {
        const Lanes v = load(reflector + row);
        for (size_t j = 0; j < Count; ++j) {
            double *const at = columns + j * block_rows + row;
            store(at, load(at) - weight[j] * v);
        }
    }
}

/// What a reflection does to the rest of a row of the triangle: from the products of the reflector with the columns to
/// the weights with which it is subtracted from them.
template <size_t Count>
inline void reflect(const double *reflector, size_t rows, double head, double tau, double *row, double *columns)
{
    double dot[1][Count], weight[Count];
    products<1, Count>(reflector, columns, rows, dot);
    for (size_t j = 0; j < Count; ++j) {
        const double w = tau * (row[j] + dot[0][j] / head);
        row[j] -= w;
        weight[j] = w / head;
    }
    subtract<Count>(reflector, rows, weight, columns);
}

void reduce(double *columns, size_t rows, size_t width, double *triangle)
{
    for (size_t k = 0; k < width; ++k) {
        double *const reflector = columns + k * block_rows;
        double *const row = triangle + k * width;
        double below[1][1];
        products<1, 1>(reflector, reflector, rows, below);
        if (below[0][0] == 0) continue;
        const double alpha = row[k], length = __builtin_sqrt(alpha * alpha + below[0][0]);
        const double beta = alpha > 0 ? -length : length, head = alpha - beta, tau = (beta - alpha) / beta;
        row[k] = beta;
        size_t j = k + 1;
        for (; j + 4 <= width; j += 4) reflect<4>(reflector, rows, head, tau, row + j, columns + j * block_rows);
        for (; j < width; ++j) reflect<1>(reflector, rows, head, tau, row + j, columns + j * block_rows);
    }
}

double largest(const double *column, size_t rows)
{
    Lanes most = {}, poison = {};
    for (size_t row = 0; row < rows; row += lanes) {
        const Lanes value = load(column + row), size = value < 0 ? -value : value;
        most = size > most ? size : most;
        poison += value - value;  // NaN for an infinity too
    }
    double result = 0;
    for (size_t i = 0; i < lanes; ++i) result = most[i] > result ? most[i] : result;
    return sum(poison) == 0 || result > 1.7e308 ? result : sum(poison);
}

void scale(double *columns, size_t rows, size_t width, const double *scale, const double *factor)
{
    for (size_t j = 0; j < width; ++j) {
        double *const column = columns + j * block_rows;
        if (factor)
            for (size_t row = 0; row < rows; row += lanes)
                store(column + row, load(column + row) * (scale[j] * load(factor + row)));
        else
            for (size_t row = 0; row < rows; row += lanes) store(column + row, load(column + row) * scale[j]);
    }
}

}  // namespace

extern const Kernels table;
const Kernels table = {add_products, reduce, largest, scale};

}  // namespace CURVEBANK_KERNELS
}  // namespace curvebank::fit
