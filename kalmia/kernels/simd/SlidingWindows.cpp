#include "kalmia/kernels/simd/SlidingWindows.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/SlidingWindows.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

// A lane is a window: neighbours in a vector are neighbours on the row, and each takes its terms in their order.

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

/// kSteps vectors of windows: their chains of sums run beside each other. `from` is the first window.
template <int kSteps, int kFilters>
HWY_INLINE void FilterStep(const double* cells, int from, int window, const double* const* filters, float* means,
                           float* const* sums) {
  const Wide wide;
  const Narrow<float> narrow;
  const double* first = cells + from;
  WideVector mean[kSteps];
  for (int s = 0; s < kSteps; ++s) mean[s] = hn::Zero(wide);
  for (int i = 0; i < window; ++i)
    for (int s = 0; s < kSteps; ++s) mean[s] = hn::Add(mean[s], hn::LoadU(wide, first + i + s * kWidth));
  const WideVector n = hn::Set(wide, static_cast<double>(window));
  for (int s = 0; s < kSteps; ++s) {
    const NarrowVector<float> rounded = Narrowed<float>(hn::Div(mean[s], n));
    hn::StoreU(rounded, narrow, means + from + s * kWidth);
    mean[s] = Widen(rounded);
  }
  WideVector sum[kFilters][kSteps];
  for (auto& ofFilter : sum)
    for (WideVector& ofStep : ofFilter) ofStep = hn::Zero(wide);
  for (int i = 0; i < window; ++i)
    for (int s = 0; s < kSteps; ++s) {
      const WideVector centred = hn::Sub(hn::LoadU(wide, first + i + s * kWidth), mean[s]);
      for (int k = 0; k < kFilters; ++k)
        sum[k][s] = AddProduct<double>(centred, hn::Set(wide, filters[k][i]), sum[k][s]);
    }
  for (int k = 0; k < kFilters; ++k)
    for (int s = 0; s < kSteps; ++s)
      hn::StoreU(Narrowed<float>(sum[k][s]), narrow, sums[k] + from + s * kWidth);
}

template <int kFilters>
void Filter(const double* cells, int count, int window, const double* const* filters, float* means,
            float* const* sums) {
  constexpr int kSteps = kFilters < 3 ? 4 : 2;  // what the registers hold
  int j = 0;
  for (; count - j >= kSteps * kWidth; j += kSteps * kWidth)
    FilterStep<kSteps, kFilters>(cells, j, window, filters, means, sums);
  for (; count - j >= kWidth; j += kWidth) FilterStep<1, kFilters>(cells, j, window, filters, means, sums);
  if (j == count) return;
  float* rest[kFilters];
  for (int k = 0; k < kFilters; ++k) rest[k] = sums[k] + j;
  scalar::FilterWindows(cells + j, count - j, window, filters, kFilters, means + j, rest);
}

void OneFilter(const double* cells, int count, int window, const double* const* filters, float* means,
               float* const* sums) {
  Filter<1>(cells, count, window, filters, means, sums);
}
void TwoFilters(const double* cells, int count, int window, const double* const* filters, float* means,
                float* const* sums) {
  Filter<2>(cells, count, window, filters, means, sums);
}
void ThreeFilters(const double* cells, int count, int window, const double* const* filters, float* means,
                  float* const* sums) {
  Filter<3>(cells, count, window, filters, means, sums);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "kalmia/kernels/simd/Lanes.h"

namespace kalmia::simd {

HWY_EXPORT(OneFilter);
HWY_EXPORT(TwoFilters);
HWY_EXPORT(ThreeFilters);

void FilterWindows(const double* cells, int count, int window, const double* const* filters, int filterCount,
                   float* means, float* const* sums) {
  if (UsesScalarTwins()) return scalar::FilterWindows(cells, count, window, filters, filterCount, means, sums);
  switch (filterCount) {
    case 1: return HWY_DYNAMIC_DISPATCH(OneFilter)(cells, count, window, filters, means, sums);
    case 2: return HWY_DYNAMIC_DISPATCH(TwoFilters)(cells, count, window, filters, means, sums);
    default: return HWY_DYNAMIC_DISPATCH(ThreeFilters)(cells, count, window, filters, means, sums);
  }
}

}  // namespace kalmia::simd

#endif
