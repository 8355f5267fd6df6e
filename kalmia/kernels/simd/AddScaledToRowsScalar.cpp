#include "kalmia/containers/Missing.h"
#include "kalmia/kernels/simd/AddScaledToRows.h"

namespace kalmia::simd {
namespace scalar {
namespace {

template <bool kHoles, class T>
void AddTwin(T* const* rows, const T* factors, int count, const T* w, int n) {
  for (int k = 0; k < count; ++k)
    for (int j = 0; j < n; ++j) {
      T& cell = rows[k][j];
      if (kHoles && cell == kMissing) continue;
      cell = static_cast<T>(static_cast<double>(cell) + static_cast<double>(w[j]) * static_cast<double>(factors[k]));
    }
}

}  // namespace

void AddScaledToRows(float* const* rows, const float* factors, int count, const float* w, int n) {
  AddTwin<false>(rows, factors, count, w, n);
}
void AddScaledToRows(double* const* rows, const double* factors, int count, const double* w, int n) {
  AddTwin<false>(rows, factors, count, w, n);
}
void AddScaledToPresent(float* const* rows, const float* factors, int count, const float* w, int n) {
  AddTwin<true>(rows, factors, count, w, n);
}
void AddScaledToPresent(double* const* rows, const double* factors, int count, const double* w, int n) {
  AddTwin<true>(rows, factors, count, w, n);
}

}  // namespace scalar
}  // namespace kalmia::simd
