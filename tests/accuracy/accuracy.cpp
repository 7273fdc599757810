// Measures how many digits every model has, against 50-digit arithmetic.
//
//     curvebank_accuracy [MODEL]
//
// Each model is taken at 1,000 points of its domain, 125 sets of parameters with eight places each
// (support/domain.h says how they are found; points that the model refuses are replaced by others). Exact are the
// formula of the reference and its partials with 50 digits. The condition of an entry is its size and the sum over
// all inputs of |input * partial of the entry|: what the rounding of the inputs and of the result makes
// unavoidable, in units of the double precision. Prints a line of comma-separated values for every entry; for a
// single model also the worst point of each.

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <thread>

#include "formula/evaluate.h"
#include "tests/support/domain.h"
#include "tests/support/exact.h"

using namespace curvebank;
using reference::ModelReference;
using test::Digits50;

namespace {

constexpr size_t sets = 125, places = 8;

/// The distance of neighbouring doubles at a number.
double spacing(double at)
{
    int exponent = 0;
    std::frexp(at, &exponent);
    return std::ldexp(1.0, std::max(exponent, -1021) - 53);
}

/// Errors of an entry over all points: in units in the last place and of the condition.
struct Errors {
    std::vector<double> places, conditions;
    std::string worst;  ///< the point of the largest error in units of the condition

    void add(double value, const test::ExactModel &model, size_t output, const std::string &point)
    {
        const Digits50 &exact = model.results[output];
        const double apart = std::isfinite(value) ? static_cast<double>(abs(value - exact)) : INFINITY;
        places.push_back(apart / spacing(static_cast<double>(exact)));
        conditions.push_back(model.error(value, output));
        if (conditions.size() > 1 && conditions.back() <= largest) return;
        largest = conditions.back();
        std::ostringstream text;
        text.precision(17);
        text << point << ": " << value << ", exact " << static_cast<double>(exact) << ", condition "
             << static_cast<double>(model.conditions[output]);
        worst = text.str();
    }

    static double median(std::vector<double> values)
    {
        if (values.empty()) return 0;
        const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }

    std::string summary() const
    {
        const auto most = [](const std::vector<double> &values) {
            return values.empty() ? 0.0 : *std::max_element(values.begin(), values.end());
        };
        char text[160];
        std::snprintf(text, sizeof text, "%.3g,%.3g,%.3g,%.3g", median(places), most(places), median(conditions),
                      most(conditions));
        return text;
    }

private:
    double largest = -1;
};

/// One output: the value, a second value or a derivative entry.
struct Entry {
    std::string name;
    bool second = false;
    int derivative = 0;  ///< its number in dy
    Errors library{}, formula{};
};

class Measurement {
public:
    explicit Measurement(const ModelReference &about)
        : about_(about),
          domain_(about),
          evaluator_(test::evaluator(about)),
          exact_(about),
          inputs_(test::inputs(about)),
          rounded_(test::outputs(about), inputs_)
    {
        entries_.push_back({"value"});
        if (!about.second.empty()) entries_.push_back({"second value", true});
        for (size_t i = entries_.size(); i < exact_.results.size(); ++i) {
            const int number = static_cast<int>(i);
            entries_.push_back({"d/d" + domain_.names()[i - 1].name, false, number});
        }
    }

    void run()
    {
        for (size_t attempt = 0; done_ < sets * places && attempt < 40 * sets; ++attempt) {
            const std::vector<double> p = domain_.parameters(3);
            program::Columns x(about_.sample_ranges.size());
            for (size_t k = 0; k < places; ++k) {
                const std::vector<double> at = domain_.place(p);
                for (size_t i = 0; i < x.size(); ++i) x[i].push_back(at[i]);
            }
            measure(p, x);
        }
    }

    /// The lines of all entries; with the worst points where asked for.
    std::string lines(bool points) const
    {
        std::string text;
        for (const Entry &entry : entries_) {
            if (excluded(entry)) continue;
            char counts[64];
            std::snprintf(counts, sizeof counts, "%zu,%.3g", entry.library.conditions.size(),
                          entry.derivative == 0 ? disagreement_ : 0.0);
            text += std::string(about_.name) + ',' + entry.name + ',' +
                    (about_.tolerance > 1e-12 ? "yes," : "no,") + counts + ',' + entry.library.summary() + ',' +
                    entry.formula.summary() + '\n';
            if (points)
                text += "    library " + entry.library.worst + "\n    formula " + entry.formula.worst + '\n';
        }
        if (points) text += "    disagreement " + disagreeing_ + '\n';
        return text;
    }

private:
    bool excluded(const Entry &entry) const
    {
        return std::any_of(about_.inexact.begin(), about_.inexact.end(),
                           [&](const auto &inexact) { return inexact.entry == entry.derivative; });
    }

    void measure(const std::vector<double> &p, const program::Columns &x)
    {
        const size_t values = about_.second.empty() ? 1 : 2;
        const program::Columns y = evaluator_.values(p, x), dy = evaluator_.derivatives(p, x);
        double size = 0;
        for (const auto &column : y)
            for (const double value : column)
                if (std::isfinite(value)) size = std::max(size, std::fabs(value));
        for (size_t k = 0; k < places && done_ < sets * places; ++k) {
            if (!std::isfinite(y[0][k])) continue;
            std::vector<double> point = p;
            for (const auto &column : x) point.push_back(column[k]);
            exact_.compute(point);
            if (!exact_.counts(0)) continue;
            std::vector<double> formula(exact_.results.size());
            rounded_(point, formula);
            const std::string where = text(point);
            for (size_t i = 0; i < entries_.size(); ++i) {
                const double own = i < values ? y[i][k] : dy[i - 1][k];
                if (!exact_.counts(i)) continue;
                if (i < values) compare(own, formula[i], size, i, where);
                if (i >= values && !std::isfinite(own)) continue;
                entries_[i].library.add(own, exact_, i, where);
                entries_[i].formula.add(formula[i], exact_, i, where);
            }
            ++done_;
        }
    }

    /// How far library and formula are apart, in units of the curve's size, beyond what the rounding of the inputs
    /// explains.
    void compare(double own, double formula, double size, size_t entry, const std::string &where)
    {
        const double apart = std::fabs(own - formula);
        if (apart <= 1000 * test::unit_roundoff * static_cast<double>(exact_.conditions[entry])) return;
        const double relative = std::isfinite(apart) ? apart / size : INFINITY;
        if (relative <= disagreement_) return;
        disagreement_ = relative;
        std::ostringstream text;
        text.precision(17);
        text << where << ": " << own << ", formula " << formula << ", size " << size;
        disagreeing_ = text.str();
    }

    std::string text(const std::vector<double> &point) const
    {
        std::ostringstream text;
        text.precision(17);
        for (size_t i = 0; i < point.size(); ++i) text << (i ? " " : "") << inputs_[i] << '=' << point[i];
        return text.str();
    }

    const ModelReference &about_;
    test::Domain domain_;
    program::Evaluator evaluator_;
    test::ExactModel exact_;
    std::vector<std::string> inputs_;
    formula::Evaluator<double> rounded_;
    std::vector<Entry> entries_;
    size_t done_ = 0;
    double disagreement_ = 0;
    std::string disagreeing_;
};

}  // namespace

int main(int argc, char **argv)
{
    std::vector<const ModelReference *> models;
    for (const ModelReference &about : reference::models)
        if (!about.placeholder && (argc < 2 || about.name == argv[1])) models.push_back(&about);
    std::vector<std::string> lines(models.size());
    std::atomic<size_t> next = 0;
    const auto work = [&] {
        for (size_t i; (i = next++) < models.size();) {
            Measurement measurement(*models[i]);
            measurement.run();
            lines[i] = measurement.lines(argc > 1);
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i) threads.emplace_back(work);
    for (std::thread &thread : threads) thread.join();
    std::cout << "model,entry,approximation,points,disagreement,ulp_median,ulp_largest,condition_median,"
                 "condition_largest,formula_ulp_median,formula_ulp_largest,formula_condition_median,"
                 "formula_condition_largest\n";
    for (const std::string &line : lines) std::cout << line;
}
