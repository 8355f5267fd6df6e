#pragma once

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/RefitValidation.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// What full refits say of an OPLS model of p predictive components: model 0 is the mean, model 1 has the predictive
/// components alone, and model 1 + k has k orthogonal ones too.
struct OPLSValidation : RefitValidation {
  int Predictive() const { return block; }
  static int OrthogonalOf(std::size_t ofModel) { return ofModel == 0 ? 0 : static_cast<int>(ofModel) - 1; }
};

/// As Validate of a PLS recipe does: each round learns everything from the rows that stay in. Components are counted
/// together, predictive and orthogonal ones, in the most that rounds can have, in the degrees of freedom of CV-ANOVA
/// and in the distances; without a given number of orthogonal components models have 15 at most.
///
/// The number of predictive components is the given one, cut to the number of Y columns, or as many as X and Y of all
/// rows have in common; all rounds take the same. Where a round cannot have so many, as where one of the Y columns is
/// constant in it, the mean alone is judged. A nested validation chooses the number of orthogonal components alone.
/// With one complete Y and complete X model a predicts what PLS of a components does, up to roundings.
/// Throws what Validate of a PLS recipe does.
/// Source of the models: see NCOPLS.
KALMIA_EXPORT OPLSValidation Validate(const OPLSRecipe& recipe, const Table& table,
                                      const ValidationRecipe& validation = {}, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
