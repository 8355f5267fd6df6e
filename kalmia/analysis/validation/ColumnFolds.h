#pragma once

#include <cstddef>
#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// The cells of a table that stay out of a PCA in turn. Leaving rows out alone says nothing, as a row's own cells make
// its scores. So each round of rows goes through groups of columns: loadings come from the other rows, scores of the
// left-out rows from their cells in the other groups of columns, and the cells in the group are predicted.
// Source: R. Bro, K. Kjeldahl, A. K. Smilde, H. A. L. Kiers, Anal. Bioanal. Chem. 390 (2008) 1241-1251.

/// Columns are interleaved: column j (from 1) is in group j mod H, with as many groups H as rows have, but no more than
/// columns. Neighbours in a spectrum come into different groups, so that they predict each other and many components
/// seem worth keeping. Groups count from 0.
struct ColumnFolds {
  int groups = 0;
  std::vector<int> groupOfColumn;
};

KALMIA_EXPORT ColumnFolds MakeColumnFolds(std::size_t columns, int rowGroups);

/// The largest number of components that scores can be had for from the columns outside any group: less than
/// K - ceil(K / H); 0 where there is none.
KALMIA_EXPORT int MostComponentsOfColumns(std::size_t columns, int columnGroups);

/// Which rows and how many components such a validation can judge.
struct PredictableRows {
  int mostComponents = 0;
  /// Of each row: whether it has more cells outside each group than components, so that its scores are determined. The
  /// other rows count under no number of components.
  std::vector<bool> takesPart;
};

/// From the number of present cells that each row has outside the group that leaves it the fewest. Rows with no more
/// than `mostComponents` of them take no part; where these are more than a tenth of the rows, the number of components
/// falls until they are not, at the lowest to 0.
KALMIA_EXPORT PredictableRows RowsToPredict(const std::vector<int>& fewestCellsOutside, int mostComponents);

}  // namespace kalmia::analysis
