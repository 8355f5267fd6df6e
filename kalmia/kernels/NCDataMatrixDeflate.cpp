// Adding and taking away an outer product of two vectors: the deflation of the models.

#include <algorithm>
#include <cstdint>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/RowOperand.h"
#include "kalmia/kernels/Team.h"
#include "kalmia/kernels/simd/RowAdd.h"

using kalmia::kMissing;
using kalmia::RowOperand;

template <class T>
void NCDataMatrix<T>::AddVprimV(const NCDataVector<T>& u, const NCDataVector<T>& w, T f) {
  const RowOperand<T> alongRows(u, *this), alongColumns(w, *this);
  ForceUnlink();
  if (rows_ == 0 || columns_ == 0) return;
  const T* factors = (*alongRows).GetVector();
  const T* weights = (*alongColumns).begin();
  const int misValMode = (numMisVal_ > 0 ? 1 : 0) + ((*alongColumns).GetNumMisVal() > 0 ? 2 : 0);
  int* columnMisVal = &(*columnMisVal_)(1) - 1;  // cell 0 exists
  // AddFV looks for holes of w in every row. Here one look at w may spare that: no other bit changes.
  const bool onlyRowsHaveHoles =
      misValMode == 1 && std::find(weights, weights + columns_, static_cast<T>(kMissing)) == weights + columns_;
  int emptied = 0;
#pragma omp parallel for schedule(static) reduction(+ : emptied) \
    num_threads(kalmia::TeamSize(std::int64_t{rows_} * columns_))
  for (int r = 1; r <= rows_; ++r) {
    const T factor = factors[r] == kMissing ? static_cast<T>(kMissing) : static_cast<T>(factors[r] * f);
    if (onlyRowsHaveHoles && factor != kMissing)
      kalmia::simd::AddScaledToPresent(rowArray_[r].data_ + 1, weights, factor, columns_);
    else
      AddFV(*this, factor, weights, misValMode, r, emptied, columnMisVal);
  }
  numMisVal_ += emptied;
}

template <class T>
void NCDataMatrix<T>::TransformToAdd_V_x_Vt(const NCDataVector<T>& u, const NCDataVector<T>& w) {
  AddVprimV(u, w, static_cast<T>(1));
}

template <class T>
void NCDataMatrix<T>::TransformToSub_V_x_Vt(const NCDataVector<T>& u, const NCDataVector<T>& w) {
  AddVprimV(u, w, static_cast<T>(-1));
}

template void NCDataMatrix<float>::AddVprimV(const NCDataVector<float>&, const NCDataVector<float>&, float);
template void NCDataMatrix<float>::TransformToAdd_V_x_Vt(const NCDataVector<float>&, const NCDataVector<float>&);
template void NCDataMatrix<float>::TransformToSub_V_x_Vt(const NCDataVector<float>&, const NCDataVector<float>&);
template void NCDataMatrix<double>::AddVprimV(const NCDataVector<double>&, const NCDataVector<double>&, double);
template void NCDataMatrix<double>::TransformToAdd_V_x_Vt(const NCDataVector<double>&, const NCDataVector<double>&);
template void NCDataMatrix<double>::TransformToSub_V_x_Vt(const NCDataVector<double>&, const NCDataVector<double>&);
