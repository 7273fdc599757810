// The inner loops of the interpreter: one pass over a block of points an operation, built once an instruction set.
//
// What is compiled for an instruction set must not reach a machine without it. The linker keeps one copy of an
// inline function for the whole program, whichever file it comes from, so the files of the kernels emit none:
// everything in them is local but the table.

#pragma once

#include <cstddef>

#include "formula/operations.h"

namespace curvebank::formula {

/// out[i] = f(a[i], b[i], c[i]) for i < count, a multiple of the kernels' width. An operand that is the same for
/// all points is read at its first place only. out may be an operand.
using Kernel = void (*)(double *out, const double *a, const double *b, const double *c, size_t count);

/// What a program is made of beyond the operations of formulas.
enum class Fused { multiply_add, multiply_subtract, subtract_product, copy };  // ab + c, ab - c, c - ab

/// The number of an operation in the tables of kernels.
constexpr size_t code(Operation operation)
{
    return static_cast<size_t>(operation);
}
constexpr size_t code(Fused fused)
{
    return operation_count + static_cast<size_t>(fused);
}
constexpr size_t code_count = code(Fused::copy) + 1;

struct Kernels {
    size_t width;  ///< points in a vector
    /// By operation and by which operands are the same for all points: 1 for the first, 2 for the second, 4 for the
    /// third. Null where no vector instructions serve: these operations go through the scalar functions.
    Kernel of[code_count][8];
};

extern const Kernels baseline_kernels;
extern const Kernels avx2_kernels;    ///< with fused multiply-add
extern const Kernels avx512_kernels;  ///< F, CD, BW, DQ and VL

}  // namespace curvebank::formula
