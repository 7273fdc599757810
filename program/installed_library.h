// The library that belongs to this program.

#pragma once

#include "fit/library.h"

namespace curvebank::program {

/// Opens the library named by the environment variable CURVEBANK_LIBRARY, or else the one that was built or
/// installed together with this program. Throws Error.
fit::Library installed_library();

}  // namespace curvebank::program
