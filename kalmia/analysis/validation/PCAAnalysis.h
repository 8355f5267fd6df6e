#pragma once

#include <optional>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/PCAValidation.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Principal components of a table and what judges them.
struct PCAAnalysis {
  ValidationRecipe recipe;                  ///< by which they were judged
  PCAResult fit;                            ///< `notes` are of the validation too
  std::optional<PCAValidation> validation;  ///< of full refits alone
};

/// As Analyse of a PLS recipe does. By refits, 0 components may be chosen, the mean of each column; Q2 of the columns
/// is that of the validation, not numbers where not all rounds can have so many components. The records of the fit go
/// on beyond its components, as far as the validation goes.
/// Throws as Analyse of a PLS recipe.
KALMIA_EXPORT PCAAnalysis Analyse(const PCARecipe& recipe, const Table& table,
                                  const ValidationRecipe& validation = {}, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
