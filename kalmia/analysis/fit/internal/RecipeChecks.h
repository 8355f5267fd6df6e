#pragma once

#include "kalmia/analysis/fit/FitRecipes.h"

namespace kalmia::analysis {

// Throw BadRequest for a recipe that makes no sense with any table.

void CheckRecipe(const PCARecipe& recipe);
void CheckRecipe(const PLSRecipe& recipe);
void CheckRecipe(const OPLSRecipe& recipe);
void CheckRecipe(const O2PLSRecipe& recipe);
void CheckRecipe(const FilterRecipe& recipe);
void CheckRecipe(const FillRecipe& recipe);

}  // namespace kalmia::analysis
