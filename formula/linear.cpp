// What a formula is linear in, found from the tree.

#include <set>

#include "formula/formula.h"

namespace curvebank::formula {
namespace {

/// How a node depends on some names, all together.
enum class Dependence : uint8_t {
    zero,    ///< the number 0, which fits everywhere
    none,    ///< not at all
    linear,  ///< a sum of names times factors
    affine,  ///< that, and a part without the names
    nonlinear
};

Dependence sum(Dependence a, Dependence b)
{
    if (a == Dependence::zero) return b;
    if (b == Dependence::zero || a == b) return a;
    if (a == Dependence::nonlinear || b == Dependence::nonlinear) return Dependence::nonlinear;
    return Dependence::affine;
}

Dependence dependence(const Graph &graph, NodeId root, const std::set<std::string> &names)
{
    std::vector<Dependence> all(root + 1);
    for (NodeId id = 0; id <= root; ++id) {
        const Node &node = graph[id];
        const Dependence a = all[node.operands[0]], b = all[node.operands[1]], c = all[node.operands[2]];
        const auto free = [](Dependence of) { return of <= Dependence::none; };
        const auto product = [&](Dependence factor, Dependence other) {
            return factor == Dependence::zero ? factor : other;
        };
        all[id] = [&] {
            switch (node.operation) {
                case Operation::constant:
                    return graph.text(node) == "0" ? Dependence::zero : Dependence::none;
                case Operation::name:
                    return names.contains(graph.text(node)) ? Dependence::linear : Dependence::none;
                case Operation::add:
                case Operation::subtract:
                    return sum(a, b);
                case Operation::negate:
                    return a;
                case Operation::multiply:
                    if (free(a)) return product(a, b);
                    return free(b) ? product(b, a) : Dependence::nonlinear;
                case Operation::divide:
                    return free(b) ? a : Dependence::nonlinear;
                case Operation::select:
                    return free(a) ? sum(b, c) : Dependence::nonlinear;
                default: {
                    bool all_free = true;
                    for (int i = 0; i < operand_count(node.operation); ++i)
                        all_free = all_free && free(all[node.operands[static_cast<size_t>(i)]]);
                    return all_free ? Dependence::none : Dependence::nonlinear;
                }
            }
        }();
    }
    return all[root];
}

}  // namespace

std::vector<std::string> Formula::linear_in(const std::vector<std::string> &names) const
{
    std::vector<std::string> found;
    std::set<std::string> together;
    for (const std::string &name : names) {
        if (!together.insert(name).second) continue;
        if (dependence(graph(), root_, together) == Dependence::nonlinear)
            together.erase(name);
        else
            found.push_back(name);
    }
    return found;
}

bool Formula::is_linear_in(const std::vector<std::string> &names) const
{
    const Dependence of = dependence(graph(), root_, {names.begin(), names.end()});
    return of == Dependence::linear || of == Dependence::zero;
}

}  // namespace curvebank::formula
