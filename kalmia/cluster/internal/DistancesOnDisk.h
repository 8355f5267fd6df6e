#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "kalmia/cluster/MegaDistances.h"

namespace kalmia {

/// Tells the user, through UserComm, that the distances of so many rows go to the disk; asks before where the directory
/// has not room for them twice. Throws NCError "Cluster analysis aborted." on a refusal.
void TellOfDisk(int rows, const std::string& directory, std::uint64_t bytesFree);

/// How many bytes are free in a directory, and how to learn it.
using FreeSpace = std::function<std::uint64_t(const std::string& directory)>;

/// What the file system has free for the caller; the largest number, which is enough, where that cannot be learned.
std::uint64_t BytesFree(const std::string& directory);

/// The single-linkage distances of all rows, by way of temporary files, where they do not fit in memory. Throws what
/// TellOfDisk and MegaDistances throw; no file is left then.
std::unique_ptr<DendroGram::MegaDistances> DistancesOnDisk(const NCDataMatrix<float>& data, NCProgress* progress,
                                                           const FreeSpace& freeSpace = BytesFree);

}  // namespace kalmia
