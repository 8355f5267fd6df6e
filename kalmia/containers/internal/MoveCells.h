#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace kalmia {

/// Moves n cells; the ranges may overlap. For n < 1 nothing is touched, and the pointers may be null. The cells are not
/// looked at, so they may be undefined.
template <class T>
void MoveCells(T* to, const T* from, int n) {
  static_assert(std::is_trivially_copyable_v<T>);
  if (n > 0) std::memmove(to, from, static_cast<std::size_t>(n) * sizeof(T));
}

}  // namespace kalmia
