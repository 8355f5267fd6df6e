#include <cstddef>

#include "kalmia/kernels/simd/ProductTile.h"

namespace kalmia::simd {

void scalar::AddProductTile(const double* a, const double* b, int depth, double* tile) {
  for (int k = 0; k < depth; ++k)
    for (int i = 0; i < kTileRows; ++i)
      for (int j = 0; j < kTileColumns; ++j)
        tile[i * kTileColumns + j] +=
            a[static_cast<std::ptrdiff_t>(k) * kTileRows + i] * b[static_cast<std::ptrdiff_t>(k) * kTileColumns + j];
}

}  // namespace kalmia::simd
