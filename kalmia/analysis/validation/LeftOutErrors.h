#pragma once

#include <cstddef>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// How far models of a = 0 to A components are from rows that were left out, whatever they predict.
struct RowErrors {
  RealMatrix rowErrors;       ///< N x (A + 1): E_i,a; not a number of a row that does not count
  std::vector<double> press;  ///< PRESS_a = sum over i of E_i,a
  std::vector<double> q2;     ///< 1 - PRESS_a / PRESS_0: 0 for a = 0; not a number where PRESS_0 is 0
  std::size_t unpredictedRows = 0;  ///< not predicted in some repeat, for some a

  std::size_t MostComponents() const { return press.size() - 1; }
};

/// PRESS and Q2 of `rowErrors`, whose rows either count in all columns or in none. Sums run over the rows in order.
KALMIA_EXPORT void SumRowErrors(RowErrors* errors);

/// How far predictions of left-out rows are from what was measured: N rows, M columns of Y, models of a = 0 to A
/// components. In the units of the table, e_ij,a is the measured less the predicted value and s_j the standard
/// deviation (divisor n - 1) of all measured values of column j: a constant of the table, which weighs the columns and
/// tells the predictions nothing. A column counts if it has spread (s_j > 0), a cell if it is measured in a column that
/// counts and its row is predicted in each repeat and for each a. e^2 is the mean over the repeats.
/// E_i,a = sum over j of e_ij,a^2 / s_j^2; a row counts that has a cell which counts.
struct LeftOutErrors : RowErrors {
  /// e^2 of each cell, N x M, for each a; not a number where it does not count.
  std::vector<RealMatrix> squaredErrors;
  /// N x M for each a: the mean over the repeats; not a number where one of them has none.
  std::vector<RealMatrix> predicted;
  std::vector<double> deviations;  ///< s_j; 0 of a column without spread
  /// (A + 1) x M: sqrt(sum over i of e_ij,a^2 / n_j) of the n_j cells of the column that count, no degrees of freedom
  /// taken off; not a number where there are none.
  RealMatrix rmsecv;
  RealMatrix q2PerY;  ///< (A + 1) x M: 1 - sum over i of e_ij,a^2 / the same for a = 0
  std::vector<std::size_t> columnsWithoutSpread;  ///< all measured values alike, or fewer than two of them
};

/// Judges predictions[repeat][a], each N x M as `y` is, shapes not checked; there is one repeat at least, and all have
/// the same A. a = 0 is the mean of the rows that stayed in. Missing: a cell of `y` that is not a number is not
/// measured; a prediction that is not a finite number is none.
/// Throws BadData where no column has spread, or no row with a measured value is predicted; Stopped where `progress`,
/// which may be null, wants to stop.
/// Cost: one pass over the predictions. Sums run over the rows in order.
/// Sources: M. Stone, J. R. Stat. Soc. B 36 (1974) 111-147; D. M. Allen, Technometrics 16 (1974) 125-127; V. Consonni,
/// D. Ballabio, R. Todeschini, J. Chemometrics 24 (2010) 194-201, who compare definitions of Q2.
KALMIA_EXPORT LeftOutErrors JudgeLeftOutRows(const RealMatrix& y,
                                             const std::vector<std::vector<RealMatrix>>& predictions,
                                             NCProgress* progress = nullptr);

/// The standard deviation (divisor n - 1) of the measured values of each column; exactly 0 where all are alike or there
/// are fewer than two.
KALMIA_EXPORT std::vector<double> ColumnDeviations(const RealMatrix& y);

}  // namespace kalmia::analysis
