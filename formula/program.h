// Formulas compiled for speed: many points at once, with the vector instructions of the machine at hand.

#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "formula/formula.h"

namespace curvebank::formula {

/// The instruction sets that the interpreter is built for. The results of all agree to a few units in the last
/// place.
enum class Instructions { baseline, avx2, avx512 };

/// The best set of this machine; the environment variable CURVEBANK_INSTRUCTIONS (baseline, avx2, avx512) lowers
/// it. Throws std::invalid_argument where it names no set.
Instructions best_instructions();

/// A flat program for some formulas of one graph (a value and its derivatives, say): common subexpressions are
/// computed once, what does not depend on the points once a call. Immutable; any number of threads may run it, each
/// with a workspace of its own.
class Program {
public:
    static constexpr size_t block = 256;  ///< points at once

    /// Memory of a run; made once, used for any number of blocks, without further allocation.
    class Workspace;

    /// Variables are columns, a value a point; parameters are numbers, one a call. Throws FormulaError for a name
    /// that is neither, std::invalid_argument for formulas of several graphs. A set beyond those of the machine is
    /// lowered.
    Program(std::span<const Formula> outputs, const std::vector<std::string> &variables,
            const std::vector<std::string> &parameters, Instructions instructions = best_instructions());
    ~Program();
    Program(Program &&) noexcept;
    Program &operator=(Program &&) noexcept;

    size_t outputs() const;
    Instructions instructions() const;
    Workspace workspace() const;

    /// Sets the parameters and computes what depends on them alone. Throws std::invalid_argument for fewer than
    /// the program has.
    void set_parameters(Workspace &workspace, std::span<const double> parameters) const;

    /// Computes count <= block points: variables[i] points to the count values of variable i, outputs[j] receives
    /// those of output j; a null outputs[j] is left out, and with it what it alone needs. Neither needs alignment;
    /// no output may overlap another or a variable. The value of a point does not depend on its place in the block,
    /// to the bit.
    void run(Workspace &workspace, const double *const *variables, double *const *outputs, size_t count) const;

private:
    struct Code;
    std::unique_ptr<const Code> code_;
};

class Program::Workspace {
private:
    friend class Program;
    struct Free {
        void operator()(double *memory) const;
    };

    std::unique_ptr<double[], Free> memory_;
    std::vector<double *> places_;  ///< of every operand of an instruction
};

}  // namespace curvebank::formula
