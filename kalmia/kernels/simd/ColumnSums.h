#pragma once

#include "kalmia/kernels/simd/Lanes.h"

/// Sums down the columns of a table, in the order of its rows: the caller walks down the rows, a few at a time, and
/// each call adds them to one accumulator a column. Every accumulator takes its terms one by one in the order of the
/// rows, each with one rounding, so the bits are those of a loop down one column. `rows[k]` points at the first of n
/// cells of row k; 0 <= count <= kRowsSideBySide, n >= 0, any alignment; outputs do not overlap inputs. `v` holds cells
/// of the table's own type widened to double. Pointers are not read where n is 0.
namespace kalmia::simd {

/// sums[j] += v[k] rows[k][j], for k = 0 to count - 1 in this order. No cell is looked at.
void AddRows(const float* const* rows, const double* v, int count, int n, double* sums);
void AddRows(const double* const* rows, const double* v, int count, int n, double* sums);
/// Where rows[k][j] differs from hole[j]: sums[j] += v[k] rows[k][j] and weights[j] += w[k], in the same order. A hole
/// of NaN lets every cell take part.
void AddRowsMasked(const float* const* rows, const double* v, const double* w, int count, int n, const float* hole,
                   double* sums, double* weights);
void AddRowsMasked(const double* const* rows, const double* v, const double* w, int count, int n, const double* hole,
                   double* sums, double* weights);
/// Where rows[k][j] differs from hole[j]: sums[j] += rows[k][j]^2, in the same order.
void AddSquaresMasked(const float* const* rows, int count, int n, const float* hole, double* sums);
void AddSquaresMasked(const double* const* rows, int count, int n, const double* hole, double* sums);

/// The twins.
namespace scalar {
void AddRows(const float* const* rows, const double* v, int count, int n, double* sums);
void AddRows(const double* const* rows, const double* v, int count, int n, double* sums);
void AddRowsMasked(const float* const* rows, const double* v, const double* w, int count, int n, const float* hole,
                   double* sums, double* weights);
void AddRowsMasked(const double* const* rows, const double* v, const double* w, int count, int n, const double* hole,
                   double* sums, double* weights);
void AddSquaresMasked(const float* const* rows, int count, int n, const float* hole, double* sums);
void AddSquaresMasked(const double* const* rows, int count, int n, const double* hole, double* sums);
}  // namespace scalar

}  // namespace kalmia::simd
