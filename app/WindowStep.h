#pragma once

#include <vector>

#include "app/StepChain.h"
#include "kalmia/signal/Derivate.h"

namespace kalmia::app {

/// Slides a window along rows, for smooth or derivative.
class WindowStep {
 public:
  explicit WindowStep(const LearntStep& learnt);

  /// What Derivate makes of the row, but for this: a cell is missing only where the cells of its window do not
  /// determine the polynomial, not where a slope or the result happens to be -99. Such a result is there, as the next
  /// float.
  std::vector<float> Slid(const NCDataVector<float>& row) const;

 private:
  NCDataVector<float> AsItIs(const NCDataVector<float>& row, float spacing) const;

  int order_;  ///< of the derivative; 0: the smoothed row is wanted
  float spacing_;
  Derivate<float> window_;
};

}  // namespace kalmia::app
