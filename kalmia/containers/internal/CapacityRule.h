#pragma once

#include <limits>

namespace kalmia {

/// The capacity of a vector or matrix of capacity c in which n cells (or rows) are wanted. It never shrinks; it doubles
/// below 3000 and grows by 3000 from there on, unless n is still more; the first cells come at least four at a time.
constexpr int GrownCapacity(int c, int n) {
  if (n <= c) return c;
  if (c == 0) return n < 4 ? 4 : n;
  const int step = c < 3000 ? c : 3000;
  if (n - c > step) return n;
  constexpr int kLargest = std::numeric_limits<int>::max();
  return c > kLargest - step ? kLargest : c + step;
}

}  // namespace kalmia
