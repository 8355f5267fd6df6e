#include "kalmia/containers/Missing.h"
#include "kalmia/kernels/simd/Dots.h"
#include "kalmia/kernels/simd/Lanes.h"

namespace kalmia::simd {
namespace scalar {
namespace {

template <class T>
double DotTwin(const T* a, const T* b, int n) {
  double lane[kLanes] = {};
  for (int i = 0; i < n; ++i) lane[i % kLanes] += static_cast<double>(a[i]) * b[i];
  return FoldInHalves(lane);
}

template <class T>
double DotMaskedTwin(const T* a, const T* b, int n) {
  double lane[kLanes] = {};
  for (int i = 0; i < n; ++i)
    if (a[i] != kMissing) lane[i % kLanes] += static_cast<double>(a[i]) * b[i];
  return FoldInHalves(lane);
}

template <class T>
double DotMasked2Twin(const T* a, const T* b, int n, int& pairs) {
  double lane[kLanes] = {};
  pairs = 0;
  for (int i = 0; i < n; ++i) {
    if (a[i] == kMissing || b[i] == kMissing) continue;
    lane[i % kLanes] += static_cast<double>(a[i]) * b[i];
    ++pairs;
  }
  return FoldInHalves(lane);
}

template <class T>
PairSums PairTwin(const T* v, const T* x, int n, Holes holes) {
  double product[kLanes] = {}, square[kLanes] = {};
  for (int i = 0; i < n; ++i) {
    if (x[i] == kMissing || (holes == Holes::InBoth && v[i] == kMissing)) continue;
    product[i % kLanes] += static_cast<double>(v[i]) * x[i];
    square[i % kLanes] += static_cast<double>(v[i]) * v[i];
  }
  return {FoldInHalves(product), FoldInHalves(square)};
}

}  // namespace

double Dot(const float* a, const float* b, int n) { return DotTwin(a, b, n); }
double Dot(const double* a, const double* b, int n) { return DotTwin(a, b, n); }
double DotMasked(const float* a, const float* b, int n) { return DotMaskedTwin(a, b, n); }
double DotMasked(const double* a, const double* b, int n) { return DotMaskedTwin(a, b, n); }
double DotMasked2(const float* a, const float* b, int n, int& pairs) { return DotMasked2Twin(a, b, n, pairs); }
double DotMasked2(const double* a, const double* b, int n, int& pairs) { return DotMasked2Twin(a, b, n, pairs); }

void DotRows(const float* v, const float* const* rows, int count, int n, double* dots) {
  for (int k = 0; k < count; ++k) dots[k] = Dot(v, rows[k], n);
}
void DotRows(const double* v, const double* const* rows, int count, int n, double* dots) {
  for (int k = 0; k < count; ++k) dots[k] = Dot(v, rows[k], n);
}
void DotRowsMasked(const float* v, const float* const* rows, int count, int n, double* dots) {
  for (int k = 0; k < count; ++k) dots[k] = DotMasked(v, rows[k], n);
}
void DotRowsMasked(const double* v, const double* const* rows, int count, int n, double* dots) {
  for (int k = 0; k < count; ++k) dots[k] = DotMasked(v, rows[k], n);
}
void PairRows(const float* v, const float* const* rows, int count, int n, Holes holes, PairSums* sums) {
  for (int k = 0; k < count; ++k) sums[k] = PairTwin(v, rows[k], n, holes);
}
void PairRows(const double* v, const double* const* rows, int count, int n, Holes holes, PairSums* sums) {
  for (int k = 0; k < count; ++k) sums[k] = PairTwin(v, rows[k], n, holes);
}

}  // namespace scalar
}  // namespace kalmia::simd
