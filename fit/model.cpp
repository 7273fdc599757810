#include "curvebank/fit/model.h"

#include <algorithm>
#include <cmath>

#include "curvebank/curvebank.h"
#include "curvebank/exports.h"
#include "fit/differences.h"
#include "fit/implementation.h"
#include "fit/kernels.h"
#include "fit/sources.h"
#include "reference/reference.h"

namespace curvebank::fit {
namespace {

using reference::ModelReference;

/// The function behind an entry: most are in the catalogue, some have an export only.
ModelFunc function_of(const ModelReference &about, int &passed)
{
    uint16_t count = 0;
    if (const ModelFunc function = Get_Func(std::string(about.name).c_str(), nullptr, nullptr, &count, nullptr)) {
        passed = count;
        return function;
    }
    passed = static_cast<int>(about.parameters.size());
    struct Export {
        std::string_view name;
        ModelFunc function;
    };
#define LIST_ENTRY(name, ordinal, catalogue_name) {#name, name},
    static const Export exports[] = {CURVEBANK_EXPORTED_MODELS(LIST_ENTRY)};
#undef LIST_ENTRY
    for (const Export &entry : exports)
        if (entry.name == about.name) return entry.function;
    throw Error("the library has no model " + std::string(about.name));
}

formula::Formula renamed(const formula::Formula &formula,
                         const std::vector<std::pair<std::string, std::string>> &names)
{
    std::vector<std::pair<std::string, formula::Formula>> replacements;
    for (const auto &[from, to] : names) replacements.emplace_back(from, formula::Formula::parse(to));
    return formula.substitute(replacements);
}

bool is_name(const std::string &text)
{
    try {
        return formula::Formula::parse(text).names() == std::vector<std::string>{text};
    } catch (const formula::FormulaError &) {
        return false;
    }
}

/// The formulas of an entry with that many terms, in the names that its parameters then have.
std::vector<formula::Formula> formulas_of(const ModelReference &about, const std::vector<std::string> &names,
                                          int terms)
{
    std::string sum(about.formula);
    const size_t once = about.parameters.size(), size = about.repeated.size();
    for (int k = 0; k < terms; ++k) {
        std::vector<std::pair<std::string, std::string>> to = {{"k", std::to_string(k + 1)}};
        for (size_t i = 0; i < size; ++i)
            to.emplace_back(std::string(about.repeated[i].name), names[once + static_cast<size_t>(k) * size + i]);
        sum += (sum.empty() ? "(" : " + (") + renamed(formula::Formula::parse(about.term), to).text() + ")";
    }
    std::vector<formula::Formula> formulas = {formula::Formula::parse(sum)};
    if (!about.second.empty()) formulas.push_back(formula::Formula::parse(about.second));
    return formulas;
}

std::vector<std::string> names_of(const std::vector<Parameter> &parameters)
{
    std::vector<std::string> names;
    for (const Parameter &parameter : parameters) names.push_back(parameter.name);
    return names;
}

/// What the formulas tell of the model: in which parameters it is linear, and which are added constants.
void find_structure(Model::Implementation &model)
{
    if (model.outputs > 1) return;
    const std::vector<std::string> names = names_of(model.parameters);
    const std::vector<std::string> linear = model.formulas[0].linear_in(names);
    const auto slopes = model.formulas[0].with_derivatives(names);
    for (size_t i = 0; i < names.size(); ++i) {
        if (std::find(linear.begin(), linear.end(), names[i]) != linear.end()) model.linear.push_back(i);
        if (slopes[i + 1].text() == "1") model.constants.push_back(i);
    }
    model.all_linear = model.linear.size() == names.size();
}

}  // namespace

Model::Model(std::shared_ptr<const Implementation> implementation) : implementation_(std::move(implementation)) {}

Model Model::catalogue(std::string_view name, int terms)
{
    const ModelReference *const about = reference::find(name);
    if (!about) {
        std::string nearest;
        for (const std::string_view other : reference::nearest_names(name))
            nearest += (nearest.empty() ? "; did you mean " : ", ") + std::string(other);
        throw Error("no model is called " + std::string(name) + nearest);
    }
    if (about->placeholder) throw Error(std::string(about->name) + " is a placeholder: it computes nothing");
    if (terms < 1) throw Error("a model has at least one term");
    if (terms > 1 && about->repeated.empty())
        throw Error(std::string(about->name) + " has no repeated terms: it is one curve");
    if (terms > about->most_terms())
        throw Error(std::string(about->name) + " computes " + std::to_string(about->most_terms()) + " term at a call, not " +
                    std::to_string(terms));

    auto model = std::make_shared<Implementation>();
    model->name = about->name;
    model->about = about;
    model->terms = terms;
    if (!about->repeated.empty())
        model->repeated.push_back({about->parameters.size(), about->repeated.size(), static_cast<size_t>(terms)});
    int passed = 0;
    const ModelFunc function = function_of(*about, passed);
    const size_t once = about->parameters.size(), count = once + about->repeated.size() * static_cast<size_t>(terms);
    if (!about->repeated.empty()) passed = static_cast<int>(count);
    for (size_t i = 0; i < about->sample_ranges.size(); ++i)
        model->variables.emplace_back(ModelReference::variables[i]);
    model->outputs = about->second.empty() ? 1 : 2;
    model->implicit = about->implicit;
    const auto named = about->names(static_cast<int>(count));
    for (size_t i = 0; i < count; ++i) {
        const auto &parameter = *named[i].about;
        // Further terms begin at the sample of the first: where their data are is for a search of starts to say.
        const size_t of_sample = i < once || about->repeated.empty() ? i : once + (i - once) % about->repeated.size();
        const double start = of_sample < about->sample_parameters.size() ? about->sample_parameters[of_sample] : 1;
        const bool held = parameter.kind == reference::Kind::given || parameter.kind == reference::Kind::abscissa;
        model->parameters.push_back({named[i].name, std::string(parameter.meaning), std::string(parameter.unit), start, held});
        model->about_parameters.push_back(&parameter);
    }
    const std::vector<std::string> names = names_of(model->parameters);
    model->formulas = formulas_of(*about, names, about->repeated.empty() ? 0 : terms);
    model->formula_agrees = about->formula_agrees;

    const std::shared_ptr<const Source> contract =
        contract_source({function, passed, count, model->variables.size(), model->outputs});
    if (model->formula_agrees) {
        model->fast = formula_source(model->formulas, model->variables, names);
        model->exact = mixed_source(contract, model->fast);
    } else {
        std::vector<bool> by_differences(count, !about->derivatives || model->outputs > 1);
        for (size_t i = 0; i < count; ++i)
            if (about->inexact_at(static_cast<int>(i) + 1)) by_differences[i] = true;
        model->exact = std::make_shared<WithDifferences>(contract, by_differences, model->outputs);
        model->fast = model->exact;
    }
    if (model->formula_agrees) model->extended = extended_source(model->formulas, model->variables, names);
    find_structure(*model);
    return Model(model);
}

Model Model::formula(std::string_view text, std::vector<std::string> variables)
{
    if (variables.empty()) throw Error("the formula " + std::string(text) + " needs a variable");
    auto model = std::make_shared<Implementation>();
    model->name = text;
    model->variables = std::move(variables);
    try {
        model->formulas = {formula::Equation::parse(text).right};
        for (const std::string &name : model->formulas[0].names())
            if (std::find(model->variables.begin(), model->variables.end(), name) == model->variables.end())
                model->parameters.push_back({name, "", "", 1.0, false});
    } catch (const formula::FormulaError &error) {
        throw Error(error.what());
    }
    if (model->parameters.empty()) throw Error("the formula " + std::string(text) + " has no parameters");
    model->about_parameters.assign(model->parameters.size(), nullptr);
    const std::vector<std::string> names = names_of(model->parameters);
    model->formula_agrees = true;
    model->fast = formula_source(model->formulas, model->variables, names);
    model->extended = extended_source(model->formulas, model->variables, names);
    find_structure(*model);
    return Model(model);
}

Model Model::sum(const std::vector<std::pair<std::string, Model>> &parts)
{
    if (parts.empty()) throw Error("a sum needs at least one model");
    auto model = std::make_shared<Implementation>();
    const Implementation &first = parts[0].second.implementation();
    model->variables = first.variables;
    model->formula_agrees = true;
    std::string text;
    std::vector<Summand> fast, exact;
    bool constant = false, contract = false;
    for (const auto &[prefix, part] : parts) {
        const Implementation &summand = part.implementation();
        if (summand.variables != model->variables || summand.outputs != 1 || summand.implicit)
            throw Error(summand.name + " cannot be part of a sum with " + first.name +
                        ": all must be explicit, of the same variables and of one output");
        for (auto terms : summand.repeated) {
            terms.first += model->parameters.size();
            model->repeated.push_back(terms);
        }
        model->name += (model->name.empty() ? "" : " + ") + summand.name;
        std::vector<std::pair<std::string, std::string>> to;
        for (size_t i = 0; i < summand.parameters.size(); ++i) {
            Parameter parameter = summand.parameters[i];
            to.emplace_back(parameter.name, prefix + parameter.name);
            if (std::find(summand.constants.begin(), summand.constants.end(), i) != summand.constants.end()) {
                if (constant) {
                    parameter.start = 0;
                    parameter.fixed = true;
                }
                constant = true;
            }
            parameter.name = prefix + parameter.name;
            if (!is_name(parameter.name))
                throw Error("the prefix " + prefix + " makes " + parameter.name + ", which is no name");
            for (const Parameter &other : model->parameters)
                if (other.name == parameter.name)
                    throw Error("two parameters of the sum are called " + parameter.name + ": give its parts prefixes");
            model->parameters.push_back(parameter);
            model->about_parameters.push_back(summand.about_parameters[i]);
        }
        text += (text.empty() ? "(" : " + (") + renamed(summand.formulas[0], to).text() + ")";
        model->formula_agrees = model->formula_agrees && summand.formula_agrees;
        fast.push_back({summand.fast, summand.parameters.size()});
        exact.push_back({summand.exact ? summand.exact : summand.fast, summand.parameters.size()});
        contract = contract || summand.exact;
    }
    model->formulas = {formula::Formula::parse(text)};
    const std::vector<std::string> names = names_of(model->parameters);
    if (model->formula_agrees) {
        model->fast = formula_source(model->formulas, model->variables, names);
        model->extended = extended_source(model->formulas, model->variables, names);
    } else {
        model->fast = sum_source(fast, 1);
    }
    if (contract) model->exact = sum_source(exact, 1);
    find_structure(*model);
    return Model(model);
}

const std::string &Model::name() const
{
    return implementation_->name;
}

const std::vector<std::string> &Model::variables() const
{
    return implementation_->variables;
}

const std::vector<Parameter> &Model::parameters() const
{
    return implementation_->parameters;
}

size_t Model::outputs() const
{
    return implementation_->outputs;
}

bool Model::implicit() const
{
    return implementation_->implicit;
}

void Model::values(std::span<const double> parameters, std::span<const double *const> x, size_t points,
                   std::span<double *const> value) const
{
    const Source &source = implementation_->exact ? *implementation_->exact : *implementation_->fast;
    const auto memory = source.memory();
    source.set_parameters(*memory, parameters.data());
    std::vector<const double *> from(x.size());
    std::vector<double *> to(value.size());
    for (size_t first = 0; first < points; first += block_rows) {
        for (size_t i = 0; i < x.size(); ++i) from[i] = x[i] + first;
        for (size_t k = 0; k < value.size(); ++k) to[k] = value[k] + first;
        source.run(*memory, from.data(), std::min(block_rows, points - first), to.data(), nullptr);
    }
}

}  // namespace curvebank::fit
