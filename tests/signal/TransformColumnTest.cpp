#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <utility>

#include "kalmia/support/LanguageString.h"
#include "signal/TransformTables.h"
#include "signal/Transforms.h"
#include "testing/AllocationMeter.h"

namespace {

using ::testing::ElementsAre;
using T = TransformE;
using Table = NCDataMatrix<float>;
using Errors = std::unique_ptr<NCTransformErrors>;

const char* const kForwardText = "A value lies outside the domain of the transformation and is missing now.";
const char* const kBackText = "A value lies outside the domain of the inverse transformation.";

TEST(TransformColumn, TransformsAColumnAndReturnsNullIfNothingFailed) {
  Table table = MatrixOf<float>({{1, 10}, {kMissing, 100}, {3, 1000}});
  EXPECT_EQ(TransformOf(T::TransformLinear, 2, 1).TransformColumn(&table, 1), nullptr);
  EXPECT_THAT(CellsOf(table), ElementsAre(ElementsAre(3, 10), ElementsAre(kMissing, 100), ElementsAre(7, 1000)));
  EXPECT_TRUE(HasExactCounts(table));
  EXPECT_EQ(TransformOf(T::TransformLinear, 2, 1).BackTransformColumn(&table, 1), nullptr);
  EXPECT_THAT(CellsOf(table), ElementsAre(ElementsAre(1, 10), ElementsAre(kMissing, 100), ElementsAre(3, 1000)));
}

TEST(TransformColumn, ListsEachFailedCellAndCountsIt) {
  Table table = BadTable();
  const Errors errors(TransformOf(T::TransformLog, 1, 0).TransformColumn(&table, 2));
  ASSERT_NE(errors, nullptr);
  EXPECT_THAT(PlacesOf(*errors), ElementsAre(std::pair(2, 2), std::pair(3, 2)));
  for (const NCTransformError* e = errors->GetFirstError(); e; e = errors->GetNextError()) {
    EXPECT_EQ(e->Code, NCTransformError::ErrorCalculation);
    EXPECT_STREQ(e->GetMessage(), kForwardText);
  }
  EXPECT_THAT(CellsOf(table.GetColumn(2)), ElementsAre(1, kMissing, kMissing, kMissing));
  EXPECT_EQ(table.GetColumnMisVal(2), 3);
  EXPECT_EQ(table.GetNumMisVal(), 5);
  EXPECT_TRUE(HasExactCounts(table));
}

TEST(TransformColumn, ListsWhatHasNoInverse) {
  Table table = MatrixOf<float>({{0, -1}, {1, 4}});
  const Errors errors(TransformOf(T::TransformPower, 1, 0, 2).BackTransformColumn(&table, 2));
  ASSERT_NE(errors, nullptr);
  EXPECT_THAT(PlacesOf(*errors), ElementsAre(std::pair(1, 2)));
  EXPECT_STREQ(errors->GetFirstError()->GetMessage(), kBackText);
  EXPECT_THAT(CellsOf(table.GetColumn(2)), ElementsAre(kMissing, 2));
  EXPECT_TRUE(HasExactCounts(table));
}

TEST(TransformColumn, ListsCellsThatALinearInverseLeavesAsTheyAre) {
  Table table = MatrixOf<float>({{5}, {kMissing}, {7}});
  const Errors errors(TransformOf(T::TransformLinear, 0, 1).BackTransformColumn(&table, 1));
  ASSERT_NE(errors, nullptr);
  EXPECT_THAT(PlacesOf(*errors), ElementsAre(std::pair(1, 1), std::pair(3, 1)));
  EXPECT_STREQ(errors->GetFirstError()->GetMessage(), kBackText);
  EXPECT_THAT(CellsOf(table.GetColumn(1)), ElementsAre(5, kMissing, 7));
  EXPECT_EQ(table.GetNumMisVal(), 1);
  EXPECT_TRUE(HasExactCounts(table));
}

TEST(TransformColumn, CountsALinearResultThatIsAHoleByAccident) {
  Table table = MatrixOf<float>({{1}, {2}});
  EXPECT_EQ(TransformOf(T::TransformLinear, 1, -100).TransformColumn(&table, 1), nullptr);
  EXPECT_EQ(table.GetNumMisVal(), 1);
  EXPECT_TRUE(HasExactCounts(table));
}

TEST(TransformColumn, CountsAnInverseThatIsAHoleByAccident) {
  for (const T::Transform type : {T::TransformLinear, T::TransformPower}) {  // those whose result is not tested
    Table table = MatrixOf<float>({{1}, {2}});
    EXPECT_EQ(TransformOf(type, 1, 100, 1).BackTransformColumn(&table, 1), nullptr);
    EXPECT_THAT(CellsOf(table.GetColumn(1)), ElementsAre(-99, -98));
    EXPECT_EQ(table.GetNumMisVal(), 1);
    EXPECT_TRUE(HasExactCounts(table));
  }
}

TEST(TransformColumn, ChangesAndReportsNothingWithAKindThatDoesNothing) {
  for (const T::Transform type : {T::TransformUndefined, T::TransformNone}) {
    Table table = TableOfAllSorts();
    const auto before = BitsOf(table);
    EXPECT_EQ(TransformOf(type, 2, 3, 4).TransformColumn(&table, 1), nullptr);
    EXPECT_EQ(TransformOf(type, 0, 3, 4).BackTransformColumn(&table, 2), nullptr);
    EXPECT_EQ(BitsOf(table), before);
    EXPECT_TRUE(HasExactCounts(table));
  }
}

TEST(TransformColumn, TransformsRowsThatShareCellsEachOnItsOwn) {
  Table table = MatrixOf<float>({{10, 5}, {20, 6}, {30, 7}});
  table.CopyRow(1, 2);
  table.CopyRow(1, 3);
  ASSERT_THAT(CellsOf(table.GetColumn(1)), ElementsAre(10, 10, 10));
  EXPECT_EQ(TransformOf(T::TransformLinear, 2, 1).TransformColumn(&table, 1), nullptr);
  EXPECT_THAT(CellsOf(table), ElementsAre(ElementsAre(21, 5), ElementsAre(21, 5), ElementsAre(21, 5)));
}

TEST(TransformColumn, LeavesTheRowsFromTheUnlistedCellOnWhereMemoryRunsOut) {
  int failures = 0;
  for (int which = 1;; ++which, ++failures) {
    Table table = MatrixOf<float>({{100}, {-1}, {10}});
    try {
      const FailAllocation fail(which);
      const Errors errors(TransformOf(T::TransformLog, 1, 0).TransformColumn(&table, 1));
      if (!fail.HasFailed()) break;
      FAIL() << "allocation " << which << " was not missed";
    } catch (const std::bad_alloc&) {
    }
    const float first = table[1][1];
    EXPECT_TRUE(first == 2 || first == 100) << first;
    EXPECT_EQ(table[2][1], -1);
    EXPECT_EQ(table[3][1], 10);
    EXPECT_TRUE(HasExactCounts(table));
  }
  EXPECT_GT(failures, 0);
}

TEST(TransformColumn, LeavesWhatSharesCellsWithTheMatrixAlone) {
  Table table = MatrixOf<float>({{1, 10}, {2, 100}});
  const Table share(table);
  const NCDataVector<float> row(table[2]);
  EXPECT_EQ(TransformOf(T::TransformLog, 1, 0).TransformColumn(&table, 2), nullptr);
  EXPECT_THAT(CellsOf(table.GetColumn(2)), ElementsAre(1, 2));
  EXPECT_THAT(CellsOf(share), ElementsAre(ElementsAre(1, 10), ElementsAre(2, 100)));
  EXPECT_THAT(CellsOf(row), ElementsAre(2, 100));
}

TEST(TransformColumn, HasNothingToDoWithoutRows) {
  Table table(0, 2);
  EXPECT_EQ(TransformOf(T::TransformLog, 1, 0).TransformColumn(&table, 1), nullptr);
}

TEST(TransformColumn, TakesItsTextsFromTheLanguage) {
  for (const bool forward : {true, false}) {
    const unsigned id = forward ? 10100 : 10165;
    LanguageString::Set(id, "Werte ausserhalb");
    Table table = MatrixOf<float>({{-1}});
    const TransformStruct transform = TransformOf(forward ? T::TransformLog : T::TransformExp, 1, 0);
    const Errors errors(forward ? transform.TransformColumn(&table, 1) : transform.BackTransformColumn(&table, 1));
    LanguageString::Set(id, nullptr);
    ASSERT_NE(errors, nullptr);
    EXPECT_STREQ(errors->GetFirstError()->GetMessage(), "Werte ausserhalb");
  }
}

}  // namespace
