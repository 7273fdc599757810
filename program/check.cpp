#include "program/check.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "platform/error.h"
#include "program/worksheet.h"

namespace curvebank::program {
namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();
constexpr int output_columns = 20;

/// The name under which the diagnostic command looks for output column i, from 1.
std::string output_name(int i)
{
    return fmt::format("data1_{}", static_cast<char>('c' + i - 1));
}

/// Reports a parameter list that the command read differently from what the user meant.
void require_parameters(const Worksheet &sheet, bool handled, std::string_view model, size_t wanted)
{
    if (!sheet.failure().empty()) throw Error(sheet.failure());
    if (!handled) throw Error("the library's diagnostic command knows no model " + std::string(model));
    if (sheet.numbers().size() != wanted)
        throw Error(fmt::format("--params: {} takes {} numbers separated by commas, {} could be read", model,
                                wanted, sheet.numbers().size()));
}

DerivativeCheck::Parameter compare(const std::string &name, double value, const std::vector<double> &x,
                                   const std::vector<double> &own, const std::vector<double> &differences)
{
    DerivativeCheck::Parameter result{name, value, none, none};
    for (size_t row = 0; row < x.size(); ++row) {
        const double disagreement = std::fabs(own[row] - differences[row]);
        if (std::isnan(disagreement) || disagreement <= result.disagreement) continue;
        result.disagreement = disagreement;
        result.at = x[row];
    }
    return result;
}

double largest(const std::vector<double> &values)
{
    double result = 0;
    for (const double value : values) result = std::max(result, std::fabs(value));
    return result;
}

/// Central differences with respect to each parameter, at samples, where parameters are of the order of the changes that
/// show; one-sided where the model has no value on a side.
Columns differences(const Evaluator &model, const std::vector<double> &p, const Columns &x)
{
    const std::vector<double> here = model.values(p, x)[0];
    Columns result(p.size(), std::vector<double>(here.size()));
    std::vector<double> moved = p;
    for (size_t i = 0; i < p.size(); ++i) {
        const double step = std::cbrt(std::numeric_limits<double>::epsilon()) * std::max(1e-3, std::fabs(p[i]));
        const double p_low = p[i] - step, p_high = p[i] + step;
        moved[i] = p_low;
        const std::vector<double> low = model.values(moved, x)[0];
        moved[i] = p_high;
        const std::vector<double> high = model.values(moved, x)[0];
        moved[i] = p[i];
        for (size_t r = 0; r < here.size(); ++r) {
            const bool has_low = !std::isnan(low[r]), has_high = !std::isnan(high[r]);
            result[i][r] = ((has_high ? high[r] : here[r]) - (has_low ? low[r] : here[r])) /
                           ((has_high ? p_high : p[i]) - (has_low ? p_low : p[i]));
        }
    }
    return result;
}

}  // namespace

DerivativeCheck check_derivatives(const KnownModel &known, const std::string &parameters,
                                  const std::vector<double> &x)
{
    // The command passes the count of the catalogue; a model without repeated terms may read more than that.
    const std::vector<reference::NamedParameter> names =
        shape(known, known.about->repeated.empty() ? 0 : known.nParams).parameters;

    Worksheet sheet;
    const std::vector<double> empty(x.size(), none);
    sheet.add("x", x);
    sheet.add("y", empty);
    for (int i = 1; i <= output_columns; ++i) sheet.add(output_name(i), empty);
    sheet.run("", "x", "x", FUNC_TEST_BIND);
    sheet.run("", "y", "y", FUNC_TEST_BIND);
    sheet.run("deriv", "", "", FUNC_TEST_MODEL);
    const bool handled = sheet.run(std::string(known.about->name), parameters, "", FUNC_TEST_MODEL);
    require_parameters(sheet, handled, known.about->name, names.size());

    const int n = known.nParams;
    const auto output = [&](int i) { return i <= output_columns ? sheet.column(output_name(i)) : empty; };
    DerivativeCheck check{{{"x", "value"}, {x, output(n + 1)}}, {}};
    for (int k = 1; k <= n; ++k) {
        const std::string &name = names[static_cast<size_t>(k) - 1].name;
        const std::vector<double> own = output(k), differences = output(n + 1 + k);
        check.table.names.insert(check.table.names.end(), {"dy/d" + name, "difference"});
        check.table.columns.insert(check.table.columns.end(), {own, differences});
        check.parameters.push_back(compare(name, sheet.numbers()[static_cast<size_t>(k) - 1], x, own, differences));
    }
    return check;
}

std::vector<InexactEntry> inexact_entries(const KnownModel &known, const std::vector<double> &p, const Columns &x)
{
    const reference::ModelReference &about = *known.about;
    const Shape called = shape(known, static_cast<int>(p.size()));
    Evaluator evaluator(known, called);
    const std::vector<double> y = evaluator.values(p, x)[0];
    const Columns own = evaluator.derivatives(p, x), exact = differences(evaluator, p, x);

    const double noise = std::max(1e-7, 100 * about.tolerance);  // what the differences cannot resolve
    std::vector<InexactEntry> found;
    for (size_t i = 0; i < p.size(); ++i) {
        const double size = largest(exact[i]);
        double disagreement = 0;
        bool written = true;
        for (size_t r = 0; r < y.size(); ++r) {
            written = written && !std::isnan(own[i][r]);
            disagreement = std::max(disagreement, std::fabs(own[i][r] - exact[i][r]));
        }
        const double scale = std::max(1e-3, std::fabs(p[i]));
        if (written && disagreement <= noise * (size + largest(y) / scale)) continue;
        const int entry = static_cast<int>(i) + 1;
        const reference::InexactReference *listed = about.inexact_at(entry);
        found.push_back({entry, called.parameters[i].name, std::string(listed ? listed->holds : ""),
                         disagreement / size, written, size > 0});
    }
    return found;
}

}  // namespace curvebank::program
