// From the parameters that are varied to all parameters of a model: fixed ones, and ties by expressions.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "curvebank/fit/fit.h"
#include "formula/program.h"

namespace curvebank::fit {

/// Expressions of named parameters with their derivatives, at one set of values.
class Expressions {
public:
    /// Throws Error, which names the expression, where one cannot be read or names something else.
    Expressions(const std::vector<std::pair<std::string, std::string>> &named,
                const std::vector<std::string> &parameters);

    size_t size() const { return programs_.size(); }
    /// Value of expression e into values[e], its derivative with respect to parameter j into derivatives[e * parameters + j].
    void evaluate(const std::vector<double> &parameters, std::vector<double> &values,
                  std::vector<double> &derivatives) const;

private:
    size_t parameters_;
    std::vector<formula::Program> programs_;
};

class Parameters {
public:
    /// Throws Error: names that do not exist or come twice, starts outside bounds, ties in a circle ...
    Parameters(const Model &model, const Options &options);

    size_t all() const { return start_.size(); }
    const std::vector<size_t> &varied() const { return varied_; }
    const std::vector<size_t> &tied() const { return order_; }
    const std::vector<std::string> &names() const { return names_; }
    const std::vector<double> &start() const { return start_; }  ///< of all
    double lower(size_t j) const { return lower_[varied_[j]]; }  ///< of varied parameter j
    double upper(size_t j) const { return upper_[varied_[j]]; }
    bool is_fixed(size_t i) const { return fixed_[i]; }
    bool is_tied(size_t i) const { return tied_[i]; }
    bool has_ties() const { return !order_.empty(); }
    bool bounded(size_t i) const;

    /// Sets the tied ones of all parameters from the others.
    void follow_ties(std::vector<double> &p) const;

    /// A tied parameter, and its derivatives with respect to the varied ones.
    struct Slope {
        size_t parameter;
        std::vector<double> by_varied;
    };
    std::vector<Slope> slopes(const std::vector<double> &p) const;

    /// The parameter of that name; throws Error that says what asked for it and which names there are.
    size_t find(const std::string &name, const std::string &asked_by) const;

private:
    void read_ties(const Options &options);

    std::vector<std::string> names_;
    std::vector<double> start_, lower_, upper_;
    std::vector<bool> fixed_, tied_;
    std::vector<size_t> varied_;
    std::vector<size_t> order_;  ///< tied parameters, each after those it depends on
    std::optional<Expressions> expressions_;  ///< in that order
};

}  // namespace curvebank::fit
