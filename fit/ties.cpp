#include "fit/ties.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "formula/formula.h"

namespace curvebank::fit {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

std::string listed(const std::vector<std::string> &names)
{
    std::string text;
    for (const std::string &name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

formula::Formula read(const std::string &name, const std::string &text, const std::vector<std::string> &parameters)
{
    try {
        formula::Formula formula = formula::Formula::parse(text);
        for (const std::string &used : formula.names())
            if (std::find(parameters.begin(), parameters.end(), used) == parameters.end())
                throw Error(name + " = " + text + ": no parameter is called " + used + "; the parameters are " +
                            listed(parameters));
        return formula;
    } catch (const formula::FormulaError &error) {
        throw Error(name + ": " + error.what());
    }
}

}  // namespace

Expressions::Expressions(const std::vector<std::pair<std::string, std::string>> &named,
                         const std::vector<std::string> &parameters)
    : parameters_(parameters.size())
{
    for (const auto &[name, text] : named)
        programs_.emplace_back(read(name, text, parameters).with_derivatives(parameters), std::vector<std::string>(),
                               parameters);
}

void Expressions::evaluate(const std::vector<double> &parameters, std::vector<double> &values,
                           std::vector<double> &derivatives) const
{
    values.resize(size());
    derivatives.resize(size() * parameters_);
    std::vector<double *> outputs(parameters_ + 1);
    for (size_t e = 0; e < size(); ++e) {
        outputs[0] = &values[e];
        for (size_t j = 0; j < parameters_; ++j) outputs[j + 1] = &derivatives[e * parameters_ + j];
        auto workspace = programs_[e].workspace();
        programs_[e].set_parameters(workspace, parameters);
        programs_[e].run(workspace, nullptr, outputs.data(), 1);
    }
}

Parameters::Parameters(const Model &model, const Options &options)
{
    for (const Parameter &parameter : model.parameters()) {
        names_.push_back(parameter.name);
        start_.push_back(parameter.start);
        fixed_.push_back(parameter.fixed);
    }
    lower_.assign(all(), -infinity);
    upper_.assign(all(), infinity);
    tied_.assign(all(), false);

    const auto assign = [this](const auto &given, std::vector<double> &values, const char *what) {
        std::vector<bool> seen(all(), false);
        for (const auto &[name, value] : given) {
            const size_t i = find(name, what);
            if (seen[i]) throw Error(std::string(what) + ": " + name + " is given twice");
            if (std::isnan(value)) throw Error(std::string(what) + ": " + name + " is not a number");
            seen[i] = true;
            values[i] = value;
        }
        return seen;
    };
    const std::vector<bool> started = assign(options.start, start_, "start");
    const std::vector<bool> has_lower = assign(options.lower, lower_, "lower bound");
    const std::vector<bool> has_upper = assign(options.upper, upper_, "upper bound");
    for (const std::string &name : options.fixed) fixed_[find(name, "fixed")] = true;
    for (const std::string &name : options.free) fixed_[find(name, "free")] = false;
    read_ties(options);

    for (size_t i = 0; i < all(); ++i) {
        if (tied_[i]) {
            if (fixed_[i]) throw Error("parameter " + names_[i] + " cannot be both tied and fixed");
            if (has_lower[i] || has_upper[i])
                throw Error("parameter " + names_[i] + " is tied: bound the parameters that it depends on instead");
            continue;
        }
        if (!std::isfinite(start_[i])) throw Error("start: " + names_[i] + " is not finite");
        if (lower_[i] > upper_[i])
            throw Error("the lower bound of " + names_[i] + " is above its upper bound");
        if (fixed_[i]) continue;
        // A start that nobody chose moves inside the bounds that somebody did.
        if (!started[i]) start_[i] = std::clamp(start_[i], lower_[i], upper_[i]);
        if (start_[i] < lower_[i] || start_[i] > upper_[i])
            throw Error("the start of " + names_[i] + ", " + std::to_string(start_[i]) + ", is outside its bounds");
        if (lower_[i] == upper_[i])
            fixed_[i] = true;
        else
            varied_.push_back(i);
    }
    follow_ties(start_);
}

void Parameters::read_ties(const Options &options)
{
    std::vector<const std::string *> texts(all(), nullptr);
    for (const auto &[name, text] : options.ties) {
        const size_t i = find(name, "tie");
        if (tied_[i]) throw Error("tie: " + name + " is given twice");
        tied_[i] = true;
        texts[i] = &text;
    }
    enum class Mark { unseen, open, done };
    std::vector<Mark> marks(all(), Mark::unseen);
    const std::function<void(size_t)> visit = [&](size_t i) {
        if (!tied_[i] || marks[i] == Mark::done) return;
        if (marks[i] == Mark::open) throw Error("tie: " + names_[i] + " depends on itself");
        marks[i] = Mark::open;
        for (const std::string &used : read(names_[i], *texts[i], names_).names()) visit(find(used, "tie"));
        marks[i] = Mark::done;
        order_.push_back(i);
    };
    for (size_t i = 0; i < all(); ++i) visit(i);
    if (order_.empty()) return;
    std::vector<std::pair<std::string, std::string>> named;
    for (const size_t i : order_) named.emplace_back(names_[i], *texts[i]);
    expressions_.emplace(named, names_);
}

bool Parameters::bounded(size_t i) const
{
    return lower_[i] > -infinity || upper_[i] < infinity;
}

void Parameters::follow_ties(std::vector<double> &p) const
{
    std::vector<double> values, derivatives;
    // One pass a tie settles chains of them: each stands after those it depends on.
    for (size_t t = 0; t < order_.size(); ++t) {
        expressions_->evaluate(p, values, derivatives);
        p[order_[t]] = values[t];
    }
}

std::vector<Parameters::Slope> Parameters::slopes(const std::vector<double> &p) const
{
    std::vector<Slope> slopes;
    if (order_.empty()) return slopes;
    std::vector<double> values, derivatives;
    expressions_->evaluate(p, values, derivatives);
    std::vector<std::vector<double>> by_varied(all(), std::vector<double>(varied_.size(), 0.0));
    for (size_t j = 0; j < varied_.size(); ++j) by_varied[varied_[j]][j] = 1;
    for (size_t t = 0; t < order_.size(); ++t) {
        std::vector<double> &slope = by_varied[order_[t]];
        for (size_t i = 0; i < all(); ++i) {
            const double factor = derivatives[t * all() + i];
            if (factor == 0) continue;
            for (size_t j = 0; j < slope.size(); ++j) slope[j] += factor * by_varied[i][j];
        }
        slopes.push_back({order_[t], slope});
    }
    return slopes;
}

size_t Parameters::find(const std::string &name, const std::string &asked_by) const
{
    const auto found = std::find(names_.begin(), names_.end(), name);
    if (found == names_.end())
        throw Error(asked_by + ": no parameter is called " + name + "; the parameters are " + listed(names_));
    return static_cast<size_t>(found - names_.begin());
}

}  // namespace curvebank::fit
