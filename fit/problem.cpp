#include "fit/problem.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <new>

#include "fit/differences.h"
#include "platform/parallel.h"

namespace curvebank::fit {
namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr size_t chunk_blocks = 32;  // what one thread takes at a time; fixed, so that sums do not depend on threads

/// The power of two next below a size, within a range whose reciprocals exist; 1 for what has no size.
double power_of_two(double size)
{
    if (!(size > 0) || !std::isfinite(size)) return 1;
    return std::ldexp(1.0, std::clamp(std::ilogb(size), -1000, 1000));
}

/// Replaces products by their triangle. False where that would lose more than half of the digits.
bool factor_products(std::vector<double> &a, size_t width)
{
    constexpr double least = 1e-8;  // of a column's square that may be left, for the derivatives
    for (size_t k = 0; k < width; ++k) {
        double *const row = &a[k * width];
        const double whole = row[k];
        for (size_t i = 0; i < k; ++i) {
            const double factor = a[i * width + k];
            for (size_t j = k; j < width; ++j) row[j] -= factor * a[i * width + j];
        }
        if (k + 1 == width) {
            row[k] = row[k] > 0 ? std::sqrt(row[k]) : 0;
            return true;
        }
        if (!(row[k] > least * whole)) return false;
        const double root = std::sqrt(row[k]);
        for (size_t j = k; j < width; ++j) row[j] /= root;
    }
    return true;
}

std::string short_text(double number)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", number);
    return text;
}

/// Adds the second part of a sum to the first.
void join(Reduced<double> &first, Reduced<double> &second, Reduction reduction)
{
    const size_t columns = first.width + 1;
    first.sum_of_squares += second.sum_of_squares;
    if (reduction == Reduction::products) {
        for (size_t i = 0; i < first.triangle.size(); ++i) first.triangle[i] += second.triangle[i];
        return;
    }
    std::vector<double> transposed(columns * columns);
    for (size_t i = 0; i < columns; ++i)
        for (size_t j = 0; j < columns; ++j) transposed[j * columns + i] = second.triangle[i * columns + j];
    reduce_columns(transposed.data(), columns, columns, columns, first.triangle.data());
}

}  // namespace

struct Problem::Worker {
    struct Free {
        void operator()(double *memory) const { ::operator delete[](memory, std::align_val_t(64)); }
    };

    std::unique_ptr<Source::Memory> fast, exact;
    Points::Block block;
    std::unique_ptr<double[], Free> columns;
    size_t columns_an_output = 0;
    std::vector<double *> values, jacobian;  ///< where the source writes
    size_t rows = 0;                         ///< of the block, with the padding

    double *column(size_t output, size_t j) const
    {
        return columns.get() + (output * columns_an_output + j) * block_rows;
    }
};

Problem::Problem(const Model::Implementation &model, const Parameters &parameters, const Points &points, int threads)
    : model_(model),
      parameters_(parameters),
      points_(points),
      threads_(threads > 0 ? threads : platform::hardware_threads()),
      scale_(parameters.varied().size(), 1.0),
      factor_(parameters.varied().size() + 1, 1.0)
{
    if (parameters.has_ties()) return;
    for (size_t j = 0; j < width(); ++j)
        if (std::find(model.linear.begin(), model.linear.end(), parameters.varied()[j]) != model.linear.end())
            linear_.push_back(j);
}

Problem::~Problem() = default;

const Source &Problem::source(Values values) const
{
    return values == Values::exact && model_.exact ? *model_.exact : *model_.fast;
}

void Problem::make_workers(size_t count)
{
    const size_t n = width(), outputs = model_.outputs, all = parameters_.all();
    while (workers_.size() < count) {
        auto worker = std::make_unique<Worker>();
        worker->fast = model_.fast->memory();
        if (model_.exact) worker->exact = model_.exact->memory();
        worker->columns_an_output = n + 1 + parameters_.tied().size();
        worker->columns.reset(
            new (std::align_val_t(64)) double[outputs * worker->columns_an_output * block_rows]);
        worker->jacobian.assign(outputs * all, nullptr);
        for (size_t k = 0; k < outputs; ++k) {
            worker->values.push_back(worker->column(k, n));
            for (size_t j = 0; j < n; ++j) worker->jacobian[k * all + parameters_.varied()[j]] = worker->column(k, j);
            for (size_t t = 0; t < parameters_.tied().size(); ++t)
                worker->jacobian[k * all + parameters_.tied()[t]] = worker->column(k, n + 1 + t);
        }
        workers_.push_back(std::move(worker));
    }
}

void Problem::load(Worker &worker, size_t number, Values values, bool derivatives) const
{
    const size_t n = width();
    Points::Block &block = worker.block;
    points_.load(number, block);
    const Source &from = source(values);
    Source::Memory &memory = &from == model_.fast.get() ? *worker.fast : *worker.exact;
    double *const *const jacobian = derivatives ? worker.jacobian.data() : nullptr;
    from.run(memory, block.x.data(), block.count, worker.values.data(), jacobian);
    if (derivatives && repair_) fill_missing(from, memory, p_, block, worker.values, worker.jacobian);

    worker.rows = (block.count + row_padding - 1) / row_padding * row_padding;
    for (size_t k = 0; k < model_.outputs; ++k) {
        double *const residual = worker.column(k, n);
        if (const double *const y = block.y[k])
            for (size_t row = 0; row < block.count; ++row) residual[row] -= y[row];
        for (size_t t = 0; derivatives && t < slopes_.size(); ++t) {
            const double *const tied = worker.column(k, n + 1 + t);
            for (size_t j = 0; j < n; ++j) {
                const double slope = slopes_[t].by_varied[j];
                if (slope == 0) continue;
                double *const column = worker.column(k, j);
                for (size_t row = 0; row < block.count; ++row) column[row] += slope * tied[row];
            }
        }
        for (size_t j = derivatives ? 0 : n; j <= n; ++j)
            std::fill(worker.column(k, j) + block.count, worker.column(k, j) + worker.rows, 0.0);
        if (derivatives)
            kernels().scale(worker.column(k, 0), worker.rows, n + 1, factor_.data(), block.weight);
        else
            kernels().scale(residual, worker.rows, 1, &factor_[n], block.weight);
    }
}

void Problem::begin_pass(const std::vector<double> &p, Values values, bool derivatives)
{
    ++passes_;
    p_ = p;
    if (derivatives && parameters_.has_ties()) slopes_ = parameters_.slopes(p);
    const Source &from = source(values);
    for (const auto &worker : workers_)
        from.set_parameters(&from == model_.fast.get() ? *worker->fast : *worker->exact, p.data());
}

Reduced<double> Problem::reduce(const std::vector<double> &p, Values values, Reduction reduction, bool derivatives)
{
    const size_t n = derivatives ? width() : 0, columns = n + 1, blocks = points_.blocks();
    const size_t chunks = (blocks + chunk_blocks - 1) / chunk_blocks;
    make_workers(std::min<size_t>(static_cast<size_t>(threads_), chunks));
    begin_pass(p, values, derivatives);

    std::vector<Reduced<double>> parts(chunks);
    platform::parallel_for(chunks, static_cast<int>(workers_.size()), [&](int number, size_t chunk) {
        Worker &worker = *workers_[static_cast<size_t>(number)];
        Reduced<double> &part = parts[chunk];
        part.width = n;
        part.triangle.assign(columns * columns, 0.0);
        const size_t end = std::min(blocks, (chunk + 1) * chunk_blocks);
        for (size_t block = chunk * chunk_blocks; block < end; ++block) {
            load(worker, block, values, derivatives);
            for (size_t k = 0; k < model_.outputs; ++k) {
                double *const first = worker.column(k, width() - n);
                kernels().add_products(worker.column(k, width()), worker.rows, 1, &part.sum_of_squares);
                if (!derivatives) continue;
                if (reduction == Reduction::products)
                    kernels().add_products(first, worker.rows, columns, part.triangle.data());
                else
                    kernels().reduce(first, worker.rows, columns, part.triangle.data());
            }
        }
    });
    for (size_t step = 1; step < chunks; step *= 2)
        for (size_t i = 0; i + step < chunks; i += 2 * step) join(parts[i], parts[i + step], reduction);
    return std::move(parts[0]);
}

Reduced<double> Problem::pass(const std::vector<double> &p, Values values, Reduction reduction)
{
    Reduced<double> reduced = reduce(p, values, reduction, true);
    if (reduced.has_values() && !reduced.has_derivatives() && !repair_) {
        repair_ = true;
        reduced = reduce(p, values, reduction, true);
    }
    if (reduction == Reduction::products && reduced.has_values() &&
        !factor_products(reduced.triangle, width() + 1))
        return reduce(p, values, Reduction::orthogonal, true);
    return reduced;
}

double Problem::sum_of_squares(const std::vector<double> &p, Values values)
{
    return reduce(p, values, Reduction::products, false).sum_of_squares;
}

Reduced<long double> Problem::extended_pass(const std::vector<double> &p)
{
    ++passes_;
    const size_t n = width(), columns = n + 1, all = parameters_.all(), outputs = model_.outputs;
    Reduced<long double> reduced{n, 0, std::vector<long double>(columns * columns)};
    const auto memory = model_.extended->memory();
    model_.extended->set_parameters(*memory, std::vector<long double>(p.begin(), p.end()).data());
    const auto slopes = parameters_.slopes(p);
    std::vector<long double> value(outputs), jacobian(outputs * all), rows(outputs * columns * block_rows);
    std::vector<double> x(points_.variables());
    Points::Block block;
    for (size_t number = 0; number < points_.blocks(); ++number) {
        points_.load(number, block);
        for (size_t row = 0; row < block.count; ++row) {
            for (size_t i = 0; i < x.size(); ++i) x[i] = block.x[i][row];
            model_.extended->run(*memory, x.data(), value.data(), jacobian.data());
            const long double weight = block.weight ? block.weight[row] : 1;
            for (size_t k = 0; k < outputs; ++k) {
                const auto put = [&](size_t column, long double number_) {
                    rows[(k * columns + column) * block_rows + row] = weight * factor_[column] * number_;
                };
                for (size_t j = 0; j < n; ++j) {
                    long double slope = jacobian[k * all + parameters_.varied()[j]];
                    for (const Parameters::Slope &tied : slopes)
                        slope += tied.by_varied[j] * jacobian[k * all + tied.parameter];
                    put(j, slope);
                }
                const long double residual = value[k] - (block.y[k] ? block.y[k][row] : 0);
                put(n, residual);
                const long double scaled = weight * factor_[n] * residual;
                reduced.sum_of_squares += scaled * scaled;
            }
        }
        for (size_t k = 0; k < outputs; ++k)
            reduce_columns(&rows[k * columns * block_rows], block_rows, block.count, columns,
                           reduced.triangle.data());
    }
    return reduced;
}

bool Problem::prepare(const std::vector<double> &p)
{
    constexpr size_t most_blocks = 16;
    make_workers(1);
    begin_pass(p, Values::fast, true);
    Worker &worker = *workers_[0];
    const size_t n = width(), blocks = points_.blocks(), step = std::max<size_t>(1, blocks / most_blocks);
    residual_scale_ = 1;
    std::fill(factor_.begin(), factor_.end(), 1.0);
    double largest_value = 0;
    std::vector<double> largest(n, 0.0);
    for (size_t block = 0; block < blocks; block += step) {
        load(worker, block, Values::fast, true);
        for (size_t k = 0; k < model_.outputs; ++k)
            for (size_t j = 0; j <= n; ++j) {
                const double size = kernels().largest(worker.column(k, j), worker.rows);
                if (j == n && std::isnan(size)) return false;
                double &most = j < n ? largest[j] : largest_value;
                if (size > most) most = size;
            }
    }
    // Residuals may be far greater than the data at a bad start, and must not overflow when squared.
    constexpr double too_great = 1e100;
    const double data = points_.largest_y();
    in_unit_of_data_ = data == 0 || largest_value < too_great * data;
    residual_scale_ = power_of_two(data > 0 && in_unit_of_data_ ? data : largest_value);
    for (size_t j = 0; j < n; ++j) {
        const double size = std::fabs(p[parameters_.varied()[j]]);
        scale_[j] = largest[j] > 0 && std::isfinite(largest[j]) ? residual_scale_ / power_of_two(largest[j])
                                                                 : power_of_two(size);
        factor_[j] = scale_[j] / residual_scale_;
    }
    factor_[n] = 1 / residual_scale_;
    size_of_data_ = points_.norm_of_y(residual_scale_);
    squares_about_mean_ = -1;
    return true;
}

bool Problem::accepts(const std::vector<double> &p)
{
    if (!model_.exact) return true;
    constexpr size_t some = 4;
    const std::vector<double> values = values_at_some(p, some);
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

std::vector<double> Problem::values_at_some(const std::vector<double> &p, size_t some)
{
    const Source &from = source(Values::exact);
    make_workers(1);
    Source::Memory &memory = model_.exact ? *workers_[0]->exact : *workers_[0]->fast;
    from.set_parameters(memory, p.data());
    std::vector<double> all;
    points_.visit_some(some, [&](const double *const *x) {
        double value[max_outputs];
        double *values[max_outputs];
        for (size_t k = 0; k < model_.outputs; ++k) values[k] = &value[k];
        from.run(memory, x, 1, values, nullptr);
        all.insert(all.end(), value, value + model_.outputs);
    });
    return all;
}

std::string Problem::where_no_value(const std::vector<double> &p)
{
    make_workers(1);
    begin_pass(p, Values::exact, false);
    Worker &worker = *workers_[0];
    for (size_t number = 0; number < points_.blocks(); ++number) {
        load(worker, number, Values::exact, false);
        for (size_t row = 0; row < worker.block.count; ++row)
            for (size_t k = 0; k < model_.outputs; ++k)
                if (!std::isfinite(worker.column(k, width())[row])) {
                    std::string place;
                    for (size_t i = 0; i < model_.variables.size(); ++i)
                        place += (i ? ", " : "") + model_.variables[i] + " = " + short_text(worker.block.x[i][row]);
                    return "the model has no value at " + place + " with these parameters";
                }
    }
    return "";
}

double Problem::squares_about_mean() const
{
    if (squares_about_mean_ < 0) squares_about_mean_ = points_.squares_about_mean(residual_scale_);
    return squares_about_mean_;
}

double Problem::rounding(const std::vector<double> &p, const Reduced<double> &reduced) const
{
    double size = size_of_data_;
    for (size_t j = 0; j < width(); ++j)
        size = std::max(size, reduced.column_norm(j) * std::fabs(p[parameters_.varied()[j]] / scale_[j]));
    return epsilon * size;
}

}  // namespace curvebank::fit
