#pragma once

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

struct O2PLSValidation;

/// Judges the model of these numbers as Validate does, whatever numbers the recipe has; the mean alone without a joint
/// component.
O2PLSValidation RefitO2PLS(const O2PLSRecipe& recipe, const O2PLSNumbers& numbers, const Table& xTable,
                           const Table& yTable, const ValidationRecipe& validation, NCProgress* progress);

}  // namespace kalmia::analysis
