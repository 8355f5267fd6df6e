#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

// Statistics of all columns in one pass each, row by row: a column at a time would fetch each line of memory once for
// every cell in it. Element j is that of column j, element 0 is dead. The bits are those of the matrix' own operations
// on one column.

/// NCDataMatrix::GetColumnMean of each column.
std::vector<long double> ColumnMeans(const NCDataMatrix<float>& matrix);

/// NCDataMatrix::GetColumnSS(j, 0) of each column.
std::vector<double> ColumnSquares(const NCDataMatrix<float>& matrix);

}  // namespace kalmia
