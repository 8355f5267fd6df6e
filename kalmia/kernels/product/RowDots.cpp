#include "kalmia/kernels/product/RowDots.h"

#include "kalmia/kernels/rows/RowBatches.h"
#include "kalmia/kernels/simd/Dots.h"

namespace kalmia {

using simd::Holes;
using simd::kRowsSideBySide;
using simd::PairSums;

template <class T>
int DotRows(const NCDataMatrix<T>& X, const NCDataVector<T>& v, T* out, int first, int last) {
  const int n = X.SizeColumns();
  const bool vHasHoles = v.GetNumMisVal() > 0, vIsEmpty = vHasHoles && v.GetNumMisVal() == n;
  int missing = 0;
  const auto write = [&](int r, double dot) {
    out[r] = static_cast<T>(dot);
    missing += out[r] == kMissing;
  };
  const auto complete = [&](const RowBatch<T>& rows) {
    double dots[kRowsSideBySide];
    vHasHoles ? simd::DotRowsMasked(v.begin(), rows.cells, rows.count, n, dots)
              : simd::DotRows(v.begin(), rows.cells, rows.count, n, dots);
    for (int k = 0; k < rows.count; ++k) write(rows.row[k], vIsEmpty ? kMissing : dots[k]);
  };
  const auto hasPair = [&](const T* cells) {
    int pairs;
    simd::DotMasked2(cells, v.begin(), n, pairs);
    return pairs > 0;
  };
  const auto withHoles = [&](const RowBatch<T>& rows) {
    PairSums sums[kRowsSideBySide];
    simd::PairRows(v.begin(), rows.cells, rows.count, n, vHasHoles ? Holes::InBoth : Holes::InRows, sums);
    for (int k = 0; k < rows.count; ++k) {
      // Without any pair the sum is 0; only where v has holes too does that mean that there is no result.
      const bool noResult = vHasHoles && sums[k].product == 0 && !hasPair(rows.cells[k]);
      write(rows.row[k], noResult ? kMissing : sums[k].product);
    }
  };
  ForRowBatches(X, first, last, complete, withHoles);
  return missing;
}

template int DotRows(const NCDataMatrix<float>&, const NCDataVector<float>&, float*, int, int);
template int DotRows(const NCDataMatrix<double>&, const NCDataVector<double>&, double*, int, int);

}  // namespace kalmia
