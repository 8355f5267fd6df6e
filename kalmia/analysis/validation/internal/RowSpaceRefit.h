#pragma once

#include <cstddef>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/table/SharedWork.h"
#include "kalmia/analysis/validation/internal/SourceX.h"
#include "kalmia/pcapls/NCScale.h"

namespace kalmia::analysis {

/// PLS models of the same rows of X for many Y side by side. What depends on X alone is computed once.
///
/// With the scaled X of n rows and f what is left of the scaled Y, a score of unit length is t ~ (I - T T') X X' f q,
/// orthogonalised twice, where q is the dominant eigenvector of f' X X' f, 1 for one Y column; the next f is f - t t'f.
/// Each t is X X' v for a v that goes along, so that other rows, x, have the scores x X' v. The models are those of
/// NIPALS with deflation of X, to the rounding of doubles.
/// Source: S. Rannar, F. Lindgren, P. Geladi, S. Wold, J. Chemometrics 8 (1994), the kernel of the rows.
class RowSpaceRefit {
 public:
  /// X without holes; centred and scaled by the fitted rows. A column in which they are all alike has no say.
  /// `proceed` is told of the share of the work that is done. On all threads; the same bits for any number of them.
  RowSpaceRefit(const SplitX& x, NCScale::Scaling scaling, const Proceed& proceed);

  /// What the models say of the fitted and of the left-out rows; columns as those of Y.
  struct Predictions {
    RealMatrix fitted;
    RealMatrix leftOut;
    std::vector<double> means;  ///< of the columns of Y: predictions without a component
    /// Components of each run: fewer than were asked for where nothing was left of X or Y. A Y without spread has all.
    std::vector<int> components;
  };

  /// Fits `components` components at most, fewer where nothing is left of X or Y, to each of `runs` Y without holes:
  /// column j * runs + r of `y` is column j of run r. By one thread; several may call it at once.
  Predictions Fit(const RealMatrix& y, std::size_t runs, NCScale::Scaling scalingOfY, int components) const;

 private:
  class Models;

  void FormProducts(const Proceed& proceed);
  /// Rows `begin` to `end` - 1 of X X' by the vectors, a column each.
  RealMatrix Product(std::size_t begin, std::size_t end, const RealMatrix& vectors) const;

  std::size_t rows_;     ///< fitted ones
  RealMatrix columns_;   ///< the scaled columns of X, a row each: the fitted rows, then the left-out ones
  RealMatrix products_;  ///< of all rows with the fitted ones; none where there are fewer columns than half the rows
};

}  // namespace kalmia::analysis
