#pragma once

#include <vector>

#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/model/StoredValidation.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/validation/O2PLSValidation.h"
#include "kalmia/analysis/validation/OPLSValidation.h"
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

/// What the model file tells of each number of components, with CV-ANOVA and the standard errors of the jack-knife.
/// `recipe` is what the validation went by, `components` are the records of the fit, which tell what they describe.
/// Permutations and VIP are for Analyse to add.
KALMIA_EXPORT StoredValidation JudgementOf(const RefitValidation& validation, const ValidationRecipe& recipe);
KALMIA_EXPORT StoredValidation JudgementOf(const OPLSValidation& validation, const ValidationRecipe& recipe);
KALMIA_EXPORT StoredValidation JudgementOf(const PCAValidation& validation, const ValidationRecipe& recipe,
                                           const std::vector<PCAComponentRecord>& components);
KALMIA_EXPORT StoredValidation JudgementOf(const O2PLSValidation& validation, const ValidationRecipe& recipe,
                                           const std::vector<O2PLSComponentRecord>& components);

}  // namespace kalmia::analysis
