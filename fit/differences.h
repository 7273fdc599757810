// Derivatives by differences, where no exact ones are to be had.

#pragma once

#include <vector>

#include "fit/points.h"
#include "fit/source.h"

namespace curvebank::fit {

/// The derivative of the values with respect to parameter j at the points of a block: central differences in a ladder of
/// steps, each extrapolated from its neighbour (second order becomes fourth), of which every point takes the one that
/// the smaller steps bear out best. The ladder begins where rounding of the parameter ends it, so that a position
/// of 2459003 with a width of 1 is as good as one of 0.
/// value[k] holds the values at p; derivative[k] receives the derivatives of output k. NaN where no step has values on
/// either side.
void difference(const Source &source, Source::Memory &memory, std::vector<double> p, size_t j, const double *const *x, size_t count,
                double *const *value, double *const *derivative, size_t outputs);

/// Fills in what is not finite of the derivatives that are wanted (those that are not null), and leaves the rest. The
/// source's parameters are p before and after.
void fill_missing(const Source &source, Source::Memory &memory, const std::vector<double> &p, const Points::Block &block,
                  const std::vector<double *> &values, const std::vector<double *> &jacobian);

/// A source whose derivatives for some parameters are taken by differences.
class WithDifferences : public Source {
public:
    WithDifferences(std::shared_ptr<const Source> values, std::vector<bool> by_differences, size_t outputs);

    std::unique_ptr<Memory> memory() const override;
    void set_parameters(Memory &memory, const double *parameters) const override;
    void run(Memory &memory, const double *const *x, size_t count, double *const *value,
             double *const *jacobian) const override;

private:
    std::shared_ptr<const Source> values_;
    std::vector<bool> by_differences_;
    size_t outputs_;
};

}  // namespace curvebank::fit
