#include "kalmia/analysis/validation/YPermutations.h"

#include <memory>

#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/analysis/validation/internal/OPLSSeries.h"
#include "kalmia/analysis/validation/internal/PLSSeries.h"
#include "kalmia/analysis/validation/internal/PermutedRefits.h"

namespace kalmia::analysis {

PermutationTest PermuteY(const PLSRecipe& recipe, const Table& table, const Folds& folds, int model,
                         const PermutationRecipe& permutations, NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] {
    return RunPermutations({recipe, std::make_unique<PLSFamily>(), model, /*isPLS=*/true}, table, folds,
                           permutations, progress);
  });
}

PermutationTest PermuteY(const OPLSRecipe& recipe, const Table& table, const Folds& folds, int model,
                         const PermutationRecipe& permutations, NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] {
    return RunPermutations({recipe, FamilyOf(recipe, table), model, /*isPLS=*/false}, table, folds,
                           permutations, progress);
  });
}

}  // namespace kalmia::analysis
