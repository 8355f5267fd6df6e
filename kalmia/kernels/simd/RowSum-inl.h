// What the two ways of adding to rows share. Compiled once for each instruction set, hence no ordinary include guard.
#if defined(KALMIA_SIMD_ROWSUM_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KALMIA_SIMD_ROWSUM_INL_H_
#undef KALMIA_SIMD_ROWSUM_INL_H_
#else
#define KALMIA_SIMD_ROWSUM_INL_H_
#endif

#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

// Holes are sought and kept among the cells as they lie in memory: comparing and choosing costs half of what it does
// among the widened ones, and a cell that stays is stored as it was.

/// cells + w * factor, stored as cells are.
template <class T>
HWY_INLINE NarrowVector<T> SumOf(NarrowVector<T> cells, WideVector w, WideVector factor) {
  return Narrowed<T>(AddProduct<T>(w, factor, Widen(cells)));
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
