#include "kalmia/analysis/model/DiscriminantRule.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/ClassFigures.h"
#include "kalmia/analysis/fit/Classes.h"
#include "kalmia/analysis/validation/Folds.h"
#include "model/IrisLogOdds.h"
#include "validation/PlainPls.h"

namespace kalmia::analysis {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsNan;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct ClassTable {
  RealMatrix x;
  Classes classes;
};

ClassTable Iris() { return {ColumnsOfFile(PathOfIris(), 1, 4), ClassesOf(WordsOfFile(PathOfIris(), 5))}; }
ClassTable Wine() { return {ColumnsOfFile(PathOfWine(), 2, 13), ClassesOf(WordsOfFile(PathOfWine(), 1))}; }

/// Values of each row by a model and a rule that were learnt without it, in seven rounds; `largest` counts the rows
/// whose own dummy is the largest one.
RealMatrix LeftOutValues(const ClassTable& table, int components, int* largest) {
  const RealMatrix dummies = DummiesOf(table.classes);
  const Folds folds = MakeFolds(table.x.rows, FoldRecipe());
  RealMatrix values(dummies.rows, dummies.columns);
  *largest = 0;
  ForRounds(table.x, dummies, folds, components, [&](const PlainPls& model, const std::vector<std::size_t>& leftOut) {
    std::vector<int> known = table.classes.classOfRow;
    for (const std::size_t i : leftOut) known[i] = -1;
    const RealMatrix& predicted = model.predicted.back();
    const RealMatrix all = DiscriminantValues(LearnDiscriminantRule(predicted, known, ClassPriors::Equal), predicted);
    const std::vector<int> byDummy = AssignedClasses(predicted);
    for (const std::size_t i : leftOut) {
      for (std::size_t c = 0; c < values.columns; ++c) values(i, c) = all(i, c);
      *largest += byDummy[i] == table.classes.classOfRow[i] ? 1 : 0;
    }
  });
  return values;
}

TEST(DiscriminantRule, GivesIrisesTheLogOddsOfScikitLearn) {
  const ClassTable iris = Iris();
  const std::vector<bool> all(150, true);
  const RealMatrix fitted = FitPlainPls(iris.x, DummiesOf(iris.classes), all, 3).predicted.back();
  const DiscriminantRule rule = LearnDiscriminantRule(fitted, iris.classes.classOfRow, ClassPriors::Equal);
  EXPECT_EQ(rule.directions.rows, 2U);
  const RealMatrix odds = LogOdds(DiscriminantValues(rule, fitted));
  for (const auto& iris3 : LogOddsOfScikitLearn()) {
    for (std::size_t g = 0; g < 3; ++g) {
      // S with 1e-8 of the total trace, 0.4, on its diagonal: the least eigenvalue of S is 0.01, so 4e-7 of all values,
      // of which the largest here are some 100.
      EXPECT_NEAR(odds(iris3.row - 1, g), iris3.odds[g], 4e-5) << iris3.row << " " << g;
    }
  }
}

TEST(DiscriminantRule, FindsLeftOutIrisesThatTheLargestDummyHides) {
  // data/iris_log_odds.py, scikit-learn 1.2.1: confusion and AUC of two, three and four components
  const struct {
    int components;
    std::vector<std::vector<int>> confusion;
    double auc;
    int largest;
  } expected[] = {{2, {{50, 0, 0}, {0, 44, 6}, {0, 6, 44}}, 0.9782, 121},
                  {3, {{50, 0, 0}, {0, 48, 2}, {0, 3, 47}}, 0.9964, 124},
                  {4, {{50, 0, 0}, {0, 48, 2}, {0, 1, 49}}, 0.9964, 122}};
  const ClassTable iris = Iris();
  for (const auto& models : expected) {
    int largest = 0;
    const ClassFigures figures =
        JudgeClasses(iris.classes.classOfRow, LeftOutValues(iris, models.components, &largest));
    EXPECT_EQ(figures.confusion, models.confusion);
    EXPECT_EQ(largest, models.largest);  // the middle class lies between the two others
    EXPECT_EQ(figures.auc[0], 1.0);
    for (const std::size_t g : {1U, 2U}) EXPECT_DOUBLE_EQ(figures.auc[g], models.auc);  // 5000 pairs, in whole numbers
  }
}

TEST(DiscriminantRule, FindsLeftOutWines) {
  // 174, 175 and 175 of 178 by an independent program in double precision.
  const ClassTable wine = Wine();
  const int right[] = {174, 175, 175};
  for (int components = 2; components <= 4; ++components) {
    int largest = 0;
    const ClassFigures figures = JudgeClasses(wine.classes.classOfRow, LeftOutValues(wine, components, &largest));
    EXPECT_DOUBLE_EQ(figures.accuracy * 178, right[components - 2]);
  }
}

/// Dummies of two classes that add up to 1, from those of the first.
RealMatrix TwoDummies(const std::vector<double>& first) {
  RealMatrix dummies(first.size(), 2);
  for (std::size_t i = 0; i < first.size(); ++i) {
    dummies(i, 0) = first[i];
    dummies(i, 1) = 1.0 - first[i];
  }
  return dummies;
}

TEST(DiscriminantRule, OfTwoClassesHasOneDirection) {
  // In the direction (1, -1) / sqrt 2 the dummies 0.8 1 | 0 0.2 have the pooled variance 0.04, and 0.6 lies sqrt(0.18)
  // from the first mean and sqrt(0.5) from the other: v = -0.18 / 0.08 and -0.5 / 0.08. What is added to S, 1e-8 of the
  // total variance 0.45, is 1e-7 of it.
  const RealMatrix fitted = TwoDummies({0.8, 1.0, 0.0, 0.2});
  const DiscriminantRule rule = LearnDiscriminantRule(fitted, {0, 0, 1, 1}, ClassPriors::Equal);
  EXPECT_EQ(rule.directions.rows, 1U);
  const RealMatrix values = DiscriminantValues(rule, TwoDummies({0.6, 0.4}));
  EXPECT_NEAR(values(0, 0), std::log(0.5) - 2.25, 1e-6);
  EXPECT_NEAR(values(0, 1), std::log(0.5) - 6.25, 1e-6);
  EXPECT_THAT(AssignedClasses(values), ElementsAre(0, 1));
  const RealMatrix odds = LogOdds(values);
  EXPECT_NEAR(odds(0, 0), 4.0, 1e-6);
  EXPECT_DOUBLE_EQ(odds(0, 1), -odds(0, 0));
}

TEST(DiscriminantRule, AddsAShareOfTheTotalVarianceToThatWithinClasses) {
  // Dummies 1 and 0 but for e = 5e-5: the variance within is 4 e^2 = 1e-8, the trace of the total covariance 2 / 3 of
  // 1 + 4 e^2, and 0.5 lies sqrt(0.5) from both means.
  const double e = 5e-5;
  const RealMatrix fitted = TwoDummies({1.0 + e, 1.0 - e, e, -e});
  const DiscriminantRule rule = LearnDiscriminantRule(fitted, {0, 0, 1, 1}, ClassPriors::Equal);
  const double expected = std::log(0.5) - 0.5 / (2.0 * (1e-8 + 1e-8 * 2.0 / 3.0 * (1.0 + 1e-8)));
  // The differences of 5e-5 have twelve digits.
  EXPECT_NEAR(DiscriminantValues(rule, TwoDummies({0.5}))(0, 0) / expected, 1.0, 1e-10);
}

TEST(DiscriminantRule, HasOneDirectionLessThanClassesWhateverTheDummiesAddUpTo) {
  RealMatrix fitted(6, 2);
  fitted.cells = {0.9, 0.3, 0.8, 0.1, 1.0, 0.4, 0.2, 0.5, 0.1, 0.9, 0.0, 0.7};
  EXPECT_EQ(LearnDiscriminantRule(fitted, {0, 0, 0, 1, 1, 1}, ClassPriors::Equal).directions.rows, 1U);
}

TEST(DiscriminantRule, WithPriorsOfTheDataMovesTowardsTheLargerClass) {
  const RealMatrix fitted = TwoDummies({0.8, 0.7, 0.9, 0.8, 0.7, 0.9, 0.1, 0.2});
  const std::vector<int> classOfRow = {0, 0, 0, 0, 0, 0, 1, 1};
  const RealMatrix middle = TwoDummies({0.5});
  const RealMatrix equal =
      DiscriminantValues(LearnDiscriminantRule(fitted, classOfRow, ClassPriors::Equal), middle);
  const RealMatrix shares =
      DiscriminantValues(LearnDiscriminantRule(fitted, classOfRow, ClassPriors::Shares), middle);
  EXPECT_NEAR(LogOdds(shares)(0, 0) - LogOdds(equal)(0, 0), std::log(6.0 / 2.0), 1e-12);  // values near 50
}

TEST(DiscriminantRule, WithoutComponentsTakesTheLargestPriorAndTheFirstOfEqualOnes) {
  // The mean of 49 zeros and ones as double has no short form: that of the means differs in its last bit.
  const RealMatrix alike(49, 3, 16.0 / 49.0);
  std::vector<int> classOfRow(49, 2);
  for (std::size_t i = 0; i < 16; ++i) classOfRow[i] = 0, classOfRow[48 - i] = 1;
  const DiscriminantRule equal = LearnDiscriminantRule(alike, classOfRow, ClassPriors::Equal);
  EXPECT_EQ(equal.directions.rows, 0U);
  EXPECT_THAT(AssignedClasses(DiscriminantValues(equal, alike)), Each(0));
  const DiscriminantRule shares = LearnDiscriminantRule(alike, classOfRow, ClassPriors::Shares);  // 16, 16, 17 rows
  EXPECT_THAT(AssignedClasses(DiscriminantValues(shares, alike)), Each(2));
}

TEST(DiscriminantRule, LeavesRowsWithoutAClassOrWithHolesOutAndAssignsTheFirst) {
  const RealMatrix whole = TwoDummies({0.8, 1.0, 0.0, 0.2});
  const RealMatrix more = TwoDummies({0.8, 1.0, 0.0, 0.2, 0.9, kNotANumber});
  const DiscriminantRule rule = LearnDiscriminantRule(whole, {0, 0, 1, 1}, ClassPriors::Equal);
  const DiscriminantRule other = LearnDiscriminantRule(more, {0, 0, 1, 1, -1, 0}, ClassPriors::Equal);
  EXPECT_EQ(rule.directions.cells, other.directions.cells);
  EXPECT_EQ(rule.centres.cells, other.centres.cells);
  const RealMatrix values = DiscriminantValues(other, more);
  EXPECT_THAT(AssignedClasses(values), ElementsAre(0, 0, 1, 1, 0, -1));
  EXPECT_THAT(values(5, 0), IsNan());
  EXPECT_THAT(LogOdds(values)(5, 1), IsNan());
}

TEST(DiscriminantRule, NeverAssignsAClassThatItHasNotSeen) {
  RealMatrix fitted(4, 3);  // the third dummy is 0 throughout
  const double first[] = {0.8, 1.0, 0.0, 0.2};
  for (std::size_t i = 0; i < 4; ++i) {
    fitted(i, 0) = first[i];
    fitted(i, 1) = 1.0 - first[i];
  }
  for (const ClassPriors priors : {ClassPriors::Equal, ClassPriors::Shares}) {
    const DiscriminantRule rule = LearnDiscriminantRule(fitted, {0, 0, 1, 1}, priors);
    EXPECT_EQ(rule.logPriors[2], -kInfinity);
    EXPECT_DOUBLE_EQ(rule.logPriors[0], std::log(0.5));
    const RealMatrix values = DiscriminantValues(rule, fitted);
    EXPECT_THAT(AssignedClasses(values), ElementsAre(0, 0, 1, 1));
    EXPECT_EQ(LogOdds(values)(0, 2), -kInfinity);
    EXPECT_TRUE(std::isfinite(LogOdds(values)(0, 0)));
  }
}

TEST(DiscriminantRule, LearnsFromOneRowOfEachClass) {  // no variance within, nor degrees for it
  const DiscriminantRule rule = LearnDiscriminantRule(TwoDummies({0.75, 0.25}), {0, 1}, ClassPriors::Equal);
  const RealMatrix values = DiscriminantValues(rule, TwoDummies({0.6, 0.4}));
  EXPECT_THAT(AssignedClasses(values), ElementsAre(0, 1));
  EXPECT_TRUE(std::isfinite(values(0, 0)) && std::isfinite(values(0, 1)));
}

TEST(DiscriminantRule, IsRegularWhereAWideTableFitsEveryDummy) {
  // Twelve components of 28 rows and 2000 columns of noise leave 3e-13 of each dummy, and within classes its square.
  RandomDraws draws(1);
  ClassTable table;
  table.x = RealMatrix(30, 2000);
  for (double& cell : table.x.cells) cell = static_cast<double>(draws.Below(1U << 20));
  std::vector<std::string> labels;
  for (int i = 0; i < 30; ++i) labels.emplace_back(i % 2 == 0 ? "even" : "odd");
  table.classes = ClassesOf(labels);
  std::vector<bool> isTraining(30, true);
  isTraining[0] = isTraining[1] = false;
  const RealMatrix fitted = FitPlainPls(table.x, DummiesOf(table.classes), isTraining, 12).predicted.back();
  std::vector<int> known = table.classes.classOfRow;
  known[0] = known[1] = -1;
  const DiscriminantRule rule = LearnDiscriminantRule(fitted, known, ClassPriors::Equal);
  EXPECT_EQ(rule.directions.rows, 1U);
  const RealMatrix values = DiscriminantValues(rule, fitted), odds = LogOdds(values);
  const std::vector<int> assigned = AssignedClasses(values);
  for (std::size_t i = 0; i < 30; ++i) {
    EXPECT_TRUE(std::isfinite(odds(i, 0)));
    EXPECT_DOUBLE_EQ(odds(i, 0), -odds(i, 1));
    const int byDummy = fitted(i, 0) > fitted(i, 1) ? 0 : 1;  // the same for new rows, as both classes are of one size
    EXPECT_EQ(assigned[i], isTraining[i] ? table.classes.classOfRow[i] : byDummy);
  }
}

TEST(DiscriminantRule, RefusesDummiesWhoseSquaresOverflow) {
  EXPECT_EQ(FailureOf<BadData>([] {
              LearnDiscriminantRule(TwoDummies({1e200, -1e200, 2e200, 0.0}), {0, 0, 1, 1}, ClassPriors::Equal);
            }),
            "the fitted classes are too large");
}

TEST(LogOdds, HoldWhereExponentialsWouldNot) {
  RealMatrix values(2, 3);
  values.cells = {-5000.0, -4000.0, -4000.0, -1e6, 0.0, -2e6};
  const RealMatrix odds = LogOdds(values);
  EXPECT_NEAR(odds(0, 0), -1000.0 - std::log(2.0), 1e-12);
  EXPECT_NEAR(odds(0, 1), 0.0, 1e-12);
  EXPECT_EQ(odds(1, 1), 1e6);
  EXPECT_EQ(odds(1, 2), -2e6);
}

}  // namespace
}  // namespace kalmia::analysis
