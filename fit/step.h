// One step on the small triangle: inside a trust region and inside bounds.

#pragma once

#include <vector>

#include "fit/reduced.h"

namespace curvebank::fit {

/// How far every parameter may move from where it stands; infinite without a bound.
struct Room {
    std::vector<double> down, up;  ///< down <= 0 <= up
};

struct Step {
    std::vector<double> change;
    double length = 0;     ///< in the metric of the trust region
    double predicted = 0;  ///< what the linear model takes off the sum of squares
    bool full = false;     ///< the Gauss-Newton step: nothing held it back but bounds
};

/// The parameters that stand at a bound and that the gradient presses against it: they do not move.
std::vector<bool> held(const Reduced<double> &reduced, const Room &room);

/// The norm of what the free parameters could still remove of the residuals: their part of the residuals' projection.
double projected(const Reduced<double> &reduced, const std::vector<bool> &held);

/// Levenberg-Marquardt (More, 1978): the least of the linear model within |metric * change| <= radius, found by Newton
/// steps on the damping. A metric of 0 leaves a parameter undamped. Parameters that the step would take over a bound
/// stop there, and the others are solved for again.
Step trust_region_step(const Reduced<double> &reduced, const Room &room, std::vector<bool> held,
                       const std::vector<double> &metric, double radius);

/// The undamped step over the parameters that are not held, in any precision; those without any influence stay.
template <typename T>
std::vector<T> gauss_newton_step(const Reduced<T> &reduced, const std::vector<bool> &held);

}  // namespace curvebank::fit
