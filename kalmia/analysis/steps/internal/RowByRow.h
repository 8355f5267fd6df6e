#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "kalmia/analysis/table/CellRows.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

/// Makes a table of `columns` columns row by row: work(row number from 0, cells of the row) returns the cells of the
/// new row. A row without a cell stays without one, and `work` does not see it.
template <class Work>
CellRows RowByRow(const CellRows& cells, int columns, WorkProgress* progress, const Work& work) {
  CellRows result(cells.Rows(), columns);
  for (int r = 0; r < cells.Rows(); ++r) {
    progress->MoveToPart(r + 1, cells.Rows());
    const double* const row = cells.Row(r);
    if (std::all_of(row, row + cells.Columns(), [](double cell) { return std::isnan(cell); })) continue;
    const std::vector<double> made = work(r, row);
    std::transform(made.begin(), made.end(), result.Row(r), [](double cell) {
      return cell + 0.0;  // -0 becomes 0, which has no sign in a table
    });
  }
  return result;
}

}  // namespace kalmia::analysis
