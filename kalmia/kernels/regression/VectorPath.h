#pragma once

#include <type_traits>

#include "kalmia/kernels/simd/Lanes.h"

namespace kalmia {

/// When a sum over two float vectors is worth the lanes. Both ways give the same bits; this decides about time only. It
/// governs the operations of single vectors. Those of whole tables do not ask: with several rows at once the lanes win
/// at any share of holes, and an excluded position costs them no more than another hole.
struct VectorPath {
  static constexpr int kLargestSlowStride = 4;         ///< every second to fourth position left out: plain loop
  static constexpr double kShareOfHolesInOne = 0.25;   ///< from here on the plain loop, if one vector has holes
  static constexpr double kShareOfHolesInBoth = 0.35;  ///< the same for holes of both together, if both have some

  /// `stride` as in the exclusion rule, below 2 for none; `missing1` and `missing2` count the holes of the two vectors.
  template <class T>
  static bool LanesPayOff(int size, int missing1, int missing2, int stride) {
    if (!std::is_same_v<T, float> || !simd::HasVectorInstructions()) return false;
    if (stride >= 2 && stride <= kLargestSlowStride) return false;
    if (missing1 == 0 && missing2 == 0) return true;
    const double share = (static_cast<double>(missing1) + missing2) / size;
    return share < (missing1 > 0 && missing2 > 0 ? kShareOfHolesInBoth : kShareOfHolesInOne);
  }
};

}  // namespace kalmia
