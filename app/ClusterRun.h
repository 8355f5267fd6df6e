#pragma once

#include <cstdint>
#include <string>

#include "app/ClusterTree.h"
#include "app/Notes.h"

namespace kalmia::app {

/// Clusters the rows. Keeps the distances in temporary files, with a note, where they find no room in memory; only
/// single linkage can. The files are gone afterwards, whatever happens.
/// Throws Failure: (BadData) rows with too many holes, too little memory for Ward; (Files) a folder of temporary files
/// that is not there, cannot be written to, has too little room or fills up; (Stopped) on Ctrl-C.
OwnedTree BuildTree(const std::string& table, const ClusterData& data, const ClusterOptions& options,
                    NCProgress* progress, Notes* notes);

/// "5.7 MiB" and the like.
std::string BytesText(std::uint64_t bytes);

}  // namespace kalmia::app
