#include "kalmia/analysis/validation/ClassFigures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "kalmia/analysis/validation/RandomDraws.h"

namespace kalmia::analysis {
namespace {

using ::testing::DoubleEq;
using ::testing::ElementsAre;
using ::testing::IsNan;

/// Values by which each row goes to the class given for it, and to no class for -1.
RealMatrix ValuesOf(const std::vector<int>& assigned, std::size_t classes) {
  RealMatrix values(assigned.size(), classes);
  for (std::size_t i = 0; i < assigned.size(); ++i) {
    for (std::size_t g = 0; g < classes; ++g) {
      values(i, g) = assigned[i] < 0 ? kNotANumber : (static_cast<int>(g) == assigned[i] ? 0.0 : -1.0);
    }
  }
  return values;
}

TEST(ClassFigures, CountWhatIsFoundAndWhatIsMistaken) {
  // Of four rows of class 0 three are found and one is taken for 1, of two of class 1 one, of one of class 2 none.
  const ClassFigures figures = JudgeClasses({0, 0, 0, 0, 1, 1, 2}, ValuesOf({0, 0, 0, 1, 1, 0, 0}, 3));
  EXPECT_THAT(figures.confusion, ElementsAre(ElementsAre(3, 1, 0), ElementsAre(1, 1, 0), ElementsAre(1, 0, 0)));
  EXPECT_DOUBLE_EQ(figures.accuracy, 4.0 / 7);
  EXPECT_DOUBLE_EQ(figures.balancedAccuracy, (3.0 / 4 + 1.0 / 2 + 0.0) / 3);
  EXPECT_THAT(figures.sensitivity, ElementsAre(0.75, 0.5, 0.0));
  EXPECT_THAT(figures.specificity, ElementsAre(DoubleEq(1.0 / 3), DoubleEq(4.0 / 5), 1.0));
}

TEST(ClassFigures, LeaveRowsWithoutAClassOrWithoutValuesOut) {
  const ClassFigures figures = JudgeClasses({0, 1, -1, 1, 0}, ValuesOf({0, 1, 0, -1, -1}, 2));
  EXPECT_THAT(figures.confusion, ElementsAre(ElementsAre(1, 0), ElementsAre(0, 1)));
  EXPECT_EQ(figures.unpredictedRows, 2);
  EXPECT_EQ(figures.accuracy, 1.0);
  EXPECT_THAT(figures.auc, ElementsAre(1.0, 1.0));
}

TEST(ClassFigures, OfAClassWithoutRowsAreNoNumbers) {
  const ClassFigures figures = JudgeClasses({0, 0, 1}, ValuesOf({0, 1, 1}, 3));
  EXPECT_THAT(figures.sensitivity, ElementsAre(0.5, 1.0, IsNan()));
  EXPECT_THAT(figures.specificity, ElementsAre(1.0, 0.5, 1.0));
  EXPECT_DOUBLE_EQ(figures.balancedAccuracy, 0.75);
  EXPECT_THAT(figures.auc[2], IsNan());
}

TEST(ClassFigures, OfNoRowAreNoNumbers) {
  const ClassFigures figures = JudgeClasses({-1, 0}, ValuesOf({0, -1}, 2));
  EXPECT_THAT(figures.accuracy, IsNan());
  EXPECT_THAT(figures.balancedAccuracy, IsNan());
  EXPECT_THAT(figures.specificity, ElementsAre(IsNan(), IsNan()));
}

TEST(ClassFigures, OfRowsThatAllGoToOneClassComeAsTheyAre) {
  const ClassFigures figures = JudgeClasses({0, 0, 1, 1}, RealMatrix(4, 2, 0.0));
  EXPECT_THAT(figures.confusion, ElementsAre(ElementsAre(2, 0), ElementsAre(2, 0)));
  EXPECT_EQ(figures.accuracy, 0.5);
  EXPECT_THAT(figures.auc, ElementsAre(0.5, 0.5));
}

/// One pair after the other.
double PlainArea(const std::vector<double>& scores, const std::vector<bool>& isPositive) {
  double area = 0.0, pairs = 0.0;
  for (std::size_t i = 0; i < scores.size(); ++i) {
    for (std::size_t j = 0; j < scores.size(); ++j) {
      if (!isPositive[i] || isPositive[j]) continue;
      pairs += 1.0;
      area += scores[i] > scores[j] ? 1.0 : (scores[i] == scores[j] ? 0.5 : 0.0);
    }
  }
  return area / pairs;
}

TEST(AreaUnderCurve, IsTheShareOfPairsInOrderWithTiesAsHalf) {
  RandomDraws draws(1);
  for (int table = 0; table < 20; ++table) {
    std::vector<double> scores;
    std::vector<bool> isPositive;
    for (int i = 0; i < 60; ++i) {
      scores.push_back(static_cast<double>(draws.Below(table < 10 ? 8 : 1000000)));
      isPositive.push_back(i < 2 ? i == 0 : draws.Below(3) == 0);
    }
    // Counts of halves are exact in double.
    EXPECT_EQ(AreaUnderCurve(scores, isPositive), PlainArea(scores, isPositive));
  }
}

TEST(AreaUnderCurve, TakesInfiniteScoresAndLeavesOutThoseThatAreNoNumbers) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(AreaUnderCurve({infinity, 1.0, -infinity}, {true, false, false}), 1.0);
  EXPECT_EQ(AreaUnderCurve({-infinity, 1.0, -infinity}, {true, false, false}), 0.25);
  EXPECT_EQ(AreaUnderCurve({2.0, kNotANumber, 1.0}, {true, false, false}), 1.0);
}

TEST(AreaUnderCurve, WithoutAPairIsNoNumber) {
  EXPECT_THAT(AreaUnderCurve({1.0, 2.0}, {true, true}), IsNan());
  EXPECT_THAT(AreaUnderCurve({1.0, 2.0}, {false, false}), IsNan());
  EXPECT_THAT(AreaUnderCurve({}, {}), IsNan());
}

}  // namespace
}  // namespace kalmia::analysis
