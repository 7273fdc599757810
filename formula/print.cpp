// Formulas as text, LaTeX and MathML: for every operation a pattern and how tightly it binds, and one loop that
// fills them in.

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "formula/formula.h"

namespace curvebank::formula {
namespace {

constexpr size_t longest = 16'000'000;
constexpr size_t operation_count = static_cast<size_t>(Operation::besseli1) + 1;

/// In a pattern, $a5 is the first operand, in brackets if it binds less tightly than level 5; $b and $c the others.
/// @a is the first operand, or its operands if it is the same operation.
struct Form {
    int level = 0;
    std::string pattern;
};

struct Style {
    std::array<Form, operation_count> forms;
    std::string open, close;
    std::string
        times_number;  ///< the pattern of a product whose second factor begins with a digit, if that is another

    Form &operator[](Operation operation) { return forms[static_cast<size_t>(operation)]; }
    const Form &operator[](Operation operation) const { return forms[static_cast<size_t>(operation)]; }
};

/// A leaf as it is printed, and its level.
using Leaf = std::pair<std::string, int>;

bool begins_with_digit(const Graph &graph, NodeId id)
{
    if (graph[id].operation == Operation::power) id = graph[id].operands[0];
    return graph[id].operation == Operation::constant && graph.text(graph[id]) != "pi";
}

template <typename WriteLeaf>
std::string print(const Graph &graph, NodeId root, const Style &style, WriteLeaf &&write_leaf)
{
    struct Piece {
        std::string_view text;  ///< of a node its operation's pattern, where that is already decided
        NodeId id;
        int level;  ///< -1 for plain text, -2 for the operands of a node
    };
    constexpr int plain = -1, operands = -2;
    std::string out;
    std::vector<Piece> open{{{}, root, 0}}, pieces;
    while (!open.empty()) {
        const Piece piece = open.back();
        open.pop_back();
        if (piece.level == plain) {
            if (out.size() + piece.text.size() > longest)
                throw std::length_error("the formula is too long to print");
            out += piece.text;
            continue;
        }
        const Node &node = graph[piece.id];
        if (operand_count(node.operation) == 0) {
            const auto [text, level] = write_leaf(node);
            out += level < piece.level ? style.open + text + style.close : text;
            continue;
        }
        const Form &form = style[node.operation];
        std::string_view pattern = form.pattern;
        if (node.operation == Operation::multiply && !style.times_number.empty() &&
            begins_with_digit(graph, node.operands[1]))
            pattern = style.times_number;
        if (piece.level == operands) {
            const size_t first = pattern.find('@');
            pattern = pattern.substr(first, pattern.find('0', pattern.find('$')) + 1 - first);
        }
        pieces.clear();
        const bool brackets = form.level < piece.level;
        if (brackets) pieces.push_back({style.open, 0, plain});
        while (!pattern.empty()) {
            const size_t place = std::min(pattern.find_first_of("$@"), pattern.size());
            if (place > 0) pieces.push_back({pattern.substr(0, place), 0, plain});
            pattern.remove_prefix(place);
            if (pattern.empty()) break;
            const NodeId operand = node.operands[static_cast<size_t>(pattern[1] - 'a')];
            const bool list = pattern[0] == '@';
            pieces.push_back({{},
                              operand,
                              !list                                        ? pattern[2] - '0'
                              : graph[operand].operation == node.operation ? operands
                                                                           : 0});
            pattern.remove_prefix(list ? 2 : 3);
        }
        if (brackets) pieces.push_back({style.close, 0, plain});
        open.insert(open.end(), pieces.rbegin(), pieces.rend());
    }
    return out;
}

// Text.

Style text_style()
{
    Style style;
    style.open = "(";
    style.close = ")";
    for (size_t i = static_cast<size_t>(Operation::exp); i < operation_count; ++i) {
        const auto operation = static_cast<Operation>(i);
        const std::string name(operation_text(operation));
        style.forms[i] = {9, name + (operand_count(operation) == 1 ? "($a0)" : "($a0, $b0)")};
    }
    style[Operation::min] = {9, "min(@a, $b0)"};
    style[Operation::max] = {9, "max(@a, $b0)"};
    style[Operation::select] = {0, "$a1 ? $b0 : $c0"};
    style[Operation::logical_or] = {1, "$a1 or $b2"};
    style[Operation::logical_and] = {2, "$a2 and $b3"};
    style[Operation::logical_not] = {3, "not $a3"};
    for (const auto operation : {Operation::less, Operation::less_equal, Operation::greater,
                                 Operation::greater_equal, Operation::equal, Operation::not_equal})
        style[operation] = {4, "$a5 " + std::string(operation_text(operation)) + " $b5"};
    style[Operation::add] = {5, "$a5 + $b6"};
    style[Operation::subtract] = {5, "$a5 - $b6"};
    style[Operation::multiply] = {6, "$a6*$b7"};
    style[Operation::divide] = {6, "$a6/$b7"};
    style[Operation::negate] = {7, "-$a7"};
    style[Operation::power] = {8, "$a9^$b7"};
    return style;
}

// Names as symbols.

constexpr std::pair<std::string_view, std::string_view> greek[] = {
    {"alpha", "α"},   {"beta", "β"},  {"gamma", "γ"},  {"delta", "δ"}, {"epsilon", "ε"}, {"zeta", "ζ"},
    {"eta", "η"},     {"theta", "θ"}, {"iota", "ι"},   {"kappa", "κ"}, {"lambda", "λ"},  {"mu", "μ"},
    {"nu", "ν"},      {"xi", "ξ"},    {"pi", "π"},     {"rho", "ρ"},   {"sigma", "σ"},   {"tau", "τ"},
    {"upsilon", "υ"}, {"phi", "φ"},   {"chi", "χ"},    {"psi", "ψ"},   {"omega", "ω"},   {"Gamma", "Γ"},
    {"Delta", "Δ"},   {"Theta", "Θ"}, {"Lambda", "Λ"}, {"Xi", "Ξ"},    {"Pi", "Π"},      {"Sigma", "Σ"},
    {"Upsilon", "Υ"}, {"Phi", "Φ"},   {"Psi", "Ψ"},    {"Omega", "Ω"},
};

/// The letter, or an empty text where a name is none.
std::string_view greek_letter(std::string_view name)
{
    for (const auto &[spelt, letter] : greek)
        if (spelt == name) return letter;
    return {};
}

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

/// A letter or a word, and what stands below it.
struct Symbol {
    std::string base;
    std::vector<std::string> below;
};

/// xc and y0 have their second character below, as have tau1 and Vmax what follows the letter, and k_cat what
/// follows the line.
Symbol symbol(const std::string &name)
{
    Symbol result;
    size_t line = name.find('_');
    if (line == 0) return {name, {}};
    std::string first = name.substr(0, line);
    size_t letters = first.size();
    while (is_digit(first[letters - 1])) --letters;
    const std::string digits = first.substr(letters);
    first.resize(letters);
    const bool word = std::all_of(first.begin(), first.end(), is_letter);
    result.base = first;
    if (word && greek_letter(first).empty()) {
        const std::string rest = first.substr(1);
        if (rest.size() == 1 || rest == "max" || rest == "min") {
            result.base = first.substr(0, 1);
            result.below.push_back(rest);
        }
    }
    if (!digits.empty()) {
        if (!result.below.empty() && result.below[0].size() == 1)
            result.below[0] += digits;
        else
            result.below.push_back(digits);
    }
    while (line != std::string::npos) {
        const size_t next = name.find('_', line + 1);
        if (const std::string part = name.substr(line + 1, next - line - 1); !part.empty())
            result.below.push_back(part);
        line = next;
    }
    return result;
}

/// 1.5e-3 as 1.5 and -3; the exponent is empty where there is none.
std::pair<std::string, std::string> split_number(const std::string &literal)
{
    const size_t place = literal.find_first_of("eE");
    if (place == std::string::npos) return {literal, ""};
    std::string exponent = literal.substr(place + 1);
    const bool negative = exponent[0] == '-';
    exponent.erase(0, std::min(exponent.find_first_not_of("+-0"), exponent.size()));
    if (exponent.empty()) exponent = "0";
    return {literal.substr(0, place), (negative && exponent != "0" ? "-" : "") + exponent};
}

std::string join(const std::vector<std::string> &parts, std::string_view between)
{
    std::string all;
    for (const std::string &part : parts) {
        if (!all.empty()) all += between;
        all += part;
    }
    return all;
}

// In the printed styles a fraction needs no brackets, and a sign may stand before a product: other levels than in
// text.

/// How a function is written there: its symbol, and what encloses its arguments where that is not brackets.
struct Function {
    Operation operation;
    std::string_view latex, mathml;
};

constexpr Function functions[] = {
    {Operation::exp, "\\exp", "<mi>exp</mi>"},
    {Operation::expm1, "\\operatorname{expm1}", "<mi>expm1</mi>"},
    {Operation::ln, "\\ln", "<mi>ln</mi>"},
    {Operation::log1p, "\\operatorname{log1p}", "<mi>log1p</mi>"},
    {Operation::log10, "\\log_{10}", "<msub><mi>log</mi><mn>10</mn></msub>"},
    {Operation::log2, "\\log_2", "<msub><mi>log</mi><mn>2</mn></msub>"},
    {Operation::sin, "\\sin", "<mi>sin</mi>"},
    {Operation::cos, "\\cos", "<mi>cos</mi>"},
    {Operation::tan, "\\tan", "<mi>tan</mi>"},
    {Operation::asin, "\\arcsin", "<mi>arcsin</mi>"},
    {Operation::acos, "\\arccos", "<mi>arccos</mi>"},
    {Operation::atan, "\\arctan", "<mi>arctan</mi>"},
    {Operation::atan2, "\\operatorname{atan2}", "<mi>atan2</mi>"},
    {Operation::sinh, "\\sinh", "<mi>sinh</mi>"},
    {Operation::cosh, "\\cosh", "<mi>cosh</mi>"},
    {Operation::tanh, "\\tanh", "<mi>tanh</mi>"},
    {Operation::asinh, "\\operatorname{arsinh}", "<mi>arsinh</mi>"},
    {Operation::acosh, "\\operatorname{arcosh}", "<mi>arcosh</mi>"},
    {Operation::atanh, "\\operatorname{artanh}", "<mi>artanh</mi>"},
    {Operation::sign, "\\operatorname{sgn}", "<mi>sgn</mi>"},
    {Operation::min, "\\min", "<mi>min</mi>"},
    {Operation::max, "\\max", "<mi>max</mi>"},
    {Operation::erf, "\\operatorname{erf}", "<mi>erf</mi>"},
    {Operation::erfc, "\\operatorname{erfc}", "<mi>erfc</mi>"},
    {Operation::gamma, "\\Gamma", "<mi mathvariant=\"normal\">Γ</mi>"},
    {Operation::lgamma, "\\ln\\Gamma", "<mi>ln</mi><mi mathvariant=\"normal\">Γ</mi>"},
    {Operation::digamma, "\\psi", "<mi>ψ</mi>"},
    {Operation::trigamma, "\\psi'", "<msup><mi>ψ</mi><mo>′</mo></msup>"},
    {Operation::gammap, "P", "<mi>P</mi>"},
    {Operation::gammap_shape, "P_a", "<msub><mi>P</mi><mi>a</mi></msub>"},
    {Operation::gammap_density, "P_z", "<msub><mi>P</mi><mi>z</mi></msub>"},
    {Operation::besseli0, "I_0", "<msub><mi>I</mi><mn>0</mn></msub>"},
    {Operation::besseli1, "I_1", "<msub><mi>I</mi><mn>1</mn></msub>"},
};

Style latex_style()
{
    Style style;
    style.open = "\\left(";
    style.close = "\\right)";
    style.times_number = "$a6 \\cdot $b7";
    for (const Function &function : functions)
        style[function.operation] = {9, std::string(function.latex) + "\\left($a0" +
                                            (operand_count(function.operation) == 1 ? "" : ", $b0") + "\\right)"};
    style[Operation::min].pattern = "\\min\\left(@a, $b0\\right)";
    style[Operation::max].pattern = "\\max\\left(@a, $b0\\right)";
    style[Operation::sqrt] = {9, "\\sqrt{$a0}"};
    style[Operation::cbrt] = {9, "\\sqrt[3]{$a0}"};
    style[Operation::abs] = {9, "\\left|$a0\\right|"};
    style[Operation::floor] = {9, "\\left\\lfloor $a0\\right\\rfloor"};
    style[Operation::select] = {0,
                                "\\begin{cases} $b0 & \\text{if } $a0 \\\\ $c0 & \\text{otherwise} \\end{cases}"};
    style[Operation::logical_or] = {1, "$a1 \\lor $b2"};
    style[Operation::logical_and] = {2, "$a2 \\land $b3"};
    style[Operation::logical_not] = {3, "\\lnot $a4"};
    style[Operation::less] = {4, "$a5 < $b5"};
    style[Operation::less_equal] = {4, "$a5 \\le $b5"};
    style[Operation::greater] = {4, "$a5 > $b5"};
    style[Operation::greater_equal] = {4, "$a5 \\ge $b5"};
    style[Operation::equal] = {4, "$a5 = $b5"};
    style[Operation::not_equal] = {4, "$a5 \\ne $b5"};
    style[Operation::add] = {5, "$a5 + $b7"};
    style[Operation::subtract] = {5, "$a5 - $b7"};
    style[Operation::negate] = {6, "-$a7"};
    style[Operation::multiply] = {7, "$a6 \\, $b8"};
    style[Operation::divide] = {8, "\\frac{$a0}{$b0}"};
    style[Operation::power] = {8, "$a9^{$b0}"};
    return style;
}

Leaf latex_leaf(const Graph &graph, const Node &node)
{
    const std::string &text = graph.text(node);
    if (node.operation == Operation::constant) {
        if (text == "pi") return {"\\pi", 9};
        const auto [digits, exponent] = split_number(text);
        if (exponent.empty()) return {digits, 9};
        if (digits == "1") return {"10^{" + exponent + "}", 8};
        return {digits + " \\cdot 10^{" + exponent + "}", 7};
    }
    const auto word = [](std::string part) {
        for (size_t i = 0; (i = part.find('_', i)) != std::string::npos; i += 2) part.insert(i, "\\");
        return part;
    };
    auto [base, below] = symbol(text);
    if (!greek_letter(base).empty())
        base = '\\' + base;
    else if (base.size() > 1)
        base = "\\mathrm{" + word(base) + '}';
    for (std::string &part : below)
        if (part.size() > 1 && is_letter(part[0]) && !is_digit(part[1]))
            part = greek_letter(part).empty() ? "\\mathrm{" + part + '}' : '\\' + part;
    const std::string lower = join(below, ",");
    if (below.empty()) return {base, 9};
    return {base + (lower.size() == 1 ? '_' + lower : "_{" + lower + '}'), 9};
}

Style mathml_style()
{
    const auto sign = [](std::string_view text) { return "<mo>" + std::string(text) + "</mo>"; };
    Style style;
    style.open = "<mrow><mo>(</mo>";
    style.close = "<mo>)</mo></mrow>";
    style.times_number = "$a6<mo>·</mo>$b7";
    for (const Function &function : functions)
        style[function.operation] = {9, std::string(function.mathml) + sign("&#x2061;") + style.open + "$a0" +
                                            (operand_count(function.operation) == 1 ? "" : "<mo>,</mo>$b0") +
                                            style.close};
    for (const auto operation : {Operation::min, Operation::max})
        style[operation].pattern.replace(style[operation].pattern.find("$a0"), 3, "@a");
    style[Operation::sqrt] = {9, "<msqrt>$a0</msqrt>"};
    style[Operation::cbrt] = {9, "<mroot><mrow>$a0</mrow><mn>3</mn></mroot>"};
    style[Operation::abs] = {9, "<mrow><mo>|</mo>$a0<mo>|</mo></mrow>"};
    style[Operation::floor] = {9, "<mrow><mo>⌊</mo>$a0<mo>⌋</mo></mrow>"};
    style[Operation::select] = {0,
                                "<mrow><mo>{</mo><mtable columnalign=\"left\"><mtr><mtd>$b0</mtd>"
                                "<mtd><mtext>if&#xa0;</mtext>$a0</mtd></mtr><mtr><mtd>$c0</mtd>"
                                "<mtd><mtext>otherwise</mtext></mtd></mtr></mtable></mrow>"};
    style[Operation::logical_or] = {1, "$a1" + sign("∨") + "$b2"};
    style[Operation::logical_and] = {2, "$a2" + sign("∧") + "$b3"};
    style[Operation::logical_not] = {3, sign("¬") + "$a4"};
    style[Operation::less] = {4, "$a5" + sign("&lt;") + "$b5"};
    style[Operation::less_equal] = {4, "$a5" + sign("≤") + "$b5"};
    style[Operation::greater] = {4, "$a5" + sign("&gt;") + "$b5"};
    style[Operation::greater_equal] = {4, "$a5" + sign("≥") + "$b5"};
    style[Operation::equal] = {4, "$a5" + sign("=") + "$b5"};
    style[Operation::not_equal] = {4, "$a5" + sign("≠") + "$b5"};
    style[Operation::add] = {5, "$a5" + sign("+") + "$b7"};
    style[Operation::subtract] = {5, "$a5" + sign("−") + "$b7"};
    style[Operation::negate] = {6, sign("−") + "$a7"};
    style[Operation::multiply] = {7, "$a6" + sign("&#x2062;") + "$b8"};
    style[Operation::divide] = {8, "<mfrac><mrow>$a0</mrow><mrow>$b0</mrow></mfrac>"};
    style[Operation::power] = {8, "<msup><mrow>$a9</mrow><mrow>$b0</mrow></msup>"};
    return style;
}

Leaf mathml_leaf(const Graph &graph, const Node &node)
{
    const std::string &text = graph.text(node);
    if (node.operation == Operation::constant) {
        if (text == "pi") return {"<mi>π</mi>", 9};
        auto [digits, exponent] = split_number(text);
        if (exponent.empty()) return {"<mn>" + digits + "</mn>", 9};
        if (exponent[0] == '-') exponent.replace(0, 1, "−");
        const std::string power = "<msup><mn>10</mn><mn>" + exponent + "</mn></msup>";
        if (digits == "1") return {power, 8};
        return {"<mn>" + digits + "</mn><mo>·</mo>" + power, 7};
    }
    const auto identifier = [](const std::string &part) {
        const std::string_view letter = greek_letter(part);
        const auto *const element = is_digit(part[0]) ? "mn" : "mi";
        return '<' + std::string(element) + '>' + (letter.empty() ? part : std::string(letter)) + "</" + element +
               '>';
    };
    auto [base, below] = symbol(text);
    if (below.empty()) return {identifier(base), 9};
    for (std::string &part : below) part = identifier(part);
    return {"<msub>" + identifier(base) + "<mrow>" + join(below, "<mo>,</mo>") + "</mrow></msub>", 9};
}

}  // namespace

std::string Formula::text() const
{
    static const Style style = text_style();
    return print(graph(), root_, style, [this](const Node &node) { return Leaf{graph().text(node), 9}; });
}

std::string Formula::latex() const
{
    static const Style style = latex_style();
    return print(graph(), root_, style, [this](const Node &node) { return latex_leaf(graph(), node); });
}

std::string Formula::mathml() const
{
    static const Style style = mathml_style();
    return "<math xmlns=\"http://www.w3.org/1998/Math/MathML\">" +
           print(graph(), root_, style, [this](const Node &node) { return mathml_leaf(graph(), node); }) +
           "</math>";
}

}  // namespace curvebank::formula
