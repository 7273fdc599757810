#include "fit/step.h"

#include <algorithm>
#include <limits>

namespace curvebank::fit {
namespace {

double square(double number)
{
    return number * number;
}

/// The least-squares problem over some of the parameters: triangle and right-hand side, with what held ones have moved
/// by added to the residuals.
template <typename T>
struct Small {
    std::vector<size_t> free;
    std::vector<T> triangle;  ///< of free.size() + 1, row by row

    size_t width() const { return free.size(); }
    T at(size_t row, size_t column) const { return triangle[row * (width() + 1) + column]; }
};

template <typename T>
Small<T> restrict_to_free(const Reduced<T> &reduced, const std::vector<bool> &held, const std::vector<T> &moved)
{
    const size_t n = reduced.width;
    Small<T> small;
    for (size_t j = 0; j < n; ++j)
        if (!held[j]) small.free.push_back(j);
    if (small.width() == n) {
        small.triangle = reduced.triangle;
        return small;
    }
    const size_t columns = small.width() + 1, rows = n + 1;
    std::vector<T> dense(columns * rows);  // column by column
    for (size_t c = 0; c < small.width(); ++c)
        for (size_t row = 0; row <= small.free[c]; ++row) dense[c * rows + row] = reduced.at(row, small.free[c]);
    for (size_t row = 0; row < rows; ++row) {
        T &residual = dense[small.width() * rows + row];
        residual = reduced.at(row, n);
        for (size_t j = row; j < n; ++j)
            if (held[j]) residual += reduced.at(row, j) * moved[j];
    }
    small.triangle.assign(columns * columns, T(0));
    reduce_columns(dense.data(), rows, rows, columns, small.triangle.data());
    return small;
}

/// Solves R y = -z backwards. Where nothing but rounding is left of a column beside those before it, its unknown stays 0.
template <typename T>
std::vector<T> solve(const std::vector<T> &triangle, size_t n)
{
    std::vector<T> y(n);
    for (size_t k = n; k-- > 0;) {
        const T *const row = &triangle[k * (n + 1)];
        T rest = -row[n];
        for (size_t j = k + 1; j < n; ++j) rest -= row[j] * y[j];
        T squares = 0;
        for (size_t i = 0; i <= k; ++i) squares += triangle[i * (n + 1) + k] * triangle[i * (n + 1) + k];
        const bool counts = std::fabs(row[k]) > std::numeric_limits<T>::epsilon() * std::sqrt(squares);
        y[k] = counts ? rest / row[k] : T(0);
    }
    return y;
}

/// The triangle with sqrt(damping) * metric as further rows.
std::vector<double> damp(const Small<double> &small, const std::vector<double> &metric, double damping)
{
    const size_t n = small.width(), columns = n + 1;
    std::vector<double> triangle = small.triangle, rows(columns * n);
    for (size_t c = 0; c < n; ++c) rows[c * n + c] = std::sqrt(damping) * metric[small.free[c]];
    reduce_columns(rows.data(), n, n, columns, triangle.data());
    return triangle;
}

struct Solution {
    std::vector<double> y;
    double length = 0;
    bool full = false;
};

Solution within_radius(const Small<double> &small, const std::vector<double> &metric, double radius)
{
    const size_t n = small.width();
    const auto length = [&](const std::vector<double> &y) {
        double squares = 0;
        for (size_t c = 0; c < n; ++c) squares += square(metric[small.free[c]] * y[c]);
        return std::sqrt(squares);
    };
    constexpr double slack = 0.1;
    Solution solution{solve(small.triangle, n), 0, true};
    solution.length = length(solution.y);
    const bool finite = std::isfinite(solution.length);
    if (finite && solution.length <= (1 + slack) * radius) return solution;

    // Bounds of the damping: from the gradient in the metric above; below none, for a triangle may be singular.
    double gradient = 0;
    for (size_t c = 0; c < n; ++c) {
        double g = 0;
        for (size_t row = 0; row <= c; ++row) g += small.at(row, c) * small.at(row, n);
        if (metric[small.free[c]] > 0) gradient += square(g / metric[small.free[c]]);
    }
    double upper = std::sqrt(gradient) / radius, lower = 0;
    if (!(upper > 0) || !std::isfinite(upper)) upper = std::numeric_limits<double>::max();
    double damping = finite && solution.length > 0 ? std::min(upper, 1e-3 * upper * solution.length / radius) : 1e-3 * upper;
    solution.full = false;
    for (int iteration = 0; iteration < 30; ++iteration) {
        if (!(damping > lower) || !(damping <= upper)) damping = std::max(1e-3 * upper, std::sqrt(lower * upper));
        const std::vector<double> triangle = damp(small, metric, damping);
        solution.y = solve(triangle, n);
        solution.length = length(solution.y);
        const double excess = solution.length - radius;
        if (std::fabs(excess) <= slack * radius || damping == 0) break;
        // Newton's step for 1/|length|, which is nearly linear in the damping.
        std::vector<double> w(n);
        for (size_t c = 0; c < n; ++c) w[c] = square(metric[small.free[c]]) * solution.y[c] / solution.length;
        double squares = 0;
        for (size_t c = 0; c < n; ++c) {
            double rest = w[c];
            for (size_t row = 0; row < c; ++row) rest -= triangle[row * (n + 1) + c] * w[row];
            w[c] = triangle[c * (n + 1) + c] != 0 ? rest / triangle[c * (n + 1) + c] : 0;
            squares += w[c] * w[c];
        }
        (excess > 0 ? lower : upper) = damping;
        if (!(squares > 0)) break;
        damping += excess / radius / squares;
    }
    return solution;
}

}  // namespace

std::vector<bool> held(const Reduced<double> &reduced, const Room &room)
{
    const size_t n = reduced.width;
    std::vector<bool> result(n, false);
    for (size_t j = 0; j < n; ++j) {
        if (room.down[j] < 0 && room.up[j] > 0) continue;
        double gradient = 0;
        for (size_t row = 0; row <= j; ++row) gradient += reduced.at(row, j) * reduced.at(row, n);
        result[j] = (gradient >= 0 && room.down[j] == 0) || (gradient <= 0 && room.up[j] == 0);
    }
    return result;
}

double projected(const Reduced<double> &reduced, const std::vector<bool> &held)
{
    const Small<double> small = restrict_to_free(reduced, held, std::vector<double>(reduced.width, 0.0));
    double squares = 0;
    for (size_t row = 0; row < small.width(); ++row) squares += square(small.at(row, small.width()));
    return std::sqrt(squares);
}

Step trust_region_step(const Reduced<double> &reduced, const Room &room, std::vector<bool> held,
                       const std::vector<double> &metric, double radius)
{
    const size_t n = reduced.width;
    Step step;
    step.change.assign(n, 0.0);
    double taken = 0;  // of the radius, by parameters that a bound stopped
    step.full = true;
    for (bool again = true; again;) {
        again = false;
        const Small<double> small = restrict_to_free(reduced, held, step.change);
        const double left = std::sqrt(std::max(1e-4 * radius * radius, radius * radius - taken));
        const Solution solution = within_radius(small, metric, left);
        step.full = step.full && solution.full;
        for (size_t c = 0; c < small.width(); ++c) {
            const size_t j = small.free[c];
            step.change[j] = std::clamp(solution.y[c], room.down[j], room.up[j]);
            if (step.change[j] == solution.y[c]) continue;
            held[j] = again = true;
            taken += square(metric[j] * step.change[j]);
        }
    }
    double squares = 0, before = 0, after = 0;
    for (size_t j = 0; j < n; ++j) squares += square(metric[j] * step.change[j]);
    for (size_t row = 0; row < n; ++row) {
        double residual = reduced.at(row, n);
        before += residual * residual;
        for (size_t j = row; j < n; ++j) residual += reduced.at(row, j) * step.change[j];
        after += residual * residual;
    }
    step.length = std::sqrt(squares);
    step.predicted = before - after;
    return step;
}

template <typename T>
std::vector<T> gauss_newton_step(const Reduced<T> &reduced, const std::vector<bool> &held)
{
    std::vector<T> change(reduced.width, T(0));
    const Small<T> small = restrict_to_free(reduced, held, change);
    const std::vector<T> y = solve(small.triangle, small.width());
    for (size_t c = 0; c < small.width(); ++c) change[small.free[c]] = y[c];
    return change;
}

template std::vector<double> gauss_newton_step(const Reduced<double> &, const std::vector<bool> &);
template std::vector<long double> gauss_newton_step(const Reduced<long double> &, const std::vector<bool> &);

}  // namespace curvebank::fit
