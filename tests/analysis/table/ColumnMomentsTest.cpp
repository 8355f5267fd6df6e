#include "kalmia/analysis/table/ColumnMoments.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {
namespace {

TEST(ColumnMoments, AgreeWithThoseOfTheLibrary) {
  std::mt19937 random(3);
  std::gamma_distribution<float> gamma(2.0F, 1.0F);
  std::vector<double> cells;
  NCDataMatrix<float> matrix(1000, 1);
  for (int r = 1; r <= 1000; ++r) {
    const float cell = random() % 10 == 0 ? kMissingCell<float> : 50.0F + gamma(random);
    cells.push_back(cell == kMissingCell<float> ? std::nan("") : double{cell});
    matrix(r, 1, cell);
  }
  const ColumnMoments moments = MomentsOf(cells);
  EXPECT_EQ(moments.n, 1000 - matrix.GetColumnMisVal(1));
  EXPECT_EQ(moments.mean, static_cast<double>(matrix.GetColumnMean(1))) << "the same sum in double";
  EXPECT_DOUBLE_EQ(moments.standardDeviation, static_cast<double>(matrix.GetColumnStdDev(1)));
  // Two sums of 900 cubes about a mean with a share of cancellation below 10: 900 units in the last place.
  const auto skewness = static_cast<double>(matrix.GetColumnSkewness(1));
  EXPECT_NEAR(moments.skewness, skewness, 900 * 0x1p-52 * std::abs(skewness));
  float min = 0.0F, max = 0.0F;
  matrix.GetColumnMinMax(1, min, max);
  EXPECT_EQ(moments.min, min);
  EXPECT_EQ(moments.max, max);
}

TEST(ColumnMoments, AreNoNumbersWhereThereAreTooFewCells) {
  EXPECT_EQ(MomentsOf({std::nan("")}).n, 0);
  EXPECT_TRUE(std::isnan(MomentsOf({}).mean));
  EXPECT_TRUE(std::isnan(MomentsOf({}).min));
  EXPECT_EQ(MomentsOf({7.0}).mean, 7.0);
  EXPECT_TRUE(std::isnan(MomentsOf({7.0}).standardDeviation));
  EXPECT_TRUE(std::isnan(MomentsOf({7.0, 9.0}).skewness));
  EXPECT_TRUE(std::isnan(MomentsOf({7.0, 7.0, 7.0}).skewness));
  EXPECT_EQ(MomentsOf({7.0, 7.0, 7.0}).standardDeviation, 0.0);
}

TEST(ColumnMoments, KnowASumOfMinus99ForASum) {
  const ColumnMoments moments = MomentsOf({-98.0, -1.0, 3.0, -3.0});
  EXPECT_EQ(moments.mean, -99.0 / 4.0);
  EXPECT_FALSE(std::isnan(moments.skewness));
}

}  // namespace
}  // namespace kalmia::analysis
