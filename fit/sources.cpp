#include "fit/sources.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <limits>

#include "fit/implementation.h"
#include "fit/kernels.h"
#include "formula/evaluate.h"
#include "formula/program.h"

namespace curvebank::fit {
namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

double number_or_none(double value)
{
    return value == MISSING_VALUE || !std::isfinite(value) ? none : value;
}

class ContractSource : public Source {
public:
    explicit ContractSource(const Contract &contract) : contract_(contract) {}

    std::unique_ptr<Memory> memory() const override
    {
        auto memory = std::make_unique<Arrays>();
        const size_t room = 2 * std::max(static_cast<size_t>(contract_.passed), contract_.parameters) + 16;
        memory->p.resize(room);
        memory->x.resize(contract_.variables + 4);
        memory->y.resize(room);
        memory->dy.resize(room);
        return memory;
    }

    void set_parameters(Memory &memory, const double *parameters) const override
    {
        std::copy(parameters, parameters + contract_.parameters, static_cast<Arrays &>(memory).p.begin() + 1);
    }

    void run(Memory &memory, const double *const *x, size_t count, double *const *value,
             double *const *jacobian) const override
    {
        auto &arrays = static_cast<Arrays &>(memory);
        for (size_t point = 0; point < count; ++point) {
            const bool done = call(arrays, EVAL_VALUE, x, point);
            for (size_t k = 0; k < contract_.outputs; ++k)
                value[k][point] = done ? number_or_none(arrays.y[k + 1]) : none;
        }
        if (!jacobian) return;
        for (size_t point = 0; point < count; ++point) {
            std::fill(arrays.dy.begin(), arrays.dy.end(), MISSING_VALUE);
            const bool done = contract_.outputs == 1 && call(arrays, EVAL_DERIVS, x, point);
            for (size_t j = 0; j < contract_.outputs * contract_.parameters; ++j)
                if (jacobian[j]) jacobian[j][point] = done ? number_or_none(arrays.dy[j + 1]) : none;
        }
    }

private:
    struct Arrays : Memory {
        std::vector<double> p, x, y, dy;
    };

    bool call(Arrays &arrays, int16_t flags, const double *const *x, size_t point) const
    {
        for (size_t i = 0; i < contract_.variables; ++i) arrays.x[i + 1] = x[i][point];
        arrays.y[1] = arrays.y[2] = MISSING_VALUE;
        errno = 0;
        return contract_.function(flags, nullptr, static_cast<int16_t>(contract_.passed), nullptr, 0,
                                  arrays.p.data(), nullptr, arrays.x.data(), arrays.y.data(),
                                  arrays.dy.data()) == 0;
    }

    Contract contract_;
};

class FormulaSource : public Source {
public:
    FormulaSource(const std::vector<formula::Formula> &outputs, const std::vector<std::string> &variables,
                  const std::vector<std::string> &parameters)
        : parameters_(parameters.size())
    {
        for (const formula::Formula &output : outputs) {
            values_.emplace_back(std::span(&output, 1), variables, parameters);
            full_.emplace_back(output.with_derivatives(parameters), variables, parameters);
        }
    }

    std::unique_ptr<Memory> memory() const override
    {
        auto memory = std::make_unique<Workspaces>();
        for (const auto &program : values_) memory->values.push_back(program.workspace());
        for (const auto &program : full_) memory->full.push_back(program.workspace());
        memory->p.resize(parameters_);
        memory->outputs.resize(parameters_ + 1);
        return memory;
    }

    void set_parameters(Memory &memory, const double *parameters) const override
    {
        auto &workspaces = static_cast<Workspaces &>(memory);
        workspaces.p.assign(parameters, parameters + parameters_);
        workspaces.values_set = workspaces.full_set = false;
    }

    void run(Memory &memory, const double *const *x, size_t count, double *const *value,
             double *const *jacobian) const override
    {
        auto &own = static_cast<Workspaces &>(memory);
        auto &programs = jacobian ? full_ : values_;
        auto &workspaces = jacobian ? own.full : own.values;
        bool &set = jacobian ? own.full_set : own.values_set;
        for (size_t k = 0; k < programs.size(); ++k) {
            if (!set) programs[k].set_parameters(workspaces[k], own.p);
            own.outputs[0] = value[k];
            if (jacobian)
                std::copy(jacobian + k * parameters_, jacobian + (k + 1) * parameters_, own.outputs.begin() + 1);
            programs[k].run(workspaces[k], x, own.outputs.data(), count);
        }
        set = true;
    }

private:
    struct Workspaces : Memory {
        std::vector<formula::Program::Workspace> values, full;
        std::vector<double> p;
        std::vector<double *> outputs;
        bool values_set = false, full_set = false;
    };

    size_t parameters_;
    std::vector<formula::Program> values_, full_;  ///< one an output; full: with the derivatives
};

class ExtendedFormulas : public ExtendedSource {
public:
    ExtendedFormulas(const std::vector<formula::Formula> &outputs, const std::vector<std::string> &variables,
                     std::vector<std::string> parameters)
        : variables_(variables.size()), parameters_(parameters.size())
    {
        std::vector<std::string> names = variables;
        names.insert(names.end(), parameters.begin(), parameters.end());
        for (const formula::Formula &output : outputs)
            evaluators_.emplace_back(output.with_derivatives(parameters), names);
    }

    std::unique_ptr<Memory> memory() const override
    {
        auto memory = std::make_unique<Copy>();
        memory->evaluators = evaluators_;
        memory->numbers.resize(variables_ + parameters_);
        memory->results.resize(parameters_ + 1);
        return memory;
    }

    void set_parameters(Memory &memory, const long double *parameters) const override
    {
        auto &numbers = static_cast<Copy &>(memory).numbers;
        std::copy(parameters, parameters + parameters_, numbers.begin() + static_cast<std::ptrdiff_t>(variables_));
    }

    void run(Memory &memory, const double *x, long double *value, long double *jacobian) const override
    {
        auto &own = static_cast<Copy &>(memory);
        std::copy(x, x + variables_, own.numbers.begin());
        for (size_t k = 0; k < own.evaluators.size(); ++k) {
            own.evaluators[k](own.numbers, own.results);
            value[k] = own.results[0];
            std::copy(own.results.begin() + 1, own.results.end(), jacobian + k * parameters_);
        }
    }

private:
    // Results of the polish are promised to this many bits.
    static_assert(std::numeric_limits<long double>::digits >= 64, "extended precision has 64 bits at least");

    using Evaluator = formula::Evaluator<long double>;
    struct Copy : Memory {
        std::vector<Evaluator> evaluators;
        std::vector<long double> numbers, results;
    };

    size_t variables_, parameters_;
    std::vector<Evaluator> evaluators_;
};

class MixedSource : public Source {
public:
    MixedSource(std::shared_ptr<const Source> values, std::shared_ptr<const Source> derivatives)
        : values_(std::move(values)), derivatives_(std::move(derivatives))
    {
    }

    std::unique_ptr<Memory> memory() const override
    {
        auto memory = std::make_unique<Both>();
        memory->values = values_->memory();
        memory->derivatives = derivatives_->memory();
        return memory;
    }

    void set_parameters(Memory &memory, const double *parameters) const override
    {
        auto &both = static_cast<Both &>(memory);
        values_->set_parameters(*both.values, parameters);
        derivatives_->set_parameters(*both.derivatives, parameters);
    }

    void run(Memory &memory, const double *const *x, size_t count, double *const *value,
             double *const *jacobian) const override
    {
        auto &both = static_cast<Both &>(memory);
        if (jacobian) derivatives_->run(*both.derivatives, x, count, value, jacobian);
        values_->run(*both.values, x, count, value, nullptr);
    }

private:
    struct Both : Memory {
        std::unique_ptr<Memory> values, derivatives;
    };

    std::shared_ptr<const Source> values_, derivatives_;
};

class SumSource : public Source {
public:
    SumSource(std::vector<Summand> summands, size_t outputs) : summands_(std::move(summands)), outputs_(outputs)
    {
        for (const Summand &summand : summands_) parameters_ += summand.parameters;
    }

    std::unique_ptr<Memory> memory() const override
    {
        auto memory = std::make_unique<Parts>();
        for (const Summand &summand : summands_) memory->parts.push_back(summand.source->memory());
        memory->shares.resize(outputs_ * block_rows);
        return memory;
    }

    void set_parameters(Memory &memory, const double *parameters) const override
    {
        auto &parts = static_cast<Parts &>(memory).parts;
        for (size_t i = 0; i < summands_.size(); parameters += summands_[i++].parameters)
            summands_[i].source->set_parameters(*parts[i], parameters);
    }

    void run(Memory &memory, const double *const *x, size_t count, double *const *value,
             double *const *jacobian) const override
    {
        auto &own = static_cast<Parts &>(memory);
        std::array<double *, max_outputs> share;
        for (size_t k = 0; k < outputs_; ++k) {
            share[k] = own.shares.data() + k * block_rows;
            std::fill(value[k], value[k] + count, 0.0);
        }
        size_t first = 0;
        for (size_t i = 0; i < summands_.size(); first += summands_[i++].parameters) {
            own.columns.clear();
            for (size_t k = 0; jacobian && k < outputs_; ++k)
                for (size_t j = 0; j < summands_[i].parameters; ++j)
                    own.columns.push_back(jacobian[k * parameters_ + first + j]);
            summands_[i].source->run(*own.parts[i], x, count, share.data(), jacobian ? own.columns.data() : nullptr);
            for (size_t k = 0; k < outputs_; ++k)
                for (size_t point = 0; point < count; ++point) value[k][point] += share[k][point];
        }
    }

private:
    struct Parts : Memory {
        std::vector<std::unique_ptr<Memory>> parts;
        std::vector<double> shares;
        std::vector<double *> columns;
    };

    std::vector<Summand> summands_;
    size_t outputs_, parameters_ = 0;
};

}  // namespace

std::unique_ptr<Source> contract_source(const Contract &contract)
{
    return std::make_unique<ContractSource>(contract);
}

std::unique_ptr<Source> formula_source(const std::vector<formula::Formula> &outputs,
                                       const std::vector<std::string> &variables,
                                       const std::vector<std::string> &parameters)
{
    return std::make_unique<FormulaSource>(outputs, variables, parameters);
}

std::unique_ptr<ExtendedSource> extended_source(const std::vector<formula::Formula> &outputs,
                                                const std::vector<std::string> &variables,
                                                const std::vector<std::string> &parameters)
{
    return std::make_unique<ExtendedFormulas>(outputs, variables, parameters);
}

std::unique_ptr<Source> mixed_source(std::shared_ptr<const Source> values, std::shared_ptr<const Source> derivatives)
{
    return std::make_unique<MixedSource>(std::move(values), std::move(derivatives));
}

std::unique_ptr<Source> sum_source(std::vector<Summand> summands, size_t outputs)
{
    return std::make_unique<SumSource>(std::move(summands), outputs);
}

}  // namespace curvebank::fit
