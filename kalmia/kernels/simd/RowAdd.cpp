#include "kalmia/kernels/simd/RowAdd.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/RowAdd.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

/// Stores kWidth sums as cells, rounded once.
HWY_INLINE void StoreCells(WideVector sums, float* p) {
  const hn::Rebind<float, Wide> narrow;
  hn::StoreU(hn::DemoteTo(narrow, sums), narrow, p);
}
HWY_INLINE void StoreCells(WideVector sums, double* p) { hn::StoreU(sums, Wide(), p); }

template <class T>
void Plain(T* row, const T* w, T f, int n) {
  const WideVector factor = hn::Set(Wide(), static_cast<double>(f));
  int j = 0;
  for (; n - j >= kWidth; j += kWidth) StoreCells(AddProduct<T>(Load(w + j), factor, Load(row + j)), row + j);
  if (j < n) scalar::AddScaled(row + j, w + j, f, n - j);
}

template <class T>
int Masked(T* row, const T* w, T f, int n) {
  const Wide d;
  const WideVector factor = hn::Set(d, static_cast<double>(f));
  std::size_t holesOpposite = 0;
  int j = 0;
  for (; n - j >= kWidth; j += kWidth) {
    const WideVector cell = Load(row + j), weight = Load(w + j);
    const WideMask present = Present(cell), presentWeight = Present(weight);
    const WideVector sum = AddProduct<T>(weight, factor, cell);
    StoreCells(hn::IfThenElse(hn::And(present, presentWeight), sum, cell), row + j);
    holesOpposite += hn::CountTrue(d, hn::AndNot(presentWeight, present));
  }
  return static_cast<int>(holesOpposite) + (j < n ? scalar::AddScaledMasked(row + j, w + j, f, n - j) : 0);
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
