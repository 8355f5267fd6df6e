#include "kalmia/kernels/simd/AddScaledToRows.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/AddScaledToRows.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/RowSum-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

template <int kRows, bool kHoles, class T>
void AddTo(T* const* rows, const T* factors, const T* w, int n) {
  const Narrow<T> d;
  const auto hole = hn::Set(d, kMissingCell<T>);
  T* row[kRows];
  WideVector factor[kRows];
  for (int k = 0; k < kRows; ++k) {
    row[k] = rows[k];
    factor[k] = hn::Set(Wide(), static_cast<double>(factors[k]));
  }
  const auto add = [&](int i) HWY_ATTR {
    const WideVector weights = Widen(hn::LoadU(d, w + i));
    for (int k = 0; k < kRows; ++k) {
      const auto cells = hn::LoadU(d, row[k] + i);
      const auto sums = SumOf<T>(cells, weights, factor[k]);
      hn::StoreU(kHoles ? hn::IfThenElse(hn::Eq(cells, hole), cells, sums) : sums, d, row[k] + i);
    }
  };
  int j = 0;
  for (; n - j >= kCellsPerLine<T>; j += kCellsPerLine<T>) {
    for (int k = 0; k < kRows; ++k) FetchAhead(row[k] + j);
    for (int i = j; i < j + kCellsPerLine<T>; i += kWidth) add(i);
  }
  for (; n - j >= kWidth; j += kWidth) add(j);
  if (j == n) return;
  for (int k = 0; k < kRows; ++k) row[k] += j;
  kHoles ? scalar::AddScaledToPresent(row, factors, kRows, w + j, n - j)
         : scalar::AddScaledToRows(row, factors, kRows, w + j, n - j);
}

template <bool kHoles, class T>
void AddToAll(T* const* rows, const T* factors, int count, const T* w, int n) {
  int k = 0;
  for (; count - k >= kRowsSideBySide; k += kRowsSideBySide)
    AddTo<kRowsSideBySide, kHoles>(rows + k, factors + k, w, n);
  for (; count - k >= 2; k += 2) AddTo<2, kHoles>(rows + k, factors + k, w, n);
  if (k < count) AddTo<1, kHoles>(rows + k, factors + k, w, n);
}

void FloatRows(float* const* rows, const float* factors, int count, const float* w, int n) {
  AddToAll<false>(rows, factors, count, w, n);
}
void DoubleRows(double* const* rows, const double* factors, int count, const double* w, int n) {
  AddToAll<false>(rows, factors, count, w, n);
}
void FloatPresent(float* const* rows, const float* factors, int count, const float* w, int n) {
  AddToAll<true>(rows, factors, count, w, n);
}
void DoublePresent(double* const* rows, const double* factors, int count, const double* w, int n) {
  AddToAll<true>(rows, factors, count, w, n);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(FloatRows);
HWY_EXPORT(DoubleRows);
HWY_EXPORT(FloatPresent);
HWY_EXPORT(DoublePresent);

void AddScaledToRows(float* const* rows, const float* factors, int count, const float* w, int n) {
  UsesScalarTwins() ? scalar::AddScaledToRows(rows, factors, count, w, n)
                    : HWY_DYNAMIC_DISPATCH(FloatRows)(rows, factors, count, w, n);
}
void AddScaledToRows(double* const* rows, const double* factors, int count, const double* w, int n) {
  UsesScalarTwins() ? scalar::AddScaledToRows(rows, factors, count, w, n)
                    : HWY_DYNAMIC_DISPATCH(DoubleRows)(rows, factors, count, w, n);
}
void AddScaledToPresent(float* const* rows, const float* factors, int count, const float* w, int n) {
  UsesScalarTwins() ? scalar::AddScaledToPresent(rows, factors, count, w, n)
                    : HWY_DYNAMIC_DISPATCH(FloatPresent)(rows, factors, count, w, n);
}
void AddScaledToPresent(double* const* rows, const double* factors, int count, const double* w, int n) {
  UsesScalarTwins() ? scalar::AddScaledToPresent(rows, factors, count, w, n)
                    : HWY_DYNAMIC_DISPATCH(DoublePresent)(rows, factors, count, w, n);
}

}  // namespace kalmia::simd

#endif
