#include <algorithm>
#include <limits>
#include <memory>

#include "kalmia/kernels/NCSVD.h"
#include "kalmia/kernels/decomposition/SingularValues.h"
#include "kalmia/kernels/rows/RowPointers.h"

namespace {

/// Sets the singular values w[1] to w[n] that are no more than rounding to exactly 0.
template <class T>
void ClearNegligible(T* w, int n) {
  constexpr double kRelativeCutOff = 1e-16;  // of the largest singular value; in float as in double
  constexpr double kSmallestNormal = std::numeric_limits<float>::min();
  double largest = 0;
  for (int i = 1; i <= n; ++i) largest = std::max(largest, static_cast<double>(w[i]));
  const double cutOff = std::max(largest * kRelativeCutOff, kSmallestNormal);
  for (int i = 1; i <= n; ++i)
    if (w[i] < cutOff) w[i] = 0;
}

}  // namespace

template <class T>
NCSVD<T>* NCDataMatrix<T>::SVD(NCDataMatrix* m) {
  std::unique_ptr<NCSVD<T>> result = std::make_unique<SVDBuilder<T>>();
  if (m->numMisVal_ != 0) {
    result->status_ = NCSVD<T>::StatusMissingCells;
    return result.release();
  }
  m->ForceUnlink();
  const int columns = m->columns_;
  auto w = std::make_unique<NCDataVector<T>>(columns, T(0));
  auto v = std::make_unique<NCDataMatrix>(columns, columns, T(0));
  const kalmia::RowPointers<T> mRows(*m), vRows(*v);
  if (!kalmia::DecomposeSingularValues(mRows.Get(), m->rows_, columns, w->data_, vRows.Get())) {
    result->status_ = NCSVD<T>::StatusNotConverged;
    return result.release();
  }
  ClearNegligible(w->data_, columns);
  result->u_ = m;
  result->v_ = v.release();
  result->w_ = w.release();
  return result.release();
}

template <class T>
NCSVD<T>* NCDataMatrix<T>::GetSVD() const {
  auto copy = std::make_unique<NCDataMatrix>();
  copy->CopyContent(*this);  // no share: several threads may read this table
  NCSVD<T>* const result = SVD(copy.get());
  if (result->GetStatus() == NCSVD<T>::StatusSuccess) copy.release();
  return result;
}

template <class T>
NCSVD<T>* NCDataMatrix<T>::TransformToSVD() {
  return SVD(this);
}

#define KALMIA_INSTANTIATE(T)                                 \
  template NCSVD<T>* NCDataMatrix<T>::SVD(NCDataMatrix<T>*);  \
  template NCSVD<T>* NCDataMatrix<T>::GetSVD() const;         \
  template NCSVD<T>* NCDataMatrix<T>::TransformToSVD();
KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
