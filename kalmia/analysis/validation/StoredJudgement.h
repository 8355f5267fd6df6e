#pragma once

#include "kalmia/analysis/model/StoredValidation.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/validation/O2PLSValidation.h"
#include "kalmia/analysis/validation/PCAValidation.h"
#include "kalmia/analysis/validation/RefitValidation.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// What a stored model takes from the full refits that judged it.

/// What DescribeRows takes: errors, predictions and distances of the left-out rows, of the model's number of
/// components. Empty where not all rounds can have so many.
KALMIA_EXPORT LeftOutFigures LeftOutFiguresOf(const RefitValidation& validation);
KALMIA_EXPORT LeftOutFigures LeftOutFiguresOf(const PCAValidation& validation);

/// The same of an O2PLS model that predicts Y from X: predictions of Y, and distances of the rows of X; and of one that
/// is turned around.
KALMIA_EXPORT LeftOutFigures LeftOutFiguresOfX(const O2PLSValidation& validation);
KALMIA_EXPORT LeftOutFigures LeftOutFiguresOfY(const O2PLSValidation& validation);

/// What the model file tells of each number of components. `recipe` is what the validation went by.
KALMIA_EXPORT StoredValidation JudgementOf(const RefitValidation& validation, const ValidationRecipe& recipe);
KALMIA_EXPORT StoredValidation JudgementOf(const PCAValidation& validation, const ValidationRecipe& recipe);

}  // namespace kalmia::analysis
