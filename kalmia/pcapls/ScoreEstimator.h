#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// Estimates the scores of observations on the loadings of a PCA model, one observation at a time, each independent of
/// the others.
class KALMIA_EXPORT ScoreEstimator {
 public:
  /// P (A x K) is the model's, one component per row. `maxIterations` limits the rounds of the regression below.
  ScoreEstimator(const NCDataMatrix<float>& P, int maxIterations);

  /// Writes the scores of x into column `observation` of T. Does nothing without variables.
  /// Shape: x has K cells, T A rows and that column, which is not checked.
  ///
  /// A complete x: t_a = p_a'r for one component after the other, where r starts as x and loses t_a p_a each time, all
  /// in float; the scores are then right for loadings that are not quite orthogonal. Missing loadings are left out.
  ///
  /// An x with holes: PLS regression of x on the loadings, with variables as observations and components as variables,
  /// because over the present variables the loadings are not orthogonal. It ends at min(present cells, A) components;
  /// at a component with a y weight of 2 or more; when at most 1e-5 of the loadings' sum of squares is left; and,
  /// without an error, when it cannot go on or its bar (each component opens one) says stop. The components found so
  /// far count. If all coefficients are missing, as for an x without cells, the scores are 0; a single missing one is a
  /// missing score.
  /// Throws only std::bad_alloc.
  void GetT(NCDataMatrix<float>& T, int observation, const NCDataVector<float>& x) const;

 private:
  void EstimateWhitoutMisVal(NCDataMatrix<float>* T, int observation, const NCDataVector<float>& x) const;
  void EstimateWhitMisVal(NCDataMatrix<float>* T, int observation, const NCDataVector<float>& x) const;
  NCDataMatrix<float> CoefficientsOf(const NCDataVector<float>& x) const;

  NCDataMatrix<float> pprim_;        ///< A x K, which a complete observation is projected on
  NCDataMatrix<float> pTransposed_;  ///< K x A
  int maxIterations_;
};
