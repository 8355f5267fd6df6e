#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/regression/ColumnRegression.h"
#include "kalmia/kernels/regression/Regression.h"
#include "kalmia/kernels/rows/BuildInTarget.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

// The columns of a table regressed on a vector along its rows: loadings.

namespace {

/// Sum of v^2 in the order of the cells, as a loop down a column forms it. 0 without a present cell.
template <class T>
double SumOfSquaresInOrder(const NCDataVector<T>& v) {
  double sum = 0;
  for (int r = 1; r <= v.Size(); ++r)
    if (v[r] != kalmia::kMissing) sum += static_cast<double>(v[r]) * v[r];
  return sum;
}

/// Writes the coefficient of each column into `out`, whose 1-based cells are missing before; a column without an
/// estimate stays missing. Returns the change of the number of missing cells. Columns are independent, so any team gives
/// the same bits.
template <class T>
int RegressAllColumns(const kalmia::ColumnRegression<T>& regression, T* out) {
  const int columns = regression.X.SizeColumns();
  const int team = kalmia::TeamSize(static_cast<std::int64_t>(regression.X.SizeRows()) * columns);
  return kalmia::ForSlices(columns, team, kalmia::kColumnsPerGrain,
                           [&](int first, int last) { return regression.Slice(out, first, last); });
}

}  // namespace

template <class T>
NCDataVector<T> NCDataMatrix<T>::RegressColumns(const NCDataVector<T>& v) const {
  const kalmia::ColumnRegression<T> regression{*this, v, v.GetSS(), kalmia::MisValMode(numMisVal_, v.numMisVal_),
                                               /*fix=*/false};
  return kalmia::BuildInTarget(*this, &v, columns_, [&](NCDataVector<T>& result) {
    result.SetAllValues(kalmia::kMissingCell<T>);
    result.numMisVal_ += RegressAllColumns(regression, result.data_);
  });
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::SpecialNipalsRegressColumnsFix(const NCDataVector<T>& v) const {
  if (numMisVal_ == 0 && v.numMisVal_ == 0) return RegressColumns(v);
  const kalmia::ColumnRegression<T> regression{*this, v, v.GetSS(), kalmia::MisValMode(numMisVal_, v.numMisVal_),
                                               /*fix=*/true};
  return kalmia::BuildInTarget(*this, &v, columns_, [&](NCDataVector<T>& result) {
    result.SetAllValues(kalmia::kMissingCell<T>);
    result.numMisVal_ += RegressAllColumns(regression, result.data_);
  });
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::SpecialNipalsRegressColumnsFix(const NCDataVector<T>& v,
                                                                const NCIntegralVector<int, -99>* groups,
                                                                int group) const {
  const int misValMode = kalmia::MisValMode(numMisVal_, v.numMisVal_);
  const long double ss = v.numMisVal_ == 0 ? v.GetSS() : SumOfSquaresInOrder(v);
  const kalmia::ColumnRegression<T> regression{*this, v, ss, misValMode, /*fix=*/true};
  return kalmia::BuildInTarget(*this, &v, columns_, [&](NCDataVector<T>& result) {
    result.SetAllValues(kalmia::kMissingCell<T>);
    RegressAllColumns(regression, result.data_);
    for (int c = 1; groups && c <= columns_; ++c)
      if ((*groups)[c] == group) result.data_[c] = kalmia::kMissingCell<T>;
    result.CountMissing();  // a coefficient that happens to be -99 too
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
