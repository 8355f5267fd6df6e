#include "kalmia/kernels/RowRegression.h"

#include "kalmia/kernels/Regression.h"
#include "kalmia/kernels/RowBatches.h"
#include "kalmia/kernels/simd/Dots.h"

namespace kalmia {

using simd::Holes;
using simd::kRowsAtOnce;
using simd::PairSums;

template <class T>
RowRegression<T>::RowRegression(const WithExcluded<T>& v, bool fix)
    : v_(v),
      fix_(fix),
      sumOfSquares_(v.HasHoles() ? simd::DotMasked(v.begin(), v.begin(), v.Size())
                                 : simd::Dot(v.begin(), v.begin(), v.Size())) {}

template <class T>
int RowRegression<T>::Rows(const NCDataMatrix<T>& X, T* out, int first, int last) const {
  const T* v = v_.begin();
  const int n = v_.Size();
  int missing = 0;
  const auto write = [&](int r, double product, double square) {
    RegressionSums sums{product, square, sumOfSquares_};
    DropWithoutEstimate(sums);
    out[r] = static_cast<T>(fix_ ? CoefficientWithFix(sums) : Coefficient(sums));
    missing += out[r] == kMissing;
  };
  const auto complete = [&](const RowBatch<T>& rows) {
    double dots[kRowsAtOnce];
    v_.HasHoles() ? simd::DotRowsMasked(v, rows.cells, rows.count, n, dots)
                  : simd::DotRows(v, rows.cells, rows.count, n, dots);
    for (int k = 0; k < rows.count; ++k) write(rows.row[k], dots[k], sumOfSquares_);
  };
  const auto withHoles = [&](const RowBatch<T>& rows) {
    PairSums pairs[kRowsAtOnce];
    simd::PairRows(v, rows.cells, rows.count, n, v_.HasHoles() ? Holes::InBoth : Holes::InRows, pairs);
    for (int k = 0; k < rows.count; ++k) write(rows.row[k], pairs[k].product, pairs[k].square);
  };
  ForRowBatches(X, first, last, complete, withHoles);
  return missing;
}

template class RowRegression<float>;
template class RowRegression<double>;

}  // namespace kalmia
