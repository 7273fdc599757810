#include "formula/formula.h"

#include <algorithm>

namespace curvebank::formula {

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

}  // namespace curvebank::formula
