#pragma once

#include <vector>

#include "kalmia/analysis/steps/StepChain.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/signal/Derivate.h"

namespace kalmia::analysis {

/// Slides a window along rows, for smooth or derivative.
class WindowStep {
 public:
  explicit WindowStep(const LearntStep& learnt);

  /// What Derivate makes of the row, but for this: a cell is missing only where the cells of its window do not
  /// determine the polynomial, not where a slope or the result happens to be -99. Such a result is there, as the next
  /// float. The row is at least as long as the window: not checked. Asks `progress`, and so
  /// throws Stopped, however long the row is.
  std::vector<float> Slid(const NCDataVector<float>& row, WorkProgress* progress) const;

 private:
  NCDataVector<float> AsItIs(const NCDataVector<float>& row, float spacing) const;
  /// Of one window, by way of cells so small that nothing in or behind them reaches -99: a power of 2 changes no other
  /// bit of a cell. One that is 2^66 times smaller than the largest of the window is rounded.
  std::vector<float> OfSmall(const NCDataVector<float>& window) const;
  /// The missing ones of what the row has become, each from its window alone.
  void FindLost(const NCDataVector<float>& row, std::vector<float>* cells, WorkProgress* progress) const;

  int order_;  ///< of the derivative; 0: the smoothed row is wanted
  int width_;  ///< of the window, in channels
  float spacing_;
  Derivate<float> window_;
};

}  // namespace kalmia::analysis
