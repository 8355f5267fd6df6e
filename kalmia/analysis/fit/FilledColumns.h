#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/FillModel.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

/// The columns with their holes filled, as far as that can be done.
struct FilledColumns {
  NCDataMatrix<float> cells;                 ///< less the shifts
  std::vector<std::string> constantColumns;  ///< filled with their only value, and no part of the model
  std::vector<int> emptyRows;                ///< from 1: without a cell in any other column; nothing of them is filled
  int modelRows = 0;
  int modelColumns = 0;
  FillModel model;
};

}  // namespace kalmia::analysis
