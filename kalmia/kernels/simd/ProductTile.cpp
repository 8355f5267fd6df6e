#include "kalmia/kernels/simd/ProductTile.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/ProductTile.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

/// Columns that are summed in one walk down k: two vectors for each of the four rows, which is as many sums as stay in
/// registers on every machine, and enough of them to hide how long an addition takes.
constexpr int kColumnsAtOnce = 2 * kWidth;

/// `Cell` is the type that the factors' cells came from: products of floats are exact.
template <class Cell>
void AddColumns(const double* HWY_RESTRICT a, const double* HWY_RESTRICT b, int depth, double* HWY_RESTRICT tile) {
  const Wide d;
  WideVector sum[kTileRows][2];
  for (int i = 0; i < kTileRows; ++i)
    for (int h = 0; h < 2; ++h) sum[i][h] = hn::LoadU(d, tile + i * kTileColumns + h * kWidth);
  for (int k = 0; k < depth; ++k, a += kTileRows, b += kTileColumns) {
    const WideVector left = hn::LoadU(d, b), right = hn::LoadU(d, b + kWidth);
    for (int i = 0; i < kTileRows; ++i) {
      const WideVector factor = hn::Set(d, a[i]);
      sum[i][0] = AddProduct<Cell>(factor, left, sum[i][0]);
      sum[i][1] = AddProduct<Cell>(factor, right, sum[i][1]);
    }
  }
  for (int i = 0; i < kTileRows; ++i)
    for (int h = 0; h < 2; ++h) hn::StoreU(sum[i][h], d, tile + i * kTileColumns + h * kWidth);
}

void AddTile(const double* a, const double* b, int depth, bool productsAreExact, double* tile) {
  for (int j = 0; j < kTileColumns; j += kColumnsAtOnce)
    productsAreExact ? AddColumns<float>(a, b + j, depth, tile + j) : AddColumns<double>(a, b + j, depth, tile + j);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(AddTile);

void AddProductTile(const double* a, const double* b, int depth, bool productsAreExact, double* tile) {
  if (depth < 1) return;
  UsesScalarTwins() ? scalar::AddProductTile(a, b, depth, tile)
                    : HWY_DYNAMIC_DISPATCH(AddTile)(a, b, depth, productsAreExact, tile);
}

}  // namespace kalmia::simd

#endif
