#include "kalmia/signal/NCTransform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "kalmia/support/LanguageString.h"
#include "signal/Transforms.h"
#include "testing/RandomTables.h"

namespace {

using ::testing::ElementsAre;
using T = TransformE;
using Table = NCDataMatrix<float>;
using Errors = std::unique_ptr<NCTransformErrors>;

constexpr float kMissing = -99;
const char* const kForwardText = "A value lies outside the domain of the transformation and is missing now.";
const char* const kBackText = "A value lies outside the domain of the inverse transformation and is missing now.";
const char* const kCountText =
    "The table does not have the number of variables that the transformations were made for.";

/// Row and column of each error, in the order of the list.
std::vector<std::pair<int, int>> PlacesOf(NCTransformErrors& errors) {
  std::vector<std::pair<int, int>> places;
  for (const NCTransformError* e = errors.GetFirstError(); e; e = errors.GetNextError())
    places.emplace_back(e->Row, e->Column);
  return places;
}

/// Three columns: linear, logarithm, logarithm.
NCTransform ThreeColumns() {
  NCTransform transform(3);
  transform[1] = TransformOf(T::TransformLinear, 2, 1);
  transform[2] = TransformOf(T::TransformLog, 1, 0);
  transform[3] = TransformOf(T::TransformLog, 1, 0);
  return transform;
}

/// Two bad cells in the second column, one in the third, and a hole in each.
Table BadTable() { return MatrixOf<float>({{1, 10, 100}, {kMissing, -1, kMissing}, {3, 0, -5}, {4, kMissing, 10}}); }

TEST(NCTransformError, SaysNothingWentWrongAtFirst) {
  const NCTransformError error;
  EXPECT_EQ(error.Code, NCTransformError::ErrorNone);
  EXPECT_EQ(error.Row, 0);
  EXPECT_EQ(error.Column, 0);
  EXPECT_STREQ(error.GetMessage(), "");
  EXPECT_EQ(NCTransformError::ErrorNone, 1);
  EXPECT_EQ(NCTransformError::ErrorCalculation, 2);
  EXPECT_EQ(NCTransformError::ErrorColumnCount, 3);
}

TEST(NCTransformError, TakesTheRowBeforeTheColumn) {
  const NCTransformError error(7, 3, NCTransformError::ErrorCalculation, "text");
  EXPECT_EQ(error.Row, 7);
  EXPECT_EQ(error.Column, 3);
  EXPECT_EQ(error.Code, 2);
  EXPECT_STREQ(error.GetMessage(), "text");
}

TEST(NCTransformError, ClonesAllOfItself) {
  const NCTransformError error(7, 3, NCTransformError::ErrorColumnCount, "text");
  const NCError& asBase = error;
  const std::unique_ptr<NCError> clone(asBase.Clone());
  const auto* twin = dynamic_cast<const NCTransformError*>(clone.get());
  ASSERT_NE(twin, nullptr);
  EXPECT_EQ(twin->Row, 7);
  EXPECT_EQ(twin->Column, 3);
  EXPECT_EQ(twin->Code, NCTransformError::ErrorColumnCount);
  EXPECT_STREQ(twin->GetMessage(), "text");
  NCTransformError assigned;
  assigned = error;
  EXPECT_EQ(assigned.Row, 7);
}

TEST(NCTransformErrors, HandsOutItsErrorsInTheirOrder) {
  NCTransformErrors errors;
  EXPECT_EQ(errors.Size(), 0);
  EXPECT_EQ(errors.GetFirstError(), nullptr);
  EXPECT_EQ(errors.GetNextError(), nullptr);
  for (int row = 1; row <= 3; ++row)
    errors.AddError(NCTransformError(row, 5, NCTransformError::ErrorCalculation, ""));
  EXPECT_EQ(errors.GetNextError(), nullptr) << "the position stays where it was, behind the last";
  EXPECT_EQ(errors.Size(), 3);
  for (int pass = 0; pass < 2; ++pass) {
    EXPECT_EQ(errors.GetFirstError()->Row, 1);
    EXPECT_EQ(errors.GetNextError()->Row, 2);
    EXPECT_EQ(errors.GetNextError()->Row, 3);
    EXPECT_EQ(errors.GetNextError(), nullptr);
    EXPECT_EQ(errors.GetNextError(), nullptr);
  }
}

TEST(NCTransformErrors, AppendsCopiesOfAnothersErrorsAndOfItsOwn) {
  NCTransformErrors one, two;
  one.AddError(NCTransformError(1, 1, NCTransformError::ErrorCalculation, ""));
  two.AddError(NCTransformError(2, 1, NCTransformError::ErrorCalculation, ""));
  two.AddError(NCTransformError(3, 1, NCTransformError::ErrorCalculation, ""));
  one.Append(two);
  EXPECT_THAT(PlacesOf(one), ElementsAre(std::pair(1, 1), std::pair(2, 1), std::pair(3, 1)));
  EXPECT_EQ(two.Size(), 2);
  two.Append(two);
  EXPECT_THAT(PlacesOf(two), ElementsAre(std::pair(2, 1), std::pair(3, 1), std::pair(2, 1), std::pair(3, 1)));
}

TEST(NCTransform, NumbersItsColumnsFromOne) {
  EXPECT_EQ(NCTransform().Size(), 0);
  EXPECT_EQ(NCTransform(0).Size(), 0);
  NCTransform transform(3);
  EXPECT_EQ(transform.Size(), 3);
  for (int c = 1; c <= 3; ++c) EXPECT_TRUE(transform[c] == TransformStruct());
  transform[3].SetTransform(T::TransformLog);
  const NCTransform& constant = transform;
  EXPECT_EQ(constant[3].GetTransform(), T::TransformLog);
}

TEST(NCTransform, CopiesShareNothing) {
  NCTransform original = ThreeColumns();
  const NCTransform copy(original);
  NCTransform assigned(1);
  assigned = original;
  original[2].SetTransform(T::TransformExp);
  EXPECT_EQ(copy[2].GetTransform(), T::TransformLog);
  EXPECT_EQ(assigned[2].GetTransform(), T::TransformLog);
  EXPECT_EQ(assigned.Size(), 3);
}

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
  EXPECT_THAT(CellsOf(table.GetColumn(1)), ElementsAre(5, kMissing, 7));
}

TEST(TransformColumn, CountsALinearResultThatIsAHoleByAccident) {
  Table table = MatrixOf<float>({{1}, {2}});
  EXPECT_EQ(TransformOf(T::TransformLinear, 1, -100).TransformColumn(&table, 1), nullptr);
  EXPECT_EQ(table.GetNumMisVal(), 1);
  EXPECT_TRUE(HasExactCounts(table));
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

TEST(NCTransform, TransformsEveryColumn) {
  Table table = MatrixOf<float>({{1, 10, 100}, {2, 1, 10}});
  ThreeColumns().TransformMatrix(&table);
  EXPECT_THAT(CellsOf(table), ElementsAre(ElementsAre(3, 1, 2), ElementsAre(5, 0, 1)));
}

TEST(NCTransform, StopsBehindTheFirstColumnThatFails) {
  Table table = BadTable();
  try {
    ThreeColumns().TransformMatrix(&table);
    FAIL() << "no error";
  } catch (const NCTransformError& error) {
    EXPECT_EQ(error.Row, 2);
    EXPECT_EQ(error.Column, 2);
    EXPECT_EQ(error.Code, NCTransformError::ErrorCalculation);
    EXPECT_STREQ(error.GetMessage(), kForwardText);
  }
  EXPECT_THAT(CellsOf(table), ElementsAre(ElementsAre(3, 1, 100), ElementsAre(kMissing, kMissing, kMissing),
                                          ElementsAre(7, kMissing, -5), ElementsAre(9, kMissing, 10)));
  EXPECT_TRUE(HasExactCounts(table));
}

TEST(NCTransform, GoesThroughAllColumnsWithoutABreak) {
  Table table = BadTable();
  const Errors errors(ThreeColumns().TransformMatrixNoBreak(&table));
  ASSERT_NE(errors, nullptr);
  EXPECT_THAT(PlacesOf(*errors), ElementsAre(std::pair(2, 2), std::pair(3, 2), std::pair(3, 3)));
  EXPECT_THAT(CellsOf(table), ElementsAre(ElementsAre(3, 1, 2), ElementsAre(kMissing, kMissing, kMissing),
                                          ElementsAre(7, kMissing, kMissing), ElementsAre(9, kMissing, 1)));
  EXPECT_TRUE(HasExactCounts(table));
  Table good = MatrixOf<float>({{1, 10, 100}});
  EXPECT_EQ(ThreeColumns().TransformMatrixNoBreak(&good), nullptr);
}

TEST(NCTransform, RefusesAnotherNumberOfColumnsBeforeItTouchesACell) {
  const Table before = RandomMatrix<float>(4, 2, 0.2, 1);
  Table table(before);
  try {
    ThreeColumns().TransformMatrix(&table);
    FAIL() << "no error";
  } catch (const NCTransformError& error) {
    EXPECT_EQ(error.Row, 0);
    EXPECT_EQ(error.Column, 0);
    EXPECT_EQ(error.Code, NCTransformError::ErrorColumnCount);
    EXPECT_STREQ(error.GetMessage(), kCountText);
  }
  const Errors errors(ThreeColumns().TransformMatrixNoBreak(&table));
  ASSERT_NE(errors, nullptr);
  EXPECT_EQ(errors->Size(), 1);
  EXPECT_EQ(errors->GetFirstError()->Code, NCTransformError::ErrorColumnCount);
  EXPECT_STREQ(errors->GetFirstError()->GetMessage(), kCountText);
  EXPECT_EQ(CellsOf(table), CellsOf(before));
}

TEST(NCTransform, HasNothingToDoWithoutColumns) {
  for (const NCTransform& transform : {NCTransform(), NCTransform(0)}) {
    Table table;
    transform.TransformMatrix(&table);
    EXPECT_EQ(transform.TransformMatrixNoBreak(&table), nullptr);
  }
}

TEST(NCTransform, TakesItsTextsFromTheLanguage) {
  LanguageString::Set(10100, "Werte ausserhalb");
  Table table = MatrixOf<float>({{-1}});
  const Errors errors(TransformOf(T::TransformLog, 1, 0).TransformColumn(&table, 1));
  LanguageString::Set(10100, nullptr);
  EXPECT_STREQ(errors->GetFirstError()->GetMessage(), "Werte ausserhalb");
}

}  // namespace
