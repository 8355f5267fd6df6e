#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/LeftOutErrors.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// What full refits say of an O2PLS model. Rows and columns are those of the fit. Model 0 is the mean of each column,
/// model 1 the one of these numbers.
struct O2PLSValidation {
  std::vector<std::string> rowNames;
  std::vector<std::string> xNames;
  std::vector<std::string> yNames;
  Folds folds;
  O2PLSNumbers numbers;
  LeftOutErrors y;  ///< of Y, predicted from X
  LeftOutErrors x;  ///< of X, predicted from Y

  // Of model 1; empty where a round cannot have it. Normalised distances of the rows while they were left out, those of
  // all repeats: not a number where a row has none.
  std::vector<double> xDistances;  ///< of the rows of X
  std::vector<double> yDistances;  ///< of the rows of Y

  Notes notes;  ///< on the validation; Fit has those on the tables

  /// Whether the model is judged, and not the mean alone.
  bool IsJudged() const { return y.MostComponents() > 0; }
};

/// Leaves each group of rows out once, for each repeat, and predicts Y of these rows from X, and X from Y: shifts,
/// centres, factors and a model of the numbers are learnt from the other rows, as Fit learns them, but that unique
/// components may be related to the other block. With `fill`, missing cells are estimated anew from these rows; cells
/// that a left-out row lacks are passed over, as Predict does, and not counted.
///
/// Numbers that the recipe does not give are those that Fit finds by its own rules, in all rows: there is nothing to
/// choose here. Where a round cannot have so many components, the mean alone is judged, and a note says so.
/// In a round, a column without two different cells has no say and is predicted by what it has; a note counts them. A
/// column of X without a cell there is not predicted.
///
/// `progress` may be null. The same bits for any number of threads. Cost: a fit for each round.
/// Throws Failure as Fit does; BadRequest for folds that make no sense; BadData for a Y column without a value in a
/// round; Stopped where the bar wants to stop.
KALMIA_EXPORT O2PLSValidation Validate(const O2PLSRecipe& recipe, const Table& xTable, const Table& yTable,
                                       const ValidationRecipe& validation = {}, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
