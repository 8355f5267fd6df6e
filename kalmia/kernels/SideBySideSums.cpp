#include "kalmia/kernels/SideBySideSums.h"

#include "kalmia/kernels/simd/EightSums.h"

namespace kalmia {

static_assert(kSideBySide == simd::kEight);

void DotsSideBySide(const float* const* rows, int count, const double* vectors, int n, double* dots) {
  simd::EightDots(rows, count, vectors, n, dots);
}

void AddProductsSideBySide(const float* const* rows, int count, const double* factors, int n, double* sums) {
  simd::AddEightProducts(rows, count, factors, n, sums);
}

void AddSquaresSideBySide(const float* const* rows, int count, const double* weights, const double* centres, int n,
                          double* sums) {
  simd::AddEightSquares(rows, count, weights, centres, n, sums);
}

}  // namespace kalmia
