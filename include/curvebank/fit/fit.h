// Least-squares fits: the engine's door for C++. <curvebank/fit.h> is the one for C.

#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "curvebank/fit/model.h"

namespace curvebank::fit {

/// What is absent is NaN: a standard error that does not exist, a probability without degrees of freedom.
constexpr double absent = std::numeric_limits<double>::quiet_NaN();

/// Columns of equal length, read in place: they must outlive the call.
struct Data {
    std::vector<std::span<const double>> x = {};  ///< one column a variable
    std::vector<std::span<const double>> y = {};  ///< one column an output; empty for an implicit model
    std::span<const double> weights = {};         ///< 1/variance up to a common factor; empty: all 1
    std::span<const double> sigma = {};           ///< standard deviations instead of weights
    bool absolute_sigma = false;                  ///< sigma (or 1/sqrt(weights)) is in the unit of y: not to be scaled by the fit

    /// What becomes of a point of which a number is not finite: an Error that names it, or it is left out and counted.
    enum class Missing { error, skip } missing = Missing::error;
};

/// How far a fit has come; handed to Options::watch.
struct Progress {
    int iteration;
    double sum_of_squares;
    std::span<const double> parameters;  ///< all of them, in the model's order
};

struct Options {
    std::vector<std::pair<std::string, double>> start;  ///< by name; the others begin at the model's own start
    std::vector<std::string> fixed;                     ///< kept at their start
    std::vector<std::string> free;                      ///< not kept, though the model keeps them by default
    std::vector<std::pair<std::string, double>> lower, upper;
    std::vector<std::pair<std::string, std::string>> ties;     ///< a parameter, and the expression of others that it equals
    std::vector<std::pair<std::string, std::string>> derived;  ///< a name, and an expression of the parameters
    int max_iterations = 500;
    double confidence = 0.95;
    int threads = 1;  ///< 0: as many as the machine has; the result has the same bits for any number

    /// Called once an iteration; false stops the fit, which gives what it has.
    std::function<bool(const Progress &)> watch;
};

/// How a fit ended. The first group is success.
enum class Verdict {
    converged,            ///< the relative offset is small: the parameters are at a minimum
    exact,                ///< the residuals are at the level of rounding
    no_influence,         ///< a parameter changes nothing that the data could see
    not_separated,        ///< the data do not tell some parameters from others
    runs_to_infinity,     ///< the sum of squares falls the further a parameter grows
    no_better_than_constant,
    no_progress,          ///< no step makes the sum of squares smaller, and yet it is no minimum
    iteration_limit,
    domain_left,          ///< the model has no value at some point, and no step leads away from there
    overflow,             ///< the numbers leave the range of a double
    stopped               ///< by the watcher
};

constexpr bool is_success(Verdict verdict)
{
    return verdict == Verdict::converged || verdict == Verdict::exact;
}

/// The verdict as a word, "converged" for example: what reports and files say.
CURVEBANK_FIT_API std::string_view word(Verdict verdict);

struct Estimate {
    std::string name;
    double value = 0;
    double standard_error = absent;
    double lower = absent, upper = absent;  ///< Wald interval at Options::confidence
    bool fixed = false;
    bool tied = false;
    bool at_bound = false;  ///< held by a bound, and treated as fixed in the standard errors
};

struct Result {
    Verdict verdict = Verdict::no_progress;
    std::vector<std::string> notes;  ///< sentences: which parameter, which combination, what was left out

    std::vector<Estimate> parameters;  ///< in the model's order
    std::vector<Estimate> derived;     ///< in the order asked for

    /// Of all parameters, row by row: 0 for those that were not varied, by the chain rule for tied ones, absent for those
    /// without a standard error.
    std::vector<double> covariance, correlation;

    size_t points = 0, left_out = 0;
    std::int64_t degrees_of_freedom = 0;
    int iterations = 0, evaluations = 0;  ///< evaluations: passes over all points
    double relative_offset = absent;      ///< Bates and Watts (1981): how far from the minimum, in units of its statistical spread
    double sum_of_squares = absent;       ///< weighted; absent where it exceeds the range of a double
    double residual_sd = absent;          ///< sqrt(sum_of_squares / degrees_of_freedom)
    double reduced_chi_square = absent;
    double r_squared = absent, adjusted_r_squared = absent;  ///< about the weighted mean of each output
    double aic = absent, aicc = absent, bic = absent;        ///< the error variance counted as a parameter
    double confidence = 0.95;
    bool absolute_sigma = false;
};

/// Minimises the weighted sum of squared residuals. Throws Error for a request that cannot be carried out; all that
/// can happen to a fit after that is its verdict.
CURVEBANK_FIT_API Result fit(const Model &model, const Data &data, const Options &options = {});

/// The curve with a band at further points: half the width of the confidence band of the curve, or of the prediction
/// band of a further observation of weight 1. x as in Model::values, for models of one output.
struct Band {
    std::vector<double> value, half_width;
};
enum class BandKind { confidence, prediction };
CURVEBANK_FIT_API Band band(const Model &model, const Result &result, std::span<const double *const> x, size_t points,
                            BandKind kind, double confidence = 0.95);

}  // namespace curvebank::fit
