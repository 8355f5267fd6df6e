#include "kalmia/kernels/simd/TapSums.h"

void kalmia::simd::scalar::SumTaps(const double* const* from, const double* h, int taps, float* out, int n) {
  for (int k = 0; k < n; ++k) {
    double sum = 0;
    for (int t = 0; t < taps; ++t) sum += h[t] * from[t][k];
    out[k] = static_cast<float>(sum);
  }
}
