#include "kalmia/analysis/validation/OPLSValidation.h"

#include <algorithm>
#include <limits>

#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/analysis/validation/internal/OPLSSeries.h"
#include "kalmia/analysis/validation/internal/YRefits.h"

namespace kalmia::analysis {

namespace {

/// Number of the last model, the one with the given orthogonal components.
std::optional<int> LastModel(const std::optional<int>& orthogonal) {
  if (!orthogonal) return std::nullopt;
  return std::min(*orthogonal, std::numeric_limits<int>::max() - 1) + 1;
}

}  // namespace

OPLSValidation Validate(const OPLSRecipe& recipe, const Table& table, const ValidationRecipe& validation,
                        NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] {
    const YRefits refits{recipe, LastModel(recipe.components), [&] { return FamilyOf(recipe, table); }};
    return OPLSValidation{RunYRefits(refits, table, validation, progress)};
  });
}

}  // namespace kalmia::analysis
