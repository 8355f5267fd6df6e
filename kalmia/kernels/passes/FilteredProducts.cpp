#include "kalmia/kernels/passes/FilteredProducts.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kalmia/kernels/passes/CompleteTables.h"
#include "kalmia/kernels/passes/ScoresAndLoadingsPass.h"
#include "kalmia/kernels/regression/ExcludedPositions.h"
#include "kalmia/kernels/regression/RowRegression.h"
#include "kalmia/kernels/rows/RowPointers.h"
#include "kalmia/kernels/rows/UnlinkedRows.h"
#include "kalmia/kernels/simd/ColumnSums.h"
#include "kalmia/kernels/simd/DeflatedRows.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

namespace kalmia {

namespace {

using simd::kRowsSideBySide;

/// From so many rows on, a product in blocks is faster. With a table of 600 x 2000 cells, by two threads on an idle
/// machine, 8 rows take 0.55 of its time, 16 take 0.8, 24 take 1.15, 64 and 200 take 1.4 to 2.3.
constexpr int kTooManyRows = 24;

/// Whether A is made of few rows, at least one, and a product with it looks at none of its cells.
bool IsFewRowsWithoutHoles(const NCDataMatrix<float>& A) {
  return !HasNoCells(A) && A.SizeRows() < kTooManyRows && IsComplete(A);
}

/// Whether there is something to filter, and no step of it looks at a cell.
bool FiltersWithoutHoles(const NCDataMatrix<float>& X, const NCDataMatrix<float>& T, const NCDataMatrix<float>& W) {
  return !HasNoCells(X) && !HasNoCells(T) && IsComplete(X) && IsComplete(W) &&
         std::all_of(T.begin(), T.end(), HasEveryScore);
}

/// A step of rows of F, cells `first` to first + n - 1 of rows r to r + count - 1: all components but the last are
/// subtracted into `buffer`, which holds a step of rows of n cells and may be null where there is one component; the
/// caller subtracts the last component.
class FilteredStep {
 public:
  FilteredStep(const NCDataMatrix<float>& X, const NCDataMatrix<float>& T, const NCDataMatrix<float>& W, int r,
               int count, int first, int n, float* buffer)
      : rows_{row_, factors_, count, nullptr, n} {
    float* stored[kRowsSideBySide];
    for (int k = 0; k < count; ++k) {
      row_[k] = X[r + k].begin() + first;
      if (T.SizeRows() > 1) stored[k] = buffer + std::ptrdiff_t{k} * n;
    }
    for (int a = 1; a <= T.SizeRows(); ++a) {
      for (int k = 0; k < count; ++k) factors_[k] = -T[a][r + k];
      rows_.w = W[a].begin() + first;
      if (a == T.SizeRows()) break;
      simd::StoreDeflated(rows_, stored);
      std::copy_n(stored, count, row_);
    }
  }
  FilteredStep(const FilteredStep&) = delete;
  FilteredStep& operator=(const FilteredStep&) = delete;

  const simd::DeflatedRows& Rows() const { return rows_; }

 private:
  const float* row_[kRowsSideBySide];
  float factors_[kRowsSideBySide];
  simd::DeflatedRows rows_;
};

/// Columns whose cells of a step of rows are prepared together: they stay in the first cache until they are multiplied.
constexpr int kColumnsPerChunk = 512;

/// Sums of all rows of A that are formed together, in cells: they stay in the second cache.
constexpr int kSumsTogether = 65536;

/// The product of few rows A with a table that has the size of X. All memory is taken at first.
class ProductByFew {
 public:
  ProductByFew(const NCDataMatrix<float>& A, const NCDataMatrix<float>& X)
      : A_(A),
        rows_(X.SizeRows()),
        columns_(X.SizeColumns()),
        product_(A.SizeRows(), X.SizeColumns(), 0.0F),
        cells_(product_),
        sums_(static_cast<std::size_t>(A.SizeRows()) * static_cast<std::size_t>(X.SizeColumns())) {}

  /// add(r, count, c, n) is to call AddFirst and AddOthers, or AddAll, for rows r to r + count - 1 at n columns from c
  /// on, from 0. It is called by several threads, once for each cell of X, and must not throw.
  template <class Add>
  const NCDataMatrix<float>& Run(const Add& add) {
    const int widest = std::max(kColumnsPerChunk, kSumsTogether / A_.SizeRows());
    ForSlices(columns_, TeamSize(std::int64_t{rows_} * columns_), kColumnsPerGrain, [&](int first, int last) {
      for (int c = first - 1; c < last; c += widest) Block(c, std::min(c + widest, last), add);
      return 0;
    });
    return product_;
  }

  /// addRows(v, sums) is to add the rows times v to the sums, for the first row of A.
  template <class AddRows>
  void AddFirst(int r, int count, int c, const AddRows& addRows) {
    AddTo(1, r, count, c, addRows);
  }
  /// The rows' cells from column c on, for the rows of A from `a` on.
  void AddOthers(int a, const float* const* row, int r, int count, int c, int n) {
    for (; a <= A_.SizeRows(); ++a)
      AddTo(a, r, count, c, [=](const double* v, double* sums) { simd::AddRows(row, v, count, n, sums); });
  }
  void AddAll(const float* const* row, int r, int count, int c, int n) { AddOthers(1, row, r, count, c, n); }

 private:
  double* Sums(int a, int column) { return sums_.data() + std::ptrdiff_t{a - 1} * columns_ + column; }

  template <class AddRows>
  void AddTo(int a, int r, int count, int c, const AddRows& addRows) {
    double v[kRowsSideBySide];
    for (int k = 0; k < count; ++k) v[k] = A_[a][r + k];
    addRows(v, Sums(a, c));
  }

  /// Columns begin to end - 1, from 0.
  template <class Add>
  void Block(int begin, int end, const Add& add) {
    for (int r = 1; r <= rows_; r += kRowsSideBySide)
      for (int c = begin; c < end; c += kColumnsPerChunk)
        add(r, std::min(kRowsSideBySide, rows_ - r + 1), c, std::min(kColumnsPerChunk, end - c));
    for (int a = 1; a <= A_.SizeRows(); ++a)
      for (int c = begin; c < end; ++c) cells_.Get()[a][c + 1] = static_cast<float>(*Sums(a, c));
  }

  const NCDataMatrix<float>& A_;
  const int rows_, columns_;
  NCDataMatrix<float> product_;
  const RowPointers<float> cells_;
  std::vector<double> sums_;
};

/// Scores along w of the rows that are left of X without the components of T and W.
class FilteredScore final : public RowScorer {
 public:
  FilteredScore(const NCDataMatrix<float>& X, const NCDataMatrix<float>& T, const NCDataMatrix<float>& W,
                const NCDataVector<float>& w)
      : X_(X), T_(T), W_(W), w_(w), regression_(w_, /*fix=*/true) {
    if (T.SizeRows() > 1) buffers_.resize(CellsOfAStep() * static_cast<std::size_t>(TeamForScoresAndLoadings(X)));
  }

  int Score(int thread, int first, int last, float* scores) const override {
    const std::size_t start = CellsOfAStep() * static_cast<std::size_t>(thread);
    float* const buffer = buffers_.empty() ? nullptr : buffers_.data() + start;
    int missing = 0;
    for (int r = first; r <= last; r += kRowsSideBySide) {
      const int count = std::min(kRowsSideBySide, last - r + 1);
      double dots[kRowsSideBySide];
      const FilteredStep step(X_, T_, W_, r, count, 0, X_.SizeColumns(), buffer);
      simd::DotDeflated(step.Rows(), w_.begin(), dots);
      missing += regression_.CompleteRows(dots, count, scores + r);
    }
    return missing;
  }

 private:
  std::size_t CellsOfAStep() const { return static_cast<std::size_t>(X_.SizeColumns()) * kRowsSideBySide; }

  const NCDataMatrix<float>& X_;
  const NCDataMatrix<float>& T_;
  const NCDataMatrix<float>& W_;
  const VectorWithExclusions<float> w_;
  const RowRegression<float> regression_;
  mutable std::vector<float> buffers_;  ///< a step of rows for each thread; empty where a step needs none
};

}  // namespace

NCDataMatrix<float> MultiplyByFewRows(const NCDataMatrix<float>& A, const NCDataMatrix<float>& X) {
  if (!IsFewRowsWithoutHoles(A) || HasNoCells(X) || !IsComplete(X)) return A.MatrixMultiply(X, false, false);
  ProductByFew product(A, X);
  return product.Run([&](int r, int count, int c, int n) {
    const float* row[kRowsSideBySide];
    for (int k = 0; k < count; ++k) row[k] = X[r + k].begin() + c;
    product.AddAll(row, r, count, c, n);
  });
}

NCDataMatrix<float> MultiplyFilteredByFew(const NCDataMatrix<float>& A, const NCDataMatrix<float>& X,
                                          const NCDataMatrix<float>& T, const NCDataMatrix<float>& W) {
  if (!IsFewRowsWithoutHoles(A) || !FiltersWithoutHoles(X, T, W))
    return A.MatrixMultiply(Filtered(X, T, W), false, false);
  ProductByFew product(A, X);
  return product.Run([&](int r, int count, int c, int n) {
    float buffer[kRowsSideBySide * kColumnsPerChunk];
    const FilteredStep step(X, T, W, r, count, c, n, buffer);
    if (A.SizeRows() == 1) {
      product.AddFirst(r, count, c, [&](const double* v, double* sums) { simd::AddDeflated(step.Rows(), v, sums); });
      return;
    }
    float* row[kRowsSideBySide];
    for (int k = 0; k < count; ++k) row[k] = buffer + k * n;
    product.AddFirst(r, count, c, [&](const double* v, double* sums) {
      simd::StoreAndAddDeflated(step.Rows(), row, v, sums);
    });
    product.AddOthers(2, row, r, count, c, n);
  });
}

NCDataMatrix<float> DeflateAndMultiplyByFewRows(const NCDataMatrix<float>& A, NCDataMatrix<float>* X,
                                            const NCDataVector<float>& t, const NCDataVector<float>& p) {
  if (!IsFewRowsWithoutHoles(A) || HasNoCells(*X) || !IsComplete(*X) || p.GetNumMisVal() > 0 || !HasEveryScore(t)) {
    X->AddVprimV(t, p, -1.0F);
    return MultiplyByFewRows(A, *X);
  }
  ProductByFew product(A, *X);
  const UnlinkedRows<float> unlinked(X);  // the last to take memory: X has no cells until they are written
  return product.Run([&](int r, int count, int c, int n) {
    const float* from[kRowsSideBySide];
    float *to[kRowsSideBySide], factors[kRowsSideBySide];
    for (int k = 0; k < count; ++k) {
      from[k] = unlinked.OldCells(r + k) + c;
      to[k] = unlinked.NewCells(r + k) + c;
      factors[k] = -t[r + k];
    }
    product.AddFirst(r, count, c, [&](const double* v, double* sums) {
      simd::StoreAndAddDeflated({from, factors, count, p.begin() + c, n}, to, v, sums);
    });
    product.AddOthers(2, to, r, count, c, n);
  });
}

void CalcFilteredScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataMatrix<float>& T,
                                   const NCDataMatrix<float>& W, const NCDataVector<float>& w, NCDataVector<float>* t,
                                   NCDataVector<float>* p) {
  if (FiltersWithoutHoles(X, T, W) && w.GetNumMisVal() == 0 &&
      CalcScoresAndLoadingsInOnePass(X, FilteredScore(X, T, W, w), t, p))
    return;
  *t = Filtered(X, T, W).SpecialNipalsRegressRowsFix(w, nullptr, 0);
  *p = X.SpecialNipalsRegressColumnsFix(*t);
}

NCDataMatrix<float> Filtered(const NCDataMatrix<float>& X, const NCDataMatrix<float>& T, const NCDataMatrix<float>& W) {
  NCDataMatrix<float> filtered = X;
  for (int a = 1; a <= T.SizeRows(); ++a) filtered.AddVprimV(T[a], W[a], -1.0F);
  return filtered;
}

}  // namespace kalmia
