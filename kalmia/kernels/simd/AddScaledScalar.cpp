#include "kalmia/containers/Missing.h"
#include "kalmia/kernels/simd/AddScaled.h"

namespace kalmia::simd {
namespace scalar {
namespace {

template <class T>
T Sum(T cell, T w, T f) {
  return static_cast<T>(static_cast<double>(cell) + static_cast<double>(w) * static_cast<double>(f));
}

template <class T>
void AddScaledTwin(T* row, const T* w, T f, int n) {
  for (int j = 0; j < n; ++j) row[j] = Sum(row[j], w[j], f);
}

template <class T>
int CountOpposite(const T* row, const T* w, int n) {
  int count = 0;
  for (int j = 0; j < n; ++j) count += row[j] != kMissing && w[j] == kMissing;
  return count;
}

template <class T>
int AddScaledMaskedTwin(T* row, const T* w, T f, int n) {
  int holesOpposite = 0;
  for (int j = 0; j < n; ++j) {
    if (row[j] == kMissing) continue;
    if (w[j] == kMissing)
      ++holesOpposite;
    else
      row[j] = Sum(row[j], w[j], f);
  }
  return holesOpposite;
}

}  // namespace

void AddScaled(float* row, const float* w, float f, int n) { AddScaledTwin(row, w, f, n); }
void AddScaled(double* row, const double* w, double f, int n) { AddScaledTwin(row, w, f, n); }
int AddScaledMasked(float* row, const float* w, float f, int n) { return AddScaledMaskedTwin(row, w, f, n); }
int AddScaledMasked(double* row, const double* w, double f, int n) { return AddScaledMaskedTwin(row, w, f, n); }
int CountHolesOpposite(const float* row, const float* w, int n) { return CountOpposite(row, w, n); }
int CountHolesOpposite(const double* row, const double* w, int n) { return CountOpposite(row, w, n); }

}  // namespace scalar
}  // namespace kalmia::simd
