#include "kalmia/kernels/RowRegression.h"

#include "kalmia/kernels/Regression.h"
#include "kalmia/kernels/simd/Dots.h"

namespace kalmia {
namespace {

using simd::Holes;
using simd::kRowsAtOnce;
using simd::PairSums;

/// Rows of one kind, collected until there are enough of them.
template <class T>
struct Batch {
  int count = 0;
  const T* cells[kRowsAtOnce];
  int row[kRowsAtOnce];

  bool Add(const NCDataMatrix<T>& X, int r) {
    cells[count] = X[r].begin();
    row[count] = r;
    return ++count == kRowsAtOnce;
  }
};

}  // namespace

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
  Batch<T> complete, withHoles;
  const auto flushComplete = [&] {
    double dots[kRowsAtOnce];
    v_.HasHoles() ? simd::DotRowsMasked(v, complete.cells, complete.count, n, dots)
                  : simd::DotRows(v, complete.cells, complete.count, n, dots);
    for (int k = 0; k < complete.count; ++k) write(complete.row[k], dots[k], sumOfSquares_);
    complete.count = 0;
  };
  const auto flushWithHoles = [&] {
    PairSums pairs[kRowsAtOnce];
    simd::PairRows(v, withHoles.cells, withHoles.count, n, v_.HasHoles() ? Holes::InBoth : Holes::InRows, pairs);
    for (int k = 0; k < withHoles.count; ++k) write(withHoles.row[k], pairs[k].product, pairs[k].square);
    withHoles.count = 0;
  };
  for (int r = first; r <= last; ++r) {
    if (X[r].GetNumMisVal() == 0) {
      if (complete.Add(X, r)) flushComplete();
    } else if (withHoles.Add(X, r)) {
      flushWithHoles();
    }
  }
  if (complete.count > 0) flushComplete();
  if (withHoles.count > 0) flushWithHoles();
  return missing;
}

template class RowRegression<float>;
template class RowRegression<double>;

}  // namespace kalmia
