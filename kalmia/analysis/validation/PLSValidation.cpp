#include "kalmia/analysis/validation/PLSValidation.h"

#include <memory>

#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/analysis/validation/internal/PLSSeries.h"
#include "kalmia/analysis/validation/internal/YRefits.h"

namespace kalmia::analysis {

PLSValidation Validate(const PLSRecipe& recipe, const Table& table, const ValidationRecipe& validation,
                       NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] {
    const YRefits refits{recipe, recipe.components, [] { return std::make_unique<PLSFamily>(); }};
    return PLSValidation{RunYRefits(refits, table, validation, progress)};
  });
}

}  // namespace kalmia::analysis
