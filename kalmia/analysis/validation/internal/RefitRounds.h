#pragma once

#include <functional>
#include <set>
#include <string>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/Folds.h"

namespace kalmia::analysis {

// What validations by refit have in common, whatever is fitted.

/// Folds of so many rows. Notes a cut of the groups.
Folds DealRows(std::size_t rows, int groups, const FoldDealing& dealing, Notes* notes);

/// The folds of the rows that the model sees: by the labels of the fit's column of groups where it has one. Notes a
/// cut.
Folds FoldsOf(const FitRecipe& recipe, const Table& table, const ModelData& data, const FoldDealing& dealing,
              Notes* notes);

/// Throws BadData where the rows that stay in while a group is left out can make no groups of their own, by which each
/// round is to choose. `groupColumn` has the labels of the groups, if that is where they come from.
void RequireRowsToNest(const Folds& folds, const std::string& groupColumn);

/// Calls `round` for each group of each repeat. BadData of a round names the group that is left out. Throws Stopped.
void ForEachRound(const Folds& folds, WorkProgress* progress,
                  const std::function<void(int repeat, int group)>& round);

/// Counts and names the columns of a block, in their order, that had no spread in some round.
void NoteColumnsWithoutSpread(const std::string& block, const std::vector<std::string>& columns,
                              const std::set<std::string>& withoutSpread, Notes* notes);

}  // namespace kalmia::analysis
