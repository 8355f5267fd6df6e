#include <cmath>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/regression/ColumnRegression.h"
#include "kalmia/kernels/regression/Regression.h"

// The regressions of one column, each a loop down its rows: what the column kernels must equal to the bit.

namespace {

struct ColumnSums {
  double product = 0;  ///< sum x v over the cells that take part
  double square = 0;   ///< sum v^2 over the same
};

template <class T>
double ProductWithColumn(const NCDataMatrix<T>& X, int c, const NCDataVector<T>& v) {
  double sum = 0;
  for (int r = 1; r <= X.SizeRows(); ++r) sum += static_cast<double>(v[r]) * X[r][c];
  return sum;
}

template <class T>
ColumnSums PairsWithColumn(const NCDataMatrix<T>& X, int c, const NCDataVector<T>& v, bool vHasHoles) {
  ColumnSums sums;
  for (int r = 1; r <= X.SizeRows(); ++r) {
    if ((vHasHoles && v[r] == kalmia::kMissing) || X[r][c] == kalmia::kMissing) continue;
    sums.product += static_cast<double>(v[r]) * X[r][c];
    sums.square += static_cast<double>(v[r]) * v[r];
  }
  return sums;
}

}  // namespace

template <class T>
void NCDataMatrix<T>::RegressOneColumn(T* out, int c, const NCDataMatrix& X, const NCDataVector<T>& v, long double ss,
                                       int misValMode, int& numMisVal) {
  const int holes = X.GetColumnMisVal(c);
  long double numerator = 0, denominator = ss;
  if (misValMode == 0 || (misValMode == 1 && holes == 0)) {
    numerator = ProductWithColumn(X, c, v);
  } else if (misValMode >= 1 && misValMode <= 3) {
    if (misValMode == 1 && holes == X.SizeRows()) return;
    const ColumnSums sums = PairsWithColumn(X, c, v, misValMode != 1);
    numerator = sums.product;
    denominator = sums.square;
  }
  kalmia::WriteQuotient(out[c], numerator, denominator, numMisVal);
}

template <class T>
void NCDataMatrix<T>::SpecialNipalsRegressOneColumnFix(T* out, int c, const NCDataMatrix& X, const NCDataVector<T>& v,
                                                       long double ss, int misValMode, int& numMisVal) {
  const int holes = X.GetColumnMisVal(c);
  long double numerator = 0, denominator = ss;
  if (misValMode == 1 && holes == 0) {
    numerator = ProductWithColumn(X, c, v);
  } else if (misValMode >= 1 && misValMode <= 3) {
    if (misValMode == 1 && holes == X.SizeRows()) return;
    const ColumnSums sums = PairsWithColumn(X, c, v, misValMode != 1);
    numerator = sums.product;
    denominator = kalmia::ClampDenominator(kalmia::ThirdOf(ss), sums.square);
  }
  kalmia::WriteQuotient(out[c], numerator, denominator, numMisVal);
}

#define KALMIA_INSTANTIATE(T)                                                                                          \
  template void NCDataMatrix<T>::RegressOneColumn(T*, int, const NCDataMatrix&, const NCDataVector<T>&, long double,   \
                                                  int, int&);                                                          \
  template void NCDataMatrix<T>::SpecialNipalsRegressOneColumnFix(T*, int, const NCDataMatrix&,                        \
                                                                  const NCDataVector<T>&, long double, int, int&);

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
