#pragma once

#include "kalmia/analysis/fit/BlockPair.h"
#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

/// Selects the columns of both blocks and brings the rows together: those with the same text in the column `id`, in the
/// order of the X table, or without `id` each row with the one in the same place. Columns without numbers, constant and
/// empty columns are left out, and, with `fill`, rows without a cell in one of the blocks, each kind with one note.
/// Throws BadData: a column that does not exist; a row without an id, an id that comes twice, no common id;
/// without `id` tables of different length; a block without a column that varies; a column of the same cells in
/// both blocks; a hole, unless the recipe says `fill`; fewer than two rows; a row without a group, fewer than two
/// groups; a cell that is no number. A column of groups is in neither block.
BlockPair SelectBlocks(const Table& xTable, const Table& yTable, const O2PLSRecipe& recipe, Notes* notes);

}  // namespace kalmia::analysis
