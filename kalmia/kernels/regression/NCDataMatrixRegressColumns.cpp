#include <algorithm>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/ThreadingControl.h"
#include "kalmia/kernels/regression/ColumnRegression.h"
#include "kalmia/kernels/regression/Regression.h"
#include "kalmia/kernels/rows/BuildInTarget.h"
#include "kalmia/kernels/threads/ColumnThreads.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

// The columns of a table regressed on a vector along its rows: loadings.

namespace {

/// A table with fewer cells is done before a thread has been created and joined.
constexpr std::int64_t kCellsThatPayForThreads = 400000;

template <class T>
std::int64_t Cells(const NCDataMatrix<T>& X) {
  return static_cast<std::int64_t>(X.SizeRows()) * X.SizeColumns();
}

template <class T>
NCDataVector<T>& AllMissingAndUnshared(NCDataVector<T>& v) {
  v.SetAllValues(kalmia::kMissingCell<T>);
  v.ForceUnlink();
  return v;
}

/// The sum of v^2 in the order of the cells, as the loop over a column's rows forms it; 0 where no cell is present.
template <class T>
double SumOfSquaresInOrder(const NCDataVector<T>& v) {
  double sum = 0;
  for (int r = 1; r <= v.Size(); ++r)
    if (v[r] != kalmia::kMissing) sum += static_cast<double>(v[r]) * v[r];
  return sum;
}

template <class T>
int ByTeam(const kalmia::ColumnRegression<T>& regression, T* out, int columns) {
  return kalmia::ForSlices(columns, kalmia::TeamSize(Cells(regression.X)), kalmia::kColumnsPerGrain,
                           [&](int first, int last) { return regression.Slice(out, first, last); });
}

template <class T>
int ByThreads(const kalmia::ColumnRegression<T>& regression, T* out, int columns) {
  const auto slice = [&](int first, int last) { return regression.Slice(out, first, last); };
  const bool pays = Cells(regression.X) >= kCellsThatPayForThreads;
  if (pays && NCMultiThreading::ThreadingControl::IsThreadingOn()) return kalmia::ForColumnThreads(columns, slice);
  return slice(1, columns);
}

}  // namespace

template <class T>
NCDataVector<T> NCDataMatrix<T>::RegressColumns(const NCDataVector<T>& v) const {
  return kalmia::BuildInTarget(*this, &v, columns_, [&](NCDataVector<T>& result) {
    const kalmia::ColumnRegression<T> regression{*this, v, v.GetSS(), kalmia::MisValMode(numMisVal_, v.numMisVal_),
                                                 /*fix=*/false};
    NCDataVector<T>& out = AllMissingAndUnshared(result);
    out.numMisVal_ += ByTeam(regression, out.data_, columns_);
  });
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::SpecialNipalsRegressColumnsFix(const NCDataVector<T>& v) const {
  if (numMisVal_ == 0 && v.numMisVal_ == 0) return RegressColumns(v);
  return kalmia::BuildInTarget(*this, &v, columns_, [&](NCDataVector<T>& result) {
    const kalmia::ColumnRegression<T> regression{*this, v, v.GetSS(), kalmia::MisValMode(numMisVal_, v.numMisVal_),
                                                 /*fix=*/true};
    NCDataVector<T>& out = AllMissingAndUnshared(result);
    out.numMisVal_ += ByThreads(regression, out.data_, columns_);
  });
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::SpecialNipalsRegressColumnsFix(const NCDataVector<T>& v,
                                                                const NCIntegralVector<int, -99>* groups,
                                                                int group) const {
  return kalmia::BuildInTarget(*this, &v, columns_, [&](NCDataVector<T>& result) {
    const int mode = kalmia::MisValMode(numMisVal_, v.numMisVal_);
    const long double ss = mode < 2 ? v.GetSS() : SumOfSquaresInOrder(v);
    const kalmia::ColumnRegression<T> regression{*this, v, ss, mode, /*fix=*/true};
    NCDataVector<T>& out = AllMissingAndUnshared(result);
    ByTeam(regression, out.data_, columns_);
    if (groups)
      for (int c = 1; c <= columns_; ++c)
        if ((*groups)[c] == group) out.data_[c] = kalmia::kMissingCell<T>;
    out.CountMissing();
  });
}

#define KALMIA_INSTANTIATE(T)                                                                                   \
  template NCDataVector<T> NCDataMatrix<T>::RegressColumns(const NCDataVector<T>&) const;                       \
  template NCDataVector<T> NCDataMatrix<T>::SpecialNipalsRegressColumnsFix(const NCDataVector<T>&) const;       \
  template NCDataVector<T> NCDataMatrix<T>::SpecialNipalsRegressColumnsFix(                                     \
      const NCDataVector<T>&, const NCIntegralVector<int, -99>*, int) const;

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
