#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/PermutationTest.h"
#include "kalmia/analysis/validation/internal/ComponentSeries.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A model of which Y is to be permuted.
struct PermutedRefits {
  const YRecipe& recipe;
  std::unique_ptr<SeriesFamily> family;
  int model;   ///< its number in the series
  bool isPLS;  ///< of several Y columns too; of one every family has the models of PLS
};

/// The permutation test of such a model, whatever the family; see PermuteY.
PermutationTest RunPermutations(PermutedRefits refits, const Table& table, const Folds& folds,
                                const PermutationRecipe& permutations, NCProgress* progress);

}  // namespace kalmia::analysis
