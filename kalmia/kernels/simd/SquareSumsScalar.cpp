#include <cstddef>

#include "kalmia/containers/Missing.h"
#include "kalmia/kernels/simd/SquareSums.h"

namespace kalmia::simd {
namespace scalar {
namespace {

constexpr float kHole = kMissingCell<float>;

float SquareOf(Square square, float a, float b) {
  const double difference = static_cast<double>(a) - b;
  const double whole = difference * difference;
  return static_cast<float>(square == Square::Half ? whole / 2 : whole);
}

}  // namespace

void SquareSums(Square square, const float* const* rows, int count, const float* tile, int columns, double* sums) {
  for (int r = 0; r < count; ++r)
    for (int l = 0; l < kTileRows; ++l) {
      double sum = 0;
      for (int c = 0; c < columns; ++c) sum += SquareOf(square, rows[r][c], tile[std::ptrdiff_t{c} * kTileRows + l]);
      sums[r * kTileRows + l] = sum;
    }
}

void SquareSumsMasked(Square square, const float* const* rows, int count, const float* tile, int columns, double* sums,
                      double* common) {
  for (int r = 0; r < count; ++r)
    for (int l = 0; l < kTileRows; ++l) {
      double sum = 0, both = 0;
      for (int c = 0; c < columns; ++c) {
        const float a = rows[r][c], b = tile[std::ptrdiff_t{c} * kTileRows + l];
        if (a == kHole || b == kHole) continue;
        sum += SquareOf(square, a, b);
        ++both;
      }
      sums[r * kTileRows + l] = sum;
      common[r * kTileRows + l] = both;
    }
}

}  // namespace scalar
}  // namespace kalmia::simd
