#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/FilledColumns.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Columns of numbers.
struct NumberColumns {
  std::vector<std::string> names;
  NCDataMatrix<float> cells;        ///< all rows of the table by these columns, less their shifts
  std::vector<double> shifts = {};  ///< one a column, see ShiftOf
};

/// Whether all present cells of the column (from 1) are equal.
bool IsConstant(const NCDataMatrix<float>& cells, int column);

/// Fills the holes by PCA of the columns at unit variance (FillScaled). Centre and scale come from the present cells
/// and are not fitted again. Every column must have a present cell; present cells do not change. Without holes no model
/// is made. `progress` may be null.
/// Throws BadData, naming the column, where a variance is out of range, Stopped on a stop of the progress.
FilledColumns FillColumns(const NumberColumns& columns, int components, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
