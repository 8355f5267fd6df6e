#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/internal/AliasSafeRow.h"

namespace kalmia {

/// The vector of n cells that `build(vector)` makes of a work vector of m's: m's result target or a new one. `read` is
/// the vector that build reads besides m. A target that is `read` itself or a row of m is written at the end only.
template <class T, class Build>
NCDataVector<T> BuildInTarget(const NCDataMatrix<T>& m, const NCDataVector<T>* read, int n, const Build& build) {
  VectorDestroyer<T> holder;
  m.GetReturnVector(holder, n);
  if (holder.vector != read && !IsRowOf(*holder.vector, m)) {
    build(*holder.vector);
    return *holder.vector;
  }
  VectorDestroyer<T> beside;
  m.GetReturnVector(beside, n);  // the target is used up: a new one
  build(*beside.vector);
  *holder.vector = *beside.vector;
  return *holder.vector;
}

}  // namespace kalmia
