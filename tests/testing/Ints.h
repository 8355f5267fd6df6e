#pragma once

#include <vector>

#include "kalmia/containers/NCIntegralVector.h"

/// The vector of these numbers, which are often indices.
inline NCIntegralVector<int, -99> Ints(const std::vector<int>& cells) {
  return NCIntegralVector<int, -99>(cells.data(), static_cast<int>(cells.size()));
}
