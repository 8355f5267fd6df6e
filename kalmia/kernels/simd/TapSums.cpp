#include "kalmia/kernels/simd/TapSums.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/TapSums.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

/// kTogether vectors of outputs from cell k on: a tap is spread over the lanes once for all of them.
template <int kTogether>
HWY_INLINE void SumAt(const double* const* from, const double* h, int taps, float* out, int k) {
  const Wide d;
  WideVector sum[kTogether];
  for (int v = 0; v < kTogether; ++v) sum[v] = hn::Zero(d);
  for (int t = 0; t < taps; ++t) {
    const WideVector tap = hn::Set(d, h[t]);
    const double* cells = from[t] + k;
    for (int v = 0; v < kTogether; ++v) sum[v] = AddProduct<float>(tap, hn::LoadU(d, cells + v * kWidth), sum[v]);
  }
  for (int v = 0; v < kTogether; ++v) hn::StoreU(Narrowed<float>(sum[v]), Narrow<float>(), out + k + v * kWidth);
}

void SumAll(const double* const* from, const double* h, int taps, float* out, int n) {
  constexpr int kTogether = 8;  // enough sums in flight to hide what one of them waits for
  int k = 0;
  for (; n - k >= kTogether * kWidth; k += kTogether * kWidth) SumAt<kTogether>(from, h, taps, out, k);
  for (; n - k >= kWidth; k += kWidth) SumAt<1>(from, h, taps, out, k);
  if (k == n) return;
  if (n >= kWidth)
    SumAt<1>(from, h, taps, out, n - kWidth);  // some outputs for the second time: the same
  else
    scalar::SumTaps(from, h, taps, out, n);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(SumAll);

void SumTaps(const double* const* from, const double* h, int taps, float* out, int n) {
  UsesScalarTwins() ? scalar::SumTaps(from, h, taps, out, n) : HWY_DYNAMIC_DISPATCH(SumAll)(from, h, taps, out, n);
}

}  // namespace kalmia::simd

#endif
