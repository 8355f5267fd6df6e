#pragma once

#include "kalmia/analysis/validation/ComponentChoice.h"
#include "kalmia/analysis/validation/Folds.h"

namespace kalmia::analysis {

/// How a model is judged by rows that its models did not see.
struct ValidationRecipe {
  FoldRecipe folds;           ///< not read where the recipe of the fit has a column of groups
  SelectionRecipe selection;  ///< not read where the recipe of the fit gives the number of components
};

}  // namespace kalmia::analysis
