#include "fit/statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Dense>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>

namespace curvebank::fit {
namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

/// How many standard errors the interval reaches to either side.
double quantile(double confidence, int64_t degrees, bool absolute)
{
    const double tail = (1 - confidence) / 2;
    using Policy = boost::math::policies::policy<boost::math::policies::promote_double<false>>;
    if (absolute) return boost::math::quantile(boost::math::complement(boost::math::normal_distribution<double, Policy>(), tail));
    if (degrees < 1) return absent;
    const boost::math::students_t_distribution<double, Policy> distribution(static_cast<double>(degrees));
    return boost::math::quantile(boost::math::complement(distribution, tail));
}

double finite_or_absent(double value)
{
    return std::isfinite(value) ? value : absent;
}

void give_interval(Estimate &estimate, double error, double reach)
{
    estimate.standard_error = finite_or_absent(error);
    estimate.lower = finite_or_absent(estimate.value - reach * error);
    estimate.upper = finite_or_absent(estimate.value + reach * error);
}

}  // namespace

namespace {

template <typename T>
using Matrix = Eigen::Matrix<T, Eigen::Dynamic, Eigen::Dynamic>;

/// The inverse of a triangle, and whether it is sound: its condition leaves half of the digits.
template <typename T>
bool invert(const Matrix<T> &triangle, Matrix<T> &inverse, double &condition)
{
    const Eigen::Index n = triangle.rows();
    inverse.setZero(n, n);
    for (Eigen::Index c = 0; c < n; ++c) {
        for (Eigen::Index row = c; row >= 0; --row) {
            T rest = row == c ? T(1) : T(0);
            for (Eigen::Index k = row + 1; k <= c; ++k) rest -= triangle(row, k) * inverse(k, c);
            if (!(triangle(row, row) != 0)) return false;
            inverse(row, c) = rest / triangle(row, row);
        }
    }
    condition = static_cast<double>(triangle.norm() * inverse.norm());
    return condition < 1e8;
}

/// The same by singular values: directions that rounding hides are left out, and the parameters in them marked.
template <typename T>
void invert_what_is_seen(const Matrix<T> &columns, Matrix<T> &inverse, std::vector<bool> &seen, Spread &result,
                         const std::vector<size_t> &free)
{
    const Eigen::Index width = columns.cols();
    const Eigen::JacobiSVD<Matrix<T>> svd(columns, Eigen::ComputeThinU | Eigen::ComputeThinV);
    const auto &singular = svd.singularValues();
    // Derivatives are rounded as doubles, whatever they are reduced in.
    const T least = 8 * static_cast<T>(epsilon) * singular(0);
    constexpr double part = 1e-3;  // of an unseen direction that makes a parameter undetermined
    inverse.setZero(width, width);
    for (Eigen::Index k = 0; k < width; ++k) {
        const auto direction = svd.matrixV().col(k);
        if (singular(k) > least) {
            inverse += direction * direction.transpose() / (singular(k) * singular(k));
            continue;
        }
        ++result.unseen;
        for (Eigen::Index c = 0; c < width; ++c)
            if (std::fabs(direction(c)) > part) seen[static_cast<size_t>(c)] = false;
    }
    for (size_t c = 0; c < free.size(); ++c)
        result.combination[free[c]] =
            static_cast<double>(svd.matrixV()(static_cast<Eigen::Index>(c), width - 1));
    result.condition = static_cast<double>(singular(0) / singular(width - 1));
}

}  // namespace

template <typename T>
Spread spread(const Reduced<T> &reduced, const std::vector<bool> &held)
{
    const size_t n = reduced.width;
    std::vector<size_t> free;
    for (size_t j = 0; j < n; ++j)
        if (!held[j]) free.push_back(j);
    const auto width = static_cast<Eigen::Index>(free.size());
    Spread result;
    result.inverse.assign(n * n, 0.0);
    result.determined.assign(n, false);
    result.combination.assign(n, 0.0);
    if (free.empty()) return result;

    // Columns of unit length: the units of the parameters say nothing of what the data see.
    Matrix<T> columns = Matrix<T>::Zero(static_cast<Eigen::Index>(n), width);
    std::vector<double> length;
    for (Eigen::Index c = 0; c < width; ++c) {
        const size_t j = free[static_cast<size_t>(c)];
        const T norm = reduced.column_norm(j);
        length.push_back(static_cast<double>(norm));
        for (size_t row = 0; row <= j && norm > 0; ++row)
            columns(static_cast<Eigen::Index>(row), c) = reduced.at(row, j) / norm;
    }
    std::vector<bool> seen(free.size(), true);
    Matrix<T> inverse;
    if (free.size() == n && invert(columns, inverse, result.condition))
        inverse = (inverse * inverse.transpose()).eval();
    else
        invert_what_is_seen(columns, inverse, seen, result, free);
    for (size_t c = 0; c < free.size(); ++c) {
        result.determined[free[c]] = seen[c] && length[c] > 0;
        for (size_t d = 0; d < free.size() && seen[c]; ++d)
            if (seen[d] && length[c] > 0 && length[d] > 0)
                result.inverse[free[c] * n + free[d]] =
                    static_cast<double>(inverse(static_cast<Eigen::Index>(c), static_cast<Eigen::Index>(d))) /
                    length[c] / length[d];
    }
    return result;
}

template Spread spread(const Reduced<double> &, const std::vector<bool> &);
template Spread spread(const Reduced<long double> &, const std::vector<bool> &);

void fill_statistics(const Problem &problem, const Standing &standing, const Spread &spread, const Data &data,
                     const Options &options, Result &result)
{
    const Parameters &parameters = problem.parameters();
    const Points &points = problem.points();
    const size_t n = problem.width(), all = parameters.all();
    const auto count = static_cast<double>(problem.residuals());
    const auto free = std::count(standing.held.begin(), standing.held.end(), false);
    result.points = points.used();
    result.left_out = points.left_out();
    result.degrees_of_freedom = static_cast<int64_t>(problem.residuals()) - free;
    result.relative_offset = finite_or_absent(standing.relative_offset);
    result.confidence = options.confidence;

    // Scaled numbers first: squares of what is in the data's units may not exist as doubles.
    const double scaled = standing.sum_of_squares(), unit = problem.residual_scale() * points.weight_unit();
    const auto degrees = static_cast<double>(result.degrees_of_freedom);
    const double variance = scaled / degrees, log_unit = 2 * std::log(problem.residual_scale()) + 2 * std::log(points.weight_unit());
    result.sum_of_squares = finite_or_absent(scaled * unit * unit);
    if (scaled > 0 && result.sum_of_squares == 0) result.sum_of_squares = absent;
    if (degrees > 0) {
        result.residual_sd = finite_or_absent(std::sqrt(variance) * unit);
        result.reduced_chi_square = finite_or_absent(variance * unit * unit);
    }
    const double total = problem.squares_about_mean();
    if (total > 0 && !problem.model().implicit) {
        result.r_squared = finite_or_absent(1 - scaled / total);
        const double outputs = static_cast<double>(problem.model().outputs);
        if (degrees > 0) result.adjusted_r_squared = finite_or_absent(1 - (scaled / degrees) / (total / (count - outputs)));
    }
    if (data.absolute_sigma) {
        const auto k = static_cast<double>(free);
        const double chi = scaled * unit * unit;
        result.aic = finite_or_absent(chi + 2 * k);
        result.bic = finite_or_absent(chi + k * std::log(count));
        if (count - k - 1 > 0) result.aicc = finite_or_absent(result.aic + 2 * k * (k + 1) / (count - k - 1));
    } else if (scaled > 0 && result.verdict != Verdict::exact) {
        const auto k = static_cast<double>(free + 1);  // the error variance is a parameter too
        const double deviance = count * (std::log(scaled / count) + log_unit);
        result.aic = finite_or_absent(deviance + 2 * k);
        result.bic = finite_or_absent(deviance + k * std::log(count));
        if (count - k - 1 > 0) result.aicc = finite_or_absent(result.aic + 2 * k * (k + 1) / (count - k - 1));
    }

    // Covariance of all parameters, from that of the varied ones.
    const double spread_unit = data.absolute_sigma ? 1 / unit : degrees > 0 ? std::sqrt(variance) : absent;
    std::vector<double> by_varied(all * n, 0.0);
    for (size_t j = 0; j < n; ++j) by_varied[parameters.varied()[j] * n + j] = 1;
    for (const Parameters::Slope &slope : parameters.slopes(standing.p))
        std::copy(slope.by_varied.begin(), slope.by_varied.end(), &by_varied[slope.parameter * n]);
    const auto covariance_of = [&](const double *a, const double *b) {
        double sum = 0;
        for (size_t j = 0; j < n; ++j) {
            if (a[j] == 0) continue;
            if (!spread.determined[j] && !standing.held[j]) return absent;
            for (size_t k = 0; k < n; ++k)
                if (b[k] != 0)
                    sum += (a[j] * problem.scale(j) * spread_unit) * spread.inverse[j * n + k] *
                           (b[k] * problem.scale(k) * spread_unit);
        }
        return sum;
    };
    result.covariance.assign(all * all, 0.0);
    for (size_t i = 0; i < all; ++i)
        for (size_t k = 0; k < all; ++k)
            result.covariance[i * all + k] = finite_or_absent(covariance_of(&by_varied[i * n], &by_varied[k * n]));
    for (size_t i = 0; i < all; ++i)
        for (size_t k = 0; k < i; ++k)  // absent from either side
            if (std::isnan(result.covariance[i * all + k]) || std::isnan(result.covariance[k * all + i]))
                result.covariance[i * all + k] = result.covariance[k * all + i] = absent;

    const double reach = quantile(options.confidence, result.degrees_of_freedom, data.absolute_sigma);
    // Errors come from one factor each: their squares may not exist as doubles where they do.
    const auto error_of = [&](const double *slope) {
        double squares = 0, largest = 0;
        for (size_t j = 0; j < n; ++j) {
            if (slope[j] == 0 || standing.held[j]) continue;
            if (!spread.determined[j]) return absent;
            largest = std::max(largest, std::fabs(slope[j] * problem.scale(j)));
        }
        if (largest == 0) return absent;
        for (size_t j = 0; j < n; ++j)
            for (size_t k = 0; k < n; ++k)
                squares += slope[j] * problem.scale(j) / largest * spread.inverse[j * n + k] *
                           (slope[k] * problem.scale(k) / largest);
        return std::sqrt(squares) * largest * spread_unit;
    };
    result.parameters.clear();
    for (size_t i = 0; i < all; ++i) {
        Estimate estimate;
        estimate.name = parameters.names()[i];
        estimate.value = standing.p[i];
        estimate.fixed = parameters.is_fixed(i);
        estimate.tied = parameters.is_tied(i);
        give_interval(estimate, error_of(&by_varied[i * n]), reach);
        result.parameters.push_back(estimate);
    }
    for (size_t j = 0; j < n; ++j) result.parameters[parameters.varied()[j]].at_bound = standing.held[j];
    result.correlation.assign(all * all, absent);
    for (size_t i = 0; i < all; ++i)
        for (size_t k = 0; k < all; ++k) {
            const double a = result.covariance[i * all + i], b = result.covariance[k * all + k];
            if (a > 0 && b > 0)
                result.correlation[i * all + k] =
                    i == k ? 1 : std::clamp(result.covariance[i * all + k] / std::sqrt(a) / std::sqrt(b), -1.0, 1.0);
        }

    const Expressions derived(options.derived, parameters.names());
    std::vector<double> values, slopes;
    derived.evaluate(standing.p, values, slopes);
    for (size_t d = 0; d < derived.size(); ++d) {
        std::vector<double> slope(n, 0.0);
        for (size_t i = 0; i < all; ++i)
            for (size_t j = 0; j < n; ++j) slope[j] += slopes[d * all + i] * by_varied[i * n + j];
        Estimate estimate;
        estimate.name = options.derived[d].first;
        estimate.value = finite_or_absent(values[d]);
        give_interval(estimate, error_of(slope.data()), reach);
        result.derived.push_back(estimate);
    }
}

void fill_without_values(const Problem &problem, const std::vector<double> &p, const Options &options, Result &result)
{
    const Parameters &parameters = problem.parameters();
    result.points = problem.points().used();
    result.left_out = problem.points().left_out();
    result.degrees_of_freedom = static_cast<int64_t>(problem.residuals()) - static_cast<int64_t>(problem.width());
    result.confidence = options.confidence;
    for (size_t i = 0; i < parameters.all(); ++i) {
        Estimate estimate;
        estimate.name = parameters.names()[i];
        estimate.value = p[i];
        estimate.fixed = parameters.is_fixed(i);
        estimate.tied = parameters.is_tied(i);
        result.parameters.push_back(estimate);
    }
    for (const auto &[name, text] : options.derived) result.derived.push_back({name, absent});
    result.covariance.assign(p.size() * p.size(), absent);
    result.correlation = result.covariance;
}

Band band(const Model &model, const Result &result, std::span<const double *const> x, size_t points, BandKind kind,
          double confidence)
{
    const Model::Implementation &implementation = model.implementation();
    if (implementation.outputs != 1 || implementation.implicit) throw Error("a band needs a model of one output");
    if (x.size() != implementation.variables.size())
        throw Error("the model has " + std::to_string(implementation.variables.size()) + " variables, " +
                    std::to_string(x.size()) + " columns of x are given");
    const size_t all = implementation.parameters.size();
    std::vector<double> p;
    for (const Estimate &estimate : result.parameters) p.push_back(estimate.value);
    const Source &source = implementation.exact ? *implementation.exact : *implementation.fast;
    const auto memory = source.memory();
    source.set_parameters(*memory, p.data());

    const double reach = quantile(confidence, result.degrees_of_freedom, result.absolute_sigma);
    const double noise = kind != BandKind::prediction ? 0 : result.absolute_sigma ? 1 : result.residual_sd;
    Band band{std::vector<double>(points), std::vector<double>(points)};
    std::vector<double> columns(all * block_rows);
    std::vector<double *> jacobian(all);
    for (size_t j = 0; j < all; ++j) jacobian[j] = &columns[j * block_rows];
    std::vector<const double *> from(x.size());
    for (size_t first = 0; first < points; first += block_rows) {
        const size_t count = std::min(block_rows, points - first);
        for (size_t i = 0; i < x.size(); ++i) from[i] = x[i] + first;
        double *value = &band.value[first];
        source.run(*memory, from.data(), count, &value, jacobian.data());
        for (size_t row = 0; row < count; ++row) {
            double variance = noise * noise;
            for (size_t i = 0; i < all; ++i)
                for (size_t k = 0; k < all; ++k)
                    if (const double c = result.covariance[i * all + k]; c != 0)
                        variance += jacobian[i][row] * c * jacobian[k][row];
            band.half_width[first + row] = finite_or_absent(reach * std::sqrt(variance));
        }
    }
    return band;
}

}  // namespace curvebank::fit
