#include "kalmia/kernels/simd/ColumnSums.h"

namespace kalmia::simd {
namespace scalar {
namespace {

template <class T>
void AddRowsTwin(const T* const* rows, const double* v, int count, int n, double* sums) {
  for (int k = 0; k < count; ++k)
    for (int j = 0; j < n; ++j) sums[j] += v[k] * rows[k][j];
}

template <class T>
void AddRowsMaskedTwin(const T* const* rows, const double* v, const double* w, int count, int n, const T* hole,
                       double* sums, double* weights) {
  for (int k = 0; k < count; ++k)
    for (int j = 0; j < n; ++j) {
      if (rows[k][j] == hole[j]) continue;
      sums[j] += v[k] * rows[k][j];
      weights[j] += w[k];
    }
}

template <class T>
void AddSquaresMaskedTwin(const T* const* rows, int count, int n, const T* hole, double* sums) {
  for (int k = 0; k < count; ++k)
    for (int j = 0; j < n; ++j)
      if (rows[k][j] != hole[j]) sums[j] += static_cast<double>(rows[k][j]) * rows[k][j];
}

}  // namespace

void AddRows(const float* const* rows, const double* v, int count, int n, double* sums) {
  AddRowsTwin(rows, v, count, n, sums);
}
void AddRows(const double* const* rows, const double* v, int count, int n, double* sums) {
  AddRowsTwin(rows, v, count, n, sums);
}
void AddRowsMasked(const float* const* rows, const double* v, const double* w, int count, int n, const float* hole,
                   double* sums, double* weights) {
  AddRowsMaskedTwin(rows, v, w, count, n, hole, sums, weights);
}
void AddRowsMasked(const double* const* rows, const double* v, const double* w, int count, int n, const double* hole,
                   double* sums, double* weights) {
  AddRowsMaskedTwin(rows, v, w, count, n, hole, sums, weights);
}
void AddSquaresMasked(const float* const* rows, int count, int n, const float* hole, double* sums) {
  AddSquaresMaskedTwin(rows, count, n, hole, sums);
}
void AddSquaresMasked(const double* const* rows, int count, int n, const double* hole, double* sums) {
  AddSquaresMaskedTwin(rows, count, n, hole, sums);
}

}  // namespace scalar
}  // namespace kalmia::simd
