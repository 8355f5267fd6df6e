// Filling of a scaled table: fixed points, exact tables, and tables that have no model.

#include "kalmia/analysis/fit/internal/FillScaled.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "FillTables.h"
#include "kalmia/kernels/NCSVD.h"

namespace kalmia::analysis {
namespace {

using Matrix = NCDataMatrix<float>;

constexpr float kMissingCell = kHole<float>;

double ErrorOfFilled(const Matrix& filled, const Matrix& holed, const Matrix& truth) {
  double squares = 0.0;
  int cells = 0;
  for (int r = 1; r <= truth.SizeRows(); ++r) {
    for (int c = 1; c <= truth.SizeColumns(); ++c) {
      if (holed[r][c] != kMissingCell) continue;
      const double error = static_cast<double>(filled[r][c]) - truth[r][c];
      squares += error * error;
      ++cells;
    }
  }
  return std::sqrt(squares / cells);
}

struct Shape {
  const char* name;
  int rows, columns, components;
  double holes;
};

class FillScaledOnTables : public ::testing::TestWithParam<Shape> {};

INSTANTIATE_TEST_SUITE_P(, FillScaledOnTables,
                         ::testing::Values(Shape{"Tall", 60, 10, 2, 0.1}, Shape{"Wide", 20, 50, 2, 0.1},
                                           Shape{"Square", 30, 30, 3, 0.05}, Shape{"ManyHoles", 60, 20, 2, 0.3}),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

TEST_P(FillScaledOnTables, EndsWhereTheFilledTablesSingularValuesGiveItsCellsBack) {
  const Shape& shape = GetParam();
  const Matrix holed = WithHoles(StructuredTable(shape.rows, shape.columns, 3, 0.2), shape.holes);
  FillModel model;
  const Matrix filled = FillScaled(holed, shape.components, &model);
  ASSERT_TRUE(model.Settled()) << model.lastMove;
  EXPECT_LE(model.rounds, kMostRounds);
  EXPECT_EQ(model.components, shape.components);

  NCDataMatrix<double> table(shape.rows, shape.columns);
  for (int r = 1; r <= shape.rows; ++r) {
    for (int c = 1; c <= shape.columns; ++c) table(r, c, filled[r][c]);
  }
  std::vector<double> means;
  for (int c = 1; c <= shape.columns; ++c) {
    means.push_back(static_cast<double>(table.GetColumnMean(c)));
    table.SubtractFromColumn(c, means.back());
  }
  const std::unique_ptr<NCSVD<double>> svd(table.GetSVD());
  ASSERT_EQ(svd->GetStatus(), NCSVD<double>::StatusSuccess);
  svd->Sort();
  const auto s = [&svd](int a) { return (*svd->GetW())[a]; };
  const int values = std::min(shape.rows, shape.columns);
  double rest = 0.0;
  for (int a = shape.components + 1; a <= values; ++a) rest += s(a) * s(a);
  const double freedom =
      (shape.rows - 1.0 - shape.components) * (shape.columns - shape.components) - holed.GetNumMisVal();
  const double noise = std::max(shape.rows - 1, shape.columns) * rest / freedom;
  double largest = 0.0;
  for (int r = 1; r <= shape.rows; ++r) {
    for (int c = 1; c <= shape.columns; ++c) {
      if (holed[r][c] != kMissingCell) {
        EXPECT_EQ(filled[r][c], holed[r][c]) << "present cells stay";
        continue;
      }
      double estimate = means[static_cast<std::size_t>(c) - 1];
      for (int a = 1; a <= shape.components; ++a) {
        estimate += std::max(0.0, 1.0 - noise / (s(a) * s(a))) * s(a) * (*svd->GetU())[r][a] * (*svd->GetV())[c][a];
      }
      largest = std::max(largest, std::abs(estimate - filled[r][c]));
    }
  }
  // The last round moved no cell by more than 1e-4, and each round moves the cells by less than the one before; the
  // iteration of a component ends at 1e-5 of the length of its score.
  EXPECT_LT(largest, 2e-4);
  EXPECT_TRUE(HasExactCounts(filled));
}

TEST(FillScaled, FindsTheCellsOfATableWithoutNoise) {
  const Matrix whole = StructuredTable(40, 12, 2, 0.0);
  const Matrix holed = WithHoles(whole, 0.1);
  FillModel model;
  // 1e-4 is what the last round may still move a cell by; that is a geometric series with a ratio far below 0.9.
  EXPECT_LT(ErrorOfFilled(FillScaled(holed, 2, &model), holed, whole), 1e-3);
}

TEST(FillScaled, FillsWithTheMeanWithoutComponents) {
  const Matrix holed = WithHoles(StructuredTable(20, 5, 2, 0.1), 0.1);
  FillModel model;
  const Matrix filled = FillScaled(holed, 0, &model);
  EXPECT_EQ(model.components, 0);
  EXPECT_EQ(model.rounds, 0);
  for (int r = 1; r <= 20; ++r) {
    for (int c = 1; c <= 5; ++c) EXPECT_EQ(filled[r][c], holed[r][c] == kMissingCell ? 0.0F : holed[r][c]);
  }
}

TEST(FillScaled, TakesNoMoreComponentsThanLeaveSomethingUnexplained) {
  EXPECT_EQ(MostFillComponents(Matrix(10, 4, 0.0F)), 3);
  EXPECT_EQ(MostFillComponents(Matrix(3, 10, 0.0F)), 2);
  EXPECT_EQ(MostFillComponents(Matrix(1, 10, 0.0F)), 0);
  EXPECT_EQ(MostFillComponents(Matrix(0, 0)), 0);
  const Matrix holed = WithHoles(StructuredTable(20, 4, 2, 0.3), 0.1);
  FillModel model;
  FillScaled(holed, 100, &model);
  EXPECT_EQ(model.components, 3);
}

TEST(FillScaled, SaysWhyThereAreFewerComponents) {
  // One direction alone, in exact numbers: nothing is left behind it.
  Matrix table(8, 4);
  for (int r = 1; r <= 8; ++r) {
    for (int c = 1; c <= 4; ++c) table(r, c, r % 2 == 0 ? 1.0F : -1.0F);
  }
  table(3, 2, kMissingCell);
  FillModel model;
  const Matrix filled = FillScaled(table, 3, &model);
  EXPECT_EQ(model.components, 1);
  EXPECT_THAT(model.endedEarly, ::testing::HasSubstr("could not be computed"));
  EXPECT_FLOAT_EQ(filled[3][2], -1.0F);
}

}  // namespace
}  // namespace kalmia::analysis
