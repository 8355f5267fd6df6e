// The numbers behind `kalmia fill`: fixed points, exact tables, what cannot be modelled.


#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/internal/FillColumns.h"
#include "kalmia/analysis/fit/internal/FillScaled.h"
#include "kalmia/analysis/fit/internal/TryFilling.h"
#include "kalmia/kernels/NCSVD.h"
#include "testing/RandomTables.h"

namespace kalmia::analysis {
namespace {

using Matrix = NCDataMatrix<float>;
using ::testing::ElementsAre;

constexpr float kMissingCell = kHole<float>;

/// `directions` directions, each 0.6 times as strong as the one before, and noise of this size; columns at unit
/// variance.
Matrix StructuredTable(int rows, int columns, int directions, double noise) {
  NCDataMatrix<float> scores = RandomMatrix<float>(directions, rows, 0, 1);
  for (int a = 2; a <= directions; ++a) scores.MultiplyRow(a, std::pow(0.6F, static_cast<float>(a - 1)));
  Matrix table = scores.MatrixMultiply(RandomMatrix<float>(directions, columns, 0, 2), true, false);
  table += RandomMatrix<float>(rows, columns, 0, 3) * static_cast<long double>(noise);
  for (int c = 1; c <= columns; ++c) {
    const auto mean = table.GetColumnMean(c);
    const auto deviation = table.GetColumnStdDev(c);
    for (int r = 1; r <= rows; ++r) table(r, c, static_cast<float>((table[r][c] - mean) / deviation));
  }
  return table;
}

Matrix WithHoles(Matrix table, double holes) {
  const Matrix mask = RandomMatrix<float>(table.SizeRows(), table.SizeColumns(), holes, 9);
  for (int r = 1; r <= table.SizeRows(); ++r) {
    for (int c = 1; c <= table.SizeColumns(); ++c) {
      if (mask[r][c] == kMissingCell) table(r, c, kMissingCell);
    }
  }
  return table;
}

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

// ---- Whole columns

TEST(FillColumns, KeepsConstantColumnsAndEmptyRowsOutOfTheModel) {
  Matrix cells = StructuredTable(20, 4, 1, 0.1);
  NCDataVector<float> constant(20, 7.0F);
  constant(2, kMissingCell);
  constant(5, kMissingCell);
  cells.InsertColumn(3, constant);
  for (const int c : {1, 2, 4, 5}) cells(5, c, kMissingCell);
  cells(9, 1, kMissingCell);
  const FilledColumns filled = FillColumns({{"a", "b", "constant", "c", "d"}, cells}, 1);
  EXPECT_THAT(filled.constantColumns, ElementsAre("constant"));
  EXPECT_THAT(filled.emptyRows, ElementsAre(5));
  EXPECT_EQ(filled.modelRows, 19);
  EXPECT_EQ(filled.modelColumns, 4);
  EXPECT_EQ(filled.cells[2][3], 7.0F);
  EXPECT_NE(filled.cells[9][1], kMissingCell);
  for (int c = 1; c <= 5; ++c) EXPECT_EQ(filled.cells[5][c], kMissingCell);
}

TEST(FillColumns, ScalesWithThePresentCellsAndBack) {
  const Matrix scaled = StructuredTable(30, 5, 2, 0.1);
  const Matrix holed = WithHoles(scaled, 0.1);
  Matrix units = holed;
  for (int r = 1; r <= 30; ++r) {
    for (int c = 1; c <= 5; ++c) {
      if (holed[r][c] != kMissingCell) units(r, c, 1000.0F * static_cast<float>(c) + 10.0F * holed[r][c]);
    }
  }
  const FilledColumns inUnits = FillColumns({{"a", "b", "c", "d", "e"}, units}, 2);
  const FilledColumns asIs = FillColumns({{"a", "b", "c", "d", "e"}, holed}, 2);
  for (int r = 1; r <= 30; ++r) {
    for (int c = 1; c <= 5; ++c) {
      if (holed[r][c] != kMissingCell) continue;
      // The units have 2^-24 * 5000 as their last bit, 3e-5 of a standard deviation, in 30 cells of a column; the
      // refitting ends at 1e-4 of one.
      EXPECT_NEAR((inUnits.cells[r][c] - 1000.0F * static_cast<float>(c)) / 10.0F, asIs.cells[r][c], 5e-4);
    }
  }
}

// ---- Trials

TEST(ChooseComponents, FindsTheDirectionsThatThereAre) {
  for (const int directions : {1, 2, 3}) {
    const Matrix cells = WithHoles(StructuredTable(300, 20, directions, 0.05), 0.1);
    const std::vector<std::string> names(20, "x");
    const FillChoice choice = ChooseComponents({names, cells});
    EXPECT_EQ(choice.components, directions);
    EXPECT_EQ(static_cast<int>(choice.errors.size()), directions + 4) << "three further ones were tried";
    EXPECT_NEAR(choice.errors.front(), 1.0, 0.1) << "means, at unit variance";
  }
}

TEST(ChooseComponents, TakesMeansWhereNothingIsCommonToTheColumns) {
  const FillChoice choice = ChooseComponents({std::vector<std::string>(8, "x"), RandomMatrix<float>(300, 8, 0.1, 4)});
  EXPECT_EQ(choice.components, 0);
  EXPECT_EQ(choice.errors.size(), 4U) << "up to three components were tried";
}

TEST(ChooseComponents, ChoosesNothingWhereThereAreTooFewCells) {
  const FillChoice choice = ChooseComponents({{"a", "b"}, MatrixOf<float>({{1, 2}, {3, kMissingCell}, {4, 6}})});
  EXPECT_EQ(choice.components, 0);
  EXPECT_TRUE(choice.errors.empty());
}

TEST(ChooseComponents, ChoosesNothingWhereNoHiddenCellCanBeFilledAgain) {
  NCDataMatrix<float> cells(40, 2);  // a row without its cell of the column that varies says nothing
  for (int r = 1; r <= 40; ++r) {
    cells(r, 1, 5.0F);
    cells(r, 2, static_cast<float>(r));
  }
  const FillChoice choice = ChooseComponents({{"constant", "varies"}, cells});
  EXPECT_GT(choice.hiddenCells, 0);
  EXPECT_TRUE(choice.errors.empty());
  EXPECT_EQ(choice.components, 0);
}

TEST(TryFilling, HidesATenthOfThePresentCellsAndComparesThemWithMeans) {
  const Matrix cells = WithHoles(StructuredTable(100, 15, 2, 0.1), 0.1);
  const NumberColumns columns{std::vector<std::string>(15, "x"), cells};
  const int present = 1500 - cells.GetNumMisVal();
  const FillTrial trial = TryFilling(columns, 2);
  EXPECT_EQ(trial.all.cells, present / 10);
  EXPECT_EQ(trial.components, 2);
  int cellsOfColumns = 0;
  for (const FillError& column : trial.columns) cellsOfColumns += column.cells;
  EXPECT_EQ(cellsOfColumns, trial.all.cells);
  EXPECT_LT(trial.all.Ratio(), 0.5);
  EXPECT_DOUBLE_EQ(trial.all.Ratio(), trial.all.filled / trial.all.means);
  EXPECT_NEAR(trial.all.means, 1.0, 0.15);
  const FillTrial means = TryFilling(columns, 0);
  EXPECT_FLOAT_EQ(static_cast<float>(means.all.Ratio()), 1.0F) << "with no component the means are what is filled in";
  EXPECT_EQ(TryFilling(columns, std::nullopt).components, 2) << "chosen without the hidden cells";
}

TEST(TryFilling, LeavesEveryRowAndColumnACell) {
  // Ten rows of two cells, of which one is missing: nothing of a row can be hidden.
  Matrix cells = RandomMatrix<float>(40, 2, 0, 3);
  for (int r = 1; r <= 40; ++r) cells(r, 1 + r % 2, kMissingCell);
  EXPECT_EQ(TryFilling({{"a", "b"}, cells}, 1).all.cells, 0);
}

}  // namespace
}  // namespace kalmia::analysis
