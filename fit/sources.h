// The sources of a fit's numbers: the calling contract, a formula, and what is put together from them.

#pragma once

#include <string>
#include <vector>

#include "curvebank/model_func.h"
#include "fit/source.h"
#include "formula/formula.h"

namespace curvebank::fit {

/// The calling contract of one model.
struct Contract {
    ModelFunc function;
    int passed;         ///< the count of parameters that a call is told
    size_t parameters;  ///< those that it reads; some models read more than they are told
    size_t variables, outputs;
};

/// Derivatives come from calls of their own, for models of one output; NaN where the model writes none.
std::unique_ptr<Source> contract_source(const Contract &contract);

/// A formula an output, in the same variables and parameters, evaluated by vector instructions.
std::unique_ptr<Source> formula_source(const std::vector<formula::Formula> &outputs,
                                       const std::vector<std::string> &variables,
                                       const std::vector<std::string> &parameters);

std::unique_ptr<ExtendedSource> extended_source(const std::vector<formula::Formula> &outputs,
                                                const std::vector<std::string> &variables,
                                                const std::vector<std::string> &parameters);

/// Values of one source, derivatives of another.
std::unique_ptr<Source> mixed_source(std::shared_ptr<const Source> values, std::shared_ptr<const Source> derivatives);

/// The sum of sources of the same variables, whose parameters follow each other.
struct Summand {
    std::shared_ptr<const Source> source;
    size_t parameters;
};
std::unique_ptr<Source> sum_source(std::vector<Summand> summands, size_t outputs);

}  // namespace curvebank::fit
