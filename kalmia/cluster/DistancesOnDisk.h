#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "kalmia/cluster/MegaDistances.h"

namespace kalmia {

/// Tells the user, through UserComm, that the distances of so many rows go to the disk; asks before where the directory
/// has not room for them twice. Throws NCError "Cluster analysis aborted." on a refusal.
void TellOfDisk(int rows, const std::string& directory, std::uint64_t bytesFree);

/// The single-linkage distances of all rows, by way of temporary files, where they do not fit in memory. Throws what
/// TellOfDisk and MegaDistances throw; no file is left then.
std::unique_ptr<DendroGram::MegaDistances> DistancesOnDisk(const NCDataMatrix<float>& data, NCProgress* progress);

}  // namespace kalmia
