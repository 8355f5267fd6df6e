#pragma once

#include <string>
#include <vector>

#include "app/CsvTable.h"
#include "app/Notes.h"

namespace kalmia::app {

/// A table of counts.
struct CountTable {
  int rows = 0;
  int columns = 0;
  int total = 0;
  std::vector<int> counts;  ///< row after row
};

/// The columns of numbers as counts; a note says which columns of text are left out.
/// Throws BadData with row and column: a cell that is missing, no number, negative, no whole number; and
/// where there are fewer than two rows or columns, no count above 0, or more counts in all than an int holds.
CountTable ReadCounts(const CsvTable& table, Notes* notes);

}  // namespace kalmia::app
