// Least-squares fitting of a model to data.

#pragma once

#include <limits>
#include <string>
#include <vector>

#include "fit/evaluator.h"
#include "reference/reference.h"

namespace curvebank::fit {

/// The data of a fit: points with their measured values, as many a point as the model has outputs, and, where
/// given, statistical weights (1/variance) of the points. Implicit models are fitted to values of 0.
struct Data {
    Variables x;
    std::vector<double> y;
    std::vector<double> weights;  ///< empty: all 1
};

struct FitOptions {
    std::vector<double> start;  ///< one value a parameter
    std::vector<bool> fixed;    ///< empty: none; a fixed parameter keeps its start value
    std::vector<double> lower;  ///< empty: unbounded
    std::vector<double> upper;
    int max_iterations = 1000;
    double confidence = 0.95;
};

struct ParameterEstimate {
    double value = 0;
    double standard_error = std::numeric_limits<double>::quiet_NaN();  ///< NaN where it is not determined
    double lower = standard_error, upper = standard_error;             ///< confidence interval
    bool fixed = false;
    bool at_bound = false;            ///< held by a bound; treated as fixed for the standard errors
    bool numeric_derivative = false;  ///< the model's own derivative was missing or not the exact partial
};

struct FitResult {
    std::vector<ParameterEstimate> parameters;
    std::vector<double> fitted, residuals;  ///< as the values of the data; residual = measured - fitted
    double sum_of_squares = 0;              ///< of the weighted residuals
    double residual_sd = 0;                 ///< sqrt(sum_of_squares / degrees_of_freedom); NaN for no degrees
    double r_squared = 0;
    int degrees_of_freedom = 0;
    int iterations = 0;
    double confidence = 0.95;
    bool converged = false;
    bool dependent = false;   ///< the data do not determine all parameters separately
    std::string stop_reason;  ///< why the iteration ended
};

/// Minimises the weighted sum of squared residuals over the parameters that are not fixed. Throws Error when the
/// fit cannot begin: too few points, a start outside its bounds, or no value of the model at the start.
FitResult fit(Evaluator &model, const reference::ModelReference &about, const Data &data,
              const FitOptions &options);

/// The derivatives of the model by differences of its values, as Evaluator::derivatives gives them, for the
/// parameters in which. NaN where the model has no value nearby.
void difference_derivatives(Evaluator &model, const Variables &x, const std::vector<double> &p,
                            const std::vector<double> &scale, const std::vector<size_t> &which, Rows &rows);

}  // namespace curvebank::fit
