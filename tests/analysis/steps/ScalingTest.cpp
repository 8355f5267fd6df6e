// Scaling where a mean or a scaled cell is -99, the number that marks missing cells inside.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "kalmia/analysis/steps/Scaling.h"

namespace kalmia::analysis {
namespace {

constexpr float kBelowMissing = -99.00000762939453F;  ///< the next float below -99

NCDataMatrix<float> ColumnOf(const std::vector<float>& cells) {
  NCDataMatrix<float> matrix(static_cast<int>(cells.size()), 1);
  for (std::size_t i = 0; i < cells.size(); ++i) matrix(static_cast<int>(i) + 1, 1, cells[i]);
  return matrix;
}

float Cell(const NCDataMatrix<float>& matrix, int row) { return matrix[row][1]; }

TEST(ScaleColumns, CentresAColumnWhoseMeanIsTheMissingValue) {
  const std::vector<std::vector<float>> columns = {
      {-100.0F, -98.0F, -97.0F, -101.0F}, {0.0F, -198.0F}, {1e6F, -1e6F, -297.0F}, {-99.5F, -98.5F, -99.25F, -98.75F}};
  for (const std::vector<float>& cells : columns) {
    for (const auto type : {NCScale::ScalingCentre, NCScale::ScalingPareto, NCScale::ScalingUnitVariance}) {
      NCDataMatrix<float> matrix = ColumnOf(cells);
      const ColumnScaling scale = ScaleColumns(type, {"x"}, &matrix);
      double spread = 0.0;
      for (const float cell : cells) spread += std::abs(cell) / static_cast<double>(cells.size());
      // Two float steps of each cell, 2^-22 of it at most, then one rounding.
      EXPECT_NEAR(CentreOf(scale, 1), -99.0, spread * 3e-7 + 8e-6);
      EXPECT_NE(CentreOf(scale, 1), -99.0);
      EXPECT_EQ(matrix.GetNumMisVal(), 0);
      for (std::size_t i = 0; i < cells.size(); ++i) {
        const double expected = (cells[i] - CentreOf(scale, 1)) * FactorOf(scale, 1);
        // Two roundings to float.
        EXPECT_NEAR(Cell(matrix, static_cast<int>(i) + 1), expected, std::abs(expected) * 2e-7);
      }
    }
  }
}

TEST(ScaleColumns, KeepsACellThatCentringTurnsIntoTheMissingValue) {
  NCDataMatrix<float> matrix = ColumnOf({1, 199, 100, 120, 80});  // around 100
  ScaleColumns(NCScale::ScalingCentre, {"y"}, &matrix);
  EXPECT_EQ(Cell(matrix, 1), kBelowMissing);
  EXPECT_EQ(Cell(matrix, 2), 99.0F);
  EXPECT_EQ(matrix.GetNumMisVal(), 0);
  EXPECT_EQ(matrix[1].GetNumMisVal(), 0);
  EXPECT_EQ(matrix.GetColumnMisVal(1), 0);
}

TEST(ScaleColumns, CountsSuchACellInTheVariance) {
  NCDataMatrix<float> matrix = ColumnOf({1, 199, 100, 120, 80});
  const ColumnScaling scale = ScaleColumns(NCScale::ScalingUnitVariance, {"y"}, &matrix);
  const double deviation = std::sqrt((2 * 99.0 * 99.0 + 2 * 20.0 * 20.0) / 4);
  // One rounding to float, and the cell's way of 2e-7 of itself.
  EXPECT_NEAR(FactorOf(scale, 1) * deviation, 1.0, 3e-7);
  EXPECT_NEAR(Cell(matrix, 1), -99.0 / deviation, 3e-7);
}

TEST(ScaleColumns, LeavesHolesAsTheyAreBesideSuchACell) {
  NCDataMatrix<float> matrix = ColumnOf({1, 199, -99, 100, 120, 80});
  ScaleColumns(NCScale::ScalingCentre, {"y"}, &matrix);
  EXPECT_EQ(Cell(matrix, 1), kBelowMissing);
  EXPECT_EQ(Cell(matrix, 3), -99.0F);
  EXPECT_EQ(matrix.GetNumMisVal(), 1);
  EXPECT_EQ(matrix.GetColumnMisVal(1), 1);
}

TEST(ApplyScale, KeepsACellThatMultiplyingTurnsIntoTheMissingValue) {
  NCDataMatrix<float> training = ColumnOf({-1, 0, 1});  // mean 0, deviation 1
  const ColumnScaling scale = ScaleColumns(NCScale::ScalingUnitVariance, {"x"}, &training);
  for (const float other : {5.0F, -99.0F}) {
    NCDataMatrix<float> fresh(2, 1);
    fresh(1, 1, std::nextafter(-99.0F, -200.0F));
    fresh(2, 1, other);
    ApplyScale(scale, &fresh);
    EXPECT_EQ(Cell(fresh, 1), kBelowMissing);
    EXPECT_EQ(fresh.GetNumMisVal(), other == -99.0F ? 1 : 0);
  }
}

TEST(ApplyScale, KeepsACellOfANewTableThatLandsOnTheMissingValue) {
  NCDataMatrix<float> training = ColumnOf({90, 100, 110});  // mean 100, deviation 10
  const ColumnScaling scale = ScaleColumns(NCScale::ScalingUnitVariance, {"x"}, &training);
  NCDataMatrix<float> fresh = ColumnOf({1, -890, 100});  // -99 once centred, and once divided
  ApplyScale(scale, &fresh);
  EXPECT_NEAR(Cell(fresh, 1), -9.9, 3e-6);  // the next float below -99, by 10, rounded
  EXPECT_LT(Cell(fresh, 2), -98.9999F);
  EXPECT_NE(Cell(fresh, 2), -99.0F);
  EXPECT_EQ(fresh.GetNumMisVal(), 0);
}

}  // namespace
}  // namespace kalmia::analysis
