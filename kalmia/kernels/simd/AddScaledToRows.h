#pragma once

#include "kalmia/kernels/simd/Lanes.h"

/// Multiples of one row added to several at a time: the deflation of a block of rows. Each cell becomes
///   T(double(rows[k][j]) + double(w[j]) * double(factors[k])),
/// as in AddScaled.h, to the bit. One row alone leaves the memory waiting; from eight rows side by side it delivers all
/// it can, and w is loaded once for all of them. Rows start at their first cell, lie at any alignment, and overlap
/// neither each other nor w; count >= 0, n >= 0. No cell of w is looked at: it is known to have no holes.
namespace kalmia::simd {

void AddScaledToRows(float* const* rows, const float* factors, int count, const float* w, int n);
void AddScaledToRows(double* const* rows, const double* factors, int count, const double* w, int n);
/// Only where rows[k][j] is no hole (-99); a hole keeps its bits.
void AddScaledToPresent(float* const* rows, const float* factors, int count, const float* w, int n);
void AddScaledToPresent(double* const* rows, const double* factors, int count, const double* w, int n);

/// The twins.
namespace scalar {
void AddScaledToRows(float* const* rows, const float* factors, int count, const float* w, int n);
void AddScaledToRows(double* const* rows, const double* factors, int count, const double* w, int n);
void AddScaledToPresent(float* const* rows, const float* factors, int count, const float* w, int n);
void AddScaledToPresent(double* const* rows, const double* factors, int count, const double* w, int n);
}  // namespace scalar

}  // namespace kalmia::simd
