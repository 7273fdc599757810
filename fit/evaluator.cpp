#include "fit/evaluator.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <limits>

namespace curvebank::fit {
namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

/// An output as the host understands it: the missing value and infinities are no numbers to fit with.
double output(double value)
{
    return value == MISSING_VALUE || !std::isfinite(value) ? none : value;
}

}  // namespace

Evaluator::Evaluator(const Model &model, int nParams, int parameters)
    : model_(model), nParams_(nParams), parameters_(parameters)
{
    const auto room = static_cast<size_t>(CURVEBANK_ROOM(std::max({nParams, parameters, model.nParams})));
    p_.resize(room);
    x_.resize(CURVEBANK_ROOM_X);
    y_.resize(room);
    dy_.resize(room);
}

void Evaluator::set_parameters(std::span<const double> p)
{
    std::copy(p.begin(), p.end(), p_.begin() + 1);
}

int Evaluator::call(int flags, const Variables &x, size_t point)
{
    for (size_t i = 0; i < x.size(); ++i) x_[i + 1] = x[i][point];
    y_[1] = y_[2] = MISSING_VALUE;
    errno = 0;
    return model_.function(static_cast<int16_t>(flags), nullptr, static_cast<int16_t>(nParams_), nullptr, 0,
                           p_.data(), nullptr, x_.data(), y_.data(), dy_.data());
}

size_t Evaluator::values(std::span<const double> p, const Variables &x, std::span<double> y)
{
    set_parameters(p);
    size_t failures = 0;
    const auto outputs = static_cast<size_t>(model_.nDep);
    for (size_t point = 0; point * outputs < y.size(); ++point) {
        const bool done = call(EVAL_VALUE, x, point) == 0;
        for (size_t k = 0; k < outputs; ++k) {
            double &value = y[point * outputs + k];
            value = done ? output(y_[k + 1]) : none;
            failures += std::isnan(value);
        }
    }
    return failures;
}

void Evaluator::derivatives(std::span<const double> p, const Variables &x, Rows &rows)
{
    set_parameters(p);
    for (size_t point = 0; point < rows.size(); ++point) {
        std::fill(dy_.begin(), dy_.end(), MISSING_VALUE);
        const bool done = model_.nDep == 1 && call(EVAL_DERIVS, x, point) == 0;
        for (size_t i = 0; i < rows.width(); ++i) rows[point][i] = done ? output(dy_[i + 1]) : none;
    }
}

void Evaluator::contributions(std::span<const double> p, const Variables &x, Rows &rows)
{
    set_parameters(p);
    for (size_t point = 0; point < rows.size(); ++point) {
        std::fill(y_.begin(), y_.end(), MISSING_VALUE);
        call(EVAL_VALUE, x, point);
        for (size_t i = 0; i < rows.width(); ++i) rows[point][i] = output(y_[i + 2]);
    }
}

}  // namespace curvebank::fit
