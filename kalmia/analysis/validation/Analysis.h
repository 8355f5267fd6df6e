#pragma once

#include <optional>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/PLSValidation.h"
#include "kalmia/analysis/validation/PermutationTest.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A PLS model of a table and what judges it.
struct PLSAnalysis {
  ValidationRecipe recipe;                  ///< by which it was judged
  PLSResult fit;                            ///< `notes` are of the validation too
  std::optional<PLSValidation> validation;  ///< of full refits alone
  std::optional<PermutationTest> permutation;  ///< of the number of components; nothing of 0 of them
};

/// Judges models of the recipe as `validation` says, and fits the one that was chosen or given to all rows.
///
/// Refit: see Validate. RMSECV of the stored model is that of its number of components, not a number where not all
/// rounds can have so many. 0 components, the mean of Y, may be chosen and are a model like others. The records of the
/// fit go on beyond its components, as far as the validation goes, with what these would describe.
/// Component: see Fit; groups are interleaved, or of the column. Where no component is kept there is no model.
/// None: nothing is left out, RMSECV is not a number.
///
/// `progress` may be null. Throws Failure as Validate and Fit do; BadRequest for None without a number of components
/// and for Component with rows dealt otherwise.
KALMIA_EXPORT PLSAnalysis Analyse(const PLSRecipe& recipe, const Table& table,
                                  const ValidationRecipe& validation = {}, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
