// What may be said of where a descent ended.

#pragma once

#include "fit/descent.h"
#include "fit/statistics.h"

namespace curvebank::fit {

/// The varied parameters that could change by their own size, or by that at the start, without a trace in the data.
std::vector<size_t> without_influence(const Problem &problem, const Standing &standing);

/// The verdict on a standing of exact values, with the notes that explain it.
Verdict judge(const Problem &problem, const Standing &standing, End end, const Spread &spread,
              std::vector<std::string> &notes);

}  // namespace curvebank::fit
