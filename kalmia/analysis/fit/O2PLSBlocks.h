#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// One of two blocks.
struct Block {
  std::string table;  ///< how messages call its file
  std::vector<std::string> names;
  std::vector<std::vector<double>> measured;  ///< the cells, column by column, in the units of its file
  NCDataMatrix<float> cells;                  ///< the same for the model, less the shifts
  std::vector<double> shifts;                 ///< see ShiftOf; empty where no column is shifted
  std::vector<std::string> textColumns;  ///< these and those below are no part of it
  std::vector<std::string> constantColumns;
  std::vector<std::string> emptyColumns;
};

/// Two blocks of the same rows.
struct BlockPair {
  Block x;
  Block y;
  std::vector<std::string> rowNames;
  std::vector<std::string> onlyInX;    ///< rows of one table that the other one lacks
  std::vector<std::string> onlyInY;
  std::vector<std::string> emptyRows;  ///< left out for want of any cell in X or in Y
  NCIntegralVector<int, -99> groups;   ///< cross-validation group of each row, from 0
  int rounds = 0;
  std::vector<std::string> groupLabels;  ///< of each row, where the recipe has a column of groups; otherwise none
};

/// Selects the columns of both blocks and brings the rows together: those with the same text in the column `id`, in the
/// order of the X table, or without `id` each row with the one in the same place. Columns without numbers, constant and
/// empty columns are left out, and, with `fill`, rows without a cell in one of the blocks, each kind with one note.
/// Throws BadData: a column that does not exist; a row without an id, an id that comes twice, no common id;
/// without `id` tables of different length; a block without a column that varies; a column of the same cells in
/// both blocks; a hole, unless the recipe says `fill`; fewer than two rows; a row without a group, fewer than two
/// groups; a cell that is no number. A column of groups is in neither block.
KALMIA_EXPORT BlockPair SelectBlocks(const Table& xTable, const Table& yTable, const O2PLSRecipe& recipe,
                                     Notes* notes);

}  // namespace kalmia::analysis
