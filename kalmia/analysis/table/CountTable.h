#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A table of counts.
struct CountTable {
  std::string name;  ///< how messages call it
  int rows = 0;
  int columns = 0;
  int total = 0;
  std::vector<int> counts;  ///< row after row

  bool IsFourfold() const { return rows == 2 && columns == 2; }
};

/// The columns of numbers as counts; a note says which columns of text are left out.
/// Throws BadData with row and column: a cell that is missing, no number, negative, no whole number; and
/// where there are fewer than two rows or columns, no count above 0, or more counts in all than an int holds.
/// `progress` may be null; throws Stopped where the bar wants to stop.
KALMIA_EXPORT CountTable ReadCounts(const Table& table, Notes* notes, NCProgress* progress);

}  // namespace kalmia::analysis
