#pragma once

#include "kalmia/containers/Missing.h"

namespace kalmia {

/// out[i] = f(a[i], i) in the n cells from 0 on, missing where `a` is.
template <class T, class F>
void MapByPosition(T* out, const T* a, int n, bool complete, F f) {
  if (complete) {
    for (int i = 0; i < n; ++i) out[i] = static_cast<T>(f(static_cast<double>(a[i]), i));
  } else {
    for (int i = 0; i < n; ++i)
      out[i] = a[i] == kMissingCell<T> ? kMissingCell<T> : static_cast<T>(f(static_cast<double>(a[i]), i));
  }
}

/// The same with f(a[i]).
template <class T, class F>
void Map(T* out, const T* a, int n, bool complete, F f) {
  MapByPosition(out, a, n, complete, [f](double x, int) { return f(x); });
}

}  // namespace kalmia
