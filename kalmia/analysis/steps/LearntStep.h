#pragma once

#include <vector>

#include "kalmia/analysis/steps/Step.h"

namespace kalmia::analysis {

/// A step with what it took from the table that it was first applied to.
struct LearntStep {
  Step step;
  float spacing = 1.0F;        ///< of a derivative: between neighbouring channels, the number of its fewest digits
  std::vector<int> positions;  ///< of wavelet-compress: of the coefficients that are kept, from 1, in rising order
};

}  // namespace kalmia::analysis
