#include "kalmia/kernels/simd/ColumnSums.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/ColumnSums.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

/// The rows from column j on.
template <class T>
struct RowsFrom {
  RowsFrom(const T* const* rows, int count, int j) {
    for (int k = 0; k < count; ++k) row[k] = rows[k] + j;
  }
  const T* row[kRowsSideBySide];
};

/// The number of rows of a step: known to the compiler for a full one, whose loops over the rows unroll, so that all
/// their factors stay in registers across the columns.
template <int kKnown>
struct Count {
  explicit Count(int count) : any(count) {}
  operator int() const { return kKnown > 0 ? kKnown : any; }
  int any;
};
using FullCount = Count<kRowsSideBySide>;
using AnyCount = Count<0>;

/// A number for each row of the step, in every lane of a vector.
template <class Count>
HWY_INLINE void Broadcast(const double* numbers, Count count, WideVector (&out)[kRowsSideBySide]) {
  for (int k = 0; k < count; ++k) out[k] = hn::Set(Wide(), numbers[k]);
}

/// Fetches ahead in all rows, once for each cache line.
template <class T, class Count>
HWY_INLINE void FetchRowsAhead(const T* const* rows, Count count, int j) {
  if (j % kCellsPerLine<T> != 0) return;
  for (int k = 0; k < count; ++k) FetchAhead(rows[k] + j);
}

template <class T, class Count>
void Products(const T* const* rows, const double* v, Count count, int n, double* sums) {
  const Wide d;
  WideVector factor[kRowsSideBySide];
  Broadcast(v, count, factor);
  int j = 0;
  for (; n - j >= kWidth; j += kWidth) {
    FetchRowsAhead(rows, count, j);
    WideVector sum = hn::LoadU(d, sums + j);
    for (int k = 0; k < count; ++k) sum = AddProduct<T>(factor[k], Widen(Load(rows[k] + j)), sum);
    hn::StoreU(sum, d, sums + j);
  }
  if (j < n) scalar::AddRows(RowsFrom<T>(rows, count, j).row, v, count, n - j, sums + j);
}

template <class T, class Count>
void MaskedProducts(const T* const* rows, const double* v, const double* w, Count count, int n, const T* hole,
                    double* sums, double* weights) {
  const Wide d;
  WideVector factor[kRowsSideBySide], weightOfRow[kRowsSideBySide];
  Broadcast(v, count, factor);
  Broadcast(w, count, weightOfRow);
  int j = 0;
  for (; n - j >= kWidth; j += kWidth) {
    FetchRowsAhead(rows, count, j);
    WideVector sum = hn::LoadU(d, sums + j), weight = hn::LoadU(d, weights + j);
    const NarrowVector<T> none = Load(hole + j);
    for (int k = 0; k < count; ++k) {
      const NarrowVector<T> x = Load(rows[k] + j);
      const WideMask present = Differ<T>(x, none);
      sum = hn::IfThenElse(present, AddProduct<T>(factor[k], Widen(x), sum), sum);
      weight = hn::IfThenElse(present, hn::Add(weight, weightOfRow[k]), weight);
    }
    hn::StoreU(sum, d, sums + j);
    hn::StoreU(weight, d, weights + j);
  }
  if (j < n)
    scalar::AddRowsMasked(RowsFrom<T>(rows, count, j).row, v, w, count, n - j, hole + j, sums + j, weights + j);
}

template <class T, class Count>
void MaskedSquares(const T* const* rows, Count count, int n, const T* hole, double* sums) {
  const Wide d;
  int j = 0;
  for (; n - j >= kWidth; j += kWidth) {
    FetchRowsAhead(rows, count, j);
    WideVector sum = hn::LoadU(d, sums + j);
    const NarrowVector<T> none = Load(hole + j);
    for (int k = 0; k < count; ++k) {
      const NarrowVector<T> x = Load(rows[k] + j);
      sum = hn::IfThenElse(Differ<T>(x, none), AddProduct<T>(Widen(x), Widen(x), sum), sum);
    }
    hn::StoreU(sum, d, sums + j);
  }
  if (j < n) scalar::AddSquaresMasked(RowsFrom<T>(rows, count, j).row, count, n - j, hole + j, sums + j);
}

/// run(count) with the count as the compiler knows it best.
template <class Run>
HWY_INLINE void ByCount(int count, const Run& run) {
  count == kRowsSideBySide ? run(FullCount(count)) : run(AnyCount(count));
}

void FloatProducts(const float* const* rows, const double* v, int count, int n, double* sums) {
  ByCount(count, [=](auto known) { Products(rows, v, known, n, sums); });
}
void DoubleProducts(const double* const* rows, const double* v, int count, int n, double* sums) {
  ByCount(count, [=](auto known) { Products(rows, v, known, n, sums); });
}
void FloatMaskedProducts(const float* const* rows, const double* v, const double* w, int count, int n,
                         const float* hole, double* sums, double* weights) {
  ByCount(count, [=](auto known) { MaskedProducts(rows, v, w, known, n, hole, sums, weights); });
}
void DoubleMaskedProducts(const double* const* rows, const double* v, const double* w, int count, int n,
                          const double* hole, double* sums, double* weights) {
  ByCount(count, [=](auto known) { MaskedProducts(rows, v, w, known, n, hole, sums, weights); });
}
void FloatMaskedSquares(const float* const* rows, int count, int n, const float* hole, double* sums) {
  ByCount(count, [=](auto known) { MaskedSquares(rows, known, n, hole, sums); });
}
void DoubleMaskedSquares(const double* const* rows, int count, int n, const double* hole, double* sums) {
  ByCount(count, [=](auto known) { MaskedSquares(rows, known, n, hole, sums); });
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(FloatProducts);
HWY_EXPORT(DoubleProducts);
HWY_EXPORT(FloatMaskedProducts);
HWY_EXPORT(DoubleMaskedProducts);
HWY_EXPORT(FloatMaskedSquares);
HWY_EXPORT(DoubleMaskedSquares);

void AddRows(const float* const* rows, const double* v, int count, int n, double* sums) {
  UsesScalarTwins() ? scalar::AddRows(rows, v, count, n, sums)
                    : HWY_DYNAMIC_DISPATCH(FloatProducts)(rows, v, count, n, sums);
}
void AddRows(const double* const* rows, const double* v, int count, int n, double* sums) {
  UsesScalarTwins() ? scalar::AddRows(rows, v, count, n, sums)
                    : HWY_DYNAMIC_DISPATCH(DoubleProducts)(rows, v, count, n, sums);
}

void AddRowsMasked(const float* const* rows, const double* v, const double* w, int count, int n, const float* hole,
                   double* sums, double* weights) {
  UsesScalarTwins() ? scalar::AddRowsMasked(rows, v, w, count, n, hole, sums, weights)
                    : HWY_DYNAMIC_DISPATCH(FloatMaskedProducts)(rows, v, w, count, n, hole, sums, weights);
}
void AddRowsMasked(const double* const* rows, const double* v, const double* w, int count, int n, const double* hole,
                   double* sums, double* weights) {
  UsesScalarTwins() ? scalar::AddRowsMasked(rows, v, w, count, n, hole, sums, weights)
                    : HWY_DYNAMIC_DISPATCH(DoubleMaskedProducts)(rows, v, w, count, n, hole, sums, weights);
}

void AddSquaresMasked(const float* const* rows, int count, int n, const float* hole, double* sums) {
  UsesScalarTwins() ? scalar::AddSquaresMasked(rows, count, n, hole, sums)
                    : HWY_DYNAMIC_DISPATCH(FloatMaskedSquares)(rows, count, n, hole, sums);
}
void AddSquaresMasked(const double* const* rows, int count, int n, const double* hole, double* sums) {
  UsesScalarTwins() ? scalar::AddSquaresMasked(rows, count, n, hole, sums)
                    : HWY_DYNAMIC_DISPATCH(DoubleMaskedSquares)(rows, count, n, hole, sums);
}

}  // namespace kalmia::simd

#endif
