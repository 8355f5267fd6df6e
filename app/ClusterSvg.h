#pragma once

#include <string>

#include "app/ClusterResult.h"

namespace kalmia::app {

/// A drawing of the tree. Labels that would overlap are thinned out, beyond 200 rows.
std::string ClusterSvg(const ClusterResult& result);

}  // namespace kalmia::app
