#pragma once

#include "hwy/cache_control.h"

namespace kalmia::simd {

/// Starts to bring the memory at p into the caches, for loops that jump where the hardware does not foresee it.
template <class T>
inline void Prefetch(const T* p) {
  hwy::Prefetch(p);
}

}  // namespace kalmia::simd
