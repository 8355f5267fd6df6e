#pragma once

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/RefitValidation.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// What full refits say of a PLS model: model a has a components.
struct PLSValidation : RefitValidation {};

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
/// only one, for a Y column without a value in a round, and, where the choice is nested, for a round in which only one
/// row or group of a column stays in; Stopped where the bar wants to stop.
/// Sources: see LeftOutErrors, ComponentChoice, CvAnova and JackKnife.
KALMIA_EXPORT PLSValidation Validate(const PLSRecipe& recipe, const Table& table,
                                     const ValidationRecipe& validation = {}, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
