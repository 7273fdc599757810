// The way down to a minimum of the sum of squares.

#pragma once

#include <functional>
#include <vector>

#include "fit/problem.h"
#include "fit/step.h"

namespace curvebank::fit {

/// Why a descent ended.
enum class End {
    minimum,          ///< the relative offset is as small as was asked for
    rounding,         ///< what is left of the gradient is rounding
    no_step,          ///< no step makes the sum of squares smaller
    iteration_limit,
    no_value,         ///< the model has no value where it stands
    stopped
};

struct Descent {
    Values values = Values::fast;
    Reduction reduction = Reduction::products;
    /// Linear parameters are solved for at every step and only the others are damped: variable projection.
    bool projected = false;
    double offset = 1e-3;  ///< the relative offset to reach
};

/// Where a descent stands: parameters, what a pass there leaves, and how far from a minimum that is.
struct Standing {
    std::vector<double> p;  ///< all of them, in the model's units
    Reduced<double> reduced;
    std::vector<bool> held;       ///< of the varied ones: by a bound
    double projected = 0;         ///< norm of the residuals' projection on the free derivatives
    double relative_offset = 0;   ///< that per parameter, against what is left per degree of freedom; infinite for none
    double rounding = 0;          ///< norm of what rounding alone makes of the residuals
    bool at_rounding = false;     ///< the projection is of that size: further steps may help or not

    double sum_of_squares() const { return reduced.sum_of_squares; }
};

class Descender {
public:
    using Watch = std::function<bool(int iteration, double sum_of_squares, const std::vector<double> &p)>;

    Descender(Problem &problem, int max_iterations, Watch watch)
        : problem_(problem), max_iterations_(max_iterations), watch_(std::move(watch))
    {
    }

    /// Goes down from p and says why it ended; standing() is where.
    End go(const std::vector<double> &p, const Descent &way);

    /// Solves for the linear parameters at p. False where the model has no value.
    bool solve_linear(std::vector<double> &p, const Descent &way);

    /// Only stands at p.
    void stay(const std::vector<double> &p, const Descent &way) { here_ = stand(p, way); }

    /// Undamped steps in extended precision, as long as they get shorter.
    void polish();

    const Standing &standing() const { return here_; }
    int iterations() const { return iterations_; }
    bool stopped() const { return stopped_; }

private:
    Standing stand(const std::vector<double> &p, const Descent &way);
    Room room(const std::vector<double> &p) const;
    std::vector<double> moved(const std::vector<double> &p, const std::vector<double> &change) const;
    bool watched();

    Problem &problem_;
    int max_iterations_;
    Watch watch_;
    Standing here_;
    int iterations_ = 0;
    bool stopped_ = false;
};

}  // namespace curvebank::fit
