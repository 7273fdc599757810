// Mathematical functions over a vector, for the file that compiles the kernels: it names the instruction set.
//
// The value of a point depends on that point alone, to the bit: where a shortcut serves most vectors, lane by lane
// it gives what the long way gives. Over the whole range of double, special values included, they agree with the C
// library's functions to a few units in the last place; the tests hold the numbers.
//
// Compiled without contraction: the products of the extended arithmetic must round where they stand.

#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include <xsimd/xsimd.hpp>

namespace curvebank::formula {
namespace {

using V = xsimd::batch<double, CURVEBANK_ARCH>;
using Bits = xsimd::batch<uint64_t, CURVEBANK_ARCH>;
using Mask = xsimd::batch_bool<double, CURVEBANK_ARCH>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double least_normal = std::numeric_limits<double>::min();

/// Added to a number below 2^51 it leaves the nearest integer in the lowest bits.
constexpr double rounder = 0x1.8p52;

#ifdef __FMA__
constexpr bool fused = true;
#else
constexpr bool fused = false;
#endif

/// a·b + c, rounded once where the instruction set can.
V multiply_add(V a, V b, V c)
{
#if defined(__AVX512F__)
    return _mm512_fmadd_pd(a, b, c);
#elif defined(__FMA__)
    return _mm256_fmadd_pd(a, b, c);
#else
    return a * b + c;
#endif
}

/// c - a·b
V subtract_product(V a, V b, V c)
{
#if defined(__AVX512F__)
    return _mm512_fnmadd_pd(a, b, c);
#elif defined(__FMA__)
    return _mm256_fnmadd_pd(a, b, c);
#else
    return c - a * b;
#endif
}

V absolute(V x)
{
    return xsimd::abs(x);
}

V negative(V x)
{
    return x ^ V(-0.0);
}

/// xsimd's != is false for what is no number.
Mask differ(V a, V b)
{
    return !(a == b);
}

Mask is_nan(V x)
{
    return differ(x, x);
}

/// x with the sign of s.
V with_sign(V x, V s)
{
    return absolute(x) | (s & V(-0.0));
}

/// The coefficients from the constant term on.
template <size_t n>
V polynomial(V x, const double (&coefficients)[n])
{
    V sum(coefficients[n - 1]);
    for (size_t i = n - 1; i-- > 0;) sum = multiply_add(sum, x, V(coefficients[i]));
    return sum;
}

/// An unevaluated sum of two numbers of which the second is small beside the first.
struct Pair {
    V high, low;
};

/// a + b without error; |a| must not be smaller than |b|.
Pair quick_sum(V a, V b)
{
    const V sum = a + b;
    return {sum, b - (sum - a)};
}

/// The upper half of the digits.
V upper_half(V x)
{
    return xsimd::bitwise_cast<V>(xsimd::bitwise_cast<Bits>(x) & Bits(0xfffffffff8000000));
}

/// a·b without error.
Pair product(V a, V b)
{
    const V high = a * b;
    if constexpr (fused) return {high, negative(subtract_product(a, b, high))};
    const V a1 = upper_half(a), a2 = a - a1, b1 = upper_half(b), b2 = b - b1;
    return {high, ((a1 * b1 - high) + a1 * b2 + a2 * b1) + a2 * b2};
}

/// c - a·b with one rounding, where a·b is near c.
V residual(V a, V b, V c)
{
    if constexpr (fused) return subtract_product(a, b, c);
    const Pair ab = product(a, b);
    return (c - ab.high) - ab.low;
}

/// x·2^k for an integral k between -1022 and 1023.
V scale_once(V x, V k)
{
    return x * xsimd::bitwise_cast<V>((xsimd::bitwise_cast<Bits>(k + rounder) + Bits(1023)) << 52);
}

/// x·2^k for an integral k between -2044 and 2046, subnormal results rounded once.
V scale(V x, V k)
{
    const V half = (k * 0.5 + rounder) - rounder;
    return scale_once(scale_once(x, half), k - half);
}

// e^x: x = k·ln 2 + r with |r| <= 0.347, and a polynomial for (e^r - 1 - r)/r^2 through the Chebyshev points
// (relative error of e^r 3e-19).

/// e^(high + low) 2^-k, and that k.
Pair exp_and_exponent(V high, V low)
{
    constexpr double ln2_high = 0x1.62e42feep-1, ln2_low = 0x1.a39ef35793c76p-33;  // the first has 32 digits
    constexpr double coefficients[] = {0x1.0000000000000p-1,  0x1.5555555555557p-3,  0x1.5555555555556p-5,
                                       0x1.1111111110085p-7,  0x1.6c16c16c162a3p-10, 0x1.a01a01ac16f76p-13,
                                       0x1.a01a01a6f35fbp-16, 0x1.71de019d031e7p-19, 0x1.27e4db0f8a3efp-22,
                                       0x1.af4f1ddf981a8p-26, 0x1.1f73b376c0f55p-29};
    const V k = multiply_add(high, V(1.4426950408889634), V(rounder)) - rounder;
    const V r = subtract_product(k, V(ln2_low), subtract_product(k, V(ln2_high), high)) + low;
    return {multiply_add(r * r, polynomial(r, coefficients), r) + 1.0, k};
}

/// e^(high + low).
V exp_of_sum(V high, V low)
{
    if (xsimd::all(absolute(high) <= 708.0)) {
        const Pair e = exp_and_exponent(high, low);
        return scale_once(e.high, e.low);
    }
    const Mask large = high > 710.0, small = high < -746.0;
    high = xsimd::select(large, V(710.0), xsimd::select(small, V(-746.0), high));
    low = xsimd::select(large || small, V(0.0), low);
    const Pair e = exp_and_exponent(high, low);
    return scale(e.high, e.low);
}

V exp_of(V x)
{
    return exp_of_sum(x, V(0.0));
}

V expm1_of(V x)
{
    const Mask large = x > 40.0;
    V value = xsimd::expm1(xsimd::select(large, V(1.0), x));
    if (xsimd::any(large)) value = xsimd::select(large, exp_of(x), value);
    return xsimd::select(x == 0.0, x, value);  // keeps the sign of a zero
}

V log1p_of(V x)
{
    return xsimd::select(x == 0.0, x, xsimd::log1p(x));
}

/// f(x) for a logarithm f, with subnormal numbers, whose exponent its own reduction misses: log_of_scale is
/// f(2^54).
template <class F>
V with_subnormals(V x, double log_of_scale, F f)
{
    const Mask subnormal = x > 0.0 && x < least_normal;
    if (!xsimd::any(subnormal)) return f(x);
    const V scaled = f(xsimd::select(subnormal, x * 0x1p54, x));
    return xsimd::select(subnormal, scaled - log_of_scale, scaled);
}

V ln_of(V x)
{
    return with_subnormals(x, 37.42994775023705, [](V v) { return xsimd::log(v); });
}
V log2_of(V x)
{
    return with_subnormals(x, 54, [](V v) { return xsimd::log2(v); });
}
V log10_of(V x)
{
    return with_subnormals(x, 16.255619765854984, [](V v) { return xsimd::log10(v); });
}

/// ln x with about 68 digits, for a positive normal x: x = 2^k·m with m between sqrt(1/2) and sqrt(2), s =
/// (m-1)/(m+1) and ln m = 2s(1 + s^2/3 + s^4 P(s^2)).
Pair extended_log(V x, V exponent)
{
    constexpr double third_low = 0x1.5555555555555p-56;
    constexpr double ln2_high = 0x1.62e42fefa38p-1, ln2_low = 0x1.ef35793c76730p-45;  // the first has 42 digits
    constexpr double coefficients[] = {0x1.999999999999ap-3, 0x1.2492492492522p-3, 0x1.c71c71c6ea5acp-4,
                                       0x1.745d177ad436ap-4, 0x1.3b1395b82701ep-4, 0x1.1118cd67251c5p-4,
                                       0x1.df7ba1f4809c3p-5, 0x1.e03a7acf07f85p-5};
    // Counted from sqrt(1/2) on, so that the exponent of the shifted number is k.
    const Bits shifted = xsimd::bitwise_cast<Bits>(x) - Bits(0x3fe6a09e667f3bcd);
    const V k = (xsimd::bitwise_cast<V>((shifted + Bits(0x3ff0000000000000)) >> 52 | Bits(0x4330000000000000)) -
                 (0x1p52 + 1023)) +
                exponent;
    const V m = xsimd::bitwise_cast<V>((shifted & Bits(0x000fffffffffffff)) + Bits(0x3fe6a09e667f3bcd));

    const V f = m - 1.0, d = m + 1.0, d_low = m - (d - 1.0), inverse = V(1.0) / d;
    const V s = f * inverse;
    const V s_low = subtract_product(s, d_low, residual(s, d, f)) * inverse;
    const V z = s * s;
    const Pair zz = product(s, s);
    const V z_low = zz.low + (s + s) * s_low;
    // 1 + z/3 + z^2 P: the part beyond 1 as a pair.
    const Pair third = product(zz.high, V(1.0 / 3));
    const V rest = multiply_add(zz.high, V(third_low), multiply_add(z_low, V(1.0 / 3), third.low));
    const Pair tail = quick_sum(third.high, multiply_add(z * z, polynomial(z, coefficients), rest));
    // times 2s
    const V s2 = s + s;
    const Pair main = product(s2, tail.high);
    const V small = multiply_add(s2, tail.low, multiply_add(s_low + s_low, tail.high, main.low)) + (s_low + s_low);
    const Pair ln_m = quick_sum(s2, main.high);
    const Pair sum = quick_sum(k * ln2_high, ln_m.high);
    const Pair with_k = {xsimd::select(k == 0.0, ln_m.high, sum.high), xsimd::select(k == 0.0, V(0.0), sum.low)};
    return quick_sum(with_k.high, with_k.low + (ln_m.low + (small + k * ln2_low)));
}

/// e^(log·y)
V exp_of_multiple(Pair log, V y)
{
    const Pair high = product(log.high, y);
    return exp_of_sum(high.high, multiply_add(log.low, y, high.low));
}

Mask is_integer(V size)
{
    return (size + 0x1p52) - 0x1p52 == size || size >= 0x1p52;
}

/// x^y as pow of the C library, in vectors that hold anything.
V power_of_anything(V x, V y)
{
    const V size = absolute(x), y_size = absolute(y);
    const Mask subnormal = size < least_normal;
    const V normal = xsimd::select(subnormal, size * 0x1p54, size);
    const Pair log = extended_log(normal, xsimd::select(subnormal, V(-54.0), V(0.0)));
    // Beyond this any power but one of 1 overflows or vanishes.
    const V exponent = xsimd::select(y_size > 0x1p70, with_sign(V(0x1p70), y), y);
    V z = exp_of_multiple(log, exponent);

    const Mask negative_y = y < 0.0;
    z = xsimd::select(size == 0.0, xsimd::select(negative_y, V(infinity), V(0.0)), z);
    z = xsimd::select(size == infinity, xsimd::select(negative_y, V(0.0), V(infinity)), z);
    const Mask whole = is_integer(y_size), odd = whole && !is_integer(y_size * 0.5);
    z = xsimd::select(odd, with_sign(z, x), z);
    z = xsimd::select(x < 0.0 && x > -infinity && !whole, V(nan), z);
    z = xsimd::select(is_nan(x) || is_nan(y), x + y, z);
    return xsimd::select(y == 0.0 || x == 1.0, V(1.0), z);
}

/// The C library's function lane by lane.
[[maybe_unused]] V by_lanes(V x, V y, double (*scalar)(double, double))
{
    double a[V::size], b[V::size], results[V::size];
    x.store_unaligned(a);
    y.store_unaligned(b);
    for (size_t i = 0; i < V::size; ++i) results[i] = scalar(a[i], b[i]);
    return V::load_unaligned(results);
}

V power_of(V x, V y)
{
    // Two lanes are too few to pay for exact products by halves.
    if constexpr (!fused) return by_lanes(x, y, ::pow);
    if (xsimd::all(x >= least_normal && x < infinity && absolute(y) < 0x1p70))
        return exp_of_multiple(extended_log(x, V(0.0)), y);
    return power_of_anything(x, y);
}

// Sine and cosine: x = k·pi/2 + r, and the polynomials of fdlibm (Sun Microsystems, 1993) for |r| <= pi/4.

constexpr double largest_angle = 0x1p20;  ///< beyond, the reduction would lose digits

struct Angle {
    V high, low;
    Bits quadrant;
};

Angle reduce(V x)
{
    const V shifted = multiply_add(x, V(0.63661977236758134), V(rounder));
    const V k = shifted - rounder;
    Angle angle{x, x, xsimd::bitwise_cast<Bits>(shifted)};
    if constexpr (fused) {
        constexpr double p1 = 0x1.921fb54442d18p+0, p2 = 0x1.1a62633145c07p-54, p3 = -0x1.f1976b7ed8fbcp-110;
        const V first = subtract_product(k, V(p1), x);  // exact
        angle.high = subtract_product(k, V(p2), first);
        angle.low = subtract_product(k, V(p3), subtract_product(k, V(p2), first - angle.high));
    } else {
        // Three parts of 33 digits, whose products with k are exact, and the rest.
        constexpr double p1 = 0x1.921fb544p+0, p2 = 0x1.0b4611a6p-34, p3 = 0x1.3198a2ep-69,
                         p4 = 0x1.b839a252049c1p-104;
        const V first = x - k * p1, w2 = k * p2, second = first - w2;
        const V error = (first - second) - w2, w3 = k * p3;
        const V third = (error - w3) - k * p4;
        angle.high = second + third;
        angle.low = third - (angle.high - second);
    }
    return angle;
}

V sine_polynomial(V x, V low)
{
    constexpr double coefficients[] = {-1.66666666666666324348e-01, 8.33333333332248946124e-03,
                                       -1.98412698298579493134e-04, 2.75573137070700676789e-06,
                                       -2.50507602534068634195e-08, 1.58969099521155010221e-10};
    const V z = x * x;
    return x + multiply_add(z * x, polynomial(z, coefficients), multiply_add(z * low, V(-0.5), low));
}

V cosine_polynomial(V x, V low)
{
    constexpr double coefficients[] = {4.16666666666666019037e-02, -1.38888888888741095749e-03,
                                       2.48015872894767294178e-05, -2.75573143513906633035e-07,
                                       2.08757232129817482790e-09, -1.13596475577881948265e-11};
    const V z = x * x, half = z * 0.5, w = V(1.0) - half;
    return w + (((V(1.0) - w) - half) + (z * z * polynomial(z, coefficients) - x * low));
}

Mask bit_set(Bits number, uint64_t bit)
{
    return xsimd::bitwise_cast<V>((number & Bits(bit)) | Bits(0x3ff0000000000000)) > 1.0;
}

/// f where the reduction serves, the C library's function elsewhere.
template <class F>
V of_angle(V x, F f, double (*scalar)(double))
{
    const Mask small = absolute(x) <= largest_angle;
    const V value = f(reduce(x));
    if (xsimd::all(small)) return value;
    double lanes[V::size], results[V::size];
    x.store_unaligned(lanes);
    for (size_t i = 0; i < V::size; ++i) results[i] = scalar(lanes[i]);
    return xsimd::select(small, value, V::load_unaligned(results));
}

V sin_of(V x)
{
    const auto f = [](Angle a) {
        const V size =
            xsimd::select(bit_set(a.quadrant, 1), cosine_polynomial(a.high, a.low), sine_polynomial(a.high, a.low));
        return xsimd::select(bit_set(a.quadrant, 2), negative(size), size);
    };
    // The sign of a zero is lost on the way.
    return xsimd::select(x == 0.0, x, of_angle(x, f, ::sin));
}

V cos_of(V x)
{
    const auto f = [](Angle a) {
        const V size =
            xsimd::select(bit_set(a.quadrant, 1), sine_polynomial(a.high, a.low), cosine_polynomial(a.high, a.low));
        return xsimd::select(bit_set(a.quadrant + Bits(1), 2), negative(size), size);
    };
    return of_angle(x, f, ::cos);
}

V tan_of(V x)
{
    const auto f = [](Angle a) {
        const V sine = sine_polynomial(a.high, a.low), cosine = cosine_polynomial(a.high, a.low);
        const Mask odd = bit_set(a.quadrant, 1);
        return xsimd::select(odd, negative(cosine), sine) / xsimd::select(odd, sine, cosine);
    };
    return xsimd::select(x == 0.0, x, of_angle(x, f, ::tan));
}

/// Downwards to an integer: the nearest one by a shift through 2^52, from where on all numbers are integers.
V floor_of(V x)
{
    const V size = absolute(x), nearest = with_sign((size + 0x1p52) - 0x1p52, x);
    const V below = xsimd::select(nearest > x, nearest - 1.0, nearest);
    return xsimd::select(size < 0x1p52, below, x);
}

V acosh_of(V x)
{
    return xsimd::select(x < 1.0, V(nan), xsimd::acosh(x));
}

// The error function by the rational approximations of W. J. Cody, "Rational Chebyshev approximations for the error
// function", Math. Comp. 23 (1969).

constexpr double erf_switch = 0.46875;

/// x + x·(P - Q)/Q, which rounds less than x·P/Q.
V erf_near_zero(V x)
{
    constexpr double p_less_q[] = {365.14075569929885, -905.131288392070259, -130.160483783394017,
                                   -20.44016720847355530, -0.814222293815396847};
    constexpr double q[] = {2.84423683343917062e03, 1.28261652607737228e03, 2.44024637934444173e02,
                            2.36012909523441209e01, 1.0};
    const V z = x * x;
    return multiply_add(x, polynomial(z, p_less_q) / polynomial(z, q), x);
}

/// erfc x·e^(x^2) for x >= erf_switch.
V scaled_erfc(V x)
{
    constexpr double p1[] = {1.23033935479799725e03, 2.05107837782607147e03, 1.71204761263407058e03,
                             8.81952221241769090e02, 2.98635138197400131e02, 6.61191906371416295e01,
                             8.88314979438837594e00, 5.64188496988670089e-1, 2.15311535474403846e-8};
    constexpr double q1[] = {1.23033935480374942e03, 3.43936767414372164e03, 4.36261909014324716e03,
                             3.29079923573345963e03, 1.62138957456669019e03, 5.37181101862009858e02,
                             1.17693950891312499e02, 1.57449261107098347e01, 1.0};
    constexpr double p2[] = {-6.58749161529837803e-4, -1.60837851487422766e-2, -1.25781726111229246e-1,
                             -3.60344899949804439e-1, -3.05326634961232344e-1, -1.63153871373020978e-2};
    constexpr double q2[] = {2.33520497626869185e-3, 6.05183413124413191e-2, 5.27905102951428412e-1,
                             1.87295284992346725e00, 2.56852019228982242e00, 1.0};
    constexpr double one_over_root_pi = 5.6418958354775628695e-1;
    const Mask far = x > 4.0;
    V near_value = x, far_value = x;
    if (!xsimd::all(far)) near_value = polynomial(x, p1) / polynomial(x, q1);
    if (xsimd::any(far)) {
        const V z = V(1.0) / (x * x);
        far_value = multiply_add(z, polynomial(z, p2) / polynomial(z, q2), V(one_over_root_pi)) / x;
    }
    return xsimd::select(far, far_value, near_value);
}

/// erfc x for x >= erf_switch.
V erfc_of_large(V x)
{
    x = xsimd::select(x > 28.0, V(28.0), x);  // 0 from there on
    const Pair square = product(x, x);
    return exp_of_sum(negative(square.high), negative(square.low)) * scaled_erfc(x);
}

V erf_of(V x)
{
    const V size = absolute(x);
    const Mask small = size <= erf_switch;
    V near_value = x, far_value = x;
    if (xsimd::any(small)) near_value = erf_near_zero(x);
    if (!xsimd::all(small)) far_value = with_sign(V(1.0) - erfc_of_large(size), x);
    return xsimd::select(small, near_value, xsimd::select(is_nan(x), x, far_value));
}

V erfc_of(V x)
{
    const V size = absolute(x);
    const Mask small = size <= erf_switch;
    V near_value = x, far_value = x;
    if (xsimd::any(small)) near_value = V(1.0) - erf_near_zero(x);
    if (!xsimd::all(small)) {
        far_value = erfc_of_large(size);
        far_value = xsimd::select(x < 0.0, V(2.0) - far_value, far_value);
    }
    return xsimd::select(small, near_value, xsimd::select(is_nan(x), x, far_value));
}

}  // namespace
}  // namespace curvebank::formula
