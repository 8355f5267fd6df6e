#pragma once

/// Linear filters of sliding windows, each of which is centred on its own mean first. Window j < count holds the
/// `window` cells from cells[j] on, window >= 1:
///   means[j] = float(sum_i cells[j + i] / window)
///   sums[k][j] = float(sum_i (cells[j + i] - means[j]) * filters[k][i])   for k < filterCount, 1 <= filterCount <= 3,
/// i ascending, each difference, product and sum rounded to double: the same bits on every machine, for each window
/// whatever its neighbours are. No cell is looked at. Arrays start at their first element, lie at any alignment and do
/// not overlap; pointers are not read where count is 0.
namespace kalmia::simd {

void FilterWindows(const double* cells, int count, int window, const double* const* filters, int filterCount,
                   float* means, float* const* sums);

/// The twin.
namespace scalar {
void FilterWindows(const double* cells, int count, int window, const double* const* filters, int filterCount,
                   float* means, float* const* sums);
}  // namespace scalar

}  // namespace kalmia::simd
