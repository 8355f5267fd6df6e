#pragma once

#include <vector>

#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

/// A table of so many columns, made row by row: `work` gives the cells of the new row for a row number, from 1, and the
/// row. A row without a cell is not worked on, and comes out without one.
template <class Work>
NCDataMatrix<float> RowByRow(const NCDataMatrix<float>& cells, int columns, WorkProgress* progress, const Work& work) {
  NCDataMatrix<float> result(cells.SizeRows(), columns);
  for (int r = 1; r <= cells.SizeRows(); ++r) {
    progress->MoveToPart(r, cells.SizeRows());
    const NCDataVector<float>& row = cells[r];
    if (row.GetNumMisVal() == row.Size()) continue;
    std::vector<float> made = work(r, row);
    for (float& cell : made) cell += 0.0F;  // -0 becomes 0, which has no sign in a table
    NCDataVector<float> counted;  // whatever has become -99 in the work
    counted.CopyZeroBasedVector(made.data(), columns);
    result.SetRow(r, counted);
  }
  return result;
}

}  // namespace kalmia::analysis
