#pragma once

#include <string>

#include "kalmia/analysis/cluster/ClusterResult.h"

namespace kalmia::analysis {

/// The tree in the Newick format. The length of a branch is the difference between the heights of its ends.
std::string NewickText(const ClusterResult& result);

}  // namespace kalmia::analysis
