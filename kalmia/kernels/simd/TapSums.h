#pragma once

/// The sums of a filter: each output is the sum of a few shifted inputs, each times its tap,
///   out[k] = float(sum over t < taps of h[t] * from[t][k])  for k < n,
/// added in double in the order of t. All numbers in `h` and behind `from` are floats widened to doubles, so that each
/// product is exact and the sum has the same bits whether it is fused or not. The pointers may lie at any alignment and
/// into one array; `out` overlaps none of them; taps >= 0, n >= 0.
namespace kalmia::simd {

void SumTaps(const double* const* from, const double* h, int taps, float* out, int n);

/// The twin.
namespace scalar {
void SumTaps(const double* const* from, const double* h, int taps, float* out, int n);
}

}  // namespace kalmia::simd
