#include <algorithm>
#include <utility>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/passes/BlockedColumnSums.h"
#include "kalmia/kernels/rows/BuildInTarget.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

// The row vector v' X.

namespace {

/// Calls block(first, n) for blocks of all columns, shared out among the team that pays; returns the sum of what the
/// calls return.
template <class T, class Block>
int SumOverBlocks(const NCDataMatrix<T>& X, const Block& block) {
  const int team = kalmia::TeamSize(static_cast<std::int64_t>(X.SizeRows()) * X.SizeColumns());
  return kalmia::ForSlices(X.SizeColumns(), team, kalmia::kColumnsPerGrain, [&](int first, int last) {
    int sum = 0;
    kalmia::ForColumnBlocks(first, last, [&](int c, int n) { sum += block(c, n); });
    return sum;
  });
}

}  // namespace

template <class T>
NCDataVector<T> NCDataMatrix<T>::PreMultiply(const NCDataVector<T>& v) const {
  return numMisVal_ == 0 && v.numMisVal_ == 0 ? PreMultiplyNonMisVal(v) : PreMultiplyMisVal(v);
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::PreMultiplyNonMisVal(const NCDataVector<T>& v) const {
  return kalmia::BuildInTarget(*this, &v, columns_, [&](NCDataVector<T>& result) {
    T* out = result.data_;
    SumOverBlocks(*this, [&](int first, int n) {
      const kalmia::SumsBuffer<T> buffer(n);
      kalmia::SumColumns(*this, v, first, n, buffer.Products());
      for (int j = 0; j < n; ++j) out[first + j] = static_cast<T>(buffer.Products()[j]);
      return 0;
    });
    result.numMisVal_ = 0;
  });
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::PreMultiplyMisVal(const NCDataVector<T>& v) const {
  return kalmia::BuildInTarget(*this, &v, columns_, [&](NCDataVector<T>& result) {
    result.SetAllValues(kalmia::kMissingCell<T>);
    if (v.numMisVal_ >= rows_) return;
    T* out = result.data_;
    const bool vHasHoles = v.numMisVal_ > 0;
    result.numMisVal_ -= SumOverBlocks(*this, [&](int first, int n) {
      const kalmia::SumsBuffer<T> buffer(n);
      kalmia::MarkColumnsWithHoles(*this, first, n, buffer.Holes());
      kalmia::SumColumnPairs(*this, v, vHasHoles ? kalmia::RowsUsed::WithV : kalmia::RowsUsed::All,
                             kalmia::RowWeight::One, first, n, buffer.Holes(), buffer.Products(), buffer.Weights());
      int written = 0;
      for (int j = 0; j < n; ++j) {
        const int holes = GetColumnMisVal(first + j);
        const bool complete = holes == 0 && !vHasHoles;
        if (holes == rows_ || (buffer.Weights()[j] == 0 && !complete)) continue;
        out[first + j] = static_cast<T>(buffer.Products()[j]);
        written += out[first + j] != kalmia::kMissing;
      }
      return written;
    });
  });
}

template <class T>
NCDataVector<T> NCDataVector<T>::operator*(const NCDataMatrix<T>& m) const {
  if (resultTarget_) m.Result(std::exchange(resultTarget_, nullptr));
  return m.PreMultiply(*this);
}

#define KALMIA_INSTANTIATE(T)                                                                     \
  template NCDataVector<T> NCDataMatrix<T>::PreMultiply(const NCDataVector<T>&) const;            \
  template NCDataVector<T> NCDataMatrix<T>::PreMultiplyNonMisVal(const NCDataVector<T>&) const;   \
  template NCDataVector<T> NCDataMatrix<T>::PreMultiplyMisVal(const NCDataVector<T>&) const;      \
  template NCDataVector<T> NCDataVector<T>::operator*(const NCDataMatrix<T>&) const;

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
