// Exact derivatives: from the value back to its names (reverse accumulation), so that what several derivatives have
// in common is one node, and the work grows with the formula and not with the number of names.
//
// Two kinds of nodes are differentiated on their own and enter as one step, their derivatives multiplied by what
// comes from above:
// - conditionals (also min and max), so that every derivative ends in a choice between that of one branch and that
// of the
//   other: an infinity or NaN of the branch not in use cannot leak, as it would out of a product with 0;
// - what depends on the wanted names alone. In a fit those are the parameters, so that the derivative is then
// computed once
//   a call and not once a point.

#include <cmath>
#include <functional>
#include <map>

#include "formula/formula.h"
#include "formula/simplify.h"

namespace curvebank::formula {
namespace {

/// Partial derivatives by the node of the name; what is not there is 0.
using Gradient = std::map<NodeId, NodeId>;

bool is_choice(Operation operation)
{
    return operation == Operation::select || operation == Operation::min || operation == Operation::max;
}

class Differentiation {
public:
    Differentiation(Graph &graph, NodeId root, const std::set<std::string> &wanted)
        : graph_(graph), terms_(graph, wanted), zero_(terms_.number(0)), one_(terms_.number(1))
    {
        std::vector<bool> reached(root + 1);
        reached[root] = true;
        for (NodeId id = root + 1; id-- > 0;)
            if (reached[id])
                for (const NodeId operand : operands(id)) reached[operand] = true;

        active_.resize(root + 1);
        for (NodeId id = 0; id <= root; ++id) {
            const Node node = graph_[id];
            if (node.operation == Operation::name) active_[id] = wanted.contains(graph_.text(node));
            for (const NodeId operand : operands(id)) active_[id] = active_[id] || active_[operand];
        }
        // From below, so that no choice has to wait for one inside it.
        for (NodeId id = 0; id <= root; ++id)
            if (reached[id] && active_[id] && is_choice(graph_[id].operation)) own_gradient(id);
    }

    Gradient gradient(NodeId root);

private:
    struct Sweep {
        NodeId root;
        std::map<NodeId, NodeId, std::greater<>> open;  ///< what comes from above, by node
        Gradient found;
    };

    /// How a power vanishes with its base.
    struct Vanishing {
        NodeId exponent;
        NodeId outer;  ///< the derivative by the base's terms where the exponent is 1
    };

    std::vector<NodeId> operands(NodeId id) const
    {
        const Node &node = graph_[id];
        return {node.operands.begin(), node.operands.begin() + operand_count(node.operation)};
    }

    bool active(NodeId id) const { return id < active_.size() && active_[id]; }

    /// Whether a node is differentiated on its own.
    bool is_apart(NodeId id, NodeId root)
    {
        return is_choice(graph_[id].operation) || (terms_.is_fixed(id) && !terms_.is_fixed(root));
    }

    void pass(Sweep &sweep, NodeId id, NodeId value)
    {
        if (!active(id) || value == zero_) return;
        const auto [place, added] = sweep.open.try_emplace(id, value);
        if (!added) place->second = terms_.add(place->second, value);
    }

    const Gradient &own_gradient(NodeId id);
    NodeId scale(NodeId factor, NodeId derivative);
    void through(Sweep &sweep, NodeId id, NodeId above);
    void through_power(Sweep &sweep, NodeId id, NodeId above);
    void through_logarithm(Sweep &sweep, NodeId id, NodeId above, const Vanishing *vanishing);
    NodeId vanishing_quotient(NodeId above, NodeId id, const Vanishing &vanishing);

    Graph &graph_;
    Simplifier terms_;
    NodeId zero_, one_;
    std::vector<bool> active_;
    std::map<NodeId, Gradient> own_gradients_;
};

Gradient Differentiation::gradient(NodeId root)
{
    Sweep sweep{root, {}, {}};
    pass(sweep, root, one_);
    while (!sweep.open.empty()) {
        const auto [id, above] = *sweep.open.begin();
        sweep.open.erase(sweep.open.begin());
        if (graph_[id].operation == Operation::name) {
            const auto [place, added] = sweep.found.try_emplace(id, above);
            if (!added) place->second = terms_.add(place->second, above);
        } else if (is_apart(id, root)) {
            for (const auto &[name, derivative] : own_gradient(id)) pass(sweep, name, scale(above, derivative));
        } else {
            through(sweep, id, above);
        }
    }
    return std::move(sweep.found);
}

const Gradient &Differentiation::own_gradient(NodeId id)
{
    if (const auto known = own_gradients_.find(id); known != own_gradients_.end()) return known->second;
    const Node node = graph_[id];
    if (!is_choice(node.operation)) return own_gradients_[id] = gradient(id);

    NodeId condition = node.operands[0], first = node.operands[1], second = node.operands[2];
    if (node.operation != Operation::select) {
        // As they are evaluated: the second operand where it is beyond the first.
        first = node.operands[1];
        second = node.operands[0];
        condition = node.operation == Operation::min ? terms_.apply(Operation::less, first, second)
                                                     : terms_.apply(Operation::less, second, first);
    }
    const Gradient of_first = gradient(first), of_second = gradient(second);
    Gradient both;
    const auto part = [this](const Gradient &gradient, NodeId name) {
        const auto place = gradient.find(name);
        return place == gradient.end() ? zero_ : place->second;
    };
    for (const Gradient *gradient : {&of_first, &of_second})
        for (const auto &[name, derivative] : *gradient)
            both[name] = terms_.select(condition, part(of_first, name), part(of_second, name));
    return own_gradients_[id] = std::move(both);
}

/// A product; with a choice that has a number in a branch, the choice between the products.
NodeId Differentiation::scale(NodeId factor, NodeId derivative)
{
    const Node node = graph_[derivative];
    if (node.operation == Operation::select &&
        (terms_.decimal(node.operands[1]) || terms_.decimal(node.operands[2])))
        return terms_.select(node.operands[0], terms_.multiply(factor, node.operands[1]),
                             terms_.multiply(factor, node.operands[2]));
    return terms_.multiply(factor, derivative);
}

void Differentiation::through(Sweep &sweep, NodeId id, NodeId above)
{
    const Node node = graph_[id];
    const NodeId a = node.operands[0], b = node.operands[1];
    Simplifier &t = terms_;
    const auto pass_on = [&](NodeId operand, NodeId value) { pass(sweep, operand, value); };
    const auto times = [&](NodeId factor) { pass_on(a, t.multiply(above, factor)); };
    const auto over = [&](NodeId divisor) { pass_on(a, t.divide(above, divisor)); };
    const auto one_minus_square = [&] { return t.multiply(t.subtract(one_, a), t.add(one_, a)); };
    const auto gauss = [&] {
        const NodeId factor =
            t.apply(Operation::divide, t.number(2), t.apply(Operation::sqrt, graph_.constant("pi")));
        return t.multiply(factor, t.apply(Operation::exp, t.negate(t.square(a))));
    };
    switch (node.operation) {
        case Operation::add:
            pass_on(a, above);
            pass_on(b, above);
            break;
        case Operation::subtract:
            pass_on(a, above);
            pass_on(b, t.negate(above));
            break;
        case Operation::multiply:
            if (active(a)) pass_on(a, t.multiply(above, b));
            if (active(b)) pass_on(b, t.multiply(above, a));
            break;
        case Operation::divide: {
            const NodeId quotient = t.divide(above, b);
            pass_on(a, quotient);
            if (active(b)) pass_on(b, t.negate(t.multiply(quotient, id)));
            break;
        }
        case Operation::power:
            through_power(sweep, id, above);
            break;
        case Operation::negate:
            pass_on(a, t.negate(above));
            break;
        case Operation::exp:
            times(id);
            break;
        case Operation::expm1:
            times(t.apply(Operation::exp, a));
            break;
        case Operation::ln:
            through_logarithm(sweep, a, above, nullptr);
            break;
        case Operation::log1p:
            over(t.add(one_, a));
            break;
        case Operation::log10:
        case Operation::log2: {
            const NodeId base = t.number(node.operation == Operation::log2 ? 2 : 10);
            through_logarithm(sweep, a, t.divide(above, t.apply(Operation::ln, base)), nullptr);
            break;
        }
        case Operation::sqrt:
            pass_on(a, t.divide(t.multiply(t.number({5, -1}), above), id));
            break;
        case Operation::cbrt:
            over(t.multiply(t.number(3), t.square(id)));
            break;
        case Operation::sin:
            times(t.apply(Operation::cos, a));
            break;
        case Operation::cos:
            times(t.negate(t.apply(Operation::sin, a)));
            break;
        case Operation::tan:
            times(t.add(one_, t.square(id)));
            break;
        case Operation::asin:
            over(t.apply(Operation::sqrt, one_minus_square()));
            break;
        case Operation::acos:
            over(t.negate(t.apply(Operation::sqrt, one_minus_square())));
            break;
        case Operation::atan:
            over(t.add(one_, t.square(a)));
            break;
        case Operation::atan2: {
            const NodeId radius = t.add(t.square(a), t.square(b));
            if (active(a)) pass_on(a, t.multiply(above, t.divide(b, radius)));
            if (active(b)) pass_on(b, t.negate(t.multiply(above, t.divide(a, radius))));
            break;
        }
        case Operation::sinh:
            times(t.apply(Operation::cosh, a));
            break;
        case Operation::cosh:
            times(t.apply(Operation::sinh, a));
            break;
        case Operation::tanh:
            over(t.square(t.apply(Operation::cosh, a)));
            break;  // 1 - tanh^2 would cancel
        case Operation::asinh:
            over(t.apply(Operation::sqrt, t.add(one_, t.square(a))));
            break;
        case Operation::acosh:
            over(t.apply(Operation::sqrt, t.multiply(t.subtract(a, one_), t.add(a, one_))));
            break;
        case Operation::atanh:
            over(one_minus_square());
            break;
        case Operation::abs:
            times(t.apply(Operation::sign, a));
            break;
        case Operation::erf:
            times(gauss());
            break;
        case Operation::erfc:
            times(t.negate(gauss()));
            break;
        case Operation::gamma:
            times(t.multiply(id, t.apply(Operation::digamma, a)));
            break;
        case Operation::lgamma:
            times(t.apply(Operation::digamma, a));
            break;
        case Operation::digamma:
            times(t.apply(Operation::trigamma, a));
            break;
        case Operation::gammap:
            if (active(a)) pass_on(a, t.multiply(above, t.apply(Operation::gammap_shape, a, b)));
            if (active(b)) pass_on(b, t.multiply(above, t.apply(Operation::gammap_density, a, b)));
            break;
        case Operation::gammap_density: {
            const NodeId product = t.multiply(above, id);
            if (active(a))
                pass_on(a,
                        t.multiply(product, t.subtract(t.apply(Operation::ln, b), t.apply(Operation::digamma, a))));
            if (active(b)) pass_on(b, t.multiply(product, t.subtract(t.divide(t.subtract(a, one_), b), one_)));
            break;
        }
        case Operation::gammap_shape:
            if (active(a)) throw FormulaError("gammap_shape has no derivative in its first argument", 0);
            pass_on(b, t.multiply(above, t.multiply(t.apply(Operation::gammap_density, a, b),
                                                    t.subtract(t.apply(Operation::ln, b),
                                                               t.apply(Operation::digamma, a)))));
            break;
        case Operation::trigamma:
            throw FormulaError("trigamma has no derivative", 0);
        case Operation::besseli0:
            times(t.apply(Operation::besseli1, a));
            break;
        case Operation::besseli1: {
            const NodeId at_zero = t.apply(Operation::equal, a, zero_);
            times(
                t.subtract(t.apply(Operation::besseli0, a), t.select(at_zero, t.number({5, -1}), t.divide(id, a))));
            break;
        }
        case Operation::constant:
        case Operation::name:
        case Operation::less:
        case Operation::less_equal:
        case Operation::greater:
        case Operation::greater_equal:
        case Operation::equal:
        case Operation::not_equal:
        case Operation::logical_and:
        case Operation::logical_or:
        case Operation::logical_not:
        case Operation::sign:
        case Operation::floor:
            break;  // constant between their steps
        case Operation::select:
        case Operation::min:
        case Operation::max:
            break;  // on their own
    }
}

/// The power itself gives its derivatives, a quotient and a product away: another power would cost ten times as
/// much.
void Differentiation::through_power(Sweep &sweep, NodeId id, NodeId above)
{
    const NodeId base = graph_[id].operands[0], exponent = graph_[id].operands[1];
    Simplifier &t = terms_;
    const auto number = t.decimal(exponent);
    if (number && number->exponent == 0 && number->digits >= 0 && number->digits < 1000) {
        const auto n = static_cast<int>(number->digits);
        if (n > 0) pass(sweep, base, t.multiply(t.number(n), t.multiply(above, t.power(base, n - 1))));
        return;
    }
    if (t.is(exponent, -1)) return pass(sweep, base, t.negate(t.multiply(above, t.square(id))));
    if (number == Decimal{5, -1}) return pass(sweep, base, t.divide(t.multiply(t.number({5, -1}), above), id));

    const NodeId product = t.multiply(above, id);
    if (active(base)) {
        const Vanishing vanishing{exponent, above};
        const bool vanishes = !number || number->digits > 0;
        through_logarithm(sweep, base, t.multiply(exponent, product), vanishes ? &vanishing : nullptr);
    }
    if (active(exponent)) {
        const NodeId derivative = t.multiply(product, t.apply(Operation::ln, base));
        // 0 to a power above 0 stays 0, though its logarithm is infinite.
        const auto constant = t.decimal(base);
        pass(sweep, exponent,
             constant && constant->digits > 0 ? derivative
                                              : t.select(t.apply(Operation::equal, id, zero_), zero_, derivative));
    }
}

/// From the logarithm of a node, of which above is the derivative, to the factors of its products and quotients:
/// exact, cheaper than by way of their value, and free of 0/0 where another factor vanishes.
void Differentiation::through_logarithm(Sweep &sweep, NodeId id, NodeId above, const Vanishing *vanishing)
{
    struct Factor {
        NodeId id, above;
        NodeId outer;  ///< as in Vanishing; 0 below a fraction line, where the value would be infinite first
    };
    constexpr NodeId none = ~NodeId{0};
    Simplifier &t = terms_;
    // The other factors matter only to an exponent that may turn out to be 1.
    const bool outer_needed = vanishing && !t.decimal(vanishing->exponent);
    std::vector<Factor> open{{id, above, vanishing ? vanishing->outer : none}};
    while (!open.empty()) {
        const Factor factor = open.back();
        open.pop_back();
        if (!active(factor.id)) continue;
        const Node node = graph_[factor.id];
        const NodeId a = node.operands[0], b = node.operands[1];
        const bool vanishes = factor.outer != none;
        const auto outer = [&](auto &&compute) { return vanishes && outer_needed ? compute() : factor.outer; };
        if (is_apart(factor.id, sweep.root)) {
            // as one factor
        } else if (node.operation == Operation::multiply) {
            open.push_back({b, factor.above, outer([&] { return t.multiply(factor.outer, a); })});
            open.push_back({a, factor.above, outer([&] { return t.multiply(factor.outer, b); })});
            continue;
        } else if (node.operation == Operation::divide) {
            open.push_back({b, t.negate(factor.above), none});
            open.push_back({a, factor.above, outer([&] { return t.divide(factor.outer, b); })});
            continue;
        } else if (node.operation == Operation::negate) {
            open.push_back({a, factor.above, outer([&] { return t.negate(factor.outer); })});
            continue;
        } else if (node.operation == Operation::exp) {
            pass(sweep, a, factor.above);
            continue;
        } else if (!vanishes && node.operation == Operation::power && t.decimal(b)) {
            open.push_back({a, t.multiply(b, factor.above), none});
            continue;
        } else if (!vanishes && node.operation == Operation::sqrt) {
            open.push_back({a, t.multiply(t.number({5, -1}), factor.above), none});
            continue;
        }
        pass(sweep, factor.id,
             vanishes ? vanishing_quotient(factor.above, factor.id, {vanishing->exponent, factor.outer})
                      : t.divide(factor.above, factor.id));
    }
}

/// above / id, which is 0/0 where the base of a power vanishes: there the derivative is 0 for an exponent above 1,
/// and for 1 that of the base. Below 1 it is infinite and stays undefined.
NodeId Differentiation::vanishing_quotient(NodeId above, NodeId id, const Vanishing &vanishing)
{
    Simplifier &t = terms_;
    const NodeId quotient = t.divide(above, id);
    const NodeId at_zero = t.apply(Operation::equal, id, zero_);
    if (const auto number = t.decimal(vanishing.exponent)) {
        const double exponent = static_cast<double>(number->digits) * std::pow(10.0, number->exponent);
        return exponent > 1 ? t.select(at_zero, zero_, quotient) : quotient;
    }
    const NodeId smooth = t.apply(Operation::greater_equal, vanishing.exponent, one_);
    const NodeId steep = t.apply(Operation::greater, vanishing.exponent, one_);
    return t.select(t.apply(Operation::logical_and, at_zero, smooth), t.select(steep, zero_, vanishing.outer),
                    quotient);
}

}  // namespace

std::vector<Formula> Formula::with_derivatives(const std::vector<std::string> &names) const
{
    const auto grown = std::make_shared<Graph>(graph());
    Differentiation differentiation(*grown, root_, {names.begin(), names.end()});
    const Gradient gradient = differentiation.gradient(root_);
    std::vector<Formula> all{{grown, root_}};
    for (const std::string &name : names) {
        NodeId derivative = grown->constant("0");
        const auto place = gradient.find(grown->name(name));
        if (place != gradient.end()) derivative = place->second;
        all.emplace_back(grown, derivative);
    }
    return all;
}

}  // namespace curvebank::formula
