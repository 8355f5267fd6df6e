#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/Json.h"

namespace kalmia::analysis {

// O2PLS components as they are shown for a model just fitted and for a stored one.

/// "joint 1", "X-unique 1", "Y-unique 1": what each component is, and its number among those.
std::vector<std::string> O2PLSComponentNames(const std::vector<O2PLSComponentRecord>& components);

/// "significant", "significant for enough columns", "not significant", "too few rows to tell" or "not judged", with
/// ", not kept" behind it.
std::string O2PLSVerdict(const O2PLSComponentRecord& component);

/// One line for each component: R2X, R2Y, Q2 with its limit and the verdict.
std::string O2PLSComponentText(const std::vector<O2PLSComponentRecord>& components);
Json O2PLSComponentJson(const std::vector<O2PLSComponentRecord>& components);

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
