#include "kalmia/signal/NCTransform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "kalmia/support/LanguageString.h"
#include "signal/TransformTables.h"
#include "signal/Transforms.h"

namespace {

using ::testing::ElementsAre;
using T = TransformE;
using Table = NCDataMatrix<float>;
using Errors = std::unique_ptr<NCTransformErrors>;

const char* const kForwardText = "A value lies outside the domain of the transformation and is missing now.";
const char* const kCountText =
    "The table does not have the number of variables that the transformations were made for.";

/// Three columns: linear, logarithm, logarithm.
NCTransform ThreeColumns() {
  NCTransform transform(3);
  transform[1] = TransformOf(T::TransformLinear, 2, 1);
  transform[2] = TransformOf(T::TransformLog, 1, 0);
  transform[3] = TransformOf(T::TransformLog, 1, 0);
  return transform;
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

TEST(NCTransform, RefusesANegativeNumberOfColumns) { EXPECT_THROW(NCTransform(-1), NCError); }

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
  const std::pair<NCTransform, int> kBad[] = {{ThreeColumns(), 2}, {ThreeColumns(), 4}, {ThreeColumns(), 0},
                                              {NCTransform(), 1},  {NCTransform(0), 1}};
  for (const auto& [transform, columns] : kBad) {
    SCOPED_TRACE(testing::Message() << columns << " columns against " << transform.Size());
    const Table before = RandomMatrix<float>(4, columns, 0.2, 1);
    Table table(before);
    try {
      transform.TransformMatrix(&table);
      FAIL() << "no error";
    } catch (const NCTransformError& error) {
      EXPECT_EQ(error.Row, 0);
      EXPECT_EQ(error.Column, 0);
      EXPECT_EQ(error.Code, NCTransformError::ErrorColumnCount);
      EXPECT_STREQ(error.GetMessage(), kCountText);
    }
    const Errors errors(transform.TransformMatrixNoBreak(&table));
    ASSERT_NE(errors, nullptr);
    EXPECT_THAT(PlacesOf(*errors), ElementsAre(std::pair(0, 0)));
    EXPECT_EQ(errors->GetFirstError()->Code, NCTransformError::ErrorColumnCount);
    EXPECT_STREQ(errors->GetFirstError()->GetMessage(), kCountText);
    EXPECT_EQ(CellsOf(table), CellsOf(before));
    EXPECT_TRUE(HasExactCounts(table));
  }
}

TEST(NCTransform, ChangesAndReportsNothingAsItIsBuilt) {
  Table table = TableOfAllSorts();
  const auto before = BitsOf(table);
  EXPECT_NO_THROW(NCTransform(3).TransformMatrix(&table));
  EXPECT_EQ(NCTransform(3).TransformMatrixNoBreak(&table), nullptr);
  EXPECT_EQ(BitsOf(table), before);
  EXPECT_TRUE(HasExactCounts(table));
}

TEST(NCTransform, HasNothingToDoWithoutColumns) {
  for (const NCTransform& transform : {NCTransform(), NCTransform(0)}) {
    Table table;
    transform.TransformMatrix(&table);
    EXPECT_EQ(transform.TransformMatrixNoBreak(&table), nullptr);
  }
}

TEST(NCTransform, TakesItsTextFromTheLanguage) {
  LanguageString::Set(10101, "Falsche Zahl");
  Table table(1, 2);
  const Errors errors(ThreeColumns().TransformMatrixNoBreak(&table));
  LanguageString::Set(10101, nullptr);
  EXPECT_STREQ(errors->GetFirstError()->GetMessage(), "Falsche Zahl");
}

}  // namespace
