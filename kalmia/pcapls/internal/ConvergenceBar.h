#pragma once

#include <memory>

#include "kalmia/support/NCProgress.h"

namespace kalmia {

/// A relative squared change of a score vector down here counts as none at all.
constexpr double kNoChange = 1e-30;

/// What a loop that has nothing left to change answers instead of MeasureOfChange.
constexpr double kConverged = -1.0;

/// m = (log10(d) + 10) * 10 of the relative squared change d > 0 that a round made: at or below 0 an iteration has
/// converged, d <= 1e-10. A bar that runs from -m to 0 fills as the logarithm of d falls.
double MeasureOfChange(double change);

/// The bar of the rounds of one component: the caller's, or one that is opened for it and closed at the end.
class ConvergenceBar {
 public:
  explicit ConvergenceBar(NCProgress* callers) : bar_(callers) {}

  NCProgress* Get() const { return bar_; }  ///< null until Open where the caller has none
  /// Opens a bar from -measure to 0; its title is the text `title` with the component's number.
  void Open(unsigned title, int component, float measure);

 private:
  NCProgress* bar_;
  std::unique_ptr<NCProgress> own_;
};

}  // namespace kalmia
