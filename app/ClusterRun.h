#pragma once

#include <cstdint>
#include <string>

#include "app/ClusterTree.h"
#include "app/Notes.h"

namespace kalmia::app {

/// Throws BadFile if no temporary files can be made in the folder.
void CheckTemporaryFolder(const std::string& folder);

/// Clusters the rows. Keeps the distances in temporary files, with a note, where they find no room in memory; only
/// single linkage can. The files lie in a folder of their own and are gone with it afterwards, whatever happens.
/// Throws Failure: BadData rows with too many holes, too little memory for Ward; BadFile a folder of temporary files
/// that is not there, cannot be written to, has too little room or fills up; Stopped on Ctrl-C.
OwnedTree BuildTree(const std::string& table, const ClusterData& data, const ClusterOptions& options,
                    NCProgress* progress, Notes* notes);

/// "5.7 MiB" and the like.
std::string BytesText(std::uint64_t bytes);

}  // namespace kalmia::app
