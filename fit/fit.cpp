#include "fit/fit.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

#include <ceres/ceres.h>
#include <fmt/format.h>
#include <Eigen/Dense>
#include <boost/math/distributions/students_t.hpp>

#include "platform/error.h"

namespace curvebank::fit {
namespace {

/// The finishing steps solve in extended precision: the squared condition number of a badly scaled problem, such as
/// a polynomial of degree 10, eats most digits of a double.
using Matrix = Eigen::Matrix<long double, Eigen::Dynamic, Eigen::Dynamic>;
using Vector = Eigen::Matrix<long double, Eigen::Dynamic, 1>;

constexpr double epsilon = std::numeric_limits<double>::epsilon();

double norm(std::span<const double> v)
{
    return std::sqrt(std::inner_product(v.begin(), v.end(), v.begin(), 0.0));
}

/// The problem that the solver sees: residuals and their derivatives for the parameters that are not fixed.
class Problem {
public:
    Problem(Evaluator &model, const Data &data, const FitOptions &options)
        : model_(model), data_(data), p_(options.start), jacobian_rows_(data.y.size(), p_.size()), y_(data.y.size())
    {
        for (size_t i = 0; i < p_.size(); ++i)
            if (options.fixed.empty() || !options.fixed[i]) free_.push_back(i);
        const auto outputs = static_cast<size_t>(model.outputs());
        for (size_t r = 0; r < data.y.size(); ++r)
            root_weights_.push_back(data.weights.empty() ? 1.0 : std::sqrt(data.weights[r / outputs]));
    }

    size_t points() const { return data_.y.size(); }
    size_t width() const { return p_.size(); }
    size_t outputs() const { return static_cast<size_t>(model_.outputs()); }
    const std::vector<size_t> &free() const { return free_; }
    const std::vector<double> &p() const { return p_; }
    const std::vector<double> &model_values() const { return y_; }
    const std::vector<double> &scale() const { return scale_; }
    const std::vector<bool> &numeric() const { return numeric_; }
    double root_weight(size_t r) const { return root_weights_[r]; }

    void set(size_t parameter, double value) { p_[parameter] = value; }

    /// Weighted residuals, model less data; false where the model has no value at some point.
    bool residuals(std::span<double> r)
    {
        if (model_.values(p_, data_.x, y_) > 0) return false;
        for (size_t i = 0; i < r.size(); ++i) r[i] = root_weights_[i] * (y_[i] - data_.y[i]);
        return true;
    }

    /// The derivatives of the model at the current parameters; false where there are none.
    bool derivatives(Rows &rows)
    {
        model_.derivatives(p_, data_.x, rows);
        std::vector<size_t> by_difference;
        for (const size_t i : free_) {
            bool missing = numeric_[i];
            for (size_t r = 0; r < points() && !missing; ++r) missing = std::isnan(rows[r][i]);
            if (missing) by_difference.push_back(i);
        }
        difference_derivatives(model_, data_.x, p_, scale_, by_difference, rows);
        for (const size_t i : by_difference)
            for (size_t r = 0; r < points(); ++r)
                if (std::isnan(rows[r][i])) return false;
        return true;
    }

    /// Decides at the start which derivatives are the model's own, and how large each parameter is.
    void prepare(const reference::ModelReference &about)
    {
        scale_.resize(width());
        for (size_t i = 0; i < width(); ++i) scale_[i] = p_[i] != 0 ? std::fabs(p_[i]) : 1.0;

        Rows &own = jacobian_rows_, differences(own.size(), own.width());
        model_.derivatives(p_, data_.x, own);
        set_scale_of_zeros(own);
        difference_derivatives(model_, data_.x, p_, scale_, free_, differences);
        numeric_.assign(width(), false);
        for (const size_t i : free_)
            numeric_[i] = !about.derivatives || about.inexact_at(static_cast<int>(i) + 1) != nullptr ||
                          !agree(i, own, differences);
    }

    /// The derivatives of the residuals in units of scale(), as the solver wants them.
    bool scaled_jacobian(double *jacobian)
    {
        if (!derivatives(jacobian_rows_)) return false;
        for (size_t r = 0; r < points(); ++r)
            for (size_t j = 0; j < free_.size(); ++j)
                *jacobian++ = root_weights_[r] * jacobian_rows_[r][free_[j]] * scale_[free_[j]];
        return true;
    }

private:
    /// A parameter that starts at 0 has no size of its own: it is given the one that moves the curve about as much
    /// as the data are large.
    void set_scale_of_zeros(const Rows &own)
    {
        const double size_of_data = norm(data_.y);
        for (const size_t i : free_) {
            double square = 0;
            for (size_t r = 0; r < points(); ++r) square += own[r][i] * own[r][i];
            if (p_[i] == 0 && square > 0 && std::isfinite(square) && size_of_data > 0)
                scale_[i] = size_of_data / std::sqrt(square);
        }
    }

    /// Whether a derivative agrees with its differences, as closely as those can tell.
    bool agree(size_t i, const Rows &own, const Rows &differences) const
    {
        double largest = 0, size = 0;
        for (size_t r = 0; r < points(); ++r) {
            const double difference = differences[r][i];
            if (std::isnan(difference)) return true;  // nothing to hold against it
            largest = std::max(largest, std::fabs(difference));
            size = std::max(size, std::fabs(y_[r]));
        }
        const double rounding = 4 * epsilon * size / (std::cbrt(epsilon) * scale_[i]);
        for (size_t r = 0; r < points(); ++r)
            if (!(std::fabs(own[r][i] - differences[r][i]) <= 1e-4 * largest + rounding)) return false;
        return true;
    }

    Evaluator &model_;
    const Data &data_;
    std::vector<double> p_;
    Rows jacobian_rows_;
    std::vector<double> y_, scale_, root_weights_;
    std::vector<size_t> free_;
    std::vector<bool> numeric_;
};

class Cost : public ceres::CostFunction {
public:
    explicit Cost(Problem &problem) : problem_(problem)
    {
        set_num_residuals(static_cast<int>(problem.points()));
        mutable_parameter_block_sizes()->push_back(static_cast<int>(problem.free().size()));
    }

    bool Evaluate(double const *const *scaled, double *residuals, double **jacobians) const override
    {
        for (size_t j = 0; j < problem_.free().size(); ++j) {
            const size_t i = problem_.free()[j];
            problem_.set(i, scaled[0][j] * problem_.scale()[i]);
        }
        if (!problem_.residuals({residuals, problem_.points()})) return false;
        return !jacobians || !jacobians[0] || problem_.scaled_jacobian(jacobians[0]);
    }

private:
    Problem &problem_;
};

/// The linearised problem at the current parameters, over those listed, with columns of unit length.
struct Linearised {
    Eigen::ColPivHouseholderQR<Matrix> qr;
    Vector residuals, column_norms;

    bool full_rank() const { return qr.rank() == column_norms.size(); }

    /// The undamped Gauss-Newton step.
    Vector step() const { return qr.solve(-residuals).cwiseQuotient(column_norms); }

    /// The standard errors of the parameters for residuals of standard deviation 1.
    Vector unit_errors() const
    {
        const auto size = column_norms.size();
        const Matrix identity = Matrix::Identity(size, size);
        const Matrix inverse =
            qr.matrixR().topLeftCorner(size, size).template triangularView<Eigen::Upper>().solve(identity);
        return (qr.colsPermutation() * inverse.rowwise().norm()).cwiseQuotient(column_norms);
    }
};

std::optional<Linearised> linearise(Problem &problem, const std::vector<size_t> &over)
{
    const size_t points = problem.points();
    std::vector<double> r(points);
    Rows rows(points, problem.width());
    if (!problem.residuals(r) || !problem.derivatives(rows)) return std::nullopt;

    Matrix jacobian(points, over.size());
    Linearised result;
    result.residuals.resize(static_cast<Eigen::Index>(points));
    for (size_t i = 0; i < points; ++i) {
        const auto row = static_cast<Eigen::Index>(i);
        result.residuals(row) = r[i];
        for (size_t j = 0; j < over.size(); ++j)
            jacobian(row, static_cast<Eigen::Index>(j)) = problem.root_weight(i) * rows[i][over[j]];
    }
    result.column_norms = jacobian.colwise().norm();
    for (auto &length : result.column_norms)
        if (length == 0) length = 1;
    jacobian.array().rowwise() /= result.column_norms.transpose().array();
    // Derivatives come in double precision: what is about as small as their rounding is no independent direction.
    result.qr.setThreshold(100 * static_cast<long double>(epsilon));
    result.qr.compute(jacobian);
    return result;
}

/// How far the finishing steps still moved the parameters: the last step's largest change of one, relative to the
/// parameter and in units of its standard error.
struct Finish {
    int steps = 0;
    double relative = std::numeric_limits<double>::infinity();
    double in_errors = std::numeric_limits<double>::infinity();

    bool settled() const { return relative < 1e-9 || in_errors < 1e-4; }
};

double sum_of_squares(Problem &problem)
{
    std::vector<double> r(problem.points());
    return problem.residuals(r) ? std::inner_product(r.begin(), r.end(), r.begin(), 0.0)
                                : std::numeric_limits<double>::infinity();
}

/// Goes on from the damped iteration with undamped Gauss-Newton steps, as long as they get shorter and do not make
/// the fit worse. For a model that is linear in its parameters the first one is the solution.
Finish finish(Problem &problem, const std::vector<size_t> &over, const FitOptions &options)
{
    constexpr int most = 20;
    Finish result;
    if (over.empty()) return result;
    double best = sum_of_squares(problem);
    const auto degrees = static_cast<double>(problem.points() - over.size());
    while (result.steps < most && result.relative > epsilon) {
        const auto linear = linearise(problem, over);
        if (!linear || !linear->full_rank()) break;
        const Vector step = linear->step(), errors = linear->unit_errors() * std::sqrt(best / degrees);
        const std::vector<double> before = problem.p();
        double relative = 0, in_errors = 0;
        bool inside = true;
        for (size_t j = 0; j < over.size(); ++j) {
            const size_t i = over[j];
            const auto index = static_cast<Eigen::Index>(j);
            const auto value = static_cast<double>(before[i] + step(index));
            if (!options.lower.empty()) inside = inside && value >= options.lower[i];
            if (!options.upper.empty()) inside = inside && value <= options.upper[i];
            const double change = std::fabs(value - before[i]);
            if (change > 0) {
                relative = std::max(relative, change / std::max(std::fabs(value), std::fabs(before[i])));
                in_errors = std::max(in_errors, change / static_cast<double>(errors(index)));
            }
            problem.set(i, value);
        }
        const double now = inside ? sum_of_squares(problem) : std::numeric_limits<double>::infinity();
        // At the solution the sum of squares is flat: its last digits are rounding and must not stop the
        // parameters.
        if (!(now <= best * (1 + 1e-9)) || relative >= result.relative) {
            for (const size_t i : over) problem.set(i, before[i]);
            break;
        }
        best = std::min(best, now);
        result = {result.steps + 1, relative, in_errors};
    }
    return result;
}

void check(const Data &data, const FitOptions &options, size_t free)
{
    if (free == 0) throw Error("every parameter is fixed: there is nothing to fit");
    if (data.y.size() < free)
        throw Error(fmt::format("{} points cannot determine {} parameters", data.y.size(), free));
    for (size_t i = 0; i < options.start.size(); ++i)
        if ((!options.lower.empty() && options.start[i] < options.lower[i]) ||
            (!options.upper.empty() && options.start[i] > options.upper[i]))
            throw Error(
                fmt::format("the start value {} of parameter {} is outside its bounds", options.start[i], i + 1));
    for (const double weight : data.weights)
        if (!(weight > 0)) throw Error("weights must be positive");
}

void fill_statistics(Problem &problem, const Data &data, const std::vector<size_t> &over, FitResult &result)
{
    const auto points = data.y.size();
    result.sum_of_squares = sum_of_squares(problem);
    result.fitted = problem.model_values();
    result.residuals.resize(points);
    for (size_t r = 0; r < points; ++r) result.residuals[r] = data.y[r] - result.fitted[r];
    double total = 0;  // of squares about the mean, each output about its own
    for (size_t k = 0; k < problem.outputs(); ++k) {
        double weight_sum = 0, mean = 0;
        for (size_t r = k; r < points; r += problem.outputs()) {
            const double weight = problem.root_weight(r) * problem.root_weight(r);
            weight_sum += weight;
            mean += weight * data.y[r];
        }
        mean /= weight_sum;
        for (size_t r = k; r < points; r += problem.outputs())
            total += std::pow(problem.root_weight(r) * (data.y[r] - mean), 2);
    }
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    result.r_squared = total > 0 ? 1 - result.sum_of_squares / total : none;
    result.degrees_of_freedom = static_cast<int>(points - over.size());
    result.residual_sd =
        result.degrees_of_freedom > 0 ? std::sqrt(result.sum_of_squares / result.degrees_of_freedom) : none;

    if (over.empty()) return;  // bounds hold all parameters
    const auto linear = linearise(problem, over);
    result.dependent = !linear || !linear->full_rank();
    if (result.dependent || result.degrees_of_freedom < 1) return;
    const Vector errors = linear->unit_errors() * result.residual_sd;
    const boost::math::students_t distribution(result.degrees_of_freedom);
    const double t = boost::math::quantile(boost::math::complement(distribution, (1 - result.confidence) / 2));
    for (size_t j = 0; j < over.size(); ++j) {
        ParameterEstimate &estimate = result.parameters[over[j]];
        estimate.standard_error = static_cast<double>(errors(static_cast<Eigen::Index>(j)));
        estimate.lower = estimate.value - t * estimate.standard_error;
        estimate.upper = estimate.value + t * estimate.standard_error;
    }
}

}  // namespace

void difference_derivatives(Evaluator &model, const Variables &x, const std::vector<double> &p,
                            const std::vector<double> &scale, const std::vector<size_t> &which, Rows &rows)
{
    const size_t points = rows.size();
    std::vector<double> moved = p, here, low(points), high(points);
    for (const size_t i : which) {
        const double step = std::cbrt(epsilon) * std::max(std::fabs(p[i]), scale[i]);
        const double p_low = p[i] - step, p_high = p[i] + step;
        moved[i] = p_low;
        const bool any_low_missing = model.values(moved, x, low) > 0;
        moved[i] = p_high;
        const bool any_high_missing = model.values(moved, x, high) > 0;
        moved[i] = p[i];
        if ((any_low_missing || any_high_missing) && here.empty()) {
            here.resize(points);
            model.values(p, x, here);
        }
        for (size_t r = 0; r < points; ++r) {
            double &derivative = rows[r][i];
            if (std::isnan(high[r]))
                derivative = std::isnan(low[r]) ? low[r] : (here[r] - low[r]) / (p[i] - p_low);
            else if (std::isnan(low[r]))
                derivative = (high[r] - here[r]) / (p_high - p[i]);
            else
                derivative = (high[r] - low[r]) / (p_high - p_low);
        }
    }
}

FitResult fit(Evaluator &model, const reference::ModelReference &about, const Data &data, const FitOptions &options)
{
    Problem problem(model, data, options);
    check(data, options, problem.free().size());
    std::vector<double> residuals(problem.points());
    if (!problem.residuals(residuals)) {
        const auto failed = std::find_if(problem.model_values().begin(), problem.model_values().end(),
                                         [](double y) { return std::isnan(y); });
        const auto point = static_cast<size_t>(failed - problem.model_values().begin());
        throw Error(fmt::format("the model has no value at x = {} with the start values",
                                data.x[0][point / problem.outputs()]));
    }
    problem.prepare(about);

    std::vector<double> scaled;
    for (const size_t i : problem.free()) scaled.push_back(problem.p()[i] / problem.scale()[i]);
    ceres::Problem::Options ownership;
    ownership.cost_function_ownership = ceres::DO_NOT_TAKE_OWNERSHIP;
    ceres::Problem solver_problem(ownership);
    Cost cost(problem);
    solver_problem.AddResidualBlock(&cost, nullptr, scaled.data());
    for (size_t j = 0; j < scaled.size(); ++j) {
        const size_t i = problem.free()[j];
        const auto index = static_cast<int>(j);
        if (!options.lower.empty() && std::isfinite(options.lower[i]))
            solver_problem.SetParameterLowerBound(scaled.data(), index, options.lower[i] / problem.scale()[i]);
        if (!options.upper.empty() && std::isfinite(options.upper[i]))
            solver_problem.SetParameterUpperBound(scaled.data(), index, options.upper[i] / problem.scale()[i]);
    }
    ceres::Solver::Options solver;
    solver.linear_solver_type = ceres::DENSE_QR;
    solver.max_num_iterations = options.max_iterations;
    solver.function_tolerance = 1e-15;
    solver.gradient_tolerance = 1e-18;
    solver.parameter_tolerance = 1e-13;
    solver.logging_type = ceres::SILENT;
    if (about.linear) {  // nothing to damp, and little to iterate
        solver.initial_trust_region_radius = 1e16;
        solver.max_num_iterations = std::min(solver.max_num_iterations, 10);
    }
    ceres::Solver::Summary summary;
    ceres::Solve(solver, &solver_problem, &summary);

    FitResult result;
    result.confidence = options.confidence;
    result.parameters.resize(problem.width());
    std::vector<size_t> over;  // free and not held by a bound
    for (size_t i = 0; i < problem.width(); ++i) result.parameters[i].fixed = true;
    for (size_t j = 0; j < scaled.size(); ++j) {
        const size_t i = problem.free()[j];
        ParameterEstimate &estimate = result.parameters[i];
        problem.set(i, scaled[j] * problem.scale()[i]);
        estimate.fixed = false;
        estimate.numeric_derivative = problem.numeric()[i];
        const double slack = 1e-9 * problem.scale()[i];
        estimate.at_bound = (!options.lower.empty() && problem.p()[i] <= options.lower[i] + slack) ||
                            (!options.upper.empty() && problem.p()[i] >= options.upper[i] - slack);
        if (!estimate.at_bound) over.push_back(i);
    }
    const Finish finished = finish(problem, over, options);

    for (size_t i = 0; i < problem.width(); ++i) result.parameters[i].value = problem.p()[i];
    fill_statistics(problem, data, over, result);
    result.iterations = static_cast<int>(summary.iterations.size()) - 1 + finished.steps;
    result.converged = summary.termination_type == ceres::CONVERGENCE || finished.settled();
    if (finished.settled())
        result.stop_reason =
            fmt::format("the last step moved no parameter by more than {:.1g} standard errors", finished.in_errors);
    else if (result.converged)
        result.stop_reason = "the sum of squares does not get smaller";
    else if (summary.termination_type == ceres::NO_CONVERGENCE)
        result.stop_reason = "the limit of iterations was reached";
    else
        result.stop_reason = "no step makes the sum of squares smaller";
    return result;
}

}  // namespace curvebank::fit
