#include "kalmia/containers/internal/SizeLimit.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "kalmia/containers/BoolVector.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCMatUtilities.h"
#include "kalmia/containers/NCStringVector.h"
#include "kalmia/support/NCError.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

// Vectors and tables of more than 2^31 - 1 cells are refused before memory is taken for them.

namespace {

constexpr int kTwoTo16 = 1 << 16, kTwoTo15 = 1 << 15;

/// The message of the NCError that grow() throws; no more memory may be taken than what a message needs.
std::string Refusal(const std::function<void()>& grow) {
  constexpr std::int64_t kMostBytes = 4096;
  const PeakBytesDuring meter;
  try {
    grow();
  } catch (const NCError& error) {
    EXPECT_LE(meter.GetBytes(), kMostBytes);
    return static_cast<const char*>(error.GetMessage());
  }
  return "not refused";
}

TEST(SizeLimit, ATableHoldsTwoTo31MinusOneCells) {
  EXPECT_TRUE(kalmia::CanBeTable(1, INT_MAX));
  EXPECT_TRUE(kalmia::CanBeTable(INT_MAX, 0));
  EXPECT_TRUE(kalmia::CanBeTable(kTwoTo16 - 1, kTwoTo15));
  EXPECT_FALSE(kalmia::CanBeTable(kTwoTo16, kTwoTo15));
  EXPECT_FALSE(kalmia::CanBeTable(2, INT_MAX));
  EXPECT_FALSE(kalmia::CanBeTable(INT_MAX + std::int64_t{1}, 0));
  EXPECT_FALSE(kalmia::CanBeTable(0, INT_MAX + std::int64_t{1}));
  EXPECT_FALSE(kalmia::CanBeTable(-1, -1));
  EXPECT_FALSE(kalmia::CanBeTable(-1, 0));
  EXPECT_FALSE(kalmia::CanBeTable(0, -1));
}

TEST(SizeLimit, TheErrorNamesTheSizeAndTheLimit) {
  EXPECT_EQ(Refusal([] { kalmia::RequireTableSize(70000, 80000); }),
            "A table cannot have 70000 rows and 80000 columns: the most is 2147483647 cells.");
  EXPECT_EQ(Refusal([] { kalmia::RequireVectorSize(3000000000); }),
            "A vector cannot have 3000000000 cells: the most is 2147483647.");
}

template <class T>
class SizeLimitOf : public ::testing::Test {
 protected:
  using Matrix = NCDataMatrix<T>;
  using Vector = NCDataVector<T>;

  /// A table of so many rows that all share one row of cells.
  static Matrix OfOneRow(int rows, int columns) {
    Matrix m;
    const Vector row(columns, T(1));
    m.ReserveRows(rows + 1);
    for (int r = 1; r <= rows; ++r) m.push_back(row);
    return m;
  }
  static void ExpectRefused(const std::function<void()>& grow) {
    EXPECT_NE(Refusal(grow).find("the most is 2147483647"), std::string::npos);
  }
  /// The table as it was, to its counts.
  static void ExpectUnchanged(const Matrix& m, int rows, int columns) {
    EXPECT_EQ(m.SizeRows(), rows);
    EXPECT_EQ(m.SizeColumns(), columns);
    EXPECT_TRUE(HasExactCounts(m));
  }
};
TYPED_TEST_SUITE(SizeLimitOf, CellTypes, CellTypeNames);

TYPED_TEST(SizeLimitOf, ATableIsHeldByItsConstructorAndByItsSizes) {
  using Matrix = NCDataMatrix<TypeParam>;
  this->ExpectRefused([] { Matrix(kTwoTo16, kTwoTo15); });
  this->ExpectRefused([] { Matrix(kTwoTo16, kTwoTo16, 1); });
  this->ExpectRefused([] { Matrix(-1, 3); });
  this->ExpectRefused([] { Matrix(3, -1); });
  Matrix m(2, 3, 1);
  this->ExpectRefused([&] { m.SetSize(kTwoTo16, kTwoTo15); });
  this->ExpectRefused([&] { m.SetSize(-1, 3); });
  this->ExpectRefused([&] { m.Resize(kTwoTo16, kTwoTo15); });
  this->ExpectRefused([&] { m.Resize(1, -1); });
  this->ExpectUnchanged(m, 2, 3);
}

TYPED_TEST(SizeLimitOf, ATableIsHeldWhereRowsAreAdded) {
  using Matrix = NCDataMatrix<TypeParam>;
  using Vector = NCDataVector<TypeParam>;
  Matrix m = this->OfOneRow(kTwoTo15 - 1, kTwoTo16);
  const Vector row(m[1]);
  this->ExpectRefused([&] { m.push_back(row); });
  this->ExpectRefused([&] { m.InsertRow(1, row); });
  this->ExpectRefused([&] { m.InsertRows(1, 1); });
  this->ExpectRefused([&] { m.InsertRows(1, INT_MAX); });
  this->ExpectRefused([&] { m.ConcatRows(m); });
  EXPECT_EQ(m.SizeRows(), kTwoTo15 - 1);
  EXPECT_EQ(m.GetNumMisVal(), 0);
  m.RemoveRows(1, 1);
  m.push_back(row);
  EXPECT_EQ(m.SizeRows(), kTwoTo15 - 1) << "up to the limit it grows";

  Matrix withoutColumns(1, 0);
  this->ExpectRefused([&] { withoutColumns.InsertRows(1, INT_MAX); });
  this->ExpectUnchanged(withoutColumns, 1, 0);
}

TYPED_TEST(SizeLimitOf, ATableIsHeldWhereColumnsAreAdded) {
  using Matrix = NCDataMatrix<TypeParam>;
  Matrix m(kTwoTo16, 1, 1);
  const Matrix wide(0, kTwoTo15 - 1);
  const NCIntegralVector<int, -99> again(kTwoTo15, 1);
  const std::vector<int> order(kTwoTo15, 1);
  this->ExpectRefused([&] { m.InsertColumns(1, kTwoTo15 - 1); });
  this->ExpectRefused([&] { m.InsertColumns(1, INT_MAX); });
  this->ExpectRefused([&] { m.InsertColumns(1, wide); });
  this->ExpectRefused([&] { m.ConcatColumns(wide); });
  this->ExpectRefused([&] { m.ReduceColumns(again); });
  this->ExpectRefused([&] { m.RearrangeColumns(order); });
  this->ExpectUnchanged(m, kTwoTo16, 1);
}

TYPED_TEST(SizeLimitOf, AProductThatWouldBeLargerIsRefused) {
  using Matrix = NCDataMatrix<TypeParam>;
  const Matrix tall(kTwoTo16, 1, 1), wide = this->OfOneRow(1, kTwoTo15);
  this->ExpectRefused([&] { tall * wide; });
  this->ExpectRefused([&] { tall.MatrixMultiply(tall, false, true); });
}

TYPED_TEST(SizeLimitOf, AVectorIsHeldWhereItGrows) {
  NCDataVector<TypeParam> v(2, TypeParam(1));
  this->ExpectRefused([&] { v.InsertValues(1, INT_MAX, 1); });
  this->ExpectRefused([&] { v.InsertValues(1, -3, 1); });
  this->ExpectRefused([&] { v.InsertValues(1, -1, 1); });  // although a vector of one cell could be
  this->ExpectRefused([&] { v.SetSize(-1); });
  this->ExpectRefused([&] { v.Resize(-1); });
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{1, 1}));
}

TYPED_TEST(SizeLimitOf, ATableTakesNoFewerThanNoNewRowsAndColumns) {
  NCDataMatrix<TypeParam> m(2, 2, TypeParam(1));
  this->ExpectRefused([&] { m.InsertRows(1, -1); });
  this->ExpectRefused([&] { m.InsertColumns(1, -1); });
  this->ExpectUnchanged(m, 2, 2);
}

template <class V>
void ExpectIntegralVectorHeld() {
  V v(2, 1);
  for (const std::function<void()>& grow : std::vector<std::function<void()>>{
           [&] { v.InsertValues(1, INT_MAX, 1); }, [&] { v.InsertValues(1, -1, 1); }, [&] { v.SetSize(-1); }, [&] { v.SetNumValues(-1, 1); },
           [&] { v.Resize(-1); }, [] { V(-1, 1); },
           [] { V(static_cast<const typename V::value_type*>(nullptr), -1); }})
    EXPECT_NE(Refusal(grow).find("the most is 2147483647"), std::string::npos);
  EXPECT_EQ(v.Size(), 2);
}

TEST(SizeLimitOfWholeNumbers, AVectorIsHeldWhereItGrows) {
  ExpectIntegralVectorHeld<NCIntegralVector<int, -99>>();
  ExpectIntegralVectorHeld<NCIntegralVector<unsigned long, 0>>();
  ExpectIntegralVectorHeld<BoolVector>();
}

TEST(SizeLimitOfNames, AListIsHeldWhereItGrows) {
  NCStringVector names(2);
  EXPECT_EQ(Refusal([&] { names.InsertStrings(1, INT_MAX); }),
            "A vector cannot have 2147483649 cells: the most is 2147483647.");
  EXPECT_EQ(names.Size(), 2);
}

TEST(SizeLimitOfNumbersThatAreNotListed, ARangeIsHeld) {
  const NCIntegralVector<int, -99> listed(1, 5);
  EXPECT_NE(Refusal([&] { delete NCMatUtilities::ComplementVector(&listed, INT_MAX, 0); }), "not refused");
  EXPECT_NE(Refusal([&] { delete NCMatUtilities::ComplementVector(&listed, INT_MAX, INT_MIN); }), "not refused");
}

}  // namespace
