#include "kalmia/pcapls/ColumnMoments.h"

#include <algorithm>
#include <array>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/kernels/ColumnWalk.h"

namespace kalmia {

namespace {

using Block = std::array<double, kColumnsPerBlock>;

/// Calls visit(first, n) for blocks of n columns from column `first` on.
template <class Visit>
void ForBlocks(int columns, const Visit& visit) {
  for (int first = 1; first <= columns; first += kColumnsPerBlock)
    visit(first, std::min(kColumnsPerBlock, columns - first + 1));
}

}  // namespace

std::vector<long double> ColumnMeans(const NCDataMatrix<float>& matrix) {
  const int rows = matrix.SizeRows();
  std::vector<long double> means(static_cast<std::size_t>(matrix.SizeColumns()) + 1);
  if (rows == 0) return means;
  const NCDataVector<float> ones(rows, 1.0F);
  ForBlocks(matrix.SizeColumns(), [&](int first, int n) {
    std::array<float, kColumnsPerBlock> hole;
    Block sums;
    Block counts;
    MarkColumnsWithHoles(matrix, first, n, hole.data());
    SumColumnPairs(matrix, ones, RowsUsed::All, RowWeight::One, first, n, hole.data(), sums.data(), counts.data());
    for (int j = 0; j < n; ++j) {
      const int present = rows - matrix.GetColumnMisVal(first + j);
      const long double sum = sums[static_cast<std::size_t>(j)];
      means[static_cast<std::size_t>(first + j)] = present == 0 ? kMissing : sum / present;
    }
  });
  return means;
}

std::vector<double> ColumnSquares(const NCDataMatrix<float>& matrix) {
  const int rows = matrix.SizeRows();
  std::vector<double> squares(static_cast<std::size_t>(matrix.SizeColumns()) + 1);
  if (rows == 0) return squares;
  ForBlocks(matrix.SizeColumns(), [&](int first, int n) {
    SumColumnSquares(matrix, first, n, squares.data() + first);
    for (int j = first; j < first + n; ++j)
      if (matrix.GetColumnMisVal(j) == rows) squares[static_cast<std::size_t>(j)] = kMissing;
  });
  return squares;
}

}  // namespace kalmia
