// What a formula is: a flat list of operations in which every operand stands before its user and equal
// subexpressions stand once.
//
// Evaluation, differentiation and every search are loops over that list, so that the length and the depth of a
// formula are bounded by memory alone, and a common subexpression is computed once without being looked for.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formula/operations.h"

namespace curvebank::formula {

using NodeId = uint32_t;

struct Node {
    Operation operation;
    uint32_t text = 0;  ///< of a constant its literal, of a name the name: a position in Graph::texts()
    std::array<NodeId, 3> operands{};  ///< as many as the operation has

    bool operator==(const Node &) const = default;
};

/// Grows only: a node keeps its number. Adding what is there already gives the number it has.
class Graph {
public:
    /// A decimal literal without sign, or pi. It keeps its text, so that it can be read in any precision.
    NodeId constant(std::string_view literal);
    NodeId name(std::string_view name);
    NodeId apply(Operation operation, NodeId a, NodeId b = 0, NodeId c = 0);

    const std::vector<Node> &nodes() const { return nodes_; }
    const Node &operator[](NodeId id) const { return nodes_[id]; }
    const std::string &text(const Node &node) const { return texts_[node.text]; }

    /// The number of an operation that is there already.
    std::optional<NodeId> find(Operation operation, NodeId a, NodeId b = 0, NodeId c = 0) const;

    /// The node of a name, or null where the formula has none of that name.
    const Node *find_name(std::string_view name) const;

private:
    NodeId add(const Node &node);
    uint32_t text_index(std::string_view text);

    struct Hash {
        size_t operator()(const Node &node) const;
    };

    std::vector<Node> nodes_;
    std::vector<std::string> texts_;
    std::unordered_map<Node, NodeId, Hash> known_;
    std::unordered_map<std::string, uint32_t> text_numbers_;
};

constexpr int operand_count(Operation operation)
{
    constexpr int counts[] = {
#define CURVEBANK_COUNT(name, operands, text) operands,
        CURVEBANK_OPERATIONS(CURVEBANK_COUNT)
#undef CURVEBANK_COUNT
    };
    return counts[static_cast<size_t>(operation)];
}

constexpr std::string_view operation_text(Operation operation)
{
    constexpr std::string_view texts[] = {
#define CURVEBANK_TEXT(name, operands, text) text,
        CURVEBANK_OPERATIONS(CURVEBANK_TEXT)
#undef CURVEBANK_TEXT
    };
    return texts[static_cast<size_t>(operation)];
}

}  // namespace curvebank::formula
