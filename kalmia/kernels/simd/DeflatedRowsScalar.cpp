#include "kalmia/containers/internal/LaneSum.h"
#include "kalmia/kernels/simd/DeflatedRows.h"

namespace kalmia::simd {
namespace scalar {
namespace {

float Cell(const DeflatedRows& deflated, int k, int j) {
  return static_cast<float>(static_cast<double>(deflated.rows[k][j]) +
                            static_cast<double>(deflated.w[j]) * static_cast<double>(deflated.factors[k]));
}

}  // namespace

void StoreDeflated(const DeflatedRows& deflated, float* const* to) {
  for (int k = 0; k < deflated.count; ++k)
    for (int j = 0; j < deflated.n; ++j) to[k][j] = Cell(deflated, k, j);
}

void AddDeflated(const DeflatedRows& deflated, const double* v, double* sums) {
  for (int k = 0; k < deflated.count; ++k)
    for (int j = 0; j < deflated.n; ++j) sums[j] += v[k] * Cell(deflated, k, j);
}

void StoreAndAddDeflated(const DeflatedRows& deflated, float* const* to, const double* v, double* sums) {
  for (int k = 0; k < deflated.count; ++k)
    for (int j = 0; j < deflated.n; ++j) {
      to[k][j] = Cell(deflated, k, j);
      sums[j] += v[k] * to[k][j];
    }
}

void DotDeflated(const DeflatedRows& deflated, const float* u, double* dots) {
  for (int k = 0; k < deflated.count; ++k)
    dots[k] = LaneSum(deflated.n, [&](int j) { return static_cast<double>(u[j]) * Cell(deflated, k, j); });
}

}  // namespace scalar
}  // namespace kalmia::simd
