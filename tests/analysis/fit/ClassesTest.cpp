#include "kalmia/analysis/fit/Classes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::IsNan;

TEST(Classes, AreNumberedInTheOrderOfTheBytesOfTheirNames) {
  const Classes classes = ClassesOf({"b", "a", "B", "\xc3\xa4", "b", "a", "B", "", "\xc3\xa4"});
  EXPECT_THAT(classes.names, ElementsAre("B", "a", "b", "\xc3\xa4"));
  EXPECT_THAT(classes.classOfRow, ElementsAre(2, 1, 0, 3, 2, 1, 0, -1, 3));
}

TEST(Classes, HaveADummyColumnEachWithoutCellsInRowsWithoutAClass) {
  const RealMatrix dummies = DummiesOf(ClassesOf({"b", "a", "", "a", "b"}));
  EXPECT_EQ(dummies.rows, 5U);
  EXPECT_EQ(dummies.columns, 2U);
  EXPECT_THAT(dummies.cells, ElementsAre(0, 1, 1, 0, IsNan(), IsNan(), 1, 0, 0, 1));
}

TEST(Classes, RefuseASingleClassAndAClassOfASingleRow) {
  EXPECT_EQ(FailureOf<BadData>([] { ClassesOf({"a", "", "a"}); }), "a discriminant analysis takes two classes or more");
  EXPECT_EQ(FailureOf<BadData>([] { ClassesOf({"", ""}); }), "a discriminant analysis takes two classes or more");
  EXPECT_EQ(FailureOf<BadData>([] { ClassesOf({"a", "once", "a", "b", "b"}); }), "the class 'once' has a single row");
}

}  // namespace
}  // namespace kalmia::analysis
