#pragma once

namespace kalmia {

/// result(j + 1) = sum over k of a(k + j) b(k), j = 0..size - 1, all shifts taken round the end: lag 0 comes first,
/// then the positive lags, and the negative ones stand at the end, lag -1 in the last cell. Arrays of `size` cells,
/// numbered from 1 (cell 0 is neither read nor written); a and b may be the same. `size` is a power of two, not
/// checked; a single cell gives 0. Both arrays go through one complex transform, as its real and its imaginary part,
/// and the product of their spectra comes back through one of half the length.
void Correlate(const float* a, const float* b, int size, float* result);

}  // namespace kalmia
