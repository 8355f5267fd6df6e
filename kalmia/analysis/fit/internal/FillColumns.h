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

/// No two present cells of the column (from 1) differ.
bool IsConstant(const NCDataMatrix<float>& cells, int column);

/// Fills the holes by PCA of the columns at unit variance (FillScaled) with so many components. Centre and scale are
/// those of the present cells and stay. Every column has a present cell; present cells stay as they are. Without a hole
/// no model is made.
/// Throws BadData, naming the column, where a variance is out of range, Stopped where the bar, which may
/// be null, wants to stop.
FilledColumns FillColumns(const NumberColumns& columns, int components, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
