#pragma once

#include <optional>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/OPLSValidation.h"
#include "kalmia/analysis/validation/PermutationTest.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// An OPLS model of a table and what judges it.
struct OPLSAnalysis {
  ValidationRecipe recipe;                   ///< by which it was judged
  OPLSResult fit;                            ///< `notes` are of the validation too
  std::optional<OPLSValidation> validation;  ///< of full refits alone
  std::optional<PermutationTest> permutation;  ///< of the numbers of components; nothing of 0 of them
};

/// As Analyse of a PLS recipe does. By refits, 0 components, the mean of Y, may be chosen; the number of predictive
/// components is that of the validation. `resumed`, a cross-validation by component to go on from, may be null.
/// None takes a number of orthogonal components.
/// Throws as Analyse of a PLS recipe, and BadRequest for `resumed` with another method than Component.
KALMIA_EXPORT OPLSAnalysis Analyse(const OPLSRecipe& recipe, const Table& table,
                                   const ValidationRecipe& validation = {}, NCProgress* progress = nullptr,
                                   const StoredOPLSCv* resumed = nullptr);

}  // namespace kalmia::analysis
