#pragma once

#include <vector>

#include "kalmia/analysis/steps/LearntStep.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

/// Smooths rows of equally spaced cells, or takes their derivatives: fits a quadratic or a cubic by least squares to
/// the present cells of a sliding window, and evaluates it in the middle of the window. The first and the last half
/// window come from the polynomials of the first and the last full window. A cell is missing where its window has no
/// more present cells than the degree of the polynomial. The same fit as Derivate's, in double.
/// Source: Savitzky & Golay (1964), Anal. Chem. 36, 1627-1639; edges: Gorry (1990), Anal. Chem. 62, 570-573.
class WindowStep {
 public:
  /// For smooth or derivative.
  explicit WindowStep(const LearntStep& learnt);

  /// The smoothed row or its derivative. The row must be at least as long as the window: not checked. Throws Stopped on
  /// a stop of the progress, within a row too. Cost: one multiplication for each cell of each window, some ten with
  /// holes.
  std::vector<double> Slid(const std::vector<double>& row, WorkProgress* progress) const;

 private:
  /// The place of cell i in its window, from -1 to 1.
  double Place(int i) const { return static_cast<double>(i - half_) / half_; }
  /// Results at places `from` to `to` - 1, from 0, of the window that begins at `window`; its cells may be missing.
  void Evaluate(const double* window, int from, int to, double* cells) const;
  /// Results in the middles of `count` windows without holes; the first begins at `cells`.
  void EvaluateMiddles(const double* cells, int count, double* middles) const;

  int degree_;
  int order_;  ///< of the derivative; 0: the smoothed row is wanted
  int width_;  ///< of the window, in channels
  int half_;
  double unit_;                  ///< of the derivative, for places as Place gives them
  std::vector<double> weights_;  ///< of the cells of a window without holes, for its middle
};

}  // namespace kalmia::analysis
