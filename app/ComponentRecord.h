#pragma once

#include <vector>

namespace kalmia::app {

/// How much of Y one component describes and predicts; shares of 1. Not a number where nothing can be said.
struct YShare {
  double r2 = 0.0;     ///< of the sum of squares of Y, described by this component
  double r2Cum = 0.0;  ///< by all components up to this one
  double q2 = 0.0;     ///< of what was left of Y, predicted in cross-validation
  double q2Cum = 0.0;  ///< over all components up to this one
};

/// What is known of one component.
struct ComponentRecord {
  bool kept = false;
  bool significant = false;  ///< Q2 is strictly above its limit
  int iterations = 0;
  double r2x = 0.0;  ///< share of the sum of squares of X
  double r2xCum = 0.0;
  YShare y;  ///< of all Y columns together
  double q2Limit = 0.0;
  std::vector<YShare> perY;  ///< of each Y column
};

}  // namespace kalmia::app
