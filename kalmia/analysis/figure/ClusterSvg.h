#pragma once

#include <string>

#include "kalmia/analysis/cluster/ClusterResult.h"

namespace kalmia::analysis {

/// A drawing of the tree. Labels that would overlap are thinned out, beyond 200 rows.
std::string ClusterSvg(const ClusterResult& result);

}  // namespace kalmia::analysis
