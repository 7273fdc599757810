// The engine's door for C: checks what comes in, carries it over, and turns exceptions into codes.

#include "curvebank/fit.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "curvebank/fit/fit.h"

using namespace curvebank::fit;

struct curvebank_fit_model {
    Model model;
};

struct curvebank_fit_result {
    Result result;
    struct Columns {
        std::vector<double> values, errors, lower, upper;
    } parameters, derived;
};

namespace {

static_assert(static_cast<int>(Verdict::converged) == CURVEBANK_FIT_CONVERGED &&
              static_cast<int>(Verdict::exact) == CURVEBANK_FIT_EXACT &&
              static_cast<int>(Verdict::no_influence) == CURVEBANK_FIT_NO_INFLUENCE &&
              static_cast<int>(Verdict::not_separated) == CURVEBANK_FIT_NOT_SEPARATED &&
              static_cast<int>(Verdict::runs_to_infinity) == CURVEBANK_FIT_RUNS_TO_INFINITY &&
              static_cast<int>(Verdict::no_better_than_constant) == CURVEBANK_FIT_NO_BETTER_THAN_CONSTANT &&
              static_cast<int>(Verdict::no_progress) == CURVEBANK_FIT_NO_PROGRESS &&
              static_cast<int>(Verdict::iteration_limit) == CURVEBANK_FIT_ITERATION_LIMIT &&
              static_cast<int>(Verdict::domain_left) == CURVEBANK_FIT_DOMAIN_LEFT &&
              static_cast<int>(Verdict::overflow) == CURVEBANK_FIT_OVERFLOW &&
              static_cast<int>(Verdict::stopped) == CURVEBANK_FIT_STOPPED);

void say(char *message, size_t room, const char *text)
{
    if (!message || room == 0) return;
    const size_t length = std::min(std::strlen(text), room - 1);
    std::memcpy(message, text, length);
    message[length] = '\0';
}

template <typename Work>
int guarded(char *message, size_t room, const Work &work) noexcept
{
    say(message, room, "");
    try {
        work();
        return CURVEBANK_FIT_OK;
    } catch (const Error &error) {
        say(message, room, error.what());
        return CURVEBANK_FIT_BAD_REQUEST;
    } catch (const std::bad_alloc &) {
        say(message, room, "out of memory");
        return CURVEBANK_FIT_OUT_OF_MEMORY;
    } catch (const std::exception &error) {
        say(message, room, error.what());
    } catch (...) {
        say(message, room, "an exception of unknown type");
    }
    return CURVEBANK_FIT_FAILED;
}

template <typename Handle, typename Make>
int make_handle(Handle **handle, char *message, size_t room, const Make &make) noexcept
{
    if (handle) *handle = nullptr;
    return guarded(message, room, [&] {
        if (!handle) throw Error("there is no place for the handle: its pointer is NULL");
        *handle = make();
    });
}

template <typename Pointer>
Pointer needed(Pointer pointer, const char *what)
{
    if (!pointer) throw Error(std::string(what) + " is NULL");
    return pointer;
}

/// So many columns that stand one behind the other.
std::vector<std::span<const double>> columns(const double *values, int64_t points, size_t count, const char *what)
{
    if (points < 0 || points > PTRDIFF_MAX / static_cast<int64_t>(sizeof(double) * std::max<size_t>(count, 1)))
        throw Error("there cannot be " + std::to_string(points) + " points");
    if (points > 0 && count > 0) needed(values, what);
    const auto length = static_cast<size_t>(points);
    std::vector<std::span<const double>> columns;
    for (size_t i = 0; i < count; ++i)
        columns.push_back(length > 0 ? std::span(values + i * length, length) : std::span<const double>());
    return columns;
}

template <typename Column>
std::vector<typename Column::pointer> pointers(const std::vector<Column> &columns)
{
    std::vector<typename Column::pointer> pointers;
    for (const Column &column : columns) pointers.push_back(column.data());
    return pointers;
}

Data data_of(const curvebank_fit_request &request, const Model &model)
{
    Data data;
    data.x = columns(request.x, request.points, model.variables().size(), "x");
    if (request.y || !model.implicit()) data.y = columns(request.y, request.points, model.outputs(), "y");
    if (request.weights) data.weights = columns(request.weights, request.points, 1, "weights")[0];
    if (request.sigma) data.sigma = columns(request.sigma, request.points, 1, "sigma")[0];
    data.absolute_sigma = request.absolute_sigma != 0;
    data.missing = request.skip_missing ? Data::Missing::skip : Data::Missing::error;
    return data;
}

Options options_of(const curvebank_fit_request &request, const Model &model)
{
    Options options;
    for (size_t i = 0; i < model.parameters().size(); ++i) {
        const std::string &name = model.parameters()[i].name;
        if (request.start && !std::isnan(request.start[i])) options.start.emplace_back(name, request.start[i]);
        if (request.lower && !std::isnan(request.lower[i])) options.lower.emplace_back(name, request.lower[i]);
        if (request.upper && !std::isnan(request.upper[i])) options.upper.emplace_back(name, request.upper[i]);
        if (request.fixed && request.fixed[i] > 0) options.fixed.push_back(name);
        if (request.fixed && request.fixed[i] == 0) options.free.push_back(name);
        if (request.ties && request.ties[i]) options.ties.emplace_back(name, request.ties[i]);
    }
    if (request.derived_count < 0) throw Error("derived_count is negative");
    for (int i = 0; i < request.derived_count; ++i) {
        const char *const name = needed(needed(request.derived_names, "derived_names")[i], "a derived name");
        const char *const expression = needed(needed(request.derived_expressions, "derived_expressions")[i], name);
        options.derived.emplace_back(name, expression);
    }
    if (request.max_iterations < 0) throw Error("max_iterations is negative");
    if (request.max_iterations > 0) options.max_iterations = request.max_iterations;
    if (request.confidence != 0) options.confidence = request.confidence;
    if (request.threads != 0) options.threads = std::max(request.threads, 0);
    if (request.watch)
        options.watch = [&request](const Progress &progress) {
            return request.watch(request.watch_context, progress.iteration, progress.sum_of_squares,
                                 progress.parameters.data()) == 0;
        };
    return options;
}

curvebank_fit_result::Columns columns_of(const std::vector<Estimate> &estimates)
{
    curvebank_fit_result::Columns columns;
    for (const Estimate &estimate : estimates) {
        columns.values.push_back(estimate.value);
        columns.errors.push_back(estimate.standard_error);
        columns.lower.push_back(estimate.lower);
        columns.upper.push_back(estimate.upper);
    }
    return columns;
}

/// Element i, or null where there is none.
template <typename Element>
const Element *at(const std::vector<Element> &elements, int i)
{
    return i >= 0 && static_cast<size_t>(i) < elements.size() ? &elements[static_cast<size_t>(i)] : nullptr;
}

const Parameter *parameter_at(const curvebank_fit_model *model, int i)
{
    return model ? at(model->model.parameters(), i) : nullptr;
}

template <typename Container>
int size_of(const Container &container)
{
    return static_cast<int>(container.size());
}

}  // namespace

extern "C" {

int curvebank_fit_model_catalogue(const char *name, int terms, curvebank_fit_model **model, char *message,
                                  size_t room)
{
    return make_handle(model, message, room, [&] {
        return new curvebank_fit_model{Model::catalogue(needed(name, "the name of the model"), terms)};
    });
}

int curvebank_fit_model_formula(const char *text, int variable_count, const char *const *variables,
                                curvebank_fit_model **model, char *message, size_t room)
{
    return make_handle(model, message, room, [&] {
        if (variable_count < 0) throw Error("variable_count is negative");
        std::vector<std::string> names;
        for (int i = 0; i < variable_count; ++i)
            names.emplace_back(needed(needed(variables, "variables")[i], "the name of a variable"));
        if (names.empty()) names.emplace_back("x");
        return new curvebank_fit_model{Model::formula(needed(text, "the formula"), names)};
    });
}

int curvebank_fit_model_sum(int count, const char *const *prefixes, const curvebank_fit_model *const *models,
                            curvebank_fit_model **model, char *message, size_t room)
{
    return make_handle(model, message, room, [&] {
        std::vector<std::pair<std::string, Model>> parts;
        for (int i = 0; i < count; ++i)
            parts.emplace_back(needed(needed(prefixes, "prefixes")[i], "a prefix"),
                               needed(needed(models, "models")[i], "a model")->model);
        return new curvebank_fit_model{Model::sum(parts)};
    });
}

void curvebank_fit_model_destroy(curvebank_fit_model *model)
{
    delete model;
}

int curvebank_fit_model_parameter_count(const curvebank_fit_model *model)
{
    return model ? size_of(model->model.parameters()) : 0;
}

int curvebank_fit_model_variable_count(const curvebank_fit_model *model)
{
    return model ? size_of(model->model.variables()) : 0;
}

int curvebank_fit_model_output_count(const curvebank_fit_model *model)
{
    return model ? static_cast<int>(model->model.outputs()) : 0;
}

int curvebank_fit_model_is_implicit(const curvebank_fit_model *model)
{
    return model && model->model.implicit();
}

const char *curvebank_fit_model_parameter_name(const curvebank_fit_model *model, int i)
{
    const Parameter *parameter = parameter_at(model, i);
    return parameter ? parameter->name.c_str() : "";
}

const char *curvebank_fit_model_parameter_meaning(const curvebank_fit_model *model, int i)
{
    const Parameter *parameter = parameter_at(model, i);
    return parameter ? parameter->meaning.c_str() : "";
}

const char *curvebank_fit_model_parameter_unit(const curvebank_fit_model *model, int i)
{
    const Parameter *parameter = parameter_at(model, i);
    return parameter ? parameter->unit.c_str() : "";
}

double curvebank_fit_model_parameter_start(const curvebank_fit_model *model, int i)
{
    const Parameter *parameter = parameter_at(model, i);
    return parameter ? parameter->start : absent;
}

int curvebank_fit_model_parameter_is_fixed(const curvebank_fit_model *model, int i)
{
    const Parameter *parameter = parameter_at(model, i);
    return parameter && parameter->fixed;
}

const char *curvebank_fit_model_variable_name(const curvebank_fit_model *model, int i)
{
    const std::string *name = model ? at(model->model.variables(), i) : nullptr;
    return name ? name->c_str() : "";
}

int curvebank_fit_model_parameter_index(const curvebank_fit_model *model, const char *name)
{
    for (int i = 0; name && i < curvebank_fit_model_parameter_count(model); ++i)
        if (parameter_at(model, i)->name == name) return i;
    return -1;
}

int curvebank_fit_model_values(const curvebank_fit_model *model, const double *parameters, int64_t points,
                               const double *x, double *values, char *message, size_t room)
{
    return guarded(message, room, [&] {
        const Model &of = needed(model, "the model")->model;
        needed(parameters, "parameters");
        const auto from = columns(x, points, of.variables().size(), "x");
        if (points == 0) return;
        needed(values, "values");
        std::vector<double *> to;
        for (size_t k = 0; k < of.outputs(); ++k) to.push_back(values + k * static_cast<size_t>(points));
        of.values({parameters, of.parameters().size()}, pointers(from), static_cast<size_t>(points), to);
    });
}

int curvebank_fit_run(const curvebank_fit_model *model, const curvebank_fit_request *request,
                      curvebank_fit_result **result, char *message, size_t room)
{
    return make_handle(result, message, room, [&] {
        const Model &of = needed(model, "the model")->model;
        if (needed(request, "the request")->size != sizeof(curvebank_fit_request))
            throw Error("the request has the size " + std::to_string(request->size) +
                        ", this library knows one of " + std::to_string(sizeof(curvebank_fit_request)));
        Result found = fit(of, data_of(*request, of), options_of(*request, of));
        auto parameters = columns_of(found.parameters), derived = columns_of(found.derived);
        return new curvebank_fit_result{std::move(found), std::move(parameters), std::move(derived)};
    });
}

void curvebank_fit_result_destroy(curvebank_fit_result *result)
{
    delete result;
}

int curvebank_fit_result_verdict(const curvebank_fit_result *result)
{
    return result ? static_cast<int>(result->result.verdict) : -1;
}

int curvebank_fit_is_success(int verdict)
{
    return is_success(static_cast<Verdict>(verdict));
}

const char *curvebank_fit_verdict_word(int verdict)
{
    return word(static_cast<Verdict>(verdict)).data();  // literals, which are terminated
}

int curvebank_fit_result_note_count(const curvebank_fit_result *result)
{
    return result ? size_of(result->result.notes) : 0;
}

const char *curvebank_fit_result_note(const curvebank_fit_result *result, int i)
{
    const std::string *note = result ? at(result->result.notes, i) : nullptr;
    return note ? note->c_str() : "";
}

double curvebank_fit_result_number(const curvebank_fit_result *result, int which)
{
    if (!result) return absent;
    const Result &of = result->result;
    switch (which) {
        case CURVEBANK_FIT_SUM_OF_SQUARES:
            return of.sum_of_squares;
        case CURVEBANK_FIT_DEGREES_OF_FREEDOM:
            return static_cast<double>(of.degrees_of_freedom);
        case CURVEBANK_FIT_RELATIVE_OFFSET:
            return of.relative_offset;
        case CURVEBANK_FIT_ITERATIONS:
            return of.iterations;
        case CURVEBANK_FIT_EVALUATIONS:
            return of.evaluations;
        case CURVEBANK_FIT_POINTS:
            return static_cast<double>(of.points);
        case CURVEBANK_FIT_LEFT_OUT:
            return static_cast<double>(of.left_out);
        case CURVEBANK_FIT_RESIDUAL_SD:
            return of.residual_sd;
        case CURVEBANK_FIT_REDUCED_CHI_SQUARE:
            return of.reduced_chi_square;
        case CURVEBANK_FIT_R_SQUARED:
            return of.r_squared;
        case CURVEBANK_FIT_ADJUSTED_R_SQUARED:
            return of.adjusted_r_squared;
        case CURVEBANK_FIT_AIC:
            return of.aic;
        case CURVEBANK_FIT_AICC:
            return of.aicc;
        case CURVEBANK_FIT_BIC:
            return of.bic;
        default:
            return absent;
    }
}

const double *curvebank_fit_result_array(const curvebank_fit_result *result, int which)
{
    if (!result) return nullptr;
    switch (which) {
        case CURVEBANK_FIT_VALUES:
            return result->parameters.values.data();
        case CURVEBANK_FIT_STANDARD_ERRORS:
            return result->parameters.errors.data();
        case CURVEBANK_FIT_LOWER_LIMITS:
            return result->parameters.lower.data();
        case CURVEBANK_FIT_UPPER_LIMITS:
            return result->parameters.upper.data();
        case CURVEBANK_FIT_COVARIANCE:
            return result->result.covariance.data();
        case CURVEBANK_FIT_CORRELATION:
            return result->result.correlation.data();
        case CURVEBANK_FIT_DERIVED_VALUES:
            return result->derived.values.data();
        case CURVEBANK_FIT_DERIVED_ERRORS:
            return result->derived.errors.data();
        case CURVEBANK_FIT_DERIVED_LOWER_LIMITS:
            return result->derived.lower.data();
        case CURVEBANK_FIT_DERIVED_UPPER_LIMITS:
            return result->derived.upper.data();
        default:
            return nullptr;
    }
}

int curvebank_fit_result_parameter_state(const curvebank_fit_result *result, int i)
{
    const Estimate *estimate = result ? at(result->result.parameters, i) : nullptr;
    if (!estimate) return 0;
    return (estimate->fixed ? CURVEBANK_FIT_FIXED : 0) | (estimate->tied ? CURVEBANK_FIT_TIED : 0) |
           (estimate->at_bound ? CURVEBANK_FIT_AT_BOUND : 0);
}

int curvebank_fit_result_band(const curvebank_fit_result *result, const curvebank_fit_model *model, int64_t points,
                              const double *x, int prediction, double confidence, double *values,
                              double *half_widths, char *message, size_t room)
{
    return guarded(message, room, [&] {
        const Result &of = needed(result, "the result")->result;
        const Model &fitted = needed(model, "the model")->model;
        if (of.parameters.size() != fitted.parameters().size()) throw Error("the result is not one of this model");
        if (!(confidence > 0 && confidence < 1)) throw Error("the confidence level must lie between 0 and 1");
        const auto from = columns(x, points, fitted.variables().size(), "x");
        const Band found = band(fitted, of, pointers(from), static_cast<size_t>(points),
                                prediction ? BandKind::prediction : BandKind::confidence, confidence);
        if (points == 0) return;
        std::copy(found.value.begin(), found.value.end(), needed(values, "values"));
        std::copy(found.half_width.begin(), found.half_width.end(), needed(half_widths, "half_widths"));
    });
}

}  // extern "C"
