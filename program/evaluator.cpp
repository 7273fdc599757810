#include "program/evaluator.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <limits>

namespace curvebank::program {
namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

/// An output as the host understands it: the missing value and infinities are no numbers to go on with.
double output(double value)
{
    return value == MISSING_VALUE || !std::isfinite(value) ? none : value;
}

fit::Model engine_model(const KnownModel &known, const Shape &shape)
{
    const int terms = known.about->terms(static_cast<int>(shape.parameters.size()));
    return fit::Model::catalogue(known.about->name, std::max(1, terms));
}

Columns empty_columns(size_t columns, const Columns &x)
{
    return Columns(columns, std::vector<double>(x[0].size(), none));
}

}  // namespace

Evaluator::Evaluator(const KnownModel &known, const Shape &shape)
    : known_(known), model_(engine_model(known, shape)), nParams_(shape.nParams), parameters_(shape.parameters.size())
{
    const auto room = static_cast<size_t>(
        CURVEBANK_ROOM(std::max({nParams_, static_cast<int>(parameters_), known.nParams})));
    p_.resize(room);
    x_.resize(CURVEBANK_ROOM_X);
    y_.resize(room);
    dy_.resize(room);
}

bool Evaluator::call(int flags, const Columns &x, size_t point)
{
    for (size_t i = 0; i < x.size(); ++i) x_[i + 1] = x[i][point];
    std::fill(y_.begin(), y_.end(), MISSING_VALUE);
    std::fill(dy_.begin(), dy_.end(), MISSING_VALUE);
    errno = 0;
    return known_.function(static_cast<int16_t>(flags), nullptr, static_cast<int16_t>(nParams_), nullptr, 0,
                           p_.data(), nullptr, x_.data(), y_.data(), dy_.data()) == 0;
}

Columns Evaluator::values(std::span<const double> p, const Columns &x) const
{
    Columns result = empty_columns(model_.outputs(), x);
    std::vector<const double *> from;
    std::vector<double *> to;
    for (const auto &column : x) from.push_back(column.data());
    for (auto &column : result) to.push_back(column.data());
    model_.values(p, from, x[0].size(), to);
    return result;
}

Columns Evaluator::derivatives(std::span<const double> p, const Columns &x)
{
    std::copy(p.begin(), p.end(), p_.begin() + 1);
    Columns result = empty_columns(parameters_, x);
    for (size_t point = 0; model_.outputs() == 1 && point < x[0].size(); ++point)
        if (call(EVAL_DERIVS, x, point))
            for (size_t i = 0; i < result.size(); ++i) result[i][point] = output(dy_[i + 1]);
    return result;
}

Columns Evaluator::shares(std::span<const double> p, const Columns &x)
{
    if (!about().contributions) return {};
    std::copy(p.begin(), p.end(), p_.begin() + 1);
    Columns result = empty_columns(static_cast<size_t>(about().terms(static_cast<int>(parameters_))), x);
    for (size_t point = 0; point < x[0].size(); ++point) {
        call(EVAL_VALUE, x, point);
        for (size_t k = 0; k < result.size(); ++k) result[k][point] = output(y_[k + 2]);
    }
    return result;
}

}  // namespace curvebank::program
