#include "kalmia/kernels/ColumnRegression.h"

#include <algorithm>

#include "kalmia/kernels/Regression.h"

namespace kalmia {

template <class T>
int ColumnRegression<T>::Slice(T* out, int first, int last) const {
  int change = 0;
  ForColumnBlocks(first, last, [&](int c, int n) {
    const BlockRoom<T> room(n);
    const bool vHasHoles = misValMode >= 2;
    if (vHasHoles) std::fill_n(room.Holes(), n, kMissingCell<T>);
    const bool holes = vHasHoles || (misValMode == 1 && MarkColumnsWithHoles(X, c, n, room.Holes()));
    change += holes ? BlockWithHoles(out, c, n, room) : CompleteBlock(out, c, n, room);
  });
  return change;
}

template <class T>
int ColumnRegression<T>::CompleteBlock(T* out, int first, int n, const BlockRoom<T>& room) const {
  SumColumns(X, v, first, n, room.Products());
  int change = 0;
  for (int j = 0; j < n; ++j) WriteQuotient(out[first + j], room.Products()[j], ss, change);
  return change;
}

template <class T>
int ColumnRegression<T>::BlockWithHoles(T* out, int first, int n, const BlockRoom<T>& room) const {
  const RowsUsed used = misValMode == 1 ? RowsUsed::All : RowsUsed::WithV;
  SumColumnPairs(X, v, used, RowWeight::Square, first, n, room.Holes(), room.Products(), room.Weights());
  const long double third = ThirdOf(ss);
  int change = 0;
  for (int j = 0; j < n; ++j) {
    const int holes = X.GetColumnMisVal(first + j);
    if (misValMode == 1 && holes > 0 && holes == X.SizeRows()) continue;
    const bool complete = misValMode == 1 && holes == 0;
    const long double denominator = complete ? ss : fix ? HeldUpAt(third, room.Weights()[j]) : room.Weights()[j];
    WriteQuotient(out[first + j], room.Products()[j], denominator, change);
  }
  return change;
}

template struct ColumnRegression<float>;
template struct ColumnRegression<double>;

}  // namespace kalmia
