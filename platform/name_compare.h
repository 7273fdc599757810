// Comparison of model names and command words.

#pragma once

namespace curvebank::platform {

/// Whether two names are equal, ignoring case. A null name equals no name.
bool same_name(const char *a, const char *b);

}  // namespace curvebank::platform
