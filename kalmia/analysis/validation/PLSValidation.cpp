#include "kalmia/analysis/validation/PLSValidation.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/analysis/validation/internal/PLSSeries.h"
#include "kalmia/analysis/validation/internal/YRefits.h"

namespace kalmia::analysis {

PLSValidation Validate(const PLSRecipe& recipe, const Table& table, const ValidationRecipe& validation,
                       NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] {
    YRefits refits{recipe, recipe.components, std::make_unique<PLSFamily>()};
    if (validation.nested && !recipe.components) {
      refits.chooseBy = [&](const std::vector<std::size_t>& rows, NCProgress* ofRound) {
        YRefits ofRows{recipe, std::nullopt, std::make_unique<PLSFamily>()};
        return RunYRefits(std::move(ofRows), table, validation, ofRound, &rows).model;
      };
    }
    return PLSValidation{RunYRefits(std::move(refits), table, validation, progress)};
  });
}

}  // namespace kalmia::analysis
