#include "kalmia/kernels/simd/SlidingWindows.h"

namespace kalmia::simd::scalar {

void FilterWindows(const double* cells, int count, int window, const double* const* filters, int filterCount,
                   float* means, float* const* sums) {
  for (int j = 0; j < count; ++j) {
    double sum = 0;
    for (int i = 0; i < window; ++i) sum += cells[j + i];
    means[j] = static_cast<float>(sum / window);
    for (int k = 0; k < filterCount; ++k) {
      double filtered = 0;
      for (int i = 0; i < window; ++i) filtered += (cells[j + i] - means[j]) * filters[k][i];
      sums[k][j] = static_cast<float>(filtered);
    }
  }
}

}  // namespace kalmia::simd::scalar
