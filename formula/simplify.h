// Builds the nodes of derivatives, with the simplifications that come from the chain rule: terms of 0, factors of
// 1, coefficients, signs, factors that cancel. What stands in the graph already is used again.

#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "formula/graph.h"

namespace curvebank::formula {

/// digits * 10^exponent.
struct Decimal {
    int64_t digits = 0;
    int exponent = 0;

    bool operator==(const Decimal &) const = default;
};

class Simplifier {
public:
    /// Fixed names are those that stay the same from point to point: what contains no other is worth a division
    /// once to save one a point.
    Simplifier(Graph &graph, std::set<std::string> fixed);

    NodeId number(Decimal value);
    NodeId number(int value) { return number(Decimal{value, 0}); }
    std::optional<Decimal> decimal(NodeId id) const;  ///< of a short literal, also with a sign
    bool is(NodeId id, int value) const { return decimal(id) == Decimal{value, 0}; }
    bool is_fixed(NodeId id);

    NodeId add(NodeId a, NodeId b);
    NodeId subtract(NodeId a, NodeId b);
    NodeId multiply(NodeId a, NodeId b);
    NodeId divide(NodeId a, NodeId b);
    NodeId negate(NodeId a);
    NodeId square(NodeId a);
    NodeId power(NodeId a, int exponent);
    NodeId select(NodeId condition, NodeId a, NodeId b);
    NodeId apply(Operation operation, NodeId a, NodeId b = 0) { return graph_.apply(operation, a, b); }

private:
    Node node(NodeId id) const { return graph_[id]; }
    bool is_negated(NodeId id) const { return node(id).operation == Operation::negate; }

    /// Of a product with a number in front: the number and the rest.
    std::optional<std::pair<Decimal, NodeId>> coefficient(NodeId id) const;
    NodeId commuting(Operation operation, NodeId a, NodeId b);

    Graph &graph_;
    std::set<std::string> fixed_names_;
    std::vector<bool> fixed_;
};

}  // namespace curvebank::formula
