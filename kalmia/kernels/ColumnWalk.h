#pragma once

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// Columns whose sums are formed together: their accumulators stay in the first cache while the rows pass by.
constexpr int kColumnsPerBlock = 1024;

/// What a row adds to the weight of each column in which its cell takes part.
enum class RowWeight {
  Square,  ///< v[r]^2: the weights become denominators
  One      ///< the weights become counts of pairs
};

/// Which rows take part.
enum class RowsUsed {
  All,
  WithV  ///< those where v is present
};

/// Sums of columns first to first + n - 1, n <= kColumnsPerBlock, formed row by row, so that memory is read in its order
/// while each column adds up in the order of its rows: the bits of a loop down the column. Outputs are 0-based and
/// overwritten.

/// products[j] = sum over all rows of v[r] X[r][first + j]; no cell is looked at.
template <class T>
void SumColumns(const NCDataMatrix<T>& X, const NCDataVector<T>& v, int first, int n, double* products);

/// products[j] = sum v[r] X[r][first + j] and weights[j] = sum of the rows' weights, over the rows used in which the
/// cell differs from hole[j]. A hole of NaN lets every cell of the column take part.
template <class T>
void SumColumnPairs(const NCDataMatrix<T>& X, const NCDataVector<T>& v, RowsUsed used, RowWeight weight, int first,
                    int n, const T* hole, double* products, double* weights);

/// squares[j] = sum of X[r][first + j]^2 over the present cells; columns without holes are not looked at.
template <class T>
void SumColumnSquares(const NCDataMatrix<T>& X, int first, int n, double* squares);

/// hole[j] = -99 for columns with holes, NaN for those whose count says that they have none. True if there is any of
/// the former.
template <class T>
bool MarkColumnsWithHoles(const NCDataMatrix<T>& X, int first, int n, T* hole);

}  // namespace kalmia
