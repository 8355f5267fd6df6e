// Adding and taking away an outer product of two vectors: the deflation of the models.

#include <algorithm>
#include <cstdint>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/internal/AliasSafeRow.h"
#include "kalmia/kernels/regression/Regression.h"
#include "kalmia/kernels/rows/UnlinkedRows.h"
#include "kalmia/kernels/simd/AddScaledToRows.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

using kalmia::kMissing;
using kalmia::kMissingCell;
using kalmia::AliasSafeRow;
using kalmia::simd::kRowsSideBySide;

namespace {

/// How the rows of one deflation are taken: side by side where nothing but holes of the matrix is in the way.
enum class RowStep { Complete, HolesInMatrix, HolesInBoth };

/// A matrix that is thought complete is taken so (mode 0). Otherwise w is looked at once, rather than in every row and
/// whatever its count says.
template <class T>
RowStep StepFor(int misValMode, const T* w, int n) {
  if (misValMode == 0) return RowStep::Complete;
  return std::find(w, w + n, kMissingCell<T>) == w + n ? RowStep::HolesInMatrix : RowStep::HolesInBoth;
}

/// Rows waiting to be taken side by side.
template <class T>
struct Batch {
  void Add(T* row, T factor) {
    rows[count] = row;
    factors[count++] = factor;
  }
  void Run(RowStep step, const T* w, int n) const {
    step == RowStep::Complete ? kalmia::simd::AddScaledToRows(rows, factors, count, w, n)
                              : kalmia::simd::AddScaledToPresent(rows, factors, count, w, n);
  }

  T* rows[kRowsSideBySide];
  T factors[kRowsSideBySide];
  int count = 0;
};

}  // namespace

template <class T>
void NCDataMatrix<T>::AddVprimV(const NCDataVector<T>& u, const NCDataVector<T>& w, T f) {
  const AliasSafeRow<T> alongRows(u, *this), alongColumns(w, *this);
  const kalmia::UnlinkedRows<T> rows(this);
  if (rows_ == 0 || columns_ == 0) return;
  const T* scores = (*alongRows).GetVector();
  const T* weights = (*alongColumns).begin();
  const int misValMode = kalmia::MisValMode(numMisVal_, (*alongColumns).GetNumMisVal());
  const RowStep step = StepFor(misValMode, weights, columns_);
  int* columnMisVal = &(*columnMisVal_)(1) - 1;  // cell 0 exists
  const int team = kalmia::TeamSize(std::int64_t{rows_} * columns_);
  const auto slice = [&](int begin, int end) {
    int emptied = 0;
    for (int first = begin; first <= end; first += kRowsSideBySide) {
      Batch<T> batch;
      for (int r = first; r < first + kRowsSideBySide && r <= end; ++r) {
        T* const row = rows.Fetch(r);
        const T factor = scores[r] == kMissing ? kMissingCell<T> : static_cast<T>(scores[r] * f);
        if (step == RowStep::HolesInBoth || factor == kMissing)
          AddFV(*this, factor, weights, misValMode, r, emptied, columnMisVal);
        else
          batch.Add(row, factor);
      }
      batch.Run(step, weights, columns_);
    }
    return emptied;
  };
  const int grain = std::min(kRowsSideBySide, (rows_ - 1) / team + 1);
  numMisVal_ += kalmia::ForSlices(rows_, team, grain, slice);
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
