// One description for curves that have several.

#pragma once

#include <vector>

#include "fit/problem.h"

namespace curvebank::fit {

/// The same curve with its terms in order of position (without one, of scale), and with the signs that the domain asks for
/// where changing them changes nothing. Only parameters that the person left alone take part. True where anything
/// changed.
bool make_canonical(Problem &problem, std::vector<double> &p);

}  // namespace curvebank::fit
