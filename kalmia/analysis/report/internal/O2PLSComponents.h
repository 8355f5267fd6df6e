#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

// What text, JSON and CSV say of the components of O2PLS, and of the shares of both blocks.

/// "joint 1", "X-unique 1", "Y-unique 1": the kind of each component, and its number among its kind.
std::vector<std::string> ComponentNames(const std::vector<O2PLSComponentRecord>& components);

/// Shares of the sum of squares of a scaled block.
struct BlockShares {
  double joint = 0.0;
  double unique = 0.0;
  double Rest() const { return 1.0 - joint - unique; }
};

/// Sums over the kept components.
BlockShares SharesOfX(const std::vector<O2PLSComponentRecord>& components);
BlockShares SharesOfY(const std::vector<O2PLSComponentRecord>& components);

/// One line for each block: joint, unique and the rest.
std::string SharesText(const std::vector<O2PLSComponentRecord>& components);
Json SharesJson(const std::vector<O2PLSComponentRecord>& components);

}  // namespace kalmia::analysis
