#include "kalmia/kernels/simd/AddScaled.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/AddScaled.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/RowSum-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

template <class T>
void Plain(T* row, const T* w, T f, int n) {
  const Narrow<T> d;
  const WideVector factor = hn::Set(Wide(), static_cast<double>(f));
  int j = 0;
  for (; n - j >= kWidth; j += kWidth)
    hn::StoreU(SumOf<T>(hn::LoadU(d, row + j), Widen(hn::LoadU(d, w + j)), factor), d, row + j);
  if (j < n) scalar::AddScaled(row + j, w + j, f, n - j);
}

template <class T>
int Masked(T* row, const T* w, T f, int n) {
  const Narrow<T> d;
  const WideVector factor = hn::Set(Wide(), static_cast<double>(f));
  const auto hole = hn::Set(d, kMissingCell<T>);
  auto holesOpposite = hn::FirstN(d, 0);
  int j = 0;
  for (; n - j >= kWidth; j += kWidth) {
    const auto cells = hn::LoadU(d, row + j), weights = hn::LoadU(d, w + j);
    const auto empty = hn::Eq(cells, hole), weightless = hn::Eq(weights, hole);
    const auto sums = SumOf<T>(cells, Widen(weights), factor);
    hn::StoreU(hn::IfThenElse(hn::Or(empty, weightless), cells, sums), d, row + j);
    holesOpposite = hn::Or(holesOpposite, hn::AndNot(empty, weightless));
  }
  // They are counted only if there are any: once its column is empty, a hole of w stands opposite holes alone.
  const int counted = hn::AllFalse(d, holesOpposite) ? 0 : scalar::CountHolesOpposite(row, w, j);
  return counted + (j < n ? scalar::AddScaledMasked(row + j, w + j, f, n - j) : 0);
}

void FloatPlain(float* row, const float* w, float f, int n) { Plain(row, w, f, n); }
void DoublePlain(double* row, const double* w, double f, int n) { Plain(row, w, f, n); }
int FloatMasked(float* row, const float* w, float f, int n) { return Masked(row, w, f, n); }
int DoubleMasked(double* row, const double* w, double f, int n) { return Masked(row, w, f, n); }

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(FloatPlain);
HWY_EXPORT(DoublePlain);
HWY_EXPORT(FloatMasked);
HWY_EXPORT(DoubleMasked);

void AddScaled(float* row, const float* w, float f, int n) {
  UsesScalarTwins() ? scalar::AddScaled(row, w, f, n) : HWY_DYNAMIC_DISPATCH(FloatPlain)(row, w, f, n);
}
void AddScaled(double* row, const double* w, double f, int n) {
  UsesScalarTwins() ? scalar::AddScaled(row, w, f, n) : HWY_DYNAMIC_DISPATCH(DoublePlain)(row, w, f, n);
}
int AddScaledMasked(float* row, const float* w, float f, int n) {
  return UsesScalarTwins() ? scalar::AddScaledMasked(row, w, f, n) : HWY_DYNAMIC_DISPATCH(FloatMasked)(row, w, f, n);
}
int AddScaledMasked(double* row, const double* w, double f, int n) {
  return UsesScalarTwins() ? scalar::AddScaledMasked(row, w, f, n) : HWY_DYNAMIC_DISPATCH(DoubleMasked)(row, w, f, n);
}

}  // namespace kalmia::simd

#endif
