// Statistics of all columns at once: the rows are walked in the order in which they lie in memory, with accumulators
// for every column. Each column's sums still add in the order of the rows, so the bits are those of a walk down that
// column.

#include <cstddef>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/internal/SampleMoments.h"

using kalmia::kMissing;

namespace {

/// Calls visit(c, x) for the present cells of row r; a column that counts no holes is not tested.
template <class T, class Visit>
void ForEachPresentInRow(const NCDataMatrix<T>& m, int r, Visit visit) {
  const T* x = m[r].GetVector();
  const int columns = m.SizeColumns();
  if (m.GetNumMisVal() == 0) {
    for (int c = 1; c <= columns; ++c) visit(static_cast<std::size_t>(c), x[c]);
  } else {
    for (int c = 1; c <= columns; ++c)
      if (x[c] != kMissing || m.GetColumnMisVal(c) == 0) visit(static_cast<std::size_t>(c), x[c]);
  }
}

/// The sums of Correlation for one column: s[c] over the pairs of column c, from 1.
struct CorrelationSums {
  explicit CorrelationSums(std::size_t columns)
      : product(columns + 1), squares(columns + 1), vectorSquares(columns + 1), pairs(columns + 1) {}
  std::vector<double> product, squares, vectorSquares;
  std::vector<int> pairs;
};

template <class T>
CorrelationSums SumOverPairs(const NCDataMatrix<T>& m, const NCDataVector<T>& v) {
  CorrelationSums sums(static_cast<std::size_t>(m.SizeColumns()));
  const bool vComplete = v.GetNumMisVal() == 0;
  const bool complete = vComplete && m.GetNumMisVal() == 0;  // then v's sum of squares is the same for all columns
  double ssV = 0;
  for (int r = 1; r <= m.SizeRows(); ++r) {
    if (!vComplete && v[r] == kMissing) continue;
    const double b = v[r];
    ssV += b * b;
    ForEachPresentInRow(m, r, [&](std::size_t c, double a) {
      sums.product[c] += a * b;
      sums.squares[c] += a * a;
      if (complete) return;
      sums.vectorSquares[c] += b * b;
      ++sums.pairs[c];
    });
  }
  if (complete) {
    sums.vectorSquares.assign(sums.vectorSquares.size(), ssV);
    sums.pairs.assign(sums.pairs.size(), m.SizeRows());
  }
  return sums;
}

}  // namespace

template <class T>
long double NCDataMatrix<T>::GetSSAroundColumnMeans() const {
  const std::size_t cells = static_cast<std::size_t>(columns_) + 1;
  std::vector<double> sum(cells), centre(cells), ss(cells);
  for (int r = 1; r <= rows_; ++r) ForEachPresentInRow(*this, r, [&sum](std::size_t c, double x) { sum[c] += x; });
  for (int c = 1; c <= columns_ && rows_ > 0; ++c) {
    const std::size_t i = static_cast<std::size_t>(c);
    const int n = rows_ - GetColumnMisVal(c);
    if (n > 0) centre[i] = static_cast<double>(static_cast<long double>(sum[i]) / n);
  }
  for (int r = 1; r <= rows_; ++r)
    ForEachPresentInRow(*this, r, [&](std::size_t c, double x) { ss[c] += (x - centre[c]) * (x - centre[c]); });

  long double total = 0;  // an empty column has the sum 0
  for (const double columnSS : ss) total += columnSS;
  return total;
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::GetColumnCorrelation(const NCDataVector<T>& v) const {
  const CorrelationSums sums = SumOverPairs(*this, v);
  VectorDestroyer<T> holder;
  GetReturnVector(holder, columns_);
  for (int c = 1; c <= columns_; ++c) {
    const std::size_t i = static_cast<std::size_t>(c);
    const long double correlation =
        sums.pairs[i] == 0
            ? kMissing
            : kalmia::CorrelationFromSums(sums.product[i], sums.squares[i], sums.vectorSquares[i]);
    (*holder.vector)(c, static_cast<T>(correlation));
  }
  return *holder.vector;
}

template long double NCDataMatrix<float>::GetSSAroundColumnMeans() const;
template long double NCDataMatrix<double>::GetSSAroundColumnMeans() const;
template NCDataVector<float> NCDataMatrix<float>::GetColumnCorrelation(const NCDataVector<float>& v) const;
template NCDataVector<double> NCDataMatrix<double>::GetColumnCorrelation(const NCDataVector<double>& v) const;
