// What can be fitted: a model of the catalogue, a formula, or a sum of them.

#pragma once

#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "curvebank/fit/api.h"

namespace curvebank::fit {

/// A request that cannot be carried out as it stands: a name that does not exist, arrays of different lengths, a start
/// outside its bounds. The text is one clear line that names what and where. What the data or the model do to a fit
/// is no error but its verdict.
class CURVEBANK_FIT_API Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Parameter {
    std::string name;
    std::string meaning;  ///< empty for a formula's
    std::string unit;     ///< in terms of the variables and the value, "y/x" for example; empty where unknown
    double start;         ///< where a fit begins when nothing else is said
    bool fixed = false;   ///< by default, as a constant that a sum has already
};

/// A curve or surface with named parameters. A value: copies are cheap, and any number of threads may use one.
class CURVEBANK_FIT_API Model {
public:
    /// A model of the catalogue (case is ignored). Models of repeated terms take their number of terms. Throws Error.
    static Model catalogue(std::string_view name, int terms = 1);

    /// A formula, "a*exp(-b*x) + c" or "y = a*exp(-b*x) + c". Names that are not among the variables are its
    /// parameters, in order of appearance; their starts are 1. Throws Error.
    static Model formula(std::string_view text, std::vector<std::string> variables = {"x"});

    /// The sum of models of the same variables, the parameters of each named with its prefix. A constant that a second
    /// one adds again starts at 0 and is fixed. Throws Error where two parameters have the same name.
    static Model sum(const std::vector<std::pair<std::string, Model>> &parts);

    const std::string &name() const;
    const std::vector<std::string> &variables() const;
    const std::vector<Parameter> &parameters() const;
    size_t outputs() const;  ///< values a point
    bool implicit() const;   ///< the value is the residual of an equation, 0 on the curve

    /// The values at points, x[i] being the column of variable i, value[k] that of output k: by the calling contract for a
    /// model of the catalogue. NaN where there is none.
    void values(std::span<const double> parameters, std::span<const double *const> x, size_t points,
                std::span<double *const> value) const;

    struct Implementation;
    const Implementation &implementation() const { return *implementation_; }

private:
    explicit Model(std::shared_ptr<const Implementation> implementation);
    std::shared_ptr<const Implementation> implementation_;
};

}  // namespace curvebank::fit
