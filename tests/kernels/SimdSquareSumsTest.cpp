#include "kalmia/kernels/simd/SquareSums.h"

#include <gtest/gtest.h>

#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;
using simd::Square;

namespace {

constexpr int kTileRows = simd::kTileRows;

/// Rows and a tile of them, of so many columns.
struct Tables {
  std::vector<float> rows[simd::kRowsBesideTile];
  std::vector<float> tile;
  const float* pointers[simd::kRowsBesideTile];

  Tables(int columns, HolePattern pattern, float scale, unsigned seed) : tile(columns * kTileRows) {
    for (int r = 0; r < simd::kRowsBesideTile; ++r) {
      rows[r] = Scaled(Cells<float>(columns, pattern, seed + r), scale);
      pointers[r] = rows[r].data();
    }
    for (int l = 0; l < kTileRows; ++l) {
      const std::vector<float> row = Scaled(Cells<float>(columns, pattern, seed + 100 + l), scale);
      for (int c = 0; c < columns; ++c) tile[c * kTileRows + l] = row[c];
    }
  }
  static std::vector<float> Scaled(std::vector<float> cells, float scale) {
    for (float& cell : cells)
      if (cell != kHole<float>) cell *= scale;
    return cells;
  }
};

constexpr int kSums = simd::kRowsBesideTile * kTileRows;
constexpr float kScales[] = {1, 1e19F, 1e-22F, 4097};  // squares beyond the floats, below the normal ones, of 25 bits

TEST(SimdSquareSums, LanesGiveTheBitsOfTheTwinOnEveryMachine) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int columns : {0, 1, 2, 7, 50})
      for (int count = 1; count <= simd::kRowsBesideTile; ++count)
        for (const float scale : kScales)
          for (const Square square : {Square::Whole, Square::Half}) {
            const Tables tables(columns, HolePattern::None, scale, columns);
            std::vector<double> lanes(kSums, 7), twins(kSums, 7);
            simd::SquareSums(square, tables.pointers, count, tables.tile.data(), columns, lanes.data());
            simd::scalar::SquareSums(square, tables.pointers, count, tables.tile.data(), columns, twins.data());
            EXPECT_TRUE(SameBits(lanes, twins)) << columns << " columns, " << count << " rows, scale " << scale;
          }
  }
}

TEST(SimdSquareSums, WithHolesLanesGiveTheBitsOfTheTwinOnEveryMachine) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int columns : {0, 1, 7, 50})
      for (int count : {1, 3, 4})
        for (const HolePattern pattern : kHolePatterns)
          for (const Square square : {Square::Whole, Square::Half}) {
            const Tables tables(columns, pattern, 1, columns);
            std::vector<double> lanes(kSums, 7), twins(kSums, 7), common(kSums, 7), twinsCommon(kSums, 7);
            simd::SquareSumsMasked(square, tables.pointers, count, tables.tile.data(), columns, lanes.data(),
                                   common.data());
            simd::scalar::SquareSumsMasked(square, tables.pointers, count, tables.tile.data(), columns, twins.data(),
                                           twinsCommon.data());
            EXPECT_TRUE(SameBits(lanes, twins)) << columns << " columns, " << count << " rows";
            EXPECT_TRUE(SameBits(common, twinsCommon)) << columns << " columns, " << count << " rows";
          }
  }
}

/// One number on one side, sixteen on the other; only the first sum is looked at.
double SumOf(Square square, const std::vector<float>& a, const std::vector<float>& b, bool masked) {
  std::vector<float> tile(a.size() * kTileRows, 1);
  for (std::size_t c = 0; c < a.size(); ++c) tile[c * kTileRows] = b[c];
  const float* const row = a.data();
  double sums[kTileRows], common[kTileRows];
  const int columns = static_cast<int>(a.size());
  if (masked)
    simd::SquareSumsMasked(square, &row, 1, tile.data(), columns, sums, common);
  else
    simd::SquareSums(square, &row, 1, tile.data(), columns, sums);
  return sums[0];
}

TEST(SimdSquareSums, RoundEachSquareToFloatAndTheSumNever) {
  for (const bool masked : {false, true}) {
    // 4097^2 = 16785409 has 25 bits; half of it ends in .5.
    EXPECT_EQ(SumOf(Square::Whole, {4097, 1}, {0, 0}, masked), 16785409.0);  // 16785408 + 1
    EXPECT_EQ(SumOf(Square::Half, {4097, 1}, {0, 0}, masked), 8392704.5);
    EXPECT_EQ(SumOf(Square::Whole, {3e19F, 1}, {0, 0}, masked), std::numeric_limits<double>::infinity());
    // The difference itself is not rounded to the float 2^24: 2^24 + 1 squared is 2^48 + 2^25 + 1, and floats of that
    // size are 2^25 apart.
    EXPECT_EQ(SumOf(Square::Whole, {16777216}, {-1}, masked), 0x1p48 + 0x1p25);
  }
}

TEST(SimdSquareSums, AHoleTakesNoPartWhateverItMeets) {
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(SumOf(Square::Whole, {-99, 5, inf, 7}, {nan, -99, -99, 4}, true), 9.0);
  EXPECT_EQ(SumOf(Square::Whole, {-99, 1}, {1, 1}, false), 10000.0) << "not looked for";
}

}  // namespace
