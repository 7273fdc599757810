// Formulas over many points: programs of every instruction set, muParser, and the models through the calling
// contract.
//
//     formula_bench FORMULAS ROUNDS
//
// A line of FORMULAS has, separated by tabs: a name, 1 where muParser is to be timed, the number of parameters of a
// call of the model of that name (0: not to be timed), the formula, and, separated by commas, the variables, their
// ranges as low:high, the parameters and their values. Prints name, what was timed and the nanoseconds a point, the
// least of all rounds, in a line for each.

#include <dlfcn.h>
#include <time.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>

#include <curvebank/curvebank.h>
#include <muParser.h>

#include "formula/evaluate.h"
#include "formula/program.h"

using namespace curvebank::formula;

namespace {

constexpr size_t points = 100'000;

using Columns = std::vector<std::vector<double>>;

std::vector<std::string> split(const std::string &text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
    return parts;
}

/// Of the processor for this thread: what others compute meanwhile does not count.
double thread_nanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

struct Task {
    std::string name, text;
    bool peers = false;
    int model_parameters = 0;
    std::vector<std::string> variables, parameters;
    std::vector<double> values{};
    Columns x{};
    std::map<std::string, double> nanoseconds{};

    void time(const std::string &what, const std::function<void()> &pass)
    {
        const double start = thread_nanoseconds();
        pass();
        const double taken = thread_nanoseconds() - start;
        const auto [place, added] = nanoseconds.try_emplace(what, std::numeric_limits<double>::infinity());
        place->second = std::min(place->second, taken / points);
    }
};

Task read_task(const std::string &line)
{
    const std::vector<std::string> fields = split(line, '\t');
    Task task{fields.at(0),
              fields.at(3),
              fields.at(1) == "1",
              std::stoi(fields.at(2)),
              split(fields.at(4), ','),
              split(fields.at(6), ',')};
    for (const std::string &value : split(fields.at(7), ',')) task.values.push_back(std::stod(value));
    for (const std::string &range : split(fields.at(5), ',')) {
        const double low = std::stod(range), high = std::stod(range.substr(range.find(':') + 1));
        std::vector<double> column(points);
        for (size_t i = 0; i < points; ++i) {
            // The second variable runs through its range in another order than the first.
            const size_t place = task.x.empty() ? i : i * 30'011 % points;
            column[i] = low + (high - low) * (static_cast<double>(place) + 0.5) / points;
        }
        task.x.push_back(column);
    }
    return task;
}

/// A curve by the name of the export or of the catalogue.
ModelFunc find_model(const std::string &name)
{
    uint16_t counts[3];
    if (const ModelFunc model = Get_Func(name.c_str(), &counts[0], &counts[1], &counts[2], nullptr)) return model;
    return reinterpret_cast<ModelFunc>(dlsym(RTLD_DEFAULT, name.c_str()));
}

// Each of the following computes all points. Values are stored for all of them; with the derivatives, the results
// of a block take the place of those of the block before, as in a fit, which reduces them at once, or are stored
// too.

class Programs {
public:
    Programs(const Task &task, Instructions set, bool derivatives, bool stored)
        : task_(task),
          program_(formulas(task, derivatives), task.variables, task.parameters, set),
          workspace_(program_.workspace()),
          stored_(stored),
          out_(program_.outputs(), std::vector<double>(stored ? points : Program::block))
    {
    }

    void operator()()
    {
        program_.set_parameters(workspace_, task_.values);
        std::vector<const double *> in(task_.x.size());
        std::vector<double *> out(out_.size());
        for (size_t at = 0; at < points; at += Program::block) {
            for (size_t i = 0; i < in.size(); ++i) in[i] = &task_.x[i][at];
            for (size_t j = 0; j < out.size(); ++j) out[j] = &out_[j][stored_ ? at : 0];
            program_.run(workspace_, in.data(), out.data(), std::min(Program::block, points - at));
        }
    }

    const std::vector<double> &values() const { return out_[0]; }

private:
    static std::vector<Formula> formulas(const Task &task, bool derivatives)
    {
        const Formula formula = Formula::parse(task.text);
        return derivatives ? formula.with_derivatives(task.parameters) : std::vector{formula};
    }

    const Task &task_;
    Program program_;
    Program::Workspace workspace_;
    bool stored_;
    Columns out_;
};

/// Parameters are constants, which muParser folds, and its bulk mode saves the calls: nothing it offers is faster.
class MuParser {
public:
    MuParser(const Task &task, bool bulk) : task_(task), bulk_(bulk), x_(task.x), results_(points)
    {
        for (size_t i = 0; i < task.variables.size(); ++i) parser_.DefineVar(task.variables[i], x_[i].data());
        for (size_t i = 0; i < task.parameters.size(); ++i) parser_.DefineConst(task.parameters[i], task.values[i]);
        parser_.DefineConst("pi", 3.141592653589793);
        parser_.DefineFun("erf", static_cast<double (*)(double)>(std::erf));
        parser_.DefineFun("floor", static_cast<double (*)(double)>(std::floor));
        parser_.DefineFun("gamma", static_cast<double (*)(double)>(std::tgamma));
        parser_.DefineFun("lgamma", static_cast<double (*)(double)>(std::lgamma));
        parser_.DefineFun("gammap", [](double a, double z) { return apply<double>(Operation::gammap, a, z); });
        parser_.DefineFun("besseli1", [](double z) { return apply<double>(Operation::besseli1, z, 0.0); });
        parser_.SetExpr(task.text);
    }

    void operator()()
    {
        if (bulk_) {
            parser_.Eval(results_.data(), static_cast<int>(points));
            return;
        }
        for (size_t i = 0; i < points; ++i) {
            for (size_t v = 0; v < x_.size(); ++v) x_[v][0] = task_.x[v][i];
            results_[i] = parser_.Eval();
        }
    }

    const std::vector<double> &results() const { return results_; }

private:
    const Task &task_;
    bool bulk_;
    Columns x_;
    mu::Parser parser_;
    std::vector<double> results_;
};

/// A derivative call a point, the error variable cleared before each; the value and the derivatives of a point are
/// stored side by side.
class Contract {
public:
    Contract(const Task &task, bool stored)
        : task_(task),
          model_(find_model(task.name)),
          count_(static_cast<size_t>(task.model_parameters)),
          stored_(stored),
          p_(2 * count_ + 3),
          results_((stored ? points : Program::block) * (count_ + 1))
    {
        if (!model_) throw std::runtime_error(task.name + " is no model");
        std::copy(task.values.begin(), task.values.end(), p_.begin() + 1);
    }

    void operator()()
    {
        std::vector<double> x(8), y(2 * count_ + 3), dy(2 * count_ + 3);
        double *out = results_.data();
        for (size_t i = 0; i < points; ++i) {
            if (!stored_ && i % Program::block == 0) out = results_.data();
            for (size_t v = 0; v < task_.x.size(); ++v) x[v + 1] = task_.x[v][i];
            errno = 0;
            model_(EVAL_DERIVS, nullptr, static_cast<int16_t>(count_), nullptr, 0, p_.data(), nullptr, x.data(),
                   y.data(), dy.data());
            *out++ = y[1];
            for (size_t k = 1; k <= count_; ++k) *out++ = dy[k];
        }
    }

private:
    const Task &task_;
    ModelFunc model_;
    size_t count_;
    bool stored_;
    std::vector<double> p_, results_;
};

/// Throws unless two columns agree.
void compare(const Task &task, const std::vector<double> &a, const std::vector<double> &b)
{
    double size = 0, difference = 0;
    for (size_t i = 0; i < points; ++i) {
        if (std::isnan(a[i]) && std::isnan(b[i])) continue;
        size = std::max(size, std::fabs(a[i]));
        difference = std::max(difference, std::isnan(a[i] - b[i]) ? INFINITY : std::fabs(a[i] - b[i]));
    }
    if (!(difference <= 1e-9 * size))
        throw std::runtime_error(task.name + ": results differ by " + std::to_string(difference));
}

const std::pair<const char *, Instructions> instruction_sets[] = {
    {"baseline", Instructions::baseline}, {"avx2", Instructions::avx2}, {"avx512", Instructions::avx512}};

void run_round(Task &task)
{
    std::vector<double> value;
    const auto warm_and_time = [&](const std::string &what, auto &system) {
        system();
        task.time(what, std::ref(system));
    };
    for (const auto &[name, set] : instruction_sets) {
        if (set > best_instructions()) continue;
        const std::string prefix = std::string(name) + " ";
        Programs alone(task, set, false, true), all(task, set, true, false), stored(task, set, true, true);
        warm_and_time(prefix + "value", alone);
        warm_and_time(prefix + "derivatives", all);
        warm_and_time(prefix + "derivatives stored", stored);
        if (value.empty()) value = alone.values();
        compare(task, value, alone.values());
        compare(task, value, stored.values());
    }
    if (task.peers)
        for (const bool bulk : {false, true}) {
            MuParser parser(task, bulk);
            warm_and_time(bulk ? "muparser bulk" : "muparser calls", parser);
            compare(task, value, parser.results());
        }
    if (task.model_parameters > 0)
        for (const bool stored : {false, true}) {
            Contract contract(task, stored);
            warm_and_time(stored ? "contract derivatives stored" : "contract derivatives", contract);
        }
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: formula_bench FORMULAS ROUNDS\n");
        return 2;
    }
    try {
        std::vector<Task> tasks;
        std::ifstream file(argv[1]);
        for (std::string line; std::getline(file, line);) tasks.push_back(read_task(line));
        for (int round = 0; round < std::atoi(argv[2]); ++round)
            for (Task &task : tasks) run_round(task);
        for (const Task &task : tasks)
            for (const auto &[what, time] : task.nanoseconds)
                std::printf("%s\t%s\t%.4f\n", task.name.c_str(), what.c_str(), time);
    } catch (const mu::ParserError &error) {
        std::fprintf(stderr, "error: %s in %s\n", error.GetMsg().c_str(), error.GetExpr().c_str());
        return 1;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return 1;
    }
}
