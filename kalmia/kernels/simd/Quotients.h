#pragma once

/// Division of sums by one number, where the quotient is to be that of a long double rounded to float. Rounding keeps
/// the order of numbers: the long quotient and the one in double round to the same float unless the latter lies exactly
/// on the border between two floats, or is so small that the borders lie elsewhere.
namespace kalmia::simd {

/// cells[j] = float(numerators[j] / divisor), divided in double, for the j < n, n >= 0. True if each of them is what
/// the quotient of long doubles rounds to; false if one is in doubt. No overlap; any alignment.
bool DivideToFloat(const double* numerators, double divisor, int n, float* cells);

/// The twin.
namespace scalar {
bool DivideToFloat(const double* numerators, double divisor, int n, float* cells);
}  // namespace scalar

/// The bits of a double that a normal float does not have, and what they are on a border.
constexpr unsigned long long kBitsBelowFloat = (1ULL << 29) - 1;
constexpr unsigned long long kBorderOfFloats = 1ULL << 28;

}  // namespace kalmia::simd
