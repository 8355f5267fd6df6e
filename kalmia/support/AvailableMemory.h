#pragma once

#include <cstdint>
#include <string>

#include "kalmia/support/Export.h"

namespace kalmia {

/// The bytes that this process can take now and really use: what the machine has available without swapping, and what
/// the limits of its control groups (a container's) leave. Caches that can be given up count as available. The largest
/// number where nothing can be learned. An allocation beyond it may succeed by overcommitting, and end in a kill.
KALMIA_EXPORT std::uint64_t AvailableMemory();

/// The same, told by the files proc/... and sys/fs/cgroup/... below `root`, which ends in '/'.
KALMIA_EXPORT std::uint64_t AvailableMemoryBelow(const std::string& root);

}  // namespace kalmia
