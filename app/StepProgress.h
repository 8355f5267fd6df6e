#pragma once

#include <string>
#include <utility>
#include <vector>

#include "app/ConsoleProgress.h"
#include "app/Interrupt.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::app {

/// How far a step of preprocessing is, as a bar, in rows.
class StepProgress {
 public:
  StepProgress(std::string label, int count) : label_(std::move(label)), count_(count) {}

  /// What comes now, from 1. Throws Failure (Stopped) after Ctrl-C.
  void Begin(int which) {
    StopIfInterrupted();
    line_.Show(label_, static_cast<double>(which - 1) / count_);
  }

 private:
  ProgressLine line_;
  std::string label_;
  int count_;
};

/// A table of so many columns, made row by row: `work` gives the cells of the new row for a row number, from 1, and the
/// row. A row without a cell is not worked on, and comes out without one.
template <class Work>
NCDataMatrix<float> RowByRow(const NCDataMatrix<float>& cells, int columns, StepProgress* progress, const Work& work) {
  NCDataMatrix<float> result(cells.SizeRows(), columns);
  for (int r = 1; r <= cells.SizeRows(); ++r) {
    progress->Begin(r);
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

}  // namespace kalmia::app
