#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/ComponentChoice.h"
#include "kalmia/analysis/validation/CvAnova.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/JackKnife.h"
#include "kalmia/analysis/validation/LeftOutErrors.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// How a model is judged by rows that its models did not see.
struct ValidationRecipe {
  FoldRecipe folds;           ///< not read where the recipe of the fit has a column of groups
  SelectionRecipe selection;  ///< not read where the recipe of the fit gives the number of components
};

/// What full refits say of a PLS model of N rows, K columns of X and M of Y. Rows and columns are those of the fit.
struct PLSValidation {
  std::vector<std::string> rowNames;
  std::vector<std::string> xNames;
  std::vector<std::string> yNames;
  Folds folds;
  LeftOutErrors errors;                   ///< of 0 to as many components as all rounds can have
  std::optional<ComponentChoice> choice;  ///< nothing where the number was given
  int components = 0;                     ///< that were chosen, or given

  // Of this number of components; empty where the rounds cannot have so many.
  RealMatrix predicted;  ///< N x M: each row while it was left out; not a number where it could not be predicted
  std::vector<std::optional<CvAnova>> cvAnova;  ///< M
  /// Of the coefficients in the units of the table, M: cells are the slopes of X in their order, then the intercept.
  std::vector<JackKnifeResult> coefficients;
  /// Of the rows while they were left out, as DistanceToModel has them, those of all repeats: not a number where a row
  /// has none.
  std::vector<double> distances;

  Notes notes;  ///< on the validation; Fit has those on the table

  /// Whether the figures of `components` are there.
  bool IsJudged() const { return static_cast<std::size_t>(components) <= errors.MostComponents(); }
};

/// Leaves each group of rows out once, for each repeat: steps that learn, shifts, centres, factors and components are
/// learnt from the other rows, as Fit learns them, and the left-out rows are predicted, as Predict does, with 0, 1, ...
/// components. 0 components predict the mean of the rows that stayed in.
///
/// The most components are those that all rounds can have: min(rows - 1, X columns with two different cells in these
/// rows), fewer where nothing is left of X or Y in one of them, and 15, or the given number.
/// X columns without spread in a round have no say in its left-out rows; a note counts them. A Y column with one value
/// in a round, or equal ones, is predicted by it there. Rows that cannot be predicted, see PredictRows, count for no
/// number of components; a note counts them. Rows without a Y value are predicted, and count where Y has others.
///
/// `progress` may be null. The same bits for any number of threads. Cost: a fit for each round, and one of all rows.
/// Throws Failure as Fit does; BadRequest for folds and rules that make no sense; BadData for a column of groups with
/// only one, and for a Y column without a value in a round; Stopped where the bar wants to stop.
/// Sources: see LeftOutErrors, ComponentChoice, CvAnova and JackKnife.
KALMIA_EXPORT PLSValidation Validate(const PLSRecipe& recipe, const Table& table,
                                     const ValidationRecipe& validation = {}, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
