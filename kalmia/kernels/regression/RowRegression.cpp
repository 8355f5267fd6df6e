#include "kalmia/kernels/regression/RowRegression.h"

#include "kalmia/kernels/regression/Regression.h"
#include "kalmia/kernels/rows/RowBatches.h"
#include "kalmia/kernels/simd/Dots.h"

namespace kalmia {

using simd::Holes;
using simd::kRowsSideBySide;
using simd::PairSums;

template <class T>
RowRegression<T>::RowRegression(const VectorWithExclusions<T>& v, bool fix)
    : v_(v),
      fix_(fix),
      sumOfSquares_(v.HasHoles() ? simd::DotMasked(v.begin(), v.begin(), v.Size())
                                 : simd::Dot(v.begin(), v.begin(), v.Size())) {}

template <class T>
bool RowRegression<T>::Write(T* cell, double product, double square) const {
  RegressionSums sums{product, square, sumOfSquares_};
  DropWithoutEstimate(sums);
  *cell = static_cast<T>(fix_ ? CoefficientWithFix(sums) : Coefficient(sums));
  return *cell == kMissing;
}

template <class T>
int RowRegression<T>::CompleteRows(const double* dots, int count, T* out) const {
  int missing = 0;
  for (int k = 0; k < count; ++k) missing += Write(out + k, dots[k], sumOfSquares_);
  return missing;
}

template <class T>
int RowRegression<T>::Rows(const NCDataMatrix<T>& X, T* out, int first, int last) const {
  int missing = 0;
  const auto complete = [&](const RowBatch<T>& rows) {
    double dots[kRowsSideBySide];
    v_.HasHoles() ? simd::DotRowsMasked(v_.begin(), rows.cells, rows.count, v_.Size(), dots)
                  : simd::DotRows(v_.begin(), rows.cells, rows.count, v_.Size(), dots);
    for (int k = 0; k < rows.count; ++k) missing += Write(out + rows.row[k], dots[k], sumOfSquares_);
  };
  const auto withHoles = [&](const RowBatch<T>& rows) {
    PairSums pairs[kRowsSideBySide];
    simd::PairRows(v_.begin(), rows.cells, rows.count, v_.Size(), v_.HasHoles() ? Holes::InBoth : Holes::InRows,
                   pairs);
    for (int k = 0; k < rows.count; ++k) missing += Write(out + rows.row[k], pairs[k].product, pairs[k].square);
  };
  ForRowBatches(X, first, last, complete, withHoles);
  return missing;
}

template class RowRegression<float>;
template class RowRegression<double>;

}  // namespace kalmia
