#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// Copies that share no storage with their originals, so that two threads may have one each.
inline NCDataMatrix<float> DeepCopy(const NCDataMatrix<float>& matrix) {
  NCDataMatrix<float> copy;
  copy.CopyContent(matrix);
  return copy;
}

inline std::vector<NCDataMatrix<float>> DeepCopy(const std::vector<NCDataMatrix<float>>& matrices) {
  std::vector<NCDataMatrix<float>> copies;
  copies.reserve(matrices.size());
  for (const NCDataMatrix<float>& matrix : matrices) copies.push_back(DeepCopy(matrix));
  return copies;
}

}  // namespace kalmia
