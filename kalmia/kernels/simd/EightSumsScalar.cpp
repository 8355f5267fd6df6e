#include "kalmia/kernels/simd/EightSums.h"

namespace kalmia::simd {
namespace scalar {

void EightDots(const float* const* rows, int count, const double* vectors, int n, double* dots) {
  for (int i = 0; i < count; ++i) {
    double sum[kEight] = {};
    for (int k = 0; k < n; ++k) {
      const double x = rows[i][k];
      for (int l = 0; l < kEight; ++l) sum[l] += x * vectors[kEight * k + l];
    }
    for (int l = 0; l < kEight; ++l) dots[kEight * i + l] = sum[l];
  }
}

void AddEightProducts(const float* const* rows, int count, const double* factors, int n, double* sums) {
  for (int i = 0; i < count; ++i) {
    for (int k = 0; k < n; ++k) {
      const double x = rows[i][k];
      for (int l = 0; l < kEight; ++l) sums[kEight * k + l] += x * factors[kEight * i + l];
    }
  }
}

void AddEightSquares(const float* const* rows, int count, const double* weights, const double* centres, int n,
                     double* sums) {
  for (int i = 0; i < count; ++i) {
    for (int k = 0; k < n; ++k) {
      const double x = rows[i][k];
      for (int l = 0; l < kEight; ++l) {
        const double difference = x - centres[kEight * k + l];
        sums[kEight * k + l] += weights[kEight * i + l] * (difference * difference);
      }
    }
  }
}

}  // namespace scalar
}  // namespace kalmia::simd
