#pragma once

#include <algorithm>
#include <memory>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// Columns whose sums are formed together, at most: their accumulators stay in the second cache while the rows pass by.
/// As wide as that, because memory is read fastest in long runs.
constexpr int kColumnsPerBlock = 16384;

/// Calls block(first, n) for blocks of columns `first` to `last`, all of about the same width.
template <class Block>
void ForColumnBlocks(int first, int last, const Block& block) {
  if (first > last) return;
  const int columns = last - first + 1;
  const int blocks = (columns + kColumnsPerBlock - 1) / kColumnsPerBlock;
  const int width = (columns + blocks - 1) / blocks;
  for (int c = first; c <= last; c += width) block(c, std::min(width, last - c + 1));
}

/// Room for the sums of one block of n columns, not initialised. Small tables take no memory from the heap.
template <class T>
class SumsBuffer {
 public:
  explicit SumsBuffer(int n) {
    if (n <= kColumnsOnStack) return;
    sumsOnHeap_.reset(new double[2 * static_cast<std::size_t>(n)]);
    holesOnHeap_.reset(new T[n]);
    products_ = sumsOnHeap_.get();
    weights_ = products_ + n;
    holes_ = holesOnHeap_.get();
  }
  SumsBuffer(const SumsBuffer&) = delete;
  SumsBuffer& operator=(const SumsBuffer&) = delete;

  double* Products() const { return products_; }
  double* Weights() const { return weights_; }
  T* Holes() const { return holes_; }

 private:
  static constexpr int kColumnsOnStack = 1024;

  double sumsOnStack_[2 * kColumnsOnStack];
  T holesOnStack_[kColumnsOnStack];
  std::unique_ptr<double[]> sumsOnHeap_;
  std::unique_ptr<T[]> holesOnHeap_;
  double* products_ = sumsOnStack_;
  double* weights_ = sumsOnStack_ + kColumnsOnStack;
  T* holes_ = holesOnStack_;
};

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

/// Sums of columns first to first + n - 1, n <= kColumnsPerBlock, formed row by row, so that memory is read in its
/// order while each column adds up in the order of its rows: the bits of a loop down the column. Outputs are 0-based
/// and overwritten.

/// products[j] = sum over all rows of v[r] X[r][first + j]; no cell is looked at.
template <class T>
void SumColumns(const NCDataMatrix<T>& X, const NCDataVector<T>& v, int first, int n, double* products);

/// products[j] = sum v[r] X[r][first + j] and weights[j] = sum of the rows' weights, over the rows used in which the
/// cell differs from hole[j]. A hole of NaN lets every cell of the column take part.
template <class T>
void SumColumnPairs(const NCDataMatrix<T>& X, const NCDataVector<T>& v, RowsUsed used, RowWeight weight, int first,
                    int n, const T* hole, double* products, double* weights);

/// squares[j] = sum of X[r][first + j]^2 over the rows in which the cell differs from hole[j].
template <class T>
void SumColumnSquares(const NCDataMatrix<T>& X, int first, int n, const T* hole, double* squares);

/// hole[j] = -99 for columns with holes, NaN for those whose count says that they have none. True if there is any of
/// the former.
template <class T>
bool MarkColumnsWithHoles(const NCDataMatrix<T>& X, int first, int n, T* hole);

}  // namespace kalmia
