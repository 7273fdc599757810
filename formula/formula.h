// A formula as a person writes it: read from text, differentiated, printed.

#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "formula/graph.h"

namespace curvebank::formula {

/// A text that is no formula. what() names the column and what was expected, and shows the text with a caret under
/// the place.
class FormulaError : public std::runtime_error {
public:
    FormulaError(const std::string &message, size_t column) : std::runtime_error(message), column_(column) {}

    size_t column() const { return column_; }  ///< from 1, in bytes

private:
    size_t column_;
};

/// One expression: a node of a graph that it shares with its derivatives. A value: copies are cheap and
/// independent.
class Formula {
public:
    /// Operands inside one another (parentheses, signs, exponents, branches, arguments) beyond which a text is
    /// refused.
    static constexpr int deepest = 300;

    /// Reads a text; throws FormulaError. docs/formulas.md describes the language. Nothing is simplified.
    static Formula parse(std::string_view text);

    Formula(std::shared_ptr<const Graph> graph, NodeId root) : graph_(std::move(graph)), root_(root) {}

    const Graph &graph() const { return *graph_; }
    NodeId root() const { return root_; }

    /// The names in it, in order of first appearance in the text.
    std::vector<std::string> names() const;

    /// The exact partial derivatives with respect to these names, in one graph with the value, which stands first.
    /// Piecewise formulas have the derivative of the branch in use; floor and sign have 0.
    std::vector<Formula> with_derivatives(const std::vector<std::string> &names) const;

    /// Which of these names it is linear in, all of them together, given the others: a largest such set, taken in
    /// the order given.
    std::vector<std::string> linear_in(const std::vector<std::string> &names) const;

    /// Whether it is linear in all these names together, without a part that is free of them.
    bool is_linear_in(const std::vector<std::string> &names) const;

    /// It with these names replaced by formulas, all at once: names in those stay.
    Formula substitute(const std::vector<std::pair<std::string, Formula>> &replacements) const;

    std::string text() const;   ///< as parse reads it back to the same tree
    std::string latex() const;  ///< with Greek letters and subscripts where names ask for them
    std::string mathml() const;

private:
    std::shared_ptr<const Graph> graph_;
    NodeId root_;
};

/// "left = formula". Throws FormulaError.
struct Equation {
    static Equation parse(std::string_view text);

    std::string left;  ///< the name before "="; empty where the text is a formula alone
    Formula right;
};

}  // namespace curvebank::formula
