#pragma once

#include <map>
#include <set>
#include <utility>
#include <vector>

#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/support/Export.h"

namespace DendroGram {

/// A tree as a grid of cells for a text listing: observations down the rows, one column for each depth of merges,
/// merges from left to right. It does not need the tree afterwards. Nothing recurses. Lines are kept as runs of cells,
/// so a chain of n leaves takes memory for about n runs, not for its n^2 / 2 cells.
class KALMIA_EXPORT DendroGramNodeLister {
 public:
  explicit DendroGramNodeLister(const DendroGramNode& root);

  int SizeRows() const { return rows_; }     ///< the number of items
  int SizeCols() const { return columns_; }  ///< the largest depth of merges
  /// The observation on a row, from 1; not checked.
  int GetRowID(int row) const { return rowIds_[static_cast<std::size_t>(row) - 1]; }
  /// The lines in a cell, from 1: 1 horizontal, 2 vertical, 3 both, 0 none. 0 outside the grid.
  int GetCellBorders(int row, int column) const;
  /// The height of the merge in a cell, from 1; -99 if there is none, and outside the grid.
  float GetCellValue(int row, int column) const;
  bool IsBreak(int row) const { return breaks_.count(row) > 0; }  ///< whether the row is the last one of a leaf

 private:
  /// Runs of cells in parallel lines, which are rows or columns.
  class Runs {
   public:
    void Add(int line, int first, int last);  ///< the cells from first to last, if there are any
    bool Has(int line, int place) const;

   private:
    std::map<std::pair<int, int>, int> lastOf_;  ///< by line and first cell; there is a gap between any two of a line
  };

  /// Where the stem of a subtree stands.
  struct Stem {
    int row, column;
  };

  Stem ListLeaf(const DendroGramNode& leaf);
  Stem ListMerge(const DendroGramNode& node, const Stem& left, const Stem& right);

  Runs horizontal_;                              ///< in rows
  Runs vertical_;                                ///< in columns
  std::map<std::pair<int, int>, float> merges_;  ///< heights by row and column
  int rows_ = 0;
  int columns_ = 0;
  std::vector<int> rowIds_;
  std::set<int> breaks_;
};

}  // namespace DendroGram
