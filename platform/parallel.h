// A loop whose turns may run side by side.

#pragma once

#include <cstddef>
#include <functional>

namespace curvebank::platform {

/// The number of threads this machine runs at once, at least 1.
int hardware_threads();

/// Calls turn(worker, index) once for every index below count, on so many threads: those with the same worker, below
/// threads, one after the other. Which worker does which turn is left open. The first exception ends the loop and is
/// thrown on.
void parallel_for(size_t count, int threads, const std::function<void(int worker, size_t index)> &turn);

}  // namespace curvebank::platform
