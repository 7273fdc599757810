// The operations of a formula, once: every table of theirs (texts, derivatives, evaluation) follows this list.

#pragma once

#include <cstddef>
#include <cstdint>

namespace curvebank::formula {

/// X(name, operands, text): the text is the function's name in a formula, or the operator's sign.
/// From erf on they are functions for which a library is called.
/// gammap_shape and gammap_density are the partial derivatives of gammap in its first and second argument.
#define CURVEBANK_OPERATIONS(X)            \
    X(constant, 0, "")                     \
    X(name, 0, "")                         \
    X(add, 2, "+")                         \
    X(subtract, 2, "-")                    \
    X(multiply, 2, "*")                    \
    X(divide, 2, "/")                      \
    X(power, 2, "^")                       \
    X(negate, 1, "-")                      \
    X(less, 2, "<")                        \
    X(less_equal, 2, "<=")                 \
    X(greater, 2, ">")                     \
    X(greater_equal, 2, ">=")              \
    X(equal, 2, "==")                      \
    X(not_equal, 2, "!=")                  \
    X(logical_and, 2, "and")               \
    X(logical_or, 2, "or")                 \
    X(logical_not, 1, "not")               \
    X(select, 3, "?")                      \
    X(exp, 1, "exp")                       \
    X(expm1, 1, "expm1")                   \
    X(ln, 1, "ln")                         \
    X(log1p, 1, "log1p")                   \
    X(log10, 1, "log10")                   \
    X(log2, 1, "log2")                     \
    X(sqrt, 1, "sqrt")                     \
    X(cbrt, 1, "cbrt")                     \
    X(sin, 1, "sin")                       \
    X(cos, 1, "cos")                       \
    X(tan, 1, "tan")                       \
    X(asin, 1, "asin")                     \
    X(acos, 1, "acos")                     \
    X(atan, 1, "atan")                     \
    X(atan2, 2, "atan2")                   \
    X(sinh, 1, "sinh")                     \
    X(cosh, 1, "cosh")                     \
    X(tanh, 1, "tanh")                     \
    X(asinh, 1, "asinh")                   \
    X(acosh, 1, "acosh")                   \
    X(atanh, 1, "atanh")                   \
    X(abs, 1, "abs")                       \
    X(sign, 1, "sign")                     \
    X(floor, 1, "floor")                   \
    X(min, 2, "min")                       \
    X(max, 2, "max")                       \
    X(erf, 1, "erf")                       \
    X(erfc, 1, "erfc")                     \
    X(gamma, 1, "gamma")                   \
    X(lgamma, 1, "lgamma")                 \
    X(digamma, 1, "digamma")               \
    X(trigamma, 1, "trigamma")             \
    X(gammap, 2, "gammap")                 \
    X(gammap_shape, 2, "gammap_shape")     \
    X(gammap_density, 2, "gammap_density") \
    X(besseli0, 1, "besseli0")             \
    X(besseli1, 1, "besseli1")

enum class Operation : uint8_t {
#define CURVEBANK_ENUMERATOR(name, operands, text) name,
    CURVEBANK_OPERATIONS(CURVEBANK_ENUMERATOR)
#undef CURVEBANK_ENUMERATOR
};

constexpr size_t operation_count = 0
#define CURVEBANK_ONE(name, operands, text) +1
    CURVEBANK_OPERATIONS(CURVEBANK_ONE)
#undef CURVEBANK_ONE
    ;

}  // namespace curvebank::formula
