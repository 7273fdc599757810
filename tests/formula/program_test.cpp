// Programs against the scalar evaluation of the same formulas, with every instruction set of the machine.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <random>
#include <thread>

#include <doctest/doctest.h>

#include "formula/evaluate.h"
#include "formula/program.h"
#include "tests/formula/formulas.h"
#include "tests/support/allocations.h"

using namespace curvebank::formula;

namespace {

using Columns = std::vector<std::vector<double>>;

std::vector<Instructions> all_instructions()
{
    std::vector<Instructions> all;
    for (const auto set : {Instructions::baseline, Instructions::avx2, Instructions::avx512})
        if (set <= best_instructions()) all.push_back(set);
    return all;
}

/// All points of these columns, in blocks of the size given.
Columns run(const Program &program, Program::Workspace &workspace, const Columns &variables,
            size_t size = Program::block)
{
    const size_t points = variables.at(0).size();
    Columns results(program.outputs(), std::vector<double>(points));
    for (size_t at = 0; at < points; at += size) {
        std::vector<const double *> in;
        std::vector<double *> out;
        for (const auto &column : variables) in.push_back(&column[at]);
        for (auto &column : results) out.push_back(&column[at]);
        program.run(workspace, in.data(), out.data(), std::min(size, points - at));
    }
    return results;
}

std::vector<double> run(const Formula &formula, const std::vector<std::string> &names, const Columns &variables,
                        Instructions instructions, size_t size = Program::block)
{
    const Program program(std::vector{formula}, names, {}, instructions);
    auto workspace = program.workspace();
    program.set_parameters(workspace, {});
    return run(program, workspace, variables, size)[0];
}

/// In units in the last place of the second; infinite where only one is an infinity, a NaN or a zero.
double distance(double a, double b)
{
    if (std::isnan(a) && std::isnan(b)) return 0;
    if (a == b) return std::signbit(a) == std::signbit(b) ? 0 : std::numeric_limits<double>::infinity();
    if (!std::isfinite(a) || !std::isfinite(b)) return std::numeric_limits<double>::infinity();
    const double size = std::max(std::fabs(b), std::numeric_limits<double>::min());
    return std::fabs(a - b) / std::ldexp(1, std::ilogb(size) - 52);
}

class Numbers {
public:
    double uniform(double low, double high) { return low + (high - low) * static_cast<double>(random_()) / 0x1p64; }
    size_t below(size_t end) { return static_cast<size_t>(random_() % end); }

    /// Of all sizes, of common sizes, and those at which functions change their ways.
    double any()
    {
        static const std::vector<double> special = {0,
                                                    -0.0,
                                                    infinity,
                                                    -infinity,
                                                    nan,
                                                    5e-324,
                                                    -5e-324,
                                                    1e-310,
                                                    -1e-310,
                                                    2.3e-308,
                                                    1e308,
                                                    -1e308,
                                                    1,
                                                    -1,
                                                    2,
                                                    -2,
                                                    3,
                                                    -3,
                                                    0.5,
                                                    -0.5,
                                                    709.7,
                                                    709.782712893384,
                                                    709.7827128933841,
                                                    -708.5,
                                                    -740,
                                                    -745.1332191019412,
                                                    -745.2,
                                                    710.4,
                                                    -710.4,
                                                    36,
                                                    37,
                                                    40,
                                                    171.7,
                                                    -1.5,
                                                    27,
                                                    -27,
                                                    26.6,
                                                    5.9,
                                                    0.46875,
                                                    4,
                                                    4.5e15,
                                                    -4.5e15,
                                                    9.1e15,
                                                    1e-8,
                                                    1e-20,
                                                    1 - 0x1p-53,
                                                    1 + 0x1p-52,
                                                    0x1p51 + 0.5,
                                                    -0x1p51 - 0.5,
                                                    0x1p53 + 2,
                                                    1048576,
                                                    1048577,
                                                    1e22,
                                                    1e300,
                                                    1.5707963267948966,
                                                    3.141592653589793};
        switch (below(4)) {
            case 0:
                return special[below(special.size())];
            case 1:
                return sign() * std::ldexp(uniform(1, 2), static_cast<int>(below(2098)) - 1074);
            case 2:
                return sign() * std::ldexp(uniform(1, 2), static_cast<int>(below(24)) - 14);
            default:
                return std::floor(uniform(-20, 20));
        }
    }

private:
    static constexpr double infinity = std::numeric_limits<double>::infinity();
    static constexpr double nan = std::numeric_limits<double>::quiet_NaN();

    double sign() { return random_() % 2 ? 1 : -1; }
    std::mt19937_64 random_{7};
};

/// How far the vector functions may be from the scalar ones, in units in the last place; 1 where nothing is said.
/// On Windows the scalar ones are the runtime's.
double tolerance(Operation operation)
{
    using enum Operation;
    switch (operation) {
        case tan:
        case atan:
        case asinh:
        case acosh:
        case atanh:
            return 3;
        case erf:
            return 4;
        case erfc:
            return 6;
        case add:
        case subtract:
        case multiply:
        case sqrt:
            return 0;
        default:
            return operation >= less && operation <= select ? 0 : 2;
    }
}

}  // namespace

TEST_CASE("every operation agrees with the C library's over the whole range, whatever its operands are")
{
    for (const Instructions set : all_instructions())
        for (size_t number = 0; number < operation_count; ++number) {
            const auto operation = static_cast<Operation>(number);
            const int count = operand_count(operation);
            if (count == 0 || operation == Operation::select) continue;
            CAPTURE(operation_text(operation));
            CAPTURE(static_cast<int>(set));
            auto graph = std::make_shared<Graph>();
            const NodeId x = graph->name("x"), y = graph->name("y");
            const std::vector formula{Formula(graph, graph->apply(operation, x, count == 2 ? y : 0))};
            Numbers numbers;
            // Both operands columns, then the second, then the first the same for all points.
            for (int uniform = 0; uniform < (count == 2 ? 3 : 1); ++uniform) {
                std::vector<std::string> variables, parameters;
                (uniform == 2 ? parameters : variables).push_back("x");
                (uniform == 1 ? parameters : variables).push_back("y");
                const Program program(formula, variables, parameters, set);
                auto workspace = program.workspace();
                double worst = 0, worst_x = 0, worst_y = 0, worst_result = 0;
                for (int repeat = 0; repeat < 100; ++repeat) {
                    std::vector<double> a(64), b(64);
                    std::generate(a.begin(), a.end(), [&] { return numbers.any(); });
                    std::generate(b.begin(), b.end(), [&] { return numbers.any(); });
                    constexpr double exponents[] = {0.5, 2, 3, -1, -2, -3, 4, -4, 1, 0};
                    if (uniform == 1) std::fill(b.begin(), b.end(), repeat < 10 ? exponents[repeat] : b[0]);
                    if (uniform == 2) std::fill(a.begin(), a.end(), a[0]);
                    program.set_parameters(workspace, uniform == 1 ? std::span(b) : std::span(a));
                    const auto results = run(program, workspace,
                                             uniform == 0   ? Columns{a, b}
                                             : uniform == 1 ? Columns{a}
                                                            : Columns{b})[0];
                    for (size_t i = 0; i < a.size(); ++i) {
                        const double far = distance(results[i], apply<double>(operation, a[i], b[i]));
                        if (far <= worst) continue;
                        worst = far, worst_x = a[i], worst_y = b[i], worst_result = results[i];
                    }
                }
                CAPTURE(worst_x);
                CAPTURE(worst_y);
                CAPTURE(worst_result);
                CHECK(worst <= tolerance(operation));
            }
        }
}

TEST_CASE("the value of a point does not depend on its place and its neighbours")
{
    Numbers numbers;
    std::vector<double> x(611), y(x.size());
    for (size_t i = 0; i < x.size(); ++i) {
        // Stretches of ordinary numbers, whose vectors take the shortcuts, and of all others.
        x[i] = i / 16 % 2 ? numbers.any() : numbers.uniform(-3, 3);
        y[i] = i / 16 % 3 ? numbers.any() : numbers.uniform(0.1, 3);
    }
    for (const Instructions set : all_instructions())
        for (size_t number = 0; number < operation_count; ++number) {
            const auto operation = static_cast<Operation>(number);
            if (operand_count(operation) == 0) continue;
            CAPTURE(operation_text(operation));
            auto graph = std::make_shared<Graph>();
            const NodeId a = graph->name("x"), b = graph->name("y");
            const std::vector formula{Formula(graph, graph->apply(operation, a, b, a)),
                                      Formula(graph, graph->apply(operation, a, graph->constant("0.7"), b))};
            const Program program(formula, {"x", "y"}, {}, set);
            auto workspace = program.workspace();
            const Columns whole = run(program, workspace, {x, y});
            for (const size_t size : {size_t{1}, size_t{37}, size_t{203}}) {
                const Columns parts = run(program, workspace, {x, y}, size);
                for (size_t j = 0; j < whole.size(); ++j)
                    for (size_t i = 0; i < x.size(); ++i) {
                        CAPTURE(x[i]);
                        CAPTURE(y[i]);
                        if (!std::isnan(whole[j][i]))
                            REQUIRE(std::bit_cast<uint64_t>(parts[j][i]) == std::bit_cast<uint64_t>(whole[j][i]));
                    }
            }
        }
}

TEST_CASE("random programs on integers are exact")
{
    // Sums, products and decisions of small integers have no rounding: whatever is merged, moved, shared or stored
    // in the wrong place shows. Division and logarithms make infinities and NaNs, which must stay in their
    // branches.
    std::mt19937 random(3);
    const auto below = [&](size_t end) { return static_cast<size_t>(random() % end); };
    const std::vector<std::string> variables = {"x", "y"}, parameters = {"p", "q"};
    for (int repeat = 0; repeat < 400; ++repeat) {
        using enum Operation;
        auto graph = std::make_shared<Graph>();
        std::vector<NodeId> nodes;
        for (const char *name : {"x", "y", "p", "q"}) nodes.push_back(graph->name(name));
        for (const char *number : {"0", "1", "2", "3"}) nodes.push_back(graph->constant(number));
        const auto any = [&] {
            return below(4) ? nodes[nodes.size() - 1 - below(std::min<size_t>(8, nodes.size()))]
                            : nodes[below(nodes.size())];
        };
        constexpr Operation choice[] = {add,    subtract, multiply, negate,      add,         subtract, multiply,
                                        negate, less,     equal,    logical_and, logical_not, abs,      sign,
                                        floor,  min,      max,      divide,      ln,          power};
        for (size_t i = 0; i < 60; ++i) {
            const Operation operation = choice[below(std::size(choice))];
            const NodeId a = any(), b = operation == power ? graph->constant(below(2) ? "2" : "1") : any();
            NodeId node = graph->apply(operation, a, operand_count(operation) == 2 ? b : 0);
            // Keeps the numbers small, and what is none out of sight.
            const NodeId low = graph->apply(less, graph->constant("1000"), graph->apply(abs, node));
            const NodeId whole = graph->apply(equal, graph->apply(floor, node), node);
            if (operation == divide || operation == ln || operation == multiply || operation == power ||
                below(3) == 0)
                node = graph->apply(select, graph->apply(logical_and, graph->apply(logical_not, low), whole), node,
                                    any());
            nodes.push_back(node);
        }
        std::vector<Formula> outputs;
        for (size_t j = 0; j < 70; ++j) outputs.emplace_back(graph, nodes[below(nodes.size())]);

        std::vector<double> x(13), y(13), p = {static_cast<double>(below(5)), static_cast<double>(below(5)) - 2};
        for (double &value : x) value = static_cast<double>(below(9)) - 4;
        for (double &value : y) value = static_cast<double>(below(9)) - 4;
        Evaluator<double> evaluator(outputs, {"x", "y", "p", "q"});
        Columns expected(outputs.size(), std::vector<double>(x.size()));
        for (size_t i = 0; i < x.size(); ++i) {
            std::vector<double> results(outputs.size());
            evaluator(std::vector{x[i], y[i], p[0], p[1]}, results);
            for (size_t j = 0; j < results.size(); ++j) expected[j][i] = results[j];
        }
        for (const Instructions set : all_instructions()) {
            const Program program(outputs, variables, parameters, set);
            auto first = program.workspace();
            program.set_parameters(first, p);
            auto workspace = std::move(first);
            CHECK(run(program, workspace, {x, y}) == expected);

            // Some outputs alone, the others left as they are.
            Columns some(outputs.size(), std::vector<double>(x.size(), -1));
            std::vector<double *> out;
            for (auto &column : some) out.push_back(below(3) ? nullptr : column.data());
            const double *const in[] = {x.data(), y.data()};
            program.run(workspace, in, out.data(), 8);
            for (size_t j = 0; j < out.size(); ++j)
                for (size_t i = 0; i < x.size(); ++i)
                    REQUIRE(some[j][i] == (out[j] && i < 8 ? expected[j][i] : -1));
        }
    }
}

TEST_CASE("formulas and their derivatives agree with the scalar evaluation")
{
    Numbers numbers;
    for (const std::string &text : curvebank::test::formulas()) {
        CAPTURE(text);
        const Formula formula = Formula::parse(text);
        std::vector<std::string> names = formula.names();
        const auto all = formula.with_derivatives(names);
        std::erase(names, "x");
        std::vector<double> parameters, x(300);
        for (size_t i = 0; i < names.size(); ++i) parameters.push_back(numbers.uniform(0.3, 2));
        for (double &value : x) value = numbers.uniform(0.3, 2);

        std::vector<std::string> order = names;
        order.push_back("x");
        Evaluator<double> evaluator(all, order);
        std::vector<double> point = parameters, expected(all.size());
        point.push_back(0);
        for (const Instructions set : all_instructions()) {
            const Program program(all, {"x"}, names, set);
            auto workspace = program.workspace();
            program.set_parameters(workspace, parameters);
            const Columns results = run(program, workspace, {x});
            for (size_t i = 0; i < x.size(); ++i) {
                point.back() = x[i];
                evaluator(point, expected);
                for (size_t j = 0; j < all.size(); ++j) {
                    CAPTURE(j);
                    CAPTURE(x[i]);
                    if (std::isnan(expected[j]))
                        CHECK(std::isnan(results[j][i]));
                    else
                        CHECK(results[j][i] == doctest::Approx(expected[j]).epsilon(1e-10).scale(1));
                }
            }
        }
    }
}

TEST_CASE("a difference of equal squares is 0")
{
    const Formula formula = Formula::parse("sqrt(x^2 - y*y) + sqrt(x*y - p^2)");
    const std::vector<double> x = {0.1, 1.1, 2.3, 1e-3, 3.3, 7.7, 1.9, 0.3, 1e5};
    for (const Instructions set : all_instructions())
        for (const double p : x) {
            const Program program(std::vector{formula}, {"x", "y"}, {"p"}, set);
            auto workspace = program.workspace();
            program.set_parameters(workspace, {&p, 1});
            const std::vector<double> same(4, p);
            CHECK(run(program, workspace, {same, same})[0] == std::vector<double>(4, 0));
        }
}

TEST_CASE("a long sum takes few slots, and names must be known")
{
    auto graph = std::make_shared<Graph>();
    const NodeId x = graph->name("x");
    NodeId sum = x;
    for (int i = 0; i < 100'000; ++i)
        sum = graph->apply(Operation::add, sum,
                           graph->apply(Operation::multiply, x, graph->constant(std::to_string(i % 7))));
    const std::vector<double> ones(3, 1);
    CHECK(run(Formula(graph, sum), {"x"}, {ones}, Instructions::baseline)[0] == 1 + 14285 * 21 + 0 + 1 + 2 + 3 + 4);
    CHECK_THROWS_AS(Program(std::vector{Formula(graph, sum)}, {"y"}, {"p"}), FormulaError);
    CHECK_THROWS_AS(Program(std::vector{Formula(graph, sum), Formula::parse("x")}, {"x"}, {}),
                    std::invalid_argument);
}

TEST_CASE("threads share a program, and a run allocates nothing")
{
    const std::vector<std::string> names = {"a", "b", "c", "w1", "w2"};
    const auto all =
        Formula::parse("a*exp(-b*x^2) + gammap(a, x/b) + sin(c*x)^w1 + lgamma(x)*w2").with_derivatives(names);
    const Program program(all, {"x"}, names);
    std::vector<double> x(Program::block - 3);
    for (size_t i = 0; i < x.size(); ++i) x[i] = 0.1 + 0.01 * static_cast<double>(i);

    std::vector<Columns> results(4);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < results.size(); ++t)
        threads.emplace_back([&, t] {
            auto workspace = program.workspace();
            const double scale = t % 2 ? 1.5 : 1;
            for (int repeat = 0; repeat < 20; ++repeat) {
                program.set_parameters(workspace, std::vector{scale, 2.0, 0.5, 1.0, 3.0});
                results[t] = run(program, workspace, {x});
            }
        });
    for (auto &thread : threads) thread.join();
    CHECK(results[0] == results[2]);
    CHECK(results[1] == results[3]);
    CHECK(results[0] != results[1]);

    auto workspace = program.workspace();
    const std::vector<double> parameters = {1, 2, 0.5, 1, 3};
    const double *const in[] = {x.data()};
    std::vector<double *> out;
    for (auto &column : results[0]) out.push_back(column.data());
    const size_t before = curvebank::test::allocations();
    program.set_parameters(workspace, parameters);
    program.run(workspace, in, out.data(), x.size());
    CHECK(curvebank::test::allocations() == before);
}

TEST_CASE("the environment lowers the instruction set")
{
#ifndef _WIN32
    const Instructions best = best_instructions();
    const char *wish = std::getenv("CURVEBANK_INSTRUCTIONS");
    const std::string before = wish ? wish : "";
    setenv("CURVEBANK_INSTRUCTIONS", "baseline", 1);
    CHECK(best_instructions() == Instructions::baseline);
    CHECK(Program(std::vector{Formula::parse("x")}, {"x"}, {}).instructions() == Instructions::baseline);
    setenv("CURVEBANK_INSTRUCTIONS", "AVX", 1);
    CHECK_THROWS_AS(best_instructions(), std::invalid_argument);
    setenv("CURVEBANK_INSTRUCTIONS", before.c_str(), 1);
    CHECK(best_instructions() == best);
#endif
}
