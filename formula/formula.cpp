#include "formula/formula.h"

#include <map>

namespace curvebank::formula {
namespace {

/// Copies a formula into a graph, some names as the nodes that stand for them.
NodeId copy(const Formula &from, Graph &into, const std::map<std::string, NodeId> &replaced)
{
    const Graph &graph = from.graph();
    std::vector<bool> used(from.root() + 1);
    used[from.root()] = true;
    for (size_t id = used.size(); id-- > 0;)
        if (used[id])
            for (int i = 0; i < operand_count(graph.nodes()[id].operation); ++i)
                used[graph.nodes()[id].operands[static_cast<size_t>(i)]] = true;

    std::vector<NodeId> numbers(used.size());
    for (size_t id = 0; id < used.size(); ++id) {
        if (!used[id]) continue;
        const Node &node = graph.nodes()[id];
        if (node.operation == Operation::constant) {
            numbers[id] = into.constant(graph.text(node));
        } else if (node.operation == Operation::name) {
            const auto place = replaced.find(graph.text(node));
            numbers[id] = place == replaced.end() ? into.name(graph.text(node)) : place->second;
        } else {
            std::array<NodeId, 3> operands{};
            for (size_t i = 0; i < static_cast<size_t>(operand_count(node.operation)); ++i)
                operands[i] = numbers[node.operands[i]];
            numbers[id] = into.apply(node.operation, operands[0], operands[1], operands[2]);
        }
    }
    return numbers.back();
}

}  // namespace

std::vector<std::string> Formula::names() const
{
    std::vector<std::string> names;
    std::vector<bool> seen(root_ + 1);
    std::vector<NodeId> open{root_};
    while (!open.empty()) {
        const NodeId id = open.back();
        open.pop_back();
        if (seen[id]) continue;
        seen[id] = true;
        const Node &node = graph()[id];
        if (node.operation == Operation::name) names.push_back(graph().text(node));
        for (int i = operand_count(node.operation); i-- > 0;) open.push_back(node.operands[static_cast<size_t>(i)]);
    }
    return names;
}

Formula Formula::substitute(const std::vector<std::pair<std::string, Formula>> &replacements) const
{
    const auto graph = std::make_shared<Graph>();
    std::map<std::string, NodeId> replaced;
    for (const auto &[name, formula] : replacements) replaced[name] = copy(formula, *graph, {});
    return {graph, copy(*this, *graph, replaced)};
}

}  // namespace curvebank::formula
