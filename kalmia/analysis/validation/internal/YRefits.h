#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>
#include <string>
#include <vector>

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
  std::unique_ptr<SeriesFamily> family;
  /// Chooses the model by some rows alone, from 0 among those that the model sees; nothing where that is not asked for.
  std::function<std::size_t(const std::vector<std::size_t>& rows, NCProgress* progress)> chooseBy = nullptr;
};

/// The rounds of such models, which are the same whatever the family; see Validate of a PLS recipe. `rows`, from 0 among
/// those that the model sees, are all where it is null.
RefitValidation RunYRefits(YRefits refits, const Table& table, const ValidationRecipe& validation,
                           NCProgress* progress, const std::vector<std::size_t>* rows = nullptr);

}  // namespace kalmia::analysis
