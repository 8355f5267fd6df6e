#pragma once

#include <cstdint>
#include <string>

#include "kalmia/support/UserComm.h"

namespace kalmia {

// What DistanceStorage says on this thread, or else what is set for the process.

/// Pairs that may be held in memory; 0: as many as the machine has room for.
std::uint64_t MaximumPairs();

/// The directory of temporary files.
std::string DistanceDirectory();

UserComm& DistanceDialogue();

}  // namespace kalmia
