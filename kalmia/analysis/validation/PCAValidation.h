#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/ComponentChoice.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/LeftOutErrors.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// What refits say of principal components of N rows and K columns. Rows and columns are those of the fit.
struct PCAValidation {
  std::vector<std::string> rowNames;
  std::vector<std::string> xNames;
  Folds folds;                            ///< of the rows
  int columnGroups = 0;
  /// E_i,a is the sum over the cells of row i of the squared errors, as the mean over the repeats.
  RowErrors errors;
  std::optional<ComponentChoice> choice;  ///< nothing where the number was given
  int components = 0;                     ///< that were chosen, or given
  std::string whyNoneJudged;  ///< why not even one component could be judged; empty where one could

  // Of this number of components; empty where the rounds cannot have so many.
  std::vector<double> columnQ2;  ///< K: 1 - PRESS of the column / that of 0 components; not a number where that is 0
  /// Of the rows while they were left out, projected whole on the model of their round, as DistanceToModel has them,
  /// those of all repeats: not a number where a row has none.
  std::vector<double> distances;

  Notes notes;  ///< on the validation; Fit has those on the table

  /// Whether the figures of `components` are there.
  bool IsJudged() const { return static_cast<std::size_t>(components) <= errors.MostComponents(); }
};

/// Leaves each group of rows out once, for each repeat: steps that learn, shifts, centres, factors and loadings are
/// learnt from the other rows, as Fit learns them. A row's own cells make its scores, so that cells of the left-out
/// rows leave too, those of each group of columns in turn (see ColumnFolds): the row's other cells give its scores, by
/// least squares on their loadings, and these predict the cells that left, with 0, 1, 2, ... components. 0 components
/// predict the mean of the rows that stayed in, whatever the scaling. Errors are in the scaled units of the whole
/// table, which are constants.
///
/// There are as many groups of columns as of rows, K at most. The most components are those that all rounds can have:
/// min(rows - 1, columns with two different cells in these rows), fewer than the cells that are left of a row, fewer
/// where nothing is left of X in a round, and 15, or the given number. A row with no more cells than components outside
/// a group of columns counts for no number of components, which a note says; where that would be more than a tenth of
/// the rows, the number of components falls (RowsToPredict).
/// In a round, a column without two different cells has no say and is predicted by what it has; one without a cell is
/// not predicted; a note counts them. With steps that learn, columns that a round lacks are not predicted in it.
/// A component of which the cells outside a group say nothing has no score from them.
///
/// Neighbours in a spectrum come into different groups and predict each other, so that many components of spectra seem
/// worth keeping.
///
/// `progress` may be null. The same bits for any number of threads. Cost: a fit for each round, and for each row with
/// holes some K A^2 operations.
/// Throws Failure as Fit does; BadRequest for folds and rules that make no sense; BadData for a column of groups with
/// only one; Stopped where the bar wants to stop.
/// Source: R. Bro, K. Kjeldahl, A. K. Smilde, H. A. L. Kiers, Anal. Bioanal. Chem. 390 (2008) 1241-1251.
KALMIA_EXPORT PCAValidation Validate(const PCARecipe& recipe, const Table& table,
                                     const ValidationRecipe& validation = {}, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
