#pragma once

#include <string>

#include "kalmia/analysis/cluster/ClusterResult.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// A drawing of the tree. Labels that would overlap are thinned out, beyond 200 rows.
KALMIA_EXPORT std::string ClusterSvg(const ClusterResult& result);

}  // namespace kalmia::analysis
