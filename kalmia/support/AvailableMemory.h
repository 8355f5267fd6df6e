#pragma once

#include <cstdint>
#include <string>

#include "kalmia/support/Export.h"

namespace kalmia {

/// The bytes that this process can take and use now. The smaller of two numbers: what the machine can give without
/// swapping (caches that it can drop included), and what the limits of the process's control groups leave.
/// Returns the largest number if neither is known. A larger allocation may succeed, and the process be killed later.
KALMIA_EXPORT std::uint64_t AvailableMemory();

/// The same, read from proc/... and sys/fs/cgroup/... below `root`, which ends in '/'.
KALMIA_EXPORT std::uint64_t AvailableMemoryBelow(const std::string& root);

}  // namespace kalmia
