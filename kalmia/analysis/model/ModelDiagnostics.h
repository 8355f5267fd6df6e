#pragma once

#include <vector>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// What is computed from a fitted model of A components, N rows, K columns in X and M in Y. Vectors count from 0; "not a
// number" says that nothing can be computed.

/// Coefficients in the units of the file: y_j = intercept_j + sum over k of x_k slope_kj.
struct Coefficients {
  std::vector<double> intercepts;           ///< M
  std::vector<std::vector<double>> slopes;  ///< K rows of M
};

/// From B = W* C' in scaled units: slope_kj = B_kj f_k / g_j and intercept_j = m_j - sum over k of slope_kj c_k, where
/// c_k, f_k are centre and factor of X column k and m_j, g_j those of Y column j (0 and 1 where there is none).
KALMIA_EXPORT Coefficients CoefficientsInOriginalUnits(const NCPLS& model, const ColumnScaling& xScaling,
                                         const ColumnScaling& yScaling);

/// Variable importance in projection of each X column, K cells, of a model with components:
/// VIP_k = sqrt(K sum_a(S_a w_ak^2) / sum_a S_a), S_a = c_a'c_a t_a't_a, the sum of squares of Y that component a
/// describes. Their squares sum to K.
/// Source: Wold, Johansson & Cocchi (1993), in Kubinyi (ed.), 3D QSAR in Drug Design, 523-550.
KALMIA_EXPORT std::vector<double> VariableImportance(const NCPLS& model);
/// The same of the first 1, 2, ... A components: A vectors of K cells.
KALMIA_EXPORT std::vector<std::vector<double>> VariableImportances(const NCPLS& model);

/// Hotelling's T2 of each row, N cells, from the scores, one component a row:
/// sum over a of (t_ia - mean_a)^2 / s_a^2, with mean and variance (divisor n - 1)
/// of the scores of component a. Over all rows they sum to A (N - 1). A row with a missing score has none.
KALMIA_EXPORT std::vector<double> HotellingT2(const NCDataMatrix<float>& tPrim);

/// What is left of one row of X after A components.
struct RowResidual {
  double sumOfSquares = 0.0;
  int present = 0;  ///< cells that the row has
};

KALMIA_EXPORT std::vector<RowResidual> RowResiduals(const NCDataMatrix<float>& xResiduals);

/// s of a row: sqrt(sum e^2 / (present - A)); not a number with A present cells or fewer.
KALMIA_EXPORT double ResidualDeviation(const RowResidual& row, int components);

/// The pooled s of all rows that have one: the root of the sum of their e^2 over the sum of their present - A. Not a
/// number of A + 1 rows or fewer, which A components describe but for roundings, as n centred rows have n - 1
/// directions.
KALMIA_EXPORT double PooledDeviation(const std::vector<RowResidual>& rows, int components);

}  // namespace kalmia::analysis
