#pragma once

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// What a stored model was made by: its columns, scaling, groups and numbers of components. Steps of preprocessing are
// given as the model has learnt them, and learn nothing anew. Rows are named by the column that named them. A model of
// classes knows these alone.

KALMIA_EXPORT PLSRecipe RecipeOf(const StoredPLS& model);
KALMIA_EXPORT OPLSRecipe RecipeOf(const StoredOPLS& model);

}  // namespace kalmia::analysis
