#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

/// Cells of a table as what is expected of it: rows of cells, from index 0 on.
template <class T>
using Table = std::vector<std::vector<T>>;

/// A table with holes, and a share of it that no operation on the table may change.
template <class T>
class TableWithTwin : public ::testing::Test {
 protected:
  static constexpr T kGap = kHole<T>;

  /// Cells and all counts.
  static void Expect(const NCDataMatrix<T>& m, const Table<T>& cells) {
    EXPECT_EQ(CellsOf(m), cells);
    EXPECT_TRUE(HasExactCounts(m));
  }
  /// A table whose cell (1, 1) is a hole that nobody counted: {{missing, 1}, {3, 4}}.
  static NCDataMatrix<T> TableWithLowCounts() {
    auto m = MatrixOf<T>({{-98, 2}, {4, 5}});
    m.TransformToDotSubRowVector(VectorOf<T>({1, 1}));
    EXPECT_FALSE(HasExactCounts(m));
    return m;
  }
  void TearDown() override { Expect(twin_, {{1, kGap, 3}, {4, 5, 6}, {kGap, kGap, 9}}); }

  NCDataMatrix<T> table_ = MatrixOf<T>({{1, kGap, 3}, {4, 5, 6}, {kGap, kGap, 9}});
  const NCDataMatrix<T> twin_ = table_;
};
