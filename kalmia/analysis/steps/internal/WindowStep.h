#pragma once

#include <vector>

#include "kalmia/analysis/steps/LearntStep.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

/// Smooths rows of equally spaced cells and takes their derivatives: fits a quadratic or a cubic by least squares to
/// the present cells of a window, which slides along the row, and evaluates it in the middle of the window. The first
/// and the last half window come from the polynomials of the first and the last full window. A cell is missing where
/// its window has no more cells than the degree of the polynomial. The same fit as Derivate's, in double.
/// Source: Savitzky & Golay (1964), Anal. Chem. 36, 1627-1639; edges: Gorry (1990), Anal. Chem. 62, 570-573.
class WindowStep {
 public:
  /// For smooth or derivative.
  explicit WindowStep(const LearntStep& learnt);

  /// What becomes of the row, which is at least as long as the window: not checked. Asks `progress`, and so throws
  /// Stopped, however long the row is. Cost: one multiplication for each cell of each window; some ten where it has
  /// holes.
  std::vector<double> Slid(const std::vector<double>& row, WorkProgress* progress) const;

 private:
  /// Where the places of a window lie: from -1 to 1.
  double Place(int i) const { return static_cast<double>(i - half_) / half_; }
  /// What is wanted at places `from` to `to` - 1 of the window that begins at `window`, from 0, missing or not.
  void Evaluate(const double* window, int from, int to, double* cells) const;
  /// What is wanted in the middle of `count` windows without holes, of which the first begins at `cells`.
  void EvaluateMiddles(const double* cells, int count, double* middles) const;

  int degree_;
  int order_;  ///< of the derivative; 0: the smoothed row is wanted
  int width_;  ///< of the window, in channels
  int half_;
  double unit_;                  ///< of the derivative, for places as Place gives them
  std::vector<double> weights_;  ///< of the cells of a window without holes, for its middle
};

}  // namespace kalmia::analysis
