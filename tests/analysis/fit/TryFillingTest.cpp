// How many components fill holes best, found by hiding cells and filling them again.

#include "kalmia/analysis/fit/internal/TryFilling.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "FillTables.h"

namespace kalmia::analysis {
namespace {

using Matrix = NCDataMatrix<float>;

constexpr float kMissingCell = kHole<float>;

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
