#include "kalmia/kernels/FilterPasses.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kalmia/kernels/ExcludedPositions.h"
#include "kalmia/kernels/RowPointers.h"
#include "kalmia/kernels/RowRegression.h"
#include "kalmia/kernels/ScoresAndSums.h"
#include "kalmia/kernels/Slices.h"
#include "kalmia/kernels/Team.h"
#include "kalmia/kernels/UnlinkedRows.h"
#include "kalmia/kernels/simd/ColumnSums.h"
#include "kalmia/kernels/simd/RowsAdd.h"

namespace kalmia {

namespace {

using simd::kRowsPerStep;

bool HasNoCells(const NCDataMatrix<float>& m) { return m.SizeRows() == 0 || m.SizeColumns() == 0; }

bool IsComplete(const NCDataMatrix<float>& m) {
  return m.GetNumMisVal() == 0 &&
         std::all_of(m.begin(), m.end(), [](const NCDataVector<float>& row) { return row.GetNumMisVal() == 0; });
}

/// Whether a deflation by these scores empties no row. It would where minus a score looks like the missing value, too.
bool TakesEveryRow(const NCDataVector<float>& t) {
  return std::none_of(t.begin(), t.end(), [](float cell) { return std::fabs(cell) == -kMissing; });
}

bool TakeEveryRow(const NCDataMatrix<float>& T) { return std::all_of(T.begin(), T.end(), TakesEveryRow); }

/// rows[k] += -T[a] W[a]' at cells from `first` on, for each component a in turn; row k of `rows` is row r + k of X.
void Filter(float* const* rows, int r, int count, int first, int n, const NCDataMatrix<float>& T,
            const NCDataMatrix<float>& W) {
  float factors[kRowsPerStep];
  for (int a = 1; a <= T.SizeRows(); ++a) {
    for (int k = 0; k < count; ++k) factors[k] = -T[a][r + k];
    simd::AddScaledToRows(rows, factors, count, W[a].begin() + first, n);
  }
}

/// Columns whose cells of a step of rows are prepared together: they stay in the first cache until they are multiplied.
constexpr int kColumnsPerChunk = 512;

/// Sums of all rows of A that are formed together, in cells: they stay in the second cache.
constexpr int kSumsTogether = 65536;

/// The product of few rows A with a complete table X that is prepared on the way. All memory is taken at first.
class ProductByFew {
 public:
  ProductByFew(const NCDataMatrix<float>& A, const NCDataMatrix<float>& X)
      : A_(A),
        rows_(X.SizeRows()),
        columns_(X.SizeColumns()),
        product_(A.SizeRows(), X.SizeColumns(), 0.0F),
        cells_(product_),
        sums_(static_cast<std::size_t>(A.SizeRows()) * static_cast<std::size_t>(X.SizeColumns())) {}

  /// prepare(r, count, first, n, chunk, row) points row[k] at n cells from `first` on, from 0, of row r + k of what is
  /// multiplied, for k < count; it may put them into `chunk`, which has room for a step of rows. It is called once for
  /// each cell of X, by several threads, and must not throw.
  template <class Prepare>
  const NCDataMatrix<float>& Run(const Prepare& prepare) {
    const int widest = std::max(kColumnsPerChunk, kSumsTogether / A_.SizeRows());
    ForSlices(columns_, TeamSize(std::int64_t{rows_} * columns_), kColumnsPerGrain, [&](int first, int last) {
      for (int c = first - 1; c < last; c += widest) Block(c, std::min(c + widest, last), prepare);
      return 0;
    });
    return product_;
  }

 private:
  double* Sums(int a, int column) { return sums_.data() + std::ptrdiff_t{a - 1} * columns_ + column; }

  /// Columns begin to end - 1, from 0.
  template <class Prepare>
  void Block(int begin, int end, const Prepare& prepare) {
    float chunk[kRowsPerStep * kColumnsPerChunk];
    const float* row[kRowsPerStep];
    for (int r = 1; r <= rows_; r += kRowsPerStep) {
      const int count = std::min(kRowsPerStep, rows_ - r + 1);
      for (int c = begin; c < end; c += kColumnsPerChunk) {
        const int n = std::min(kColumnsPerChunk, end - c);
        prepare(r, count, c, n, chunk, row);
        AddToSums(r, count, c, n, row);
      }
    }
    for (int a = 1; a <= A_.SizeRows(); ++a)
      for (int c = begin; c < end; ++c) cells_.Get()[a][c + 1] = static_cast<float>(*Sums(a, c));
  }

  void AddToSums(int r, int count, int first, int n, const float* const* row) {
    double factors[kRowsPerStep];
    for (int a = 1; a <= A_.SizeRows(); ++a) {
      for (int k = 0; k < count; ++k) factors[k] = A_[a][r + k];
      simd::AddRows(row, factors, count, n, Sums(a, first));
    }
  }

  const NCDataMatrix<float>& A_;
  const int rows_, columns_;
  NCDataMatrix<float> product_;
  const RowPointers<float> cells_;
  std::vector<double> sums_;
};

}  // namespace

NCDataMatrix<float> MultiplyByFew(const NCDataMatrix<float>& A, const NCDataMatrix<float>& X) {
  if (HasNoCells(A) || HasNoCells(X) || !IsComplete(A) || !IsComplete(X)) return A.MatrixMultiply(X, false, false);
  return ProductByFew(A, X).Run([&X](int r, int count, int first, int, float*, const float** row) {
    for (int k = 0; k < count; ++k) row[k] = X[r + k].begin() + first;
  });
}

NCDataMatrix<float> MultiplyFilteredByFew(const NCDataMatrix<float>& A, const NCDataMatrix<float>& X,
                                          const NCDataMatrix<float>& T, const NCDataMatrix<float>& W) {
  if (HasNoCells(A) || HasNoCells(X) || !IsComplete(A) || !IsComplete(X) || !IsComplete(W) || !TakeEveryRow(T))
    return A.MatrixMultiply(Filtered(X, T, W), false, false);
  return ProductByFew(A, X).Run([&](int r, int count, int first, int n, float* chunk, const float** row) {
    float* copy[kRowsPerStep];
    for (int k = 0; k < count; ++k) {
      copy[k] = chunk + k * n;
      row[k] = std::copy_n(X[r + k].begin() + first, n, copy[k]) - n;
    }
    Filter(copy, r, count, first, n, T, W);
  });
}

NCDataMatrix<float> DeflateAndMultiplyByFew(const NCDataMatrix<float>& A, NCDataMatrix<float>* X,
                                            const NCDataVector<float>& t, const NCDataVector<float>& p) {
  if (HasNoCells(A) || HasNoCells(*X) || !IsComplete(A) || !IsComplete(*X) || p.GetNumMisVal() > 0 ||
      !TakesEveryRow(t)) {
    X->AddVprimV(t, p, -1.0F);
    return MultiplyByFew(A, *X);
  }
  ProductByFew product(A, *X);
  const UnlinkedRows<float> unlinked(X);  // the last to take memory: X has no cells until they are fetched
  return product.Run([&](int r, int count, int first, int n, float*, const float** row) {
    float* cells[kRowsPerStep];
    float factors[kRowsPerStep];
    for (int k = 0; k < count; ++k) {
      row[k] = cells[k] = unlinked.Fetch(r + k, first, n);
      factors[k] = -t[r + k];
    }
    simd::AddScaledToRows(cells, factors, count, p.begin() + first, n);
  });
}

void CalcFilteredScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataMatrix<float>& T,
                                   const NCDataMatrix<float>& W, const NCDataVector<float>& w, NCDataVector<float>* t,
                                   NCDataVector<float>* p) {
  if (!HasNoCells(X) && IsComplete(X) && IsComplete(W) && TakeEveryRow(T)) {
    const int columns = X.SizeColumns();
    const std::size_t ofOneThread = static_cast<std::size_t>(columns) * kRowsPerStep;
    std::vector<float> copies(ofOneThread * static_cast<std::size_t>(ScoresAndSums::TeamFor(X)));
    const WithExcluded<float> weights(w);
    const RowRegression<float> regression(weights, /*fix=*/true);
    const auto scoreRows = [&](int me, int first, int last, float* scores) {
      int missing = 0;
      for (int r = first; r <= last; r += kRowsPerStep) {
        float* copy[kRowsPerStep];
        RowBatch<float> batch;
        for (int k = 0; k < kRowsPerStep && r + k <= last; ++k) {
          copy[k] = copies.data() + ofOneThread * static_cast<std::size_t>(me) + std::ptrdiff_t{k} * columns;
          batch.cells[k] = std::copy_n(X[r + k].begin(), columns, copy[k]) - columns;
          batch.row[k] = r + k;
          ++batch.count;
        }
        Filter(copy, r, batch.count, 0, columns, T, W);
        missing += regression.CompleteRows(batch, scores);
      }
      return missing;
    };
    if (ScoresAndSums(X, scoreRows).Run(t, p)) return;
  }
  *t = Filtered(X, T, W).SpecialNipalsRegressRowsFix(w, nullptr, 0);
  *p = X.SpecialNipalsRegressColumnsFix(*t);
}

NCDataMatrix<float> Filtered(const NCDataMatrix<float>& X, const NCDataMatrix<float>& T, const NCDataMatrix<float>& W) {
  NCDataMatrix<float> filtered = X;
  for (int a = 1; a <= T.SizeRows(); ++a) filtered.AddVprimV(T[a], W[a], -1.0F);
  return filtered;
}

}  // namespace kalmia
