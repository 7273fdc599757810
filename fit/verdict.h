// What may be said of where a descent ended.

#pragma once

#include "fit/descent.h"
#include "fit/statistics.h"

namespace curvebank::fit {

/// The verdict on a standing of exact values, with the notes that explain it.
Verdict judge(const Problem &problem, const Standing &standing, End end, const Spread &spread,
              std::vector<std::string> &notes);

}  // namespace curvebank::fit
