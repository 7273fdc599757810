// What is known of a model: its formula, the names and meanings of its parameters, its domain, a sample.

#pragma once

#include <array>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace curvebank::reference {

/// What a parameter does to the curve; reference/README.md describes each kind.
enum class Kind {
    position,
    reversed_position,
    abscissa,
    width,
    period,
    scale,
    rate,
    level,
    amplitude,
    area,
    slope,
    coefficient,
    exponent,
    shape,
    fraction,
    angle,
    base,
    logarithm,
    given,
};

/// The kind as the tables write it.
std::string_view word(Kind kind);

struct RangeReference {
    double low = -std::numeric_limits<double>::infinity(), high = std::numeric_limits<double>::infinity();
};

struct ParameterReference {
    std::string_view name, meaning;
    std::string_view unit;  ///< what scales it, as an expression of the variables
    Kind kind;
    RangeReference range{};  ///< where a start is to be sought; without a high the low itself is left out
};

/// The unit of a variable, or of the "residual", that is not free, as an expression of the other variables.
struct UnitReference {
    std::string_view variable, expression;
};

/// A derivative entry that is deliberately not the exact partial, by its number in dy, and what it holds; of
/// repeated terms the first's, which stands for all.
struct InexactReference {
    int entry;
    std::string_view holds;
};

/// What a model does when it is called for initialisation: mostly it answers 1 and does nothing else.
enum class InitCalls {
    answers_1,
    answers_0,
    evaluates,        ///< it knows no such calls
    tests_for_errors  ///< it answers 1 too, but an error that it finds costs the value
};

/// What a model answers to a query: mostly it knows none.
enum class Queries {
    none,
    status,  ///< QUERY_REPLY
    mask     ///< QUERY_MASK
};

/// What a call for value and derivatives does.
enum class BothSteps {
    one_after_the_other,  ///< what a call for the value and, if that succeeds, one for the derivatives do
    value_alone,          ///< what a call for the value does
    one_step,             ///< what a call for the derivatives does
    may_end_with_value,   ///< as a rule the first of these, but the second where the value takes no exponential or
                          ///< power
    tests_another_width   ///< the first, but the derivatives need another width than in a call for them alone
};

/// A parameter of a call: those of repeated terms have numbers in their names when there are several terms.
struct NamedParameter {
    std::string name;
    const ParameterReference *about;
};

/// One entry of the reference tables; reference/README.md says what each key means.
struct ModelReference {
    std::string_view name{}, title{}, formula{};
    std::string_view second{};  ///< the formula of the second output, where a model has two
    std::string_view term{}, domain{}, source{};
    std::span<const ParameterReference> parameters{};  ///< those that are there once, first in the parameter array
    std::span<const ParameterReference> repeated{};    ///< those of every repeated term
    std::span<const UnitReference> units{};
    std::string_view units_why{};
    std::span<const std::string_view> shifts{};  ///< the variables along which the parameters can shift the curve
    std::string_view fwhm{};  ///< full width at half maximum in the parameters of a term, or "numeric"
    std::string_view fwhm_second{};
    bool fwhm_approximate = false;
    std::span<const InexactReference> inexact{};
    bool contributions = false, linear = false, derivatives = true, placeholder = false, export_only = false;
    bool implicit = false;  ///< the value is the residual of an equation, 0 on the curve
    int term_limit = 1000;  ///< of repeated terms; most_terms() holds for all models
    double tolerance = 1e-12;
    int beyond = 0;  ///< entries of p and dy after the last parameter that a call touches
    InitCalls init = InitCalls::answers_1;
    Queries query = Queries::none;
    BothSteps both = BothSteps::one_after_the_other;
    bool formula_agrees = true;  ///< in double precision with the library's value, to 1e-11 of the curve's size
    std::span<const double> sample_parameters{};
    std::span<const RangeReference> sample_ranges{};  ///< of x, y and z, as many as the model has variables

    /// Number of independent variables; of an implicit model all are.
    int variable_count() const { return static_cast<int>(sample_ranges.size()); }

    /// How many terms one call computes at most: 1 where none repeat.
    int most_terms() const { return repeated.empty() ? 1 : term_limit; }

    /// Number of repeated terms in a call with that many parameters.
    int terms(int parameters) const;

    /// What is known of entry i of dy where it is not the exact partial, otherwise null.
    const InexactReference *inexact_at(int i) const;

    /// The names of that many parameters in order.
    std::vector<NamedParameter> names(int parameters) const;

    /// The whole formula as one line of text.
    std::string text() const;

    /// The names of the variables in the formulas and units: the independent ones, then the values.
    static constexpr std::array variables = {"x", "y", "z", "w"};
};

/// All entries in alphabetical order.
extern const std::span<const ModelReference> models;

/// The entry of that name, ignoring case, or null.
const ModelReference *find(std::string_view name);

/// Up to five names that a misspelt name may stand for, likeliest first.
std::vector<std::string_view> nearest_names(std::string_view name);

}  // namespace curvebank::reference
