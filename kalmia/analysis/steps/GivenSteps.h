#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/steps/StepChain.h"

namespace kalmia::analysis {

/// What the preprocessing of X begins with: steps that have yet to learn, or a chain that has learnt.
struct GivenSteps {
  std::string name;  ///< how messages call the source
  std::vector<Step> steps;
  std::optional<StepChain> chain;
};

}  // namespace kalmia::analysis
