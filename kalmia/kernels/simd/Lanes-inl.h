// What the lane code of every file here shares. Compiled once for each instruction set: no ordinary include guard.
#if defined(KALMIA_SIMD_LANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KALMIA_SIMD_LANES_INL_H_
#undef KALMIA_SIMD_LANES_INL_H_
#else
#define KALMIA_SIMD_LANES_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "hwy/cache_control.h"
#include "hwy/highway.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/containers/internal/LaneSum.h"
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

/// kWidth cells as they lie in memory.
template <class T>
using Narrow = hn::Rebind<T, Wide>;
template <class T>
using NarrowVector = hn::Vec<Narrow<T>>;

template <class T>
HWY_INLINE NarrowVector<T> Load(const T* p) {
  return hn::LoadU(Narrow<T>(), p);
}

/// The next `left` cells and zeros behind them; nothing behind them is read. Fewer than none count as none.
template <class T>
HWY_INLINE NarrowVector<T> LoadFirst(const T* p, int left) {
  const Narrow<T> narrow;
  if (left <= 0) return hn::Zero(narrow);
#if HWY_MEM_OPS_MIGHT_FAULT
  HWY_ALIGN T cells[kWidth] = {};
  for (int i = 0; i < kWidth && i < left; ++i) cells[i] = p[i];
  return hn::Load(narrow, cells);
#else
  return hn::MaskedLoad(hn::FirstN(narrow, static_cast<std::size_t>(left)), narrow, p);
#endif
}

template <class T>
constexpr int kCellsPerLine = 64 / static_cast<int>(sizeof(T));  ///< cells of one cache line

/// Starts to fetch the line that lies kBytesAhead behind p. It may lie outside of the array: it is never read.
template <class T>
HWY_INLINE void FetchAhead(const T* p) {
  hwy::Prefetch(reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(p) + kBytesAhead));
}

HWY_INLINE WideVector Widen(NarrowVector<float> cells) { return hn::PromoteTo(Wide(), cells); }
HWY_INLINE WideVector Widen(NarrowVector<double> cells) { return cells; }

/// Rounded to cells. Where Highway emulates vectors it would turn what exceeds a float into the largest float, not into
/// an infinity.
template <class T>
HWY_INLINE NarrowVector<T> Narrowed(WideVector numbers) {
  if constexpr (std::is_same_v<T, double>) {
    return numbers;
  } else {
#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
    HWY_ALIGN double wide[kWidth];
    HWY_ALIGN T cells[kWidth];
    hn::Store(numbers, Wide(), wide);
    for (int k = 0; k < kWidth; ++k) cells[k] = static_cast<T>(wide[k]);
    return hn::Load(Narrow<T>(), cells);
#else
    return hn::DemoteTo(Narrow<T>(), numbers);
#endif
  }
}

/// Where the cells differ from the holes. A NaN differs from everything, a NaN of the same bits included, which Ne does
/// not promise on every machine.
template <class T>
HWY_INLINE WideMask Differ(NarrowVector<T> cells, NarrowVector<T> holes) {
#if HWY_CAP_GE512
  // Narrow instead of wide: half the width, and the mask is the same eight bits. Highway has no comparison that holds
  // of a NaN, and negating one that does not takes another instruction.
  if constexpr (std::is_same_v<T, float>) return WideMask{_mm256_cmp_ps_mask(cells.raw, holes.raw, _CMP_NEQ_UQ)};
#endif
  return hn::Not(hn::Eq(Widen(cells), Widen(holes)));
}

template <class T>
HWY_INLINE WideMask Present(NarrowVector<T> cells) {
  return Differ<T>(cells, hn::Set(Narrow<T>(), kMissingCell<T>));
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

/// The last steps of Fold, within one vector.
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

/// FoldInHalves (LaneSum.h) of accumulators that stay in their registers: if they were stored for it, the sums of rows
/// of 50 cells would take a third to a half longer.
HWY_INLINE double Fold(WideVector (&lane)[kVectors]) {
  for (int half = kVectors / 2; half > 0; half /= 2)
    for (int k = 0; k < half; ++k) lane[k] = hn::Add(lane[k], lane[k + half]);
  return FoldVector(lane[0]);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
