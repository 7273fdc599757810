// A fit as the steps see it: scaled residuals and their derivatives, reduced to a small triangle.

#pragma once

#include <memory>
#include <vector>

#include "fit/implementation.h"
#include "fit/points.h"
#include "fit/reduced.h"
#include "fit/ties.h"

namespace curvebank::fit {

/// Which numbers a pass uses: the fastest there are, or those of the calling contract.
enum class Values { fast, exact };

/// How it reduces them: by scalar products, which costs half but squares the condition, or by reflections. Products that
/// are not safe are found out, and the pass is made again with reflections.
enum class Reduction { products, orthogonal };

class Problem {
public:
    /// The references must outlive it.
    Problem(const Model::Implementation &model, const Parameters &parameters, const Points &points, int threads);
    ~Problem();

    size_t width() const { return parameters_.varied().size(); }
    const Model::Implementation &model() const { return model_; }
    const Parameters &parameters() const { return parameters_; }
    const Points &points() const { return points_; }
    size_t residuals() const { return points_.used() * model_.outputs; }

    /// Finds the scales of residuals and parameters at p. False where the model has no value at some point.
    bool prepare(const std::vector<double> &p);

    /// A parameter is its scaled number times scale(j), a residual times residual_scale().
    double scale(size_t j) const { return scale_[j]; }
    double residual_scale() const { return residual_scale_; }
    /// Whether that is the size of the data, not of residuals that are far greater.
    bool in_unit_of_data() const { return in_unit_of_data_; }

    /// One pass over all points at parameters p (all of them, in the model's units). Where the model has no value the
    /// sum of squares is not finite.
    Reduced<double> pass(const std::vector<double> &p, Values values, Reduction reduction);
    double sum_of_squares(const std::vector<double> &p, Values values);

    /// The same with values, derivatives and arithmetic in extended precision.
    bool has_extended() const { return model_.extended != nullptr; }
    Reduced<long double> extended_pass(const std::vector<double> &p);

    /// Whether the calling contract gives values at a few of the points: a formula may go on where it does not.
    bool accepts(const std::vector<double> &p);

    /// The values at a few of the points by the calling contract, where there is one.
    std::vector<double> values_at_some(const std::vector<double> &p, size_t some);

    /// A sentence that names the first point without a value; empty where all points have one.
    std::string where_no_value(const std::vector<double> &p);

    /// Those of the varied parameters (by their places among them) that the value is linear in, where these are some but
    /// not all and no tie comes between.
    const std::vector<size_t> &linear() const { return linear_; }
    bool separable() const { return !linear_.empty() && linear_.size() < width(); }

    double size_of_data() const { return size_of_data_; }

    /// The sum of squares of the scaled data about their means.
    double squares_about_mean() const;

    /// The size of what rounding alone makes of the residuals: of values, and of parameters that are large.
    double rounding(const std::vector<double> &p, const Reduced<double> &reduced) const;

    int passes() const { return passes_; }

private:
    struct Worker;

    const Source &source(Values values) const;
    void make_workers(size_t count);
    void begin_pass(const std::vector<double> &p, Values values, bool derivatives);
    /// Fills the worker's columns with a block: J | r of every output, scaled.
    void load(Worker &worker, size_t block, Values values, bool derivatives) const;
    Reduced<double> reduce(const std::vector<double> &p, Values values, Reduction reduction, bool derivatives);

    const Model::Implementation &model_;
    const Parameters &parameters_;
    const Points &points_;
    int threads_;
    std::vector<size_t> linear_;
    std::vector<double> scale_;
    std::vector<double> factor_;  ///< of every column of J | r: from the model's units to scaled ones
    double residual_scale_ = 1, size_of_data_ = 0;
    bool in_unit_of_data_ = true;
    mutable double squares_about_mean_ = -1;  ///< once asked for
    bool repair_ = false;  ///< derivatives that are not there are taken by differences
    std::vector<std::unique_ptr<Worker>> workers_;
    std::vector<double> p_;                  ///< of the pass under way, and the slopes of its ties
    std::vector<Parameters::Slope> slopes_;
    int passes_ = 0;
};

}  // namespace curvebank::fit
