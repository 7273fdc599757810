// Formulas at single points, in any number type: double, long double, the numbers of Boost.Multiprecision.

#pragma once

#include <charconv>
#include <cmath>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/math/constants/constants.hpp>
#include <boost/multiprecision/cpp_bin_float.hpp>

#include "formula/formula.h"
#include "formula/special_functions.h"

namespace curvebank::formula {

/// The value of a constant's text, correctly rounded.
template <typename T>
T constant_value(std::string_view text)
{
    if (text == "pi") return boost::math::constants::pi<T>();
    if constexpr (std::is_same_v<T, double>) {
        double value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    } else if constexpr (std::is_floating_point_v<T>) {
        namespace mp = boost::multiprecision;
        using Exact = mp::number<mp::cpp_bin_float<std::numeric_limits<T>::digits, mp::digit_base_2>, mp::et_off>;
        return static_cast<T>(Exact(std::string(text)));
    } else {
        return T(std::string(text));
    }
}

/// One operation on numbers. Comparisons give 1 or 0; all but constant, name and select.
template <typename T>
T apply(Operation operation, const T &a, const T &b)
{
    using std::abs, std::exp, std::expm1, std::log, std::log1p, std::log10, std::log2, std::sqrt, std::pow;
    using std::isnan;
    using std::sin, std::cos, std::tan, std::asin, std::acos, std::atan, std::atan2, std::floor;
    using std::sinh, std::cosh, std::tanh, std::asinh, std::acosh, std::atanh;
    const auto truth = [](bool holds) { return T(holds ? 1 : 0); };
    // Not all of Boost's functions return from NaN.
    if (operation >= Operation::erf && (isnan(a) || (operand_count(operation) > 1 && isnan(b))))
        return std::numeric_limits<T>::quiet_NaN();
    switch (operation) {
        case Operation::constant:
        case Operation::name:
        case Operation::select:
            break;
        case Operation::add:
            return a + b;
        case Operation::subtract:
            return a - b;
        case Operation::multiply:
            return a * b;
        case Operation::divide:
            return a / b;
        case Operation::power:
            return pow(a, b);
        case Operation::negate:
            return -a;
        case Operation::less:
            return truth(a < b);
        case Operation::less_equal:
            return truth(a <= b);
        case Operation::greater:
            return truth(a > b);
        case Operation::greater_equal:
            return truth(a >= b);
        case Operation::equal:
            return truth(a == b);
        case Operation::not_equal:
            return truth(a != b);
        case Operation::logical_and:
            return truth(a != 0 && b != 0);
        case Operation::logical_or:
            return truth(a != 0 || b != 0);
        case Operation::logical_not:
            return truth(a == 0);
        case Operation::exp:
            return exp(a);
        case Operation::expm1:
            return expm1(a);
        case Operation::ln:
            return log(a);
        case Operation::log1p:
            return log1p(a);
        case Operation::log10:
            return log10(a);
        case Operation::log2:
            return log2(a);
        case Operation::sqrt:
            return sqrt(a);
        case Operation::cbrt:
            if constexpr (std::is_same_v<T, double>) return std::cbrt(a);
            return boost::math::cbrt(a, Quiet());
        case Operation::sin:
            return sin(a);
        case Operation::cos:
            return cos(a);
        case Operation::tan:
            return tan(a);
        case Operation::asin:
            return asin(a);
        case Operation::acos:
            return acos(a);
        case Operation::atan:
            return atan(a);
        case Operation::atan2:
            return atan2(a, b);
        case Operation::sinh:
            return sinh(a);
        case Operation::cosh:
            return cosh(a);
        case Operation::tanh:
            return tanh(a);
        case Operation::asinh:
            return asinh(a);
        case Operation::acosh:
            // That of the Windows runtime loses half its digits near 1.
            if constexpr (std::is_same_v<T, double>) return boost::math::acosh(a, Quiet());
            return acosh(a);
        case Operation::atanh:
            return atanh(a);
        case Operation::abs:
            return abs(a);
        case Operation::sign:
            return a > 0 ? T(1) : a < 0 ? T(-1) : a;
        case Operation::floor:
            return floor(a);
        case Operation::min:
            return b < a ? b : a;
        case Operation::max:
            return a < b ? b : a;
        case Operation::erf:
            if constexpr (std::is_same_v<T, double>) return std::erf(a);
            return boost::math::erf(a, Quiet());
        case Operation::erfc:
            if constexpr (std::is_same_v<T, double>) return std::erfc(a);
            return boost::math::erfc(a, Quiet());
        case Operation::gamma:
            return formula::gamma(a);
        case Operation::lgamma:
            return formula::lgamma(a);
        case Operation::digamma:
            return boost::math::digamma(a, Quiet());
        case Operation::trigamma:
            return formula::trigamma(a);
        case Operation::gammap:
            return formula::gammap(a, b);
        case Operation::gammap_shape:
            return formula::gammap_shape(a, b);
        case Operation::gammap_density:
            return boost::math::gamma_p_derivative(a, b, Quiet());
        case Operation::besseli0:
            return besseli(0, a);
        case Operation::besseli1:
            return besseli(1, a);
    }
    throw std::logic_error("not an operation on numbers");
}

/// Formulas of one graph made ready for many points. What a point does not need, such as the other branch of a
/// conditional, is not computed. It keeps its intermediate values: a thread needs its own copy.
template <typename T>
class Evaluator {
public:
    /// Values will come in the order of these names. Throws FormulaError where a formula has another name.
    Evaluator(const std::vector<Formula> &outputs, const std::vector<std::string> &names)
    {
        if (outputs.empty()) return;
        const Graph &graph = outputs[0].graph();
        std::vector<NodeId> numbers(graph.nodes().size());
        std::vector<bool> used(numbers.size());
        for (const Formula &output : outputs) {
            if (&output.graph() != &graph) throw std::invalid_argument("formulas of several graphs");
            used[output.root()] = true;
        }
        for (size_t id = used.size(); id-- > 0;)
            if (used[id])
                for (int i = 0; i < operand_count(graph.nodes()[id].operation); ++i)
                    used[graph.nodes()[id].operands[static_cast<size_t>(i)]] = true;

        std::map<std::string_view, uint32_t> places;
        for (const std::string &name : names) places.emplace(name, static_cast<uint32_t>(places.size()));
        for (size_t id = 0; id < used.size(); ++id) {
            if (!used[id]) continue;
            Node node = graph.nodes()[id];
            numbers[id] = static_cast<NodeId>(steps_.size());
            for (NodeId &operand : node.operands) operand = numbers[operand];
            T value(0);
            if (node.operation == Operation::constant) value = constant_value<T>(graph.text(node));
            if (node.operation == Operation::name) {
                const auto place = places.find(graph.text(node));
                if (place == places.end()) throw FormulaError("\"" + graph.text(node) + "\" has no value", 0);
                node.text = place->second;
            }
            steps_.push_back(node);
            values_.push_back(value);
        }
        computed_.resize(steps_.size());
        for (const Formula &output : outputs) roots_.push_back(numbers[output.root()]);
    }

    void operator()(std::span<const T> values, std::span<T> results)
    {
        for (size_t i = 0; i < steps_.size(); ++i) {
            computed_[i] = operand_count(steps_[i].operation) == 0;
            if (steps_[i].operation == Operation::name) values_[i] = values[steps_[i].text];
        }
        for (size_t i = 0; i < roots_.size(); ++i) results[i] = compute(roots_[i]);
    }

    /// The first output.
    T operator()(std::span<const T> values)
    {
        std::vector<T> results(roots_.size());
        (*this)(values, results);
        return results.at(0);
    }

private:
    const T &compute(NodeId root)
    {
        open_.assign(1, root);
        while (!open_.empty()) {
            const NodeId id = open_.back();
            const Node &step = steps_[id];
            if (!computed_[id] && step.operation == Operation::select) {
                if (want(step.operands[0])) continue;
                const NodeId branch = step.operands[values_[step.operands[0]] != 0 ? 1 : 2];
                if (want(branch)) continue;
                values_[id] = values_[branch];
            } else if (!computed_[id]) {
                const int count = operand_count(step.operation);
                const bool wait = want(step.operands[0]);
                if ((count > 1 && want(step.operands[1])) || wait) continue;
                values_[id] = apply<T>(step.operation, values_[step.operands[0]], values_[step.operands[1]]);
            }
            computed_[id] = true;
            open_.pop_back();
        }
        return values_[root];
    }

    bool want(NodeId id)
    {
        if (!computed_[id]) open_.push_back(id);
        return !computed_[id];
    }

    std::vector<Node> steps_;  ///< a name's text is the place of its value
    std::vector<T> values_;
    std::vector<bool> computed_;
    std::vector<NodeId> open_, roots_;
};

/// A formula at one point.
template <typename T>
T evaluate(const Formula &formula, const std::map<std::string, T> &values)
{
    std::vector<std::string> names;
    std::vector<T> numbers;
    for (const auto &[name, value] : values) {
        names.push_back(name);
        numbers.push_back(value);
    }
    return Evaluator<T>({formula}, names)(numbers);
}

}  // namespace curvebank::formula
