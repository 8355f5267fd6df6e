#pragma once

#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/validation/RefitValidation.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"

namespace kalmia::analysis {

// What the analyses of all families do beside validation and fit.

/// Throws BadRequest for None without given numbers of components and for Component with rows dealt otherwise than
/// interleaved.
void CheckMethod(const ValidationRecipe& validation, bool isNumberGiven);

/// Gives a fitted model the errors of left-out rows of its number of components.
void TakeErrors(const RefitValidation& validation, YModelInfo* model);

}  // namespace kalmia::analysis
