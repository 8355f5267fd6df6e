// What the lane code of every file here shares. Compiled once for each instruction set, hence no ordinary include guard.
#if defined(KALMIA_SIMD_LANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KALMIA_SIMD_LANES_INL_H_
#undef KALMIA_SIMD_LANES_INL_H_
#else
#define KALMIA_SIMD_LANES_INL_H_
#endif

#include <cstddef>
#include <type_traits>

#include "hwy/highway.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/kernels/simd/Lanes.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// A vector of accumulators: sums run in double, whatever the cells are.
using Wide = hn::CappedTag<double, kLanes>;
using WideVector = hn::Vec<Wide>;
using WideMask = hn::Mask<Wide>;
constexpr int kWidth = static_cast<int>(hn::MaxLanes(Wide()));  ///< accumulators in one vector
constexpr int kVectors = kLanes / kWidth;                       ///< vectors that make up the sixteen lanes

/// The next kWidth cells, widened.
HWY_INLINE WideVector Load(const float* p) {
  return hn::PromoteTo(Wide(), hn::LoadU(hn::Rebind<float, Wide>(), p));
}
HWY_INLINE WideVector Load(const double* p) { return hn::LoadU(Wide(), p); }

/// The next `left` cells, widened, and zeros behind them; nothing behind them is read. Fewer than none count as none.
template <class T>
HWY_INLINE WideVector LoadFirst(const T* p, int left) {
  const hn::Rebind<T, Wide> narrow;
  if (left <= 0) return hn::Zero(Wide());
#if HWY_MEM_OPS_MIGHT_FAULT
  HWY_ALIGN T cells[kWidth] = {};
  for (int i = 0; i < kWidth && i < left; ++i) cells[i] = p[i];
  const auto loaded = hn::Load(narrow, cells);
#else
  const auto loaded = hn::MaskedLoad(hn::FirstN(narrow, static_cast<std::size_t>(left)), narrow, p);
#endif
  if constexpr (std::is_same_v<T, float>)
    return hn::PromoteTo(Wide(), loaded);
  else
    return loaded;
}

/// sum + a * b. A product of two floats is exact in double: fused or not, the bits are the same. One of doubles is not,
/// and is rounded on its own.
template <class T>
HWY_INLINE WideVector AddProduct(WideVector a, WideVector b, WideVector sum) {
  if constexpr (std::is_same_v<T, float>)
    return hn::MulAdd(a, b, sum);
  else
    return hn::Add(sum, hn::Mul(a, b));
}

/// Where the cells differ from the hole. A NaN differs from everything, which Ne does not promise on every machine.
HWY_INLINE WideMask Differ(WideVector cells, WideVector hole) { return hn::Not(hn::Eq(cells, hole)); }
HWY_INLINE WideMask Present(WideVector cells) {
  return Differ(cells, hn::Set(Wide(), static_cast<double>(kMissing)));
}

/// The lanes of one vector folded in halves.
template <class V>
HWY_INLINE double FoldVector(V v) {
#if HWY_TARGET != HWY_SCALAR
  using D = hn::DFromV<V>;
  if constexpr (hn::MaxLanes(D()) > 1) {
    const hn::Half<D> half;
    return FoldVector(hn::Add(hn::LowerHalf(half, v), hn::UpperHalf(half, v)));
  }
#endif
  return hn::GetLane(v);
}

/// The sixteen accumulators folded in halves: the bits of FoldInHalves.
HWY_INLINE double Fold(WideVector (&lane)[kVectors]) {
  for (int half = kVectors / 2; half > 0; half /= 2)
    for (int k = 0; k < half; ++k) lane[k] = hn::Add(lane[k], lane[k + half]);
  return FoldVector(lane[0]);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
