#pragma once

#include <cstdint>
#include <string>

#include "kalmia/analysis/cluster/ClusterData.h"
#include "kalmia/analysis/cluster/ClusterRecipe.h"
#include "kalmia/analysis/cluster/OwnedTree.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Clusters the rows. Distances that find no room in memory go into temporary files, with a note, which only single
/// linkage can use; the files are gone afterwards. `progress` may be null.
/// Throws BadData: rows with too many holes, too little memory for Ward; BadFile: a folder of temporary files that is
/// not there, cannot be written to, has too little room or fills up; Stopped where the bar wants to stop.
OwnedTree BuildTree(const std::string& table, const ClusterData& data, const ClusterRecipe& recipe,
                    NCProgress* progress, Notes* notes);

/// "5.7 MiB" and the like.
std::string BytesText(std::uint64_t bytes);

}  // namespace kalmia::analysis
