#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/RefitValidation.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/analysis/validation/internal/ComponentSeries.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Models of Y that are to be judged.
struct YRefits {
  const YRecipe& recipe;
  std::optional<int> models;  ///< number of the last one, which is the model; nothing where the rule is to choose
  std::function<std::unique_ptr<SeriesFamily>()> makeFamily;
};

/// The rounds of such models, which are the same whatever the family; see Validate of a PLS recipe.
RefitValidation RunYRefits(const YRefits& refits, const Table& table, const ValidationRecipe& validation,
                           NCProgress* progress);

}  // namespace kalmia::analysis
