#include "kalmia/kernels/ColumnRegression.h"

#include <algorithm>

#include "kalmia/kernels/ColumnWalk.h"
#include "kalmia/kernels/Regression.h"

namespace kalmia {

template <class T>
int ColumnRegression<T>::Slice(T* out, int first, int last) const {
  int change = 0;
  T hole[kColumnsPerBlock];
  for (int c = first; c <= last; c += kColumnsPerBlock) {
    const int n = std::min(kColumnsPerBlock, last - c + 1);
    const bool vHasHoles = misValMode >= 2;
    if (vHasHoles) std::fill_n(hole, n, static_cast<T>(kMissing));
    const bool holes = vHasHoles || (misValMode == 1 && MarkColumnsWithHoles(X, c, n, hole));
    change += holes ? BlockWithHoles(out, c, n, hole) : CompleteBlock(out, c, n);
  }
  return change;
}

template <class T>
int ColumnRegression<T>::CompleteBlock(T* out, int first, int n) const {
  double products[kColumnsPerBlock];
  SumColumns(X, v, first, n, products);
  int change = 0;
  for (int j = 0; j < n; ++j) WriteQuotient(out[first + j], products[j], ss, change);
  return change;
}

template <class T>
int ColumnRegression<T>::BlockWithHoles(T* out, int first, int n, const T* hole) const {
  double products[kColumnsPerBlock], squares[kColumnsPerBlock];
  const RowsUsed used = misValMode == 1 ? RowsUsed::All : RowsUsed::WithV;
  SumColumnPairs(X, v, used, RowWeight::Square, first, n, hole, products, squares);
  int change = 0;
  for (int j = 0; j < n; ++j) {
    const int holes = X.GetColumnMisVal(first + j);
    if (misValMode == 1 && holes > 0 && holes == X.SizeRows()) continue;
    const bool complete = misValMode == 1 && holes == 0;
    const long double denominator = complete ? ss : fix ? HeldUpAtAThird(squares[j], ss) : squares[j];
    WriteQuotient(out[first + j], products[j], denominator, change);
  }
  return change;
}

template struct ColumnRegression<float>;
template struct ColumnRegression<double>;

}  // namespace kalmia
