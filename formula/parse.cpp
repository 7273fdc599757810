// The grammar of formulas. docs/formulas.md describes the language.
//
// Semantic actions build the graph while the text is read, operands before their operator. The grammar never goes
// back over what had an action: a rule either fails at its first token or succeeds, and everything after a first
// token is an expectation.

#include <charconv>
#include <functional>
#include <map>

#include <boost/spirit/home/x3.hpp>

#include "formula/formula.h"

namespace curvebank::formula {
namespace {

namespace x3 = boost::spirit::x3;
using Iterator = const char *;

constexpr auto operand_wanted = "a number, a name or \"(\"";
constexpr size_t longest_literal = 1000;

struct Failure {
    Iterator where;
    std::string message;
};

[[noreturn]] void fail(Iterator where, std::string message)
{
    throw Failure{where, std::move(message)};
}

std::string quoted(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

// What stands at a place, for the messages.

bool is_space(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}
bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}
bool is_name_start(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool is_name_part(char c)
{
    return is_name_start(c) || is_digit(c);
}

/// The length of the UTF-8 sequence at the front of a text that is not empty; 0 where it is none.
size_t sequence_length(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    const size_t length = first < 0x80                    ? 1
                          : first >= 0xc2 && first < 0xe0 ? 2
                          : first >= 0xe0 && first < 0xf0 ? 3
                          : first >= 0xf0 && first < 0xf5 ? 4
                                                          : 0;
    if (text.size() < length) return 0;
    for (size_t i = 1; i < length; ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xc0) != 0x80) return 0;
    return length;
}

/// Signs that look like operators and come from text processors.
std::string_view hint(std::string_view character)
{
    static constexpr std::pair<std::string_view, std::string_view> hints[] = {
        {"=", "equality is written =="},         {"!", "negation is written not"},
        {"&", "a conjunction is written and"},   {"|", "a disjunction is written or"},
        {"\u2212", "a minus sign is written -"}, {"\u2013", "a minus sign is written -"},
        {"\u00b7", "a product is written *"},    {"\u22c5", "a product is written *"},
        {"\u00d7", "a product is written *"},    {"\u00f7", "a quotient is written /"},
        {"\u00b2", "a square is written ^2"},    {"\u00b3", "a cube is written ^3"},
        {"\u03c0", "it is written pi"},
    };
    for (const auto &[sign, meaning] : hints)
        if (sign == character) return meaning;
    return {};
}

std::string found(std::string_view rest)
{
    if (rest.empty()) return "the end";
    size_t length = sequence_length(rest);
    const char first = rest[0];
    if (length == 0 || (length == 1 && (first < ' ' || first == 0x7f))) {
        const char digits[] = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(first);
        return std::string("the byte 0x") + digits[byte >> 4] + digits[byte & 15];
    }
    if (is_name_part(first) || first == '.')
        while (length < rest.size() && length < 40 && is_name_part(rest[length])) ++length;
    const std::string_view token = rest.substr(0, length), meaning = hint(token);
    return quoted(token) + (meaning.empty() ? "" : " (" + std::string(meaning) + ")");
}

/// The text around a place in one line, and a caret under the place.
std::string picture(std::string_view text, size_t place)
{
    constexpr size_t width = 36;  // to either side
    const size_t first = place > width ? place - width : 0;
    const size_t last = text.size() - place > width ? place + width : text.size();
    std::string line = "    ";
    if (first > 0) line += "...";
    std::string caret;
    for (size_t i = first; i <= last; ++i) {
        if (i == place) caret = std::string(line.size(), ' ') + '^';
        if (i == last) break;
        const size_t length = sequence_length(text.substr(i));
        if (length == 1)
            line += text[i] < ' ' || text[i] == 0x7f ? ' ' : text[i];
        else if (length == 0)
            line += '?';
        else {
            line += text.substr(i, length);
            i += length - 1;
            if (i >= last) break;
        }
    }
    if (last < text.size()) line += "...";
    return line + '\n' + caret;
}

// What the actions do.

constexpr size_t unlimited = SIZE_MAX;

/// One with an unlimited number of arguments is applied to the first two, to the result and the third, and so on.
struct Function {
    Operation operation;
    size_t least, most;
};

const Function *find_function(std::string_view name)
{
    static const std::map<std::string_view, Function> functions = [] {
        std::map<std::string_view, Function> all;
        for (int i = static_cast<int>(Operation::exp); i <= static_cast<int>(Operation::besseli1); ++i) {
            const auto operation = static_cast<Operation>(i);
            const auto count = static_cast<size_t>(operand_count(operation));
            all[operation_text(operation)] = {operation, count, count};
        }
        for (const char *folded : {"min", "max"}) all[folded].most = unlimited;
        all["log"] = all["ln"];
        return all;
    }();
    const auto place = functions.find(name);
    return place == functions.end() ? nullptr : &place->second;
}

class Builder {
public:
    std::shared_ptr<Graph> graph = std::make_shared<Graph>();
    int depth = 0;

    NodeId root() const { return operands_.back(); }

    void constant(std::string_view literal)
    {
        if (literal.size() > longest_literal)
            fail(literal.data(), "a number of more than " + std::to_string(longest_literal) + " characters");
        double value = 0;
        if (std::from_chars(literal.data(), literal.data() + literal.size(), value).ec != std::errc())
            fail(literal.data(), "a number beyond the range of double precision");
        operands_.push_back(graph->constant(literal));
    }

    void word(std::string_view text) { words_.push_back({text, 0}); }

    /// The word was no function.
    void name()
    {
        const std::string_view text = words_.back().text;
        words_.pop_back();
        operands_.push_back(text == "pi" ? graph->constant(text) : graph->name(text));
    }

    void open_call() const
    {
        const std::string_view text = words_.back().text;
        if (!find_function(text))
            fail(text.data(), "there is no function " + quoted(text) + " (a product needs its *)");
    }

    void argument()
    {
        Word &call = words_.back();
        const Function function = *find_function(call.text);
        if (++call.arguments > 1 && function.most == unlimited) apply(function.operation);
    }

    void close_call()
    {
        const auto [text, count] = words_.back();
        words_.pop_back();
        const Function function = *find_function(text);
        if (count < function.least || count > function.most)
            fail(text.data(), quoted(text) + " takes " + std::to_string(function.least) +
                                  (function.most > function.least ? " or more" : "") +
                                  (function.least == 1 ? " argument, not " : " arguments, not ") +
                                  std::to_string(count));
        if (function.most != unlimited) apply(function.operation);
    }

    void apply(Operation operation)
    {
        std::array<NodeId, 3> operands{};
        const auto count = static_cast<size_t>(operand_count(operation));
        std::copy(operands_.end() - static_cast<std::ptrdiff_t>(count), operands_.end(), operands.begin());
        operands_.resize(operands_.size() - count);
        operands_.push_back(graph->apply(operation, operands[0], operands[1], operands[2]));
    }

private:
    struct Word {
        std::string_view text;
        size_t arguments;
    };

    std::vector<NodeId> operands_;
    std::vector<Word> words_;
};

struct BuilderTag;

template <typename Context>
Builder &builder(const Context &context)
{
    return x3::get<BuilderTag>(context).get();
}

template <typename Context>
std::string_view matched(const Context &context)
{
    const auto &range = x3::_attr(context);
    return {range.begin(), static_cast<size_t>(range.end() - range.begin())};
}

template <Operation operation>
constexpr auto apply = [](auto &context) { builder(context).apply(operation); };
constexpr auto constant = [](auto &context) { builder(context).constant(matched(context)); };
constexpr auto word = [](auto &context) { builder(context).word(matched(context)); };
constexpr auto name_ends = [](auto &context) { builder(context).name(); };
constexpr auto call_opens = [](auto &context) { builder(context).open_call(); };
constexpr auto argument_ends = [](auto &context) { builder(context).argument(); };
constexpr auto call_closes = [](auto &context) { builder(context).close_call(); };
constexpr auto refuse_chain = [](auto &context) {
    fail(x3::_where(context).begin(), "comparisons cannot be chained: write a < b and b < c");
};
constexpr auto refuse_letter = [](auto &context) {
    fail(x3::_where(context).begin(),
         "a letter after a number (a product needs its *, and an exponent is written 1e-3)");
};

/// A parser one level deeper than its surroundings.
template <typename Subject>
struct Nested : x3::unary_parser<Subject, Nested<Subject>> {
    using x3::unary_parser<Subject, Nested<Subject>>::unary_parser;
    static constexpr bool is_pass_through_unary = true;

    template <typename Context, typename RuleContext, typename Attribute>
    bool parse(Iterator &first, const Iterator &last, const Context &context, RuleContext &rule,
               Attribute &attribute) const
    {
        struct Level {
            Level(int &level, Iterator where) : depth(level)
            {
                if (++depth > Formula::deepest)
                    fail(where, "nested deeper than " + std::to_string(Formula::deepest) + " levels");
            }
            ~Level() { --depth; }
            int &depth;
        } const level(builder(context).depth, first);
        return this->subject.parse(first, last, context, rule, attribute);
    }
};

struct {
    template <typename Subject>
    auto operator[](const Subject &subject) const
    {
        using Parser = typename x3::extension::as_parser<Subject>::value_type;
        return Nested<Parser>(x3::as_parser(subject));
    }
} const nested;

// The grammar, loosest binding first. The name of a rule is what a message says was expected.

#define CURVEBANK_RULE(name) const x3::rule<struct name##_rule> name(operand_wanted)
CURVEBANK_RULE(expression);
CURVEBANK_RULE(inner);
CURVEBANK_RULE(disjunction);
CURVEBANK_RULE(conjunction);
CURVEBANK_RULE(negation);
CURVEBANK_RULE(inner_negation);
CURVEBANK_RULE(comparison);
CURVEBANK_RULE(sum);
CURVEBANK_RULE(product);
CURVEBANK_RULE(signed_power);
CURVEBANK_RULE(inner_signed_power);
CURVEBANK_RULE(power);
CURVEBANK_RULE(primary);
#undef CURVEBANK_RULE
const x3::rule<struct colon_rule> colon("an operator or \":\"");
const x3::rule<struct bracket_rule> bracket("an operator or \")\"");
const x3::rule<struct last_bracket_rule> last_bracket("an operator, \",\" or \")\"");

const auto name_start = x3::char_("a-zA-Z_");
const auto name_part = x3::char_("a-zA-Z_0-9");
const auto keyword = [](const char *text) { return x3::lexeme[x3::lit(text) >> !name_part]; };
const auto any_or = keyword("or") | "||";
const auto any_and = keyword("and") | "&&";
const auto any_not = keyword("not");
const auto name_text = !(keyword("and") | keyword("or") | any_not) >> x3::raw[x3::lexeme[name_start >> *name_part]];

const auto digits = +x3::char_("0-9");
const auto exponent = x3::char_("eE") >> -x3::char_("+-") >> digits;
const auto number = x3::lexeme[x3::raw[((digits >> -(x3::char_('.') >> -digits)) | (x3::char_('.') >> digits)) >>
                                       -exponent][constant] >>
                               -(&name_start >> x3::eps[refuse_letter])];

const auto comparison_sign = x3::lit("<=") | ">=" | "==" | "!=" | "<" | ">";

const auto expression_def = disjunction >> -('?' > inner > colon > inner)[apply<Operation::select>];
const auto inner_def = nested[expression];
const auto disjunction_def = conjunction >> *(any_or > conjunction)[apply<Operation::logical_or>];
const auto conjunction_def = negation >> *(any_and > negation)[apply<Operation::logical_and>];
const auto negation_def = (any_not > inner_negation)[apply<Operation::logical_not>] | comparison;
const auto inner_negation_def = nested[negation];
const auto comparison_def = sum >>
                            -((("<=" > sum)[apply<Operation::less_equal>] |
                               (">=" > sum)[apply<Operation::greater_equal>] |
                               ("==" > sum)[apply<Operation::equal>] | ("!=" > sum)[apply<Operation::not_equal>] |
                               ('<' > sum)[apply<Operation::less>] | ('>' > sum)[apply<Operation::greater>]) >>
                              -(&comparison_sign >> x3::eps[refuse_chain]));
const auto sum_def = product >>
                     *(('+' > product)[apply<Operation::add>] | ('-' > product)[apply<Operation::subtract>]);
const auto product_def = signed_power >> *(('*' > signed_power)[apply<Operation::multiply>] |
                                           ('/' > signed_power)[apply<Operation::divide>]);
const auto signed_power_def =
    ('-' > inner_signed_power)[apply<Operation::negate>] | ('+' > inner_signed_power) | power;
const auto inner_signed_power_def = nested[signed_power];
const auto power_def = primary >> -((x3::lit('^') | "**") > inner_signed_power)[apply<Operation::power>];
const auto call = (x3::lit('(')[call_opens] > inner)[argument_ends] >>
                  (*(',' > inner)[argument_ends] > last_bracket)[call_closes];
const auto primary_def = number | ('(' > inner > bracket) | (name_text[word] >> (call | x3::eps[name_ends]));
const auto colon_def = x3::lit(':');
const auto bracket_def = x3::lit(')');
const auto last_bracket_def = x3::lit(')');

BOOST_SPIRIT_DEFINE(expression, inner, disjunction, conjunction, negation, inner_negation, comparison, sum, product,
                    signed_power, inner_signed_power, power, primary, colon, bracket, last_bracket)

/// Reads text from a place to its end.
Formula read(std::string_view text, size_t from)
{
    const Iterator last = text.data() + text.size();
    Iterator place = text.data() + from;
    const auto skip = [&] {
        while (place != last && is_space(*place)) ++place;
    };
    const auto error = [&](const std::string &message) {
        const auto offset = static_cast<size_t>(place - text.data());
        return FormulaError("column " + std::to_string(offset + 1) + ": " + message + '\n' + picture(text, offset),
                            offset + 1);
    };
    const auto unexpected = [&](std::string_view wanted) {
        skip();
        return error("expected " + std::string(wanted) + ", found " +
                     found({place, static_cast<size_t>(last - place)}));
    };
    Builder built;
    try {
        const auto grammar = x3::with<BuilderTag>(std::ref(built))[expression];
        if (!x3::phrase_parse(place, last, grammar, x3::ascii::space)) throw unexpected(operand_wanted);
    } catch (const x3::expectation_failure<Iterator> &failure) {
        place = failure.where();
        throw unexpected(failure.which());
    } catch (const Failure &failure) {
        place = failure.where;
        skip();
        throw error(failure.message);
    }
    if (place != last) throw unexpected("an operator or the end");
    return {built.graph, built.root()};
}

}  // namespace

Formula Formula::parse(std::string_view text)
{
    return read(text, 0);
}

Equation Equation::parse(std::string_view text)
{
    Iterator place = text.data();
    boost::iterator_range<Iterator> left;
    const auto head = name_text >> '=' >> !x3::lit('=');
    if (x3::phrase_parse(place, text.data() + text.size(), head, x3::ascii::space, left))
        return {std::string(left.begin(), left.end()), read(text, static_cast<size_t>(place - text.data()))};
    return {"", read(text, 0)};
}

}  // namespace curvebank::formula
