// Compiled once an instruction set: CURVEBANK_ARCH is xsimd's name of it, CURVEBANK_KERNELS that of the table.

#include "formula/kernels.h"

#include "formula/vector_math.h"

namespace curvebank::formula {
namespace {

// What the compiler does not inline by itself would be a function that other files share.
#define PASS [[gnu::flatten]] void

// Operations, each over vectors.

struct Add {
    static V of(V a, V b) { return a + b; }
};
struct Subtract {
    static V of(V a, V b) { return a - b; }
};
struct Multiply {
    static V of(V a, V b) { return a * b; }
};
struct Divide {
    static V of(V a, V b) { return a / b; }
};
struct Negate {
    static V of(V a) { return negative(a); }
};
struct MultiplyAdd {
    static V of(V a, V b, V c) { return multiply_add(a, b, c); }
};
struct MultiplySubtract {
    static V of(V a, V b, V c) { return multiply_add(a, b, negative(c)); }
};
struct SubtractProduct {
    static V of(V a, V b, V c) { return subtract_product(a, b, c); }
};
struct Copy {
    static V of(V a) { return a; }
};

V truth(Mask mask)
{
    return xsimd::select(mask, V(1.0), V(0.0));
}
struct Less {
    static V of(V a, V b) { return truth(a < b); }
};
struct LessEqual {
    static V of(V a, V b) { return truth(a <= b); }
};
struct Greater {
    static V of(V a, V b) { return truth(a > b); }
};
struct GreaterEqual {
    static V of(V a, V b) { return truth(a >= b); }
};
struct Equal {
    static V of(V a, V b) { return truth(a == b); }
};
struct NotEqual {
    static V of(V a, V b) { return truth(differ(a, b)); }
};
struct And {
    static V of(V a, V b) { return truth(differ(a, 0.0) && differ(b, 0.0)); }
};
struct Or {
    static V of(V a, V b) { return truth(differ(a, 0.0) || differ(b, 0.0)); }
};
struct Not {
    static V of(V a) { return truth(a == 0.0); }
};
struct Select {
    static V of(V a, V b, V c) { return xsimd::select(a == 0.0, c, b); }
};

struct Exp {
    static V of(V x) { return exp_of(x); }
};
struct Expm1 {
    static V of(V x) { return expm1_of(x); }
};
struct Ln {
    static V of(V x) { return ln_of(x); }
};
struct Log1p {
    static V of(V x) { return log1p_of(x); }
};
struct Log10 {
    static V of(V x) { return log10_of(x); }
};
struct Log2 {
    static V of(V x) { return log2_of(x); }
};
struct Sqrt {
    static V of(V x) { return xsimd::sqrt(x); }
};
struct Sin {
    static V of(V x) { return sin_of(x); }
};
struct Cos {
    static V of(V x) { return cos_of(x); }
};
struct Tan {
    static V of(V x) { return tan_of(x); }
};
struct Asin {
    static V of(V x) { return xsimd::asin(x); }
};
struct Acos {
    static V of(V x) { return xsimd::acos(x); }
};
struct Atan {
    static V of(V x) { return xsimd::atan(x); }
};
struct Sinh {
    static V of(V x) { return xsimd::sinh(x); }
};
struct Cosh {
    static V of(V x) { return xsimd::cosh(x); }
};
struct Tanh {
    static V of(V x) { return xsimd::tanh(x); }
};
struct Asinh {
    static V of(V x) { return xsimd::asinh(x); }
};
struct Acosh {
    static V of(V x) { return acosh_of(x); }
};
struct Atanh {
    static V of(V x) { return xsimd::atanh(x); }
};
struct Abs {
    static V of(V x) { return absolute(x); }
};
struct Sign {
    static V of(V x) { return xsimd::select(x > 0.0, V(1.0), xsimd::select(x < 0.0, V(-1.0), x + x)); }
};
struct Floor {
    static V of(V x) { return floor_of(x); }
};
struct Min {
    static V of(V a, V b) { return xsimd::select(b < a, b, a); }
};
struct Max {
    static V of(V a, V b) { return xsimd::select(a < b, b, a); }
};
struct Erf {
    static V of(V x) { return erf_of(x); }
};
struct Erfc {
    static V of(V x) { return erfc_of(x); }
};
struct Power {
    static V of(V a, V b) { return power_of(a, b); }
};

template <class F>
PASS unary(double *out, const double *a, const double *, const double *, size_t count)
{
    for (size_t i = 0; i < count; i += V::size) F::of(V::load_unaligned(a + i)).store_unaligned(out + i);
}

template <class F, unsigned uniform>
PASS binary(double *out, const double *a, const double *b, const double *, size_t count)
{
    const V first(a[0]), second(b[0]);
    for (size_t i = 0; i < count; i += V::size)
        F::of(uniform & 1 ? first : V::load_unaligned(a + i), uniform & 2 ? second : V::load_unaligned(b + i))
            .store_unaligned(out + i);
}

template <class F, unsigned uniform>
PASS ternary(double *out, const double *a, const double *b, const double *c, size_t count)
{
    const V first(a[0]), second(b[0]), third(c[0]);
    for (size_t i = 0; i < count; i += V::size)
        F::of(uniform & 1 ? first : V::load_unaligned(a + i), uniform & 2 ? second : V::load_unaligned(b + i),
              uniform & 4 ? third : V::load_unaligned(c + i))
            .store_unaligned(out + i);
}

PASS fill(double *out, const double *a, const double *, const double *, size_t count)
{
    const V value(a[0]);
    for (size_t i = 0; i < count; i += V::size) value.store_unaligned(out + i);
}

/// A quotient by a number that is the same for all points: the product with its reciprocal, corrected by its exact
/// remainder, which rounds as a division does but for cases nearer to a tie than 2^-50 units.
PASS divide_by_uniform(double *out, const double *a, const double *b, const double *, size_t count)
{
    const V divisor(b[0]), inverse = V(1.0) / divisor;
    for (size_t i = 0; i < count; i += V::size) {
        const V x = V::load_unaligned(a + i), q = x * inverse;
        V quotient = multiply_add(subtract_product(q, divisor, x), inverse, q);
        // Where a step may overflow or become subnormal, and for zeros and what is no number.
        const V size = absolute(q), x_size = absolute(x);
        const Mask plain = size > 0x1p-900 && size < 0x1p900 && x_size > 0x1p-900 && x_size < infinity;
        if (!xsimd::all(plain)) quotient = xsimd::select(plain, quotient, x / divisor);
        quotient.store_unaligned(out + i);
    }
}

/// x^n for an integer n of at most 64 in size, by products of pairs: its rounding is that of the last step.
PASS integer_power(double *out, const double *a, double n, size_t count)
{
    const auto size = static_cast<unsigned>(n < 0 ? -n : n);
    unsigned first_bit = 64;
    while (first_bit > size) first_bit /= 2;
    for (size_t i = 0; i < count; i += V::size) {
        const V x = V::load_unaligned(a + i);
        Pair power{x, V(0.0)};
        for (unsigned bit = first_bit / 2; bit > 0; bit /= 2) {
            const Pair square = product(power.high, power.high);
            power = {square.high, multiply_add(power.high + power.high, power.low, square.low)};
            if (!(size & bit)) continue;
            const Pair next = product(power.high, x);
            power = {next.high, multiply_add(power.low, x, next.low)};
        }
        V result = power.high + power.low;
        if (n < 0) {
            const V inverse = V(1.0) / power.high;
            const V rest = subtract_product(power.low, inverse, residual(power.high, inverse, V(1.0)));
            result = multiply_add(inverse, rest, inverse);
        }
        const V height = absolute(power.high);
        const Mask plain = height > 0x1p-900 && height < 0x1p900;
        if (!xsimd::all(plain)) result = xsimd::select(plain, result, power_of_anything(x, V(n)));
        result.store_unaligned(out + i);
    }
}

/// x^n for n = 1/2 or -1/2.
PASS root_power(double *out, const double *a, bool reciprocal, size_t count)
{
    for (size_t i = 0; i < count; i += V::size) {
        const V x = V::load_unaligned(a + i);
        const V root = xsimd::select(x == -infinity, V(infinity), xsimd::sqrt(x + 0.0));
        (reciprocal ? V(1.0) / root : root).store_unaligned(out + i);
    }
}

/// Powers whose exponent is the same for all points. Some exponents need no logarithm.
PASS power_by_uniform(double *out, const double *a, const double *b, const double *, size_t count)
{
    const double n = b[0];
    if (n == 3) {
        for (size_t i = 0; i < count; i += V::size) {
            const V x = V::load_unaligned(a + i);
            (x * x * x).store_unaligned(out + i);
        }
        return;
    }
    if (n == 0.5 || n == -0.5) return root_power(out, a, n < 0, count);
    if (n >= -64 && n <= 64 && n == static_cast<int>(n) && n != 0) return integer_power(out, a, n, count);
    const V exponent(n);
    for (size_t i = 0; i < count; i += V::size)
        power_of(V::load_unaligned(a + i), exponent).store_unaligned(out + i);
}

/// Powers of a number that is the same for all points: one logarithm.
PASS power_of_uniform(double *out, const double *a, const double *b, const double *, size_t count)
{
    const V x(a[0]);
    const bool plain = a[0] >= least_normal && a[0] < infinity;
    const Pair log = extended_log(plain ? x : V(1.0), V(0.0));
    for (size_t i = 0; i < count; i += V::size) {
        const V y = V::load_unaligned(b + i);
        const V power =
            plain && xsimd::all(absolute(y) < 0x1p70) ? exp_of_multiple(log, y) : power_of_anything(x, y);
        power.store_unaligned(out + i);
    }
}

template <class F>
constexpr void add_unary(Kernels &kernels, size_t code)
{
    kernels.of[code][0] = unary<F>;
}

template <class F>
constexpr void add_binary(Kernels &kernels, size_t code)
{
    kernels.of[code][0] = binary<F, 0>;
    kernels.of[code][1] = binary<F, 1>;
    kernels.of[code][2] = binary<F, 2>;
}

template <class F>
constexpr void add_ternary(Kernels &kernels, size_t code)
{
    kernels.of[code][0] = ternary<F, 0>;
    kernels.of[code][1] = ternary<F, 1>;
    kernels.of[code][2] = ternary<F, 2>;
    kernels.of[code][3] = ternary<F, 3>;
    kernels.of[code][4] = ternary<F, 4>;
    kernels.of[code][5] = ternary<F, 5>;
    kernels.of[code][6] = ternary<F, 6>;
}

constexpr Kernels all_kernels()
{
    using enum Operation;
    Kernels k{V::size, {}};
    add_binary<Add>(k, code(add));
    add_binary<Subtract>(k, code(subtract));
    add_binary<Multiply>(k, code(multiply));
    add_binary<Divide>(k, code(divide));
    if (fused) k.of[code(divide)][2] = divide_by_uniform;
    add_binary<Power>(k, code(power));
    k.of[code(power)][1] = power_of_uniform;
    k.of[code(power)][2] = power_by_uniform;
    add_unary<Negate>(k, code(negate));
    add_binary<Less>(k, code(less));
    add_binary<LessEqual>(k, code(less_equal));
    add_binary<Greater>(k, code(greater));
    add_binary<GreaterEqual>(k, code(greater_equal));
    add_binary<Equal>(k, code(equal));
    add_binary<NotEqual>(k, code(not_equal));
    add_binary<And>(k, code(logical_and));
    add_binary<Or>(k, code(logical_or));
    add_unary<Not>(k, code(logical_not));
    add_ternary<Select>(k, code(select));
    add_unary<Exp>(k, code(exp));
    add_unary<Expm1>(k, code(expm1));
    add_unary<Ln>(k, code(ln));
    add_unary<Log1p>(k, code(log1p));
    add_unary<Log10>(k, code(log10));
    add_unary<Log2>(k, code(log2));
    add_unary<Sqrt>(k, code(sqrt));
    add_unary<Sin>(k, code(sin));
    add_unary<Cos>(k, code(cos));
    add_unary<Tan>(k, code(tan));
    add_unary<Asin>(k, code(asin));
    add_unary<Acos>(k, code(acos));
    add_unary<Atan>(k, code(atan));
    add_unary<Sinh>(k, code(sinh));
    add_unary<Cosh>(k, code(cosh));
    add_unary<Tanh>(k, code(tanh));
    add_unary<Asinh>(k, code(asinh));
    add_unary<Acosh>(k, code(acosh));
    add_unary<Atanh>(k, code(atanh));
    add_unary<Abs>(k, code(abs));
    add_unary<Sign>(k, code(sign));
    add_unary<Floor>(k, code(floor));
    add_binary<Min>(k, code(min));
    add_binary<Max>(k, code(max));
    add_unary<Erf>(k, code(erf));
    add_unary<Erfc>(k, code(erfc));
    add_ternary<MultiplyAdd>(k, code(Fused::multiply_add));
    add_ternary<MultiplySubtract>(k, code(Fused::multiply_subtract));
    add_ternary<SubtractProduct>(k, code(Fused::subtract_product));
    add_unary<Copy>(k, code(Fused::copy));
    k.of[code(Fused::copy)][1] = fill;
    return k;
}

}  // namespace

extern constexpr Kernels CURVEBANK_KERNELS = all_kernels();

}  // namespace curvebank::formula
