#include "formula/graph.h"

namespace curvebank::formula {

size_t Graph::Hash::operator()(const Node &node) const
{
    uint64_t hash = static_cast<uint64_t>(node.operation) * 0x9e3779b97f4a7c15u + node.text;
    for (const NodeId operand : node.operands) hash = (hash ^ (hash >> 29)) * 0xbf58476d1ce4e5b9u + operand;
    return static_cast<size_t>(hash ^ (hash >> 32));
}

NodeId Graph::add(const Node &node)
{
    const auto [place, added] = known_.try_emplace(node, static_cast<NodeId>(nodes_.size()));
    if (added) nodes_.push_back(node);
    return place->second;
}

uint32_t Graph::text_index(std::string_view text)
{
    const auto [place, added] = text_numbers_.try_emplace(std::string(text), static_cast<uint32_t>(texts_.size()));
    if (added) texts_.emplace_back(text);
    return place->second;
}

NodeId Graph::constant(std::string_view literal)
{
    return add({Operation::constant, text_index(literal), {}});
}

NodeId Graph::name(std::string_view name)
{
    return add({Operation::name, text_index(name), {}});
}

NodeId Graph::apply(Operation operation, NodeId a, NodeId b, NodeId c)
{
    return add({operation, 0, {a, b, c}});
}

std::optional<NodeId> Graph::find(Operation operation, NodeId a, NodeId b, NodeId c) const
{
    const auto place = known_.find(Node{operation, 0, {a, b, c}});
    if (place == known_.end()) return std::nullopt;
    return place->second;
}

const Node *Graph::find_name(std::string_view name) const
{
    const auto number = text_numbers_.find(std::string(name));
    if (number == text_numbers_.end()) return nullptr;
    const auto node = known_.find(Node{Operation::name, number->second, {}});
    return node == known_.end() ? nullptr : &nodes_[node->second];
}

}  // namespace curvebank::formula
