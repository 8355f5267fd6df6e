#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/regression/ExcludedPositions.h"
#include "kalmia/kernels/regression/RowRegression.h"
#include "kalmia/kernels/rows/BuildInTarget.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

// The rows of a table regressed on a vector along its columns: scores.

namespace {

/// Fills `out`, one cell for each row, and counts its missing cells. Cells of different rows are independent, so any
/// team gives the same bits.
template <class T>
int RegressAllRows(const NCDataMatrix<T>& X, const kalmia::VectorWithExclusions<T>& v, bool fix, T* out) {
  constexpr int kRowsPerGrain = 16;
  const kalmia::RowRegression<T> regression(v, fix);
  const int team = kalmia::TeamSize(static_cast<std::int64_t>(X.SizeRows()) * v.Size());
  return kalmia::ForSlices(X.SizeRows(), team, kRowsPerGrain,
                           [&](int first, int last) { return regression.Rows(X, out, first, last); });
}

}  // namespace

template <class T>
NCDataVector<T> NCDataMatrix<T>::RegressRows(const NCDataVector<T>& v) const {
  const kalmia::VectorWithExclusions<T> cells(v);
  return kalmia::BuildInTarget(*this, &v, rows_, [&](NCDataVector<T>& result) {
    result.numMisVal_ = RegressAllRows(*this, cells, /*fix=*/false, result.data_);
  });
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::SpecialNipalsRegressRowsFix(const NCDataVector<T>& v,
                                                             const NCIntegralVector<int, -99>* groups,
                                                             int group) const {
  using Cells = kalmia::VectorWithExclusions<T>;
  const Cells cells = groups ? Cells(v, *groups, group) : Cells(v);
  return kalmia::BuildInTarget(*this, &v, rows_, [&](NCDataVector<T>& result) {
    result.numMisVal_ = RegressAllRows(*this, cells, /*fix=*/true, result.data_);
  });
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::SpecialNipalsRegressRowsFixWithExclude(const NCDataVector<T>& v, int start,
                                                                        int stride) const {
  const kalmia::VectorWithExclusions<T> cells(v, start, stride);
  return kalmia::BuildInTarget(*this, &v, rows_, [&](NCDataVector<T>& result) {
    result.numMisVal_ = RegressAllRows(*this, cells, /*fix=*/true, result.data_);
  });
}

#define KALMIA_INSTANTIATE(T)                                                                                       \
  template NCDataVector<T> NCDataMatrix<T>::RegressRows(const NCDataVector<T>&) const;                              \
  template NCDataVector<T> NCDataMatrix<T>::SpecialNipalsRegressRowsFix(                                            \
      const NCDataVector<T>&, const NCIntegralVector<int, -99>*, int) const;                                        \
  template NCDataVector<T> NCDataMatrix<T>::SpecialNipalsRegressRowsFixWithExclude(const NCDataVector<T>&, int, int) \
      const;

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
