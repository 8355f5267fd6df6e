#include "kalmia/kernels/simd/ProductTile.h"

#include <gtest/gtest.h>

#include <vector>

#include "kernels/SimdCases.h"

namespace {

using kalmia::simd::kTileColumns;
using kalmia::simd::kTileRows;

/// Cells of T, as the packed factors hold them: thirds, so that products of doubles are not exact.
template <class T>
std::vector<double> PackedCells(int n, unsigned seed) {
  std::vector<double> packed;
  for (const T cell : CellsOf(RandomVector<T>(n, 0, seed))) packed.push_back(cell / T{3});
  return packed;
}

template <class T>
class ProductTile : public testing::Test {
 protected:
  static constexpr bool kExact = sizeof(T) == sizeof(float);
};
TYPED_TEST_SUITE(ProductTile, CellTypes, CellTypeNames);

TYPED_TEST(ProductTile, LanesGiveTheBitsOfTheScalarTwin) {
  using T = TypeParam;
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int depth : TellingLengths()) {
      const auto a = PackedCells<T>(kTileRows * depth, 1), b = PackedCells<T>(kTileColumns * depth, 2);
      auto lanes = PackedCells<T>(kTileRows * kTileColumns, 3), twin = lanes;
      kalmia::simd::AddProductTile(a.data(), b.data(), depth, this->kExact, lanes.data());
      kalmia::simd::scalar::AddProductTile(a.data(), b.data(), depth, twin.data());
      EXPECT_TRUE(SameBits(lanes, twin)) << "depth " << depth;
    }
  }
}

TYPED_TEST(ProductTile, IsTheSameInOneCallAsInTwo) {
  using T = TypeParam;
  constexpr int kDepth = 50;
  const auto a = PackedCells<T>(kTileRows * kDepth, 4), b = PackedCells<T>(kTileColumns * kDepth, 5);
  std::vector<double> whole(kTileRows * kTileColumns), parts(whole);
  kalmia::simd::AddProductTile(a.data(), b.data(), kDepth, this->kExact, whole.data());
  kalmia::simd::AddProductTile(a.data(), b.data(), 19, this->kExact, parts.data());
  kalmia::simd::AddProductTile(a.data() + 19 * kTileRows, b.data() + 19 * kTileColumns, kDepth - 19, this->kExact,
                               parts.data());
  EXPECT_TRUE(SameBits(whole, parts));
}

TEST(ProductTileTwin, AddsTheProductsOfEachRowAndColumn) {
  const std::vector<double> a = {1, 2, 3, 4, 10, 20, 30, 40};  // two steps of four rows
  std::vector<double> b(2 * kTileColumns), tile(kTileRows * kTileColumns, 0.5);
  for (int j = 0; j < kTileColumns; ++j) b[j] = j, b[kTileColumns + j] = 1;
  kalmia::simd::scalar::AddProductTile(a.data(), b.data(), 2, tile.data());
  for (int i = 0; i < kTileRows; ++i)
    for (int j = 0; j < kTileColumns; ++j)
      EXPECT_EQ(tile[i * kTileColumns + j], 0.5 + (i + 1) * j + (i + 1) * 10) << i << ", " << j;
}

TEST(ProductTile, RoundsAProductThatIsNotExactBeforeAddingIt) {
  // (1 + u)^2 = 1 + 2u + u^2 with u = 2^-52: u^2 is lost when the product is rounded, and would stay in a fused sum.
  const double x = 1 + 0x1p-52;
  std::vector<double> a(kTileRows, x), b(kTileColumns, x), tile(kTileRows * kTileColumns, -1 - 0x1p-51);
  kalmia::simd::AddProductTile(a.data(), b.data(), 1, /*productsAreExact=*/false, tile.data());
  EXPECT_EQ(tile, std::vector<double>(tile.size(), 0.0));
}

}  // namespace
