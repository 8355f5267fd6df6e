#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/FillModel.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Columns of numbers.
struct NumberColumns {
  std::vector<std::string> names;
  NCDataMatrix<float> cells;        ///< all rows of the table by these columns, less their shifts
  std::vector<double> shifts = {};  ///< one a column, see ShiftOf
};

/// No two present cells of the column (from 1) differ.
KALMIA_EXPORT bool IsConstant(const NCDataMatrix<float>& cells, int column);

/// The columns with their holes filled, as far as that can be done.
struct FilledColumns {
  NCDataMatrix<float> cells;                 ///< less the shifts
  std::vector<std::string> constantColumns;  ///< filled with their only value, and no part of the model
  std::vector<int> emptyRows;                ///< from 1: without a cell in any other column; nothing of them is filled
  int modelRows = 0;
  int modelColumns = 0;
  FillModel model;
};

/// Fills the holes by PCA of the columns at unit variance (FillScaled) with so many components. Centre and scale are
/// those of the present cells and stay. Every column has a present cell; present cells stay as they are. Without a hole
/// no model is made.
/// Throws BadData, naming the column, where a variance is out of range, Stopped where the bar, which may
/// be null, wants to stop.
KALMIA_EXPORT FilledColumns FillColumns(const NumberColumns& columns, int components, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
