#pragma once

#include <array>
#include <cstddef>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// Leaves every table 0 by 0; where memory lacks for the empty ones, as it was.
template <std::size_t count>
void ClearAll(const std::array<NCDataMatrix<float>*, count>& tables) {
  std::array<NCDataMatrix<float>, count> empty;
  for (std::size_t i = 0; i < count; ++i) tables[i]->swap(empty[i]);
}

}  // namespace kalmia
