// What a minimum tells of the parameters: covariance, errors, goodness of fit.

#pragma once

#include "fit/descent.h"

namespace curvebank::fit {

/// The inverse of J'J over the varied parameters in scaled units, from the triangle of a pass, with the directions that
/// the data do not see.
struct Spread {
    std::vector<double> inverse;      ///< width x width; rows of parameters held or not separated are 0
    std::vector<bool> determined;     ///< of the varied ones: not held, and told from the others
    double condition = 1;             ///< of the derivatives with columns of unit length
    std::vector<double> combination;  ///< of the direction the data see least, in units of the columns' lengths
    size_t unseen = 0;                ///< how many directions are lost in rounding
};
template <typename T>
Spread spread(const Reduced<T> &reduced, const std::vector<bool> &held);

/// Fills in all of the result but verdict and notes.
void fill_statistics(const Problem &problem, const Standing &standing, const Spread &spread, const Data &data,
                     const Options &options, Result &result);

/// The same where the model has no value: parameters and counts alone.
void fill_without_values(const Problem &problem, const std::vector<double> &p, const Options &options, Result &result);

}  // namespace curvebank::fit
