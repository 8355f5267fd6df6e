#include "kalmia/pcapls/internal/ColumnMoments.h"

#include <cstdint>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/kernels/passes/BlockedColumnSums.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

namespace kalmia {

namespace {

/// Calls block(first, n) for blocks of all columns, shared out among a team: no sum is split.
template <class Block>
void ForAllColumns(const NCDataMatrix<float>& matrix, const Block& block) {
  const int team = TeamSize(std::int64_t{matrix.SizeRows()} * matrix.SizeColumns());
  ForSlices(matrix.SizeColumns(), team, kColumnsPerGrain, [&](int first, int last) {
    ForColumnBlocks(first, last, block);
    return 0;
  });
}

/// Sums of the present cells of columns first to first + n - 1 into the products of `buffer`.
void SumPresent(const NCDataMatrix<float>& matrix, const NCDataVector<float>& ones, int first, int n,
                const SumsBuffer<float>& buffer) {
  if (MarkColumnsWithHoles(matrix, first, n, buffer.Holes()))
    SumColumnPairs(matrix, ones, RowsUsed::All, RowWeight::One, first, n, buffer.Holes(), buffer.Products(),
                   buffer.Weights());
  else
    SumColumns(matrix, ones, first, n, buffer.Products());
}

}  // namespace

std::vector<long double> ColumnMeans(const NCDataMatrix<float>& matrix) {
  const int rows = matrix.SizeRows();
  std::vector<long double> means(static_cast<std::size_t>(matrix.SizeColumns()) + 1);
  if (rows == 0) return means;
  const NCDataVector<float> ones(rows, 1.0F);
  ForAllColumns(matrix, [&](int first, int n) {
    const SumsBuffer<float> buffer(n);
    SumPresent(matrix, ones, first, n, buffer);
    for (int j = 0; j < n; ++j) {
      const int present = rows - matrix.GetColumnMisVal(first + j);
      const long double sum = buffer.Products()[j];
      means[static_cast<std::size_t>(first + j)] = present == 0 ? kMissing : sum / present;
    }
  });
  return means;
}

std::vector<double> ColumnSquares(const NCDataMatrix<float>& matrix) {
  const int rows = matrix.SizeRows();
  std::vector<double> squares(static_cast<std::size_t>(matrix.SizeColumns()) + 1);
  if (rows == 0) return squares;
  ForAllColumns(matrix, [&](int first, int n) {
    const SumsBuffer<float> buffer(n);
    MarkColumnsWithHoles(matrix, first, n, buffer.Holes());
    SumColumnSquares(matrix, first, n, buffer.Holes(), squares.data() + first);
    for (int j = first; j < first + n; ++j)
      if (matrix.GetColumnMisVal(j) == rows) squares[static_cast<std::size_t>(j)] = kMissing;
  });
  return squares;
}

}  // namespace kalmia
