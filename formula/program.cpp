#include "formula/program.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <unordered_map>

#include "formula/evaluate.h"
#include "formula/kernels.h"

namespace curvebank::formula {
namespace {

// The kernels of the operations that have no vector form: the scalar functions in a loop.

template <Operation operation, unsigned uniform>
void loop(double *out, const double *a, const double *b, const double *, size_t count)
{
    for (size_t i = 0; i < count; ++i)
        out[i] = apply<double>(operation, a[uniform & 1 ? 0 : i],
                               operand_count(operation) < 2 ? 0 : b[uniform & 2 ? 0 : i]);
}

constexpr Kernel scalar_kernels[][3] = {
#define CURVEBANK_LOOPS(name, operands, text) \
    {loop<Operation::name, 0>, loop<Operation::name, 1>, loop<Operation::name, 2>},
    CURVEBANK_OPERATIONS(CURVEBANK_LOOPS)
#undef CURVEBANK_LOOPS
};

Instructions instructions_of_machine()
{
#ifdef CURVEBANK_VECTOR_KERNELS
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512cd") &&
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl"))
        return Instructions::avx512;
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) return Instructions::avx2;
#endif
    return Instructions::baseline;
}

const Kernels &kernels_of([[maybe_unused]] Instructions instructions)
{
#ifdef CURVEBANK_VECTOR_KERNELS
    if (instructions == Instructions::avx512) return avx512_kernels;
    if (instructions == Instructions::avx2) return avx2_kernels;
#endif
    return baseline_kernels;
}

using Index = uint32_t;
constexpr Index none = ~Index{0};

enum class Kind : uint8_t { constant, uniform, varying };

/// A value of the program: like a node of a graph, with what the interpreter has beyond its operations.
struct Value {
    size_t code;
    std::array<Index, 3> operands{};
    Kind kind = Kind::varying;
    double number = 0;   ///< of a constant
    Index place = none;  ///< of a name: its position among the variables or the parameters

    int operand_count() const
    {
        if (code < formula::operation_count) return formula::operand_count(static_cast<Operation>(code));
        return code == formula::code(Fused::copy) ? 1 : 3;
    }
    bool is(Operation operation) const { return code == formula::code(operation); }
};

/// The values of a program, each once, simplified where that costs no accuracy.
class Values {
public:
    const Value &operator[](Index index) const { return values_[index]; }
    Value &operator[](Index index) { return values_[index]; }
    Index size() const { return static_cast<Index>(values_.size()); }

    Index literal(double number)
    {
        return add({code(Operation::constant), {}, Kind::constant, number, none}, std::bit_cast<uint64_t>(number));
    }
    Index name(Kind kind, size_t place)
    {
        return add({code(Operation::name), {}, kind, 0, static_cast<Index>(place)},
                   2 * place + (kind == Kind::varying));
    }

    Index apply(Operation operation, Index a, Index b, Index c)
    {
        using enum Operation;
        const int count = operand_count(operation);
        const Index operands[] = {a, count > 1 ? b : a, count > 2 ? c : a};
        if (std::all_of(operands, operands + 3, [&](Index i) { return values_[i].kind == Kind::constant; }))
            return literal(value_of(operation, number(a), number(operands[1]), number(operands[2])));
        switch (operation) {
            case add:
                if (negated(b)) return apply(subtract, a, values_[b].operands[0], 0);
                if (negated(a)) return apply(subtract, b, values_[a].operands[0], 0);
                break;
            case subtract:
                if (is_number(b, 0)) return a;
                if (negated(b)) return apply(add, a, values_[b].operands[0], 0);
                break;
            case multiply:
                if (is_number(a, 1)) return b;
                if (is_number(b, 1)) return a;
                if (is_number(a, -1)) return apply(negate, b, 0, 0);
                if (is_number(b, -1)) return apply(negate, a, 0, 0);
                [[fallthrough]];
            case divide:
                if (operation == divide && is_number(b, 1)) return a;
                // Signs move to what is computed once, or behind the product, where a sum can take them.
                if (negated(a) && negated(b))
                    return apply(operation, values_[a].operands[0], values_[b].operands[0], 0);
                if (negated(a)) return move_sign(operation, values_[a].operands[0], b, b, false);
                if (negated(b)) return move_sign(operation, a, values_[b].operands[0], a, true);
                if (operation == divide && has_exact_reciprocal(b))
                    return apply(multiply, a, literal(1 / number(b)), 0);
                break;
            case negate:
                if (negated(a)) return values_[a].operands[0];
                if (values_[a].is(subtract))
                    return apply(subtract, values_[a].operands[1], values_[a].operands[0], 0);
                break;
            case power:
                if (is_number(b, 0)) return literal(1);
                if (is_number(b, 1)) return a;
                if (is_number(b, 2)) return apply(multiply, a, a, 0);
                if (is_number(b, -1)) return apply(divide, literal(1), a, 0);
                break;
            case select:
                if (values_[a].kind == Kind::constant) return number(a) != 0 ? b : c;
                break;
            default:
                break;
        }
        Value value{code(operation), {operands[0], operands[1], operands[2]}};
        if (std::all_of(operands, operands + 3, [&](Index i) { return values_[i].kind != Kind::varying; }))
            value.kind = Kind::uniform;
        return this->add(value, 0);
    }

    static double value_of(Operation operation, double a, double b, double c)
    {
        if (operation == Operation::select) return a != 0 ? b : c;
        return formula::apply<double>(operation, a, b);
    }

private:
    struct Key {
        size_t code;
        std::array<Index, 3> operands;
        uint64_t leaf;
        bool operator==(const Key &) const = default;
    };
    struct Hash {
        size_t operator()(const Key &key) const
        {
            uint64_t hash = key.leaf * 0x9e3779b97f4a7c15u + key.code;
            for (const Index operand : key.operands) hash = (hash ^ (hash >> 29)) * 0xbf58476d1ce4e5b9u + operand;
            return static_cast<size_t>(hash ^ (hash >> 32));
        }
    };

    Index add(const Value &value, uint64_t leaf)
    {
        const auto [at, added] = known_.try_emplace(Key{value.code, value.operands, leaf}, size());
        if (added) values_.push_back(value);
        return at->second;
    }

    double number(Index index) const { return values_[index].number; }
    bool is_number(Index index, double number) const
    {
        return values_[index].kind == Kind::constant && values_[index].number == number;
    }
    bool negated(Index index) const
    {
        return values_[index].is(Operation::negate) && values_[index].kind == Kind::varying;
    }

    /// -(a op b), of which one operand had the sign and the other is given: that takes it where it is uniform.
    Index move_sign(Operation operation, Index a, Index b, Index other, bool other_is_first)
    {
        if (values_[other].kind == Kind::varying) return apply(Operation::negate, apply(operation, a, b, 0), 0, 0);
        const Index minus = apply(Operation::negate, other, 0, 0);
        return other_is_first ? apply(operation, minus, b, 0) : apply(operation, a, minus, 0);
    }

    bool has_exact_reciprocal(Index index) const
    {
        int exponent = 0;
        return values_[index].kind == Kind::constant && std::fabs(std::frexp(number(index), &exponent)) == 0.5 &&
               std::abs(exponent) < 1000;
    }

    std::vector<Value> values_;
    std::unordered_map<Key, Index, Hash> known_;
};

/// The values of the outputs.
std::vector<Index> translate(std::span<const Formula> outputs, const std::vector<std::string> &variables,
                             const std::vector<std::string> &parameters, Values &values)
{
    if (outputs.empty()) return {};
    const Graph &graph = outputs[0].graph();
    const auto &nodes = graph.nodes();
    std::vector<bool> used(nodes.size());
    for (const Formula &output : outputs) {
        if (&output.graph() != &graph) throw std::invalid_argument("a program takes formulas of one graph");
        used[output.root()] = true;
    }
    for (size_t id = nodes.size(); id-- > 0;)
        for (int i = 0; used[id] && i < operand_count(nodes[id].operation); ++i)
            used[nodes[id].operands[static_cast<size_t>(i)]] = true;

    const auto name = [&](const std::string &text) {
        if (const auto at = std::find(variables.begin(), variables.end(), text); at != variables.end())
            return values.name(Kind::varying, static_cast<size_t>(at - variables.begin()));
        if (const auto at = std::find(parameters.begin(), parameters.end(), text); at != parameters.end())
            return values.name(Kind::uniform, static_cast<size_t>(at - parameters.begin()));
        throw FormulaError("\"" + text + "\" is neither a variable nor a parameter", 0);
    };
    std::vector<Index> of_node(nodes.size());
    for (size_t id = 0; id < nodes.size(); ++id) {
        if (!used[id]) continue;
        const Node &node = nodes[id];
        const auto operand = [&](size_t i) { return of_node[node.operands[i]]; };
        if (node.operation == Operation::constant)
            of_node[id] = values.literal(constant_value<double>(graph.text(node)));
        else if (node.operation == Operation::name)
            of_node[id] = name(graph.text(node));
        else
            of_node[id] = values.apply(node.operation, operand(0), operand(1), operand(2));
    }
    std::vector<Index> roots;
    for (const Formula &output : outputs) roots.push_back(of_node[output.root()]);
    return roots;
}

/// How often each value is used, by values that are used themselves, and by the outputs.
std::vector<uint32_t> count_uses(const Values &values, const std::vector<Index> &roots)
{
    std::vector<uint32_t> uses(values.size());
    for (const Index root : roots) ++uses[root];
    for (Index v = values.size(); v-- > 0;)
        for (int i = 0; uses[v] > 0 && i < values[v].operand_count(); ++i)
            ++uses[values[v].operands[static_cast<size_t>(i)]];
    return uses;
}

/// Makes a sum and a product that nothing else uses one instruction. A difference of two products stays as written:
/// with one of them unrounded, x·x - y·y would not be 0 where x is y, and its root no number.
void fuse(Values &values, const std::vector<Index> &roots)
{
    const std::vector<uint32_t> uses = count_uses(values, roots);
    for (Index v = 0; v < values.size(); ++v) {
        Value &value = values[v];
        const bool sum = value.is(Operation::add);
        if (uses[v] == 0 || value.kind != Kind::varying || (!sum && !value.is(Operation::subtract))) continue;
        const auto [a, b, unused] = value.operands;
        const auto is_product = [&](Index i) { return values[i].is(Operation::multiply); };
        const auto can_go = [&](Index i) {
            return is_product(i) && values[i].kind == Kind::varying && uses[i] == 1;
        };
        if (!sum && is_product(a) && is_product(b)) continue;
        if (can_go(b)) {
            const auto &factors = values[b].operands;
            value.code = code(sum ? Fused::multiply_add : Fused::subtract_product);
            value.operands = {factors[0], factors[1], a};
        } else if (can_go(a)) {
            const auto &factors = values[a].operands;
            value.code = code(sum ? Fused::multiply_add : Fused::multiply_subtract);
            value.operands = {factors[0], factors[1], b};
        }
    }
}

/// The varying values that are computed, each after its operands, and close to where they are used first.
std::vector<Index> order(const Values &values, const std::vector<Index> &roots)
{
    struct Visit {
        uint32_t slots = 0;  ///< that it keeps busy while it is computed, were nothing shared
        uint32_t count = 0;
        std::array<Index, 3> operands{};  ///< those that are computed, the hungriest first
    };
    std::vector<Visit> visits(values.size());
    for (Index v = 0; v < values.size(); ++v) {
        if (values[v].kind != Kind::varying || values[v].is(Operation::name)) continue;
        Visit &visit = visits[v];
        for (int i = 0; i < values[v].operand_count(); ++i) {
            const Index operand = values[v].operands[static_cast<size_t>(i)];
            if (visits[operand].slots == 0) continue;
            uint32_t at = visit.count++;
            for (; at > 0 && visits[visit.operands[at - 1]].slots < visits[operand].slots; --at)
                visit.operands[at] = visit.operands[at - 1];
            visit.operands[at] = operand;
        }
        visit.slots = 1;
        for (uint32_t i = 0; i < visit.count; ++i)
            visit.slots = std::max(visit.slots, visits[visit.operands[i]].slots + i);
    }

    std::vector<Index> result, open;
    std::vector<bool> done(values.size());
    for (const Index root : roots) {
        if (visits[root].slots > 0) open.push_back(root);
        while (!open.empty()) {
            const Index v = open.back();
            const Visit &visit = visits[v];
            uint32_t next = 0;
            while (next < visit.count && done[visit.operands[next]]) ++next;
            if (next < visit.count) {
                open.push_back(visit.operands[next]);
                continue;
            }
            if (!done[v]) result.push_back(v);
            done[v] = true;
            open.pop_back();
        }
    }
    return result;
}

}  // namespace

struct Program::Code {
    /// Operands are positions in the places of a workspace: the variables, the outputs, the uniform values, the
    /// slots.
    struct Instruction {
        Kernel kernel;
        Index out, a, b, c;
        uint64_t needed_by;  ///< the outputs, one a bit; those from the 64th on share the last
    };
    struct ScalarStep {
        Operation operation;
        Index out, a, b, c;
    };

    Instructions instructions;
    const Kernels *kernels;
    size_t variables, parameters, outputs, uniforms = 0, slots = 0;
    std::vector<std::pair<Index, double>> constants;
    std::vector<std::pair<Index, Index>> parameter_places;  ///< where the workspace keeps it, and which
    std::vector<ScalarStep> scalar_steps;
    std::vector<Instruction> code;

    static uint64_t bit(size_t output) { return uint64_t{1} << std::min<size_t>(output, 63); }

    size_t uniforms_at() const { return variables + outputs; }
    size_t slots_at() const { return uniforms_at() + uniforms; }

    void add_uniforms(const Values &values, const std::vector<uint32_t> &uses, std::vector<Index> &place);
    void add_instructions(const Values &values, const std::vector<Index> &roots, std::vector<uint32_t> uses,
                          std::vector<Index> &place);
    Kernel kernel(size_t number, unsigned uniform) const;
};

Kernel Program::Code::kernel(size_t number, unsigned uniform) const
{
    const Kernel vector = kernels->of[number][uniform];
    return vector || number >= operation_count ? vector : scalar_kernels[number][uniform];
}

void Program::Code::add_uniforms(const Values &values, const std::vector<uint32_t> &uses, std::vector<Index> &place)
{
    for (Index v = 0; v < values.size(); ++v) {
        const Value &value = values[v];
        if (uses[v] == 0 || value.kind == Kind::varying) continue;
        const auto at = static_cast<Index>(uniforms++);
        place[v] = static_cast<Index>(uniforms_at()) + at;
        const auto operand = [&](size_t i) { return place[value.operands[i]] - static_cast<Index>(uniforms_at()); };
        if (value.kind == Kind::constant)
            constants.emplace_back(at, value.number);
        else if (value.is(Operation::name))
            parameter_places.emplace_back(at, value.place);
        else
            scalar_steps.push_back({static_cast<Operation>(value.code), at, operand(0), operand(1), operand(2)});
    }
}

void Program::Code::add_instructions(const Values &values, const std::vector<Index> &roots,
                                     std::vector<uint32_t> uses, std::vector<Index> &place)
{
    const std::vector<Index> steps = order(values, roots);
    std::vector<uint64_t> needed_by(values.size());
    for (size_t j = 0; j < roots.size(); ++j) needed_by[roots[j]] |= bit(j);
    for (size_t i = steps.size(); i-- > 0;)
        for (const Index operand : values[steps[i]].operands) needed_by[operand] |= needed_by[steps[i]];

    // A value that is an output is computed in the output's memory.
    for (size_t j = roots.size(); j-- > 0;)
        if (values[roots[j]].kind == Kind::varying && !values[roots[j]].is(Operation::name))
            place[roots[j]] = static_cast<Index>(variables + j);

    std::vector<Index> free;
    for (const Index v : steps) {
        const Value &value = values[v];
        const auto count = static_cast<size_t>(value.operand_count());
        unsigned uniform = 0;
        std::array<Index, 3> at{};
        for (size_t i = 0; i < 3; ++i) {
            const Index operand = value.operands[i < count ? i : 0];
            at[i] = place[operand];
            if (i >= count) continue;
            if (values[operand].kind != Kind::varying) uniform |= 1u << i;
            if (--uses[operand] == 0 && at[i] >= slots_at()) free.push_back(at[i]);
        }
        if (place[v] == none && free.empty()) {
            place[v] = static_cast<Index>(slots_at() + slots++);
        } else if (place[v] == none) {
            place[v] = free.back();
            free.pop_back();
        }
        code.push_back({kernel(value.code, uniform), place[v], at[0], at[1], at[2], needed_by[v]});
    }
    for (size_t j = 0; j < roots.size(); ++j) {
        const auto out = static_cast<Index>(variables + j);
        const Index from = place[roots[j]];
        const unsigned uniform = values[roots[j]].kind != Kind::varying;
        if (from != out)
            code.push_back({kernel(formula::code(Fused::copy), uniform), out, from, from, from, bit(j)});
    }
}

Instructions best_instructions()
{
    const char *wish = std::getenv("CURVEBANK_INSTRUCTIONS");
    Instructions wanted = Instructions::avx512;
    if (wish && std::strcmp(wish, "baseline") == 0)
        wanted = Instructions::baseline;
    else if (wish && std::strcmp(wish, "avx2") == 0)
        wanted = Instructions::avx2;
    else if (wish && *wish && std::strcmp(wish, "avx512") != 0)
        throw std::invalid_argument("CURVEBANK_INSTRUCTIONS is none of baseline, avx2 and avx512");
    return std::min(wanted, instructions_of_machine());
}

Program::Program(std::span<const Formula> outputs, const std::vector<std::string> &variables,
                 const std::vector<std::string> &parameters, Instructions instructions)
{
    auto code = std::make_unique<Code>();
    code->instructions = std::min(instructions, instructions_of_machine());
    code->kernels = &kernels_of(code->instructions);
    code->variables = variables.size();
    code->parameters = parameters.size();
    code->outputs = outputs.size();

    Values values;
    const std::vector<Index> roots = translate(outputs, variables, parameters, values);
    fuse(values, roots);
    const std::vector<uint32_t> uses = count_uses(values, roots);
    std::vector<Index> place(values.size(), none);
    for (Index v = 0; v < values.size(); ++v)
        if (values[v].is(Operation::name) && values[v].kind == Kind::varying) place[v] = values[v].place;
    code->add_uniforms(values, uses, place);
    code->add_instructions(values, roots, uses, place);
    code_ = std::move(code);
}

Program::~Program() = default;
Program::Program(Program &&) noexcept = default;
Program &Program::operator=(Program &&) noexcept = default;

size_t Program::outputs() const
{
    return code_->outputs;
}

Instructions Program::instructions() const
{
    return code_->instructions;
}

constexpr auto alignment = std::align_val_t(64);

void Program::Workspace::Free::operator()(double *memory) const
{
    ::operator delete[](memory, alignment);
}

Program::Workspace Program::workspace() const
{
    const Code &code = *code_;
    // Beside the slots a block each for the variables and the outputs of a block that is no whole number of
    // vectors.
    const size_t blocks = code.slots + code.variables + code.outputs;
    const size_t size = blocks * block + code.uniforms;
    Workspace workspace;
    workspace.memory_.reset(
        static_cast<double *>(::operator new[](std::max<size_t>(size, 1) * sizeof(double), alignment)));
    double *next = workspace.memory_.get();
    workspace.places_.resize(code.slots_at() + code.slots);
    const auto give = [&](size_t from, size_t count, size_t length) {
        for (size_t i = from; i < from + count; ++i, next += length) workspace.places_[i] = next;
    };
    give(code.slots_at(), code.slots, block);
    give(0, code.variables + code.outputs, block);
    give(code.uniforms_at(), code.uniforms, 1);
    for (const auto &[at, number] : code.constants) *workspace.places_[code.uniforms_at() + at] = number;
    return workspace;
}

void Program::set_parameters(Workspace &workspace, std::span<const double> parameters) const
{
    const Code &code = *code_;
    if (code.uniforms == 0) return;
    double *const uniforms = workspace.places_[code.uniforms_at()];
    for (const auto &[at, parameter] : code.parameter_places) uniforms[at] = parameters[parameter];
    for (const auto &step : code.scalar_steps)
        uniforms[step.out] = Values::value_of(step.operation, uniforms[step.a], uniforms[step.b], uniforms[step.c]);
}

void Program::run(Workspace &workspace, const double *const *variables, double *const *outputs, size_t count) const
{
    const Code &code = *code_;
    if (count == 0) return;
    const size_t width = code.kernels->width, padded = (count + width - 1) / width * width;
    const bool whole = padded == count;
    double *const memory = workspace.memory_.get() + code.slots * block;
    const auto own = [&](size_t column) { return memory + column * block; };
    double **const places = workspace.places_.data();

    for (size_t i = 0; i < code.variables; ++i) {
        // No kernel writes to a variable.
        places[i] = whole ? const_cast<double *>(variables[i]) : own(i);
        if (whole) continue;
        std::memcpy(places[i], variables[i], count * sizeof(double));
        std::fill(places[i] + count, places[i] + padded, variables[i][count - 1]);
    }
    uint64_t wanted = 0;
    for (size_t j = 0; j < code.outputs; ++j) {
        const size_t column = code.variables + j;
        places[column] = whole && outputs[j] ? outputs[j] : own(column);
        if (outputs[j]) wanted |= Code::bit(j);
    }

    for (const Code::Instruction &step : code.code)
        if (step.needed_by & wanted)
            step.kernel(places[step.out], places[step.a], places[step.b], places[step.c], padded);

    if (whole) return;
    for (size_t j = 0; j < code.outputs; ++j)
        if (outputs[j]) std::memcpy(outputs[j], places[code.variables + j], count * sizeof(double));
}

}  // namespace curvebank::formula
