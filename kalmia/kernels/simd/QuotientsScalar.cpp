#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "kalmia/kernels/simd/Quotients.h"

namespace kalmia::simd {
namespace scalar {
namespace {

bool IsInDoubt(double quotient) {
  std::uint64_t bits;
  std::memcpy(&bits, &quotient, sizeof bits);
  const bool small = std::fabs(quotient) < std::numeric_limits<float>::min() && quotient != 0.0;
  return small || (bits & kBitsBelowFloat) == kBorderOfFloats;
}

}  // namespace

bool DivideToFloat(const double* numerators, double divisor, int n, float* cells) {
  bool doubt = false;
  for (int j = 0; j < n; ++j) {
    const double quotient = numerators[j] / divisor;
    cells[j] = static_cast<float>(quotient);
    doubt = doubt || IsInDoubt(quotient);
  }
  return !doubt;
}

}  // namespace scalar
}  // namespace kalmia::simd
