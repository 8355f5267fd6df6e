#pragma once

#include <cstddef>
#include <functional>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Told of the share of some work that is done, 0 to 1; may throw, to stop it.
using Proceed = std::function<void(double)>;

/// Runs task(0) to task(count - 1) on all threads, in any order. `proceed` is called once for each that has ended, by
/// the calling thread alone. After a task or `proceed` has thrown no further task begins; the first exception is thrown
/// when all threads have ended.
KALMIA_EXPORT void ShareWork(std::size_t count, const Proceed& proceed, const std::function<void(std::size_t)>& task);

}  // namespace kalmia::analysis
