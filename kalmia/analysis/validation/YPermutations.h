#pragma once

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/PermutationTest.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Fits and validates a model of Y again for Y with its rows, missing cells with them, in random order; with the same
/// `folds` of the rows of the fit, as Validate has them. `model` is the number of the model, at least 1, as Validate
/// has it: components of PLS, 1 + orthogonal ones of OPLS, of which the predictive ones are those of the true Y. Where a
/// round of an order cannot have so many, all its rounds have the most that each of them can. Under a column of groups,
/// rows of a group stay together where all groups have one size; else rows change places, and a note says so.
///
/// With PRESS and its s_j as LeftOutErrors has them: Q2 = 1 - PRESS_a / PRESS_0, and R2 = 1 - SSE / SS of the model of
/// all rows, sums over the measured cells e_ij^2 / s_j^2 and those about the means. A run of which a round has no value
/// in some Y column has no figures.
///
/// Cost: a fit for each round and one of all rows, times n + 1. PLS, and OPLS of one Y column, of tables without a hole
/// is much faster: what depends on X alone is computed once a round, in double. The same bits for any number of
/// threads.
/// Throws Failure as Validate does; BadRequest for another number of runs, model or rows of the folds; Stopped.
KALMIA_EXPORT PermutationTest PermuteY(const PLSRecipe& recipe, const Table& table, const Folds& folds, int model,
                                       const PermutationRecipe& permutations, NCProgress* progress = nullptr);
KALMIA_EXPORT PermutationTest PermuteY(const OPLSRecipe& recipe, const Table& table, const Folds& folds, int model,
                                       const PermutationRecipe& permutations, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
