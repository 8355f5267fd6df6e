#include "kalmia/kernels/simd/ProductTile.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/ProductTile.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia {
namespace simd {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Lanes = hn::CappedTag<double, 8>;
using Vector = hn::Vec<Lanes>;

template <bool kExact>
Vector AddProduct(Vector a, Vector b, Vector sum) {
  if constexpr (kExact) return hn::MulAdd(a, b, sum);
  return hn::Add(hn::Mul(a, b), sum);
}

// Two vectors of columns at a time: eight sums stay in registers whatever the width of the machine.
template <bool kExact>
void AddProducts(const double* HWY_RESTRICT a, const double* HWY_RESTRICT b, int depth, double* HWY_RESTRICT tile) {
  const Lanes d;
  const int width = static_cast<int>(hn::Lanes(d));
  for (int j = 0; j < kTileColumns; j += 2 * width) {
    double* t = tile + j;
    auto s00 = hn::LoadU(d, t), s01 = hn::LoadU(d, t + width);
    auto s10 = hn::LoadU(d, t + kTileColumns), s11 = hn::LoadU(d, t + kTileColumns + width);
    auto s20 = hn::LoadU(d, t + 2 * kTileColumns), s21 = hn::LoadU(d, t + 2 * kTileColumns + width);
    auto s30 = hn::LoadU(d, t + 3 * kTileColumns), s31 = hn::LoadU(d, t + 3 * kTileColumns + width);
    for (int k = 0; k < depth; ++k) {
      const double* x = a + static_cast<long>(k) * kTileRows;
      const double* y = b + static_cast<long>(k) * kTileColumns + j;
      const auto y0 = hn::LoadU(d, y), y1 = hn::LoadU(d, y + width);
      const auto x0 = hn::Set(d, x[0]), x1 = hn::Set(d, x[1]), x2 = hn::Set(d, x[2]), x3 = hn::Set(d, x[3]);
      s00 = AddProduct<kExact>(x0, y0, s00), s01 = AddProduct<kExact>(x0, y1, s01);
      s10 = AddProduct<kExact>(x1, y0, s10), s11 = AddProduct<kExact>(x1, y1, s11);
      s20 = AddProduct<kExact>(x2, y0, s20), s21 = AddProduct<kExact>(x2, y1, s21);
      s30 = AddProduct<kExact>(x3, y0, s30), s31 = AddProduct<kExact>(x3, y1, s31);
    }
    hn::StoreU(s00, d, t), hn::StoreU(s01, d, t + width);
    hn::StoreU(s10, d, t + kTileColumns), hn::StoreU(s11, d, t + kTileColumns + width);
    hn::StoreU(s20, d, t + 2 * kTileColumns), hn::StoreU(s21, d, t + 2 * kTileColumns + width);
    hn::StoreU(s30, d, t + 3 * kTileColumns), hn::StoreU(s31, d, t + 3 * kTileColumns + width);
  }
}

void AddProductTile(const double* a, const double* b, int depth, bool productsAreExact, double* tile) {
  productsAreExact ? AddProducts<true>(a, b, depth, tile) : AddProducts<false>(a, b, depth, tile);
}

}  // namespace HWY_NAMESPACE
}  // namespace simd
}  // namespace kalmia
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kalmia {
namespace simd {

HWY_EXPORT(AddProductTile);

void AddProductTile(const double* a, const double* b, int depth, bool productsAreExact, double* tile) {
  HWY_DYNAMIC_DISPATCH(AddProductTile)(a, b, depth, productsAreExact, tile);
}

void scalar::AddProductTile(const double* a, const double* b, int depth, bool, double* tile) {
  for (int i = 0; i < kTileRows; ++i)
    for (int j = 0; j < kTileColumns; ++j)
      for (int k = 0; k < depth; ++k)
        tile[i * kTileColumns + j] +=
            a[static_cast<long>(k) * kTileRows + i] * b[static_cast<long>(k) * kTileColumns + j];
}

}  // namespace simd
}  // namespace kalmia
#endif
