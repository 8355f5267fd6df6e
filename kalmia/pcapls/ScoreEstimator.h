#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// Estimates the scores of one observation after another on the loadings of a PCA model. It keeps nothing from one to
/// the next.
class KALMIA_EXPORT ScoreEstimator {
 public:
  /// P (A x K) is the model's, one component per row. `maxIterations` limits the rounds of the regression below.
  ScoreEstimator(const NCDataMatrix<float>& P, int maxIterations);

  /// Writes the scores of x into column `observation` of T. Does nothing without variables.
  /// Shape: x has K cells, T A rows and that column, which is not checked.
  ///
  /// A complete x: t_a = p_a'r for one component after the other, where r starts as x and loses t_a p_a each time, all
  /// in float; that keeps the scores right for loadings that are not quite orthogonal. A missing loading takes no part.
  ///
  /// An x with holes: PLS regression of x on the loadings, with the variables as observations and the components as
  /// variables, since loadings are no longer orthogonal over the variables that are present. It stops at min(cells
  /// present, A) components; at one with a y weight of 2 or more; when at most 1e-5 of the sum of squares of x is left
  /// of the loadings' own; or when it cannot go on or its bar (each component opens one) says stop, which is no error.
  /// The components found by then count. Coefficients that are missing all, as for an x without any cell, give scores
  /// of 0; a single one is a missing score.
  /// Throws std::bad_alloc alone.
  void GetT(NCDataMatrix<float>& T, int observation, const NCDataVector<float>& x) const;

 private:
  void EstimateWhitoutMisVal(NCDataMatrix<float>* T, int observation, const NCDataVector<float>& x) const;
  void EstimateWhitMisVal(NCDataMatrix<float>* T, int observation, const NCDataVector<float>& x) const;
  NCDataMatrix<float> CoefficientsOf(const NCDataVector<float>& x) const;

  NCDataMatrix<float> pprim_;        ///< A x K, which a complete observation is projected on
  NCDataMatrix<float> pTransposed_;  ///< K x A
  int maxIterations_;
};
