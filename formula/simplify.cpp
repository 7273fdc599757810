#include "formula/simplify.h"

#include <cstdlib>

namespace curvebank::formula {
namespace {

constexpr int64_t largest_digits = 1'000'000'000'000'000;  // a double holds all smaller integers

/// Without trailing zeros; nothing where the digits or the exponent are too long for exact work.
std::optional<Decimal> normal(Decimal value)
{
    if (value.digits == 0) return Decimal{};
    while (value.digits % 10 == 0) {
        value.digits /= 10;
        ++value.exponent;
    }
    // Integers keep their zeros.
    while (value.exponent > 0 && std::abs(value.digits) < largest_digits / 10) {
        value.digits *= 10;
        --value.exponent;
    }
    if (std::abs(value.digits) >= largest_digits || std::abs(value.exponent) > 40) return std::nullopt;
    return value;
}

std::optional<Decimal> read(const std::string &literal)
{
    Decimal value;
    size_t i = 0;
    bool fraction = false;
    for (; i < literal.size() && literal[i] != 'e' && literal[i] != 'E'; ++i) {
        if (literal[i] == '.') {
            fraction = true;
            continue;
        }
        if (literal[i] < '0' || literal[i] > '9' || value.digits >= largest_digits) return std::nullopt;
        value.digits = 10 * value.digits + (literal[i] - '0');
        value.exponent -= fraction;
    }
    if (i < literal.size()) {
        if (literal.size() - i > 5) return std::nullopt;
        value.exponent += std::atoi(literal.c_str() + i + 1);
    }
    return normal(value);
}

std::string write(const Decimal &value)
{
    std::string text = std::to_string(value.digits);
    if (value.exponent == 0) return text;
    if (value.exponent > 0 || value.exponent < -18) return text + 'e' + std::to_string(value.exponent);
    const auto places = static_cast<size_t>(-value.exponent);
    if (text.size() <= places) text.insert(0, places + 1 - text.size(), '0');
    return text.insert(text.size() - places, 1, '.');
}

std::optional<Decimal> product(const Decimal &a, const Decimal &b)
{
    Decimal value{0, a.exponent + b.exponent};
    if (__builtin_mul_overflow(a.digits, b.digits, &value.digits)) return std::nullopt;
    return normal(value);
}

std::optional<Decimal> sum(Decimal a, Decimal b)
{
    if (a.exponent < b.exponent) std::swap(a, b);
    for (; a.exponent > b.exponent; --a.exponent) {
        if (std::abs(a.digits) >= largest_digits) return std::nullopt;
        a.digits *= 10;
    }
    return normal({a.digits + b.digits, a.exponent});
}

/// 1/value where that is a short decimal number.
std::optional<Decimal> inverse(const Decimal &value)
{
    constexpr int64_t one = 10'000'000'000;
    if (value.digits == 0 || one % value.digits != 0) return std::nullopt;
    return normal({one / value.digits, -10 - value.exponent});
}

}  // namespace

Simplifier::Simplifier(Graph &graph, std::set<std::string> fixed) : graph_(graph), fixed_names_(std::move(fixed)) {}

bool Simplifier::is_fixed(NodeId id)
{
    while (fixed_.size() <= id) {
        const Node &next = graph_.nodes()[fixed_.size()];
        bool fixed = next.operation != Operation::name || fixed_names_.contains(graph_.text(next));
        for (int i = 0; i < operand_count(next.operation); ++i)
            fixed = fixed && fixed_[next.operands[static_cast<size_t>(i)]];
        fixed_.push_back(fixed);
    }
    return fixed_[id];
}

NodeId Simplifier::number(Decimal value)
{
    const bool negative = value.digits < 0;
    value.digits = std::abs(value.digits);
    const NodeId size = graph_.constant(write(value));
    return negative ? graph_.apply(Operation::negate, size) : size;
}

std::optional<Decimal> Simplifier::decimal(NodeId id) const
{
    const bool negative = is_negated(id);
    const Node literal = node(negative ? node(id).operands[0] : id);
    if (literal.operation != Operation::constant) return std::nullopt;
    auto value = read(graph_.text(literal));
    if (value && negative) value->digits = -value->digits;
    return value;
}

std::optional<std::pair<Decimal, NodeId>> Simplifier::coefficient(NodeId id) const
{
    const Node product = node(id);
    if (product.operation != Operation::multiply) return std::nullopt;
    const auto value = decimal(product.operands[0]);
    if (!value) return std::nullopt;
    return std::pair{*value, product.operands[1]};
}

NodeId Simplifier::commuting(Operation operation, NodeId a, NodeId b)
{
    if (const auto there = graph_.find(operation, b, a)) return *there;
    return graph_.apply(operation, a, b);
}

NodeId Simplifier::negate(NodeId a)
{
    if (is(a, 0)) return a;
    const Node of = node(a);
    if (of.operation == Operation::negate) return of.operands[0];
    if (of.operation == Operation::subtract)
        return graph_.apply(Operation::subtract, of.operands[1], of.operands[0]);
    return graph_.apply(Operation::negate, a);
}

NodeId Simplifier::add(NodeId a, NodeId b)
{
    if (is(a, 0)) return b;
    if (is(b, 0)) return a;
    if (a == b) return multiply(number(2), a);
    if (const auto x = decimal(a), y = decimal(b); x && y)
        if (const auto total = sum(*x, *y)) return number(*total);
    if (is_negated(b)) return subtract(a, node(b).operands[0]);
    if (is_negated(a)) return subtract(b, node(a).operands[0]);
    return commuting(Operation::add, a, b);
}

NodeId Simplifier::subtract(NodeId a, NodeId b)
{
    if (is(b, 0)) return a;
    if (is(a, 0)) return negate(b);
    if (a == b) return number(0);
    if (const auto x = decimal(a), y = decimal(b); x && y)
        if (const auto total = sum(*x, {-y->digits, y->exponent})) return number(*total);
    if (is_negated(b)) return add(a, node(b).operands[0]);
    if (is_negated(a)) return negate(add(node(a).operands[0], b));
    return graph_.apply(Operation::subtract, a, b);
}

NodeId Simplifier::multiply(NodeId a, NodeId b)
{
    if (decimal(b)) std::swap(a, b);
    if (const auto x = decimal(a)) {
        if (x->digits == 0) return number(0);
        if (is(a, 1)) return b;
        if (x->digits < 0) return negate(multiply(number({-x->digits, x->exponent}), b));
        if (const auto y = decimal(b))
            if (const auto both = product(*x, *y)) return number(*both);
        if (is_negated(b)) return negate(multiply(a, node(b).operands[0]));
        if (const auto y = coefficient(b))
            if (const auto both = product(*x, y->first)) return multiply(number(*both), y->second);
        return graph_.apply(Operation::multiply, a, b);
    }
    if (const auto there = graph_.find(Operation::multiply, a, b)) return *there;
    if (const auto there = graph_.find(Operation::multiply, b, a)) return *there;
    if (is_negated(a)) return negate(multiply(node(a).operands[0], b));
    if (is_negated(b)) return negate(multiply(a, node(b).operands[0]));
    if (const auto x = coefficient(a)) return multiply(number(x->first), multiply(x->second, b));
    if (const auto y = coefficient(b)) return multiply(number(y->first), multiply(a, y->second));
    const auto cancels = [this](NodeId quotient, NodeId factor) {
        return node(quotient).operation == Operation::divide && node(quotient).operands[1] == factor;
    };
    if (cancels(a, b)) return node(a).operands[0];
    if (cancels(b, a)) return node(b).operands[0];
    return graph_.apply(Operation::multiply, a, b);
}

NodeId Simplifier::divide(NodeId a, NodeId b)
{
    if (is(a, 0)) return a;
    if (a == b) return number(1);
    if (const auto there = graph_.find(Operation::divide, a, b)) return *there;
    if (const auto divisor = decimal(b))
        if (const auto factor = inverse(*divisor)) return multiply(number(*factor), a);
    if (is_negated(a)) return negate(divide(node(a).operands[0], b));
    if (is_negated(b)) return negate(divide(a, node(b).operands[0]));
    if (const auto x = coefficient(a)) return multiply(number(x->first), divide(x->second, b));
    if (const Node of = node(a); of.operation == Operation::multiply) {
        if (of.operands[0] == b) return of.operands[1];
        if (of.operands[1] == b) return of.operands[0];
    }
    const NodeId one = number(1);
    if (!is(a, 1) && (graph_.find(Operation::divide, one, b) || (is_fixed(b) && !is_fixed(a))))
        return multiply(a, graph_.apply(Operation::divide, one, b));
    return graph_.apply(Operation::divide, a, b);
}

NodeId Simplifier::square(NodeId a)
{
    if (const auto there = graph_.find(Operation::power, a, number(2))) return *there;
    return multiply(a, a);
}

NodeId Simplifier::power(NodeId a, int exponent)
{
    if (exponent == 0) return number(1);
    if (exponent == 1) return a;
    if (exponent == 2) return square(a);
    return graph_.apply(Operation::power, a, number(exponent));
}

NodeId Simplifier::select(NodeId condition, NodeId a, NodeId b)
{
    return a == b ? a : graph_.apply(Operation::select, condition, a, b);
}

}  // namespace curvebank::formula
