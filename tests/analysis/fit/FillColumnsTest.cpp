// Holes of whole columns, in their units: which rows and columns take part.

#include "kalmia/analysis/fit/internal/FillColumns.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FillTables.h"

namespace kalmia::analysis {
namespace {

using Matrix = NCDataMatrix<float>;
using ::testing::ElementsAre;

constexpr float kMissingCell = kHole<float>;

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

}  // namespace
}  // namespace kalmia::analysis
