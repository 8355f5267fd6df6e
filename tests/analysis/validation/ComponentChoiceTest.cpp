#include "kalmia/analysis/validation/ComponentChoice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/RandomDraws.h"
#include "testing/RecordingProgress.h"
#include "validation/LeftOutGasoline.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::IsNan;

RealMatrix RowsOf(const std::vector<std::vector<double>>& rows) {
  RealMatrix matrix(rows.size(), rows.front().size());
  matrix.cells.clear();
  for (const std::vector<double>& row : rows) matrix.cells.insert(matrix.cells.end(), row.begin(), row.end());
  return matrix;
}

SelectionRecipe Rule(SelectionRule rule) {
  SelectionRecipe recipe;
  recipe.rule = rule;
  return recipe;
}

std::size_t ChosenOf(const RealMatrix& errors, SelectionRule rule) {
  return ChooseComponents(errors, Rule(rule)).chosen;
}

TEST(ComponentChoice, HasAWordForEachRule) {
  for (const SelectionRule rule :
       {SelectionRule::OneSE, SelectionRule::Randomisation, SelectionRule::Min, SelectionRule::Q2}) {
    EXPECT_EQ(SelectionRuleOfWord(WordOfSelectionRule(rule)), rule);
  }
  EXPECT_EQ(WordOfSelectionRule(SelectionRule::OneSE), "one-se");
  EXPECT_EQ(SelectionRuleOfWord("auto"), std::nullopt);
}

TEST(ComponentChoice, OfGasolineIsThatOfAnIndependentComputation) {
  // left_out_gasoline.py gives MSE, best number and limit of the rule of one standard error, by numpy 1.24.2.
  const LeftOutErrors uv = ReadLeftOutGasoline("uv").errors, centre = ReadLeftOutGasoline("centre").errors;
  const ComponentChoice choice = ChooseComponents(uv.rowErrors, SelectionRecipe());
  EXPECT_EQ(choice.chosen, 5U);
  EXPECT_EQ(choice.best, 5U);
  EXPECT_NEAR(choice.limit / 0.023775742751573556, 1.0, 1e-9);  // the file has twelve digits
  EXPECT_NEAR(choice.compared[4] / 0.024527555488149583, 1.0, 1e-9);
  const ComponentChoice other = ChooseComponents(centre.rowErrors, SelectionRecipe());
  EXPECT_EQ(other.chosen, 4U);
  EXPECT_EQ(other.best, 6U);
  EXPECT_NEAR(other.limit / 0.0262983048314048, 1.0, 1e-9);
}

TEST(ComponentChoice, OfGasolineDiffersFromRuleToRule) {
  const LeftOutErrors uv = ReadLeftOutGasoline("uv").errors, centre = ReadLeftOutGasoline("centre").errors;
  EXPECT_EQ(ChosenOf(uv.rowErrors, SelectionRule::Min), 5U);
  EXPECT_EQ(ChosenOf(centre.rowErrors, SelectionRule::Min), 6U);
  EXPECT_EQ(ChosenOf(uv.rowErrors, SelectionRule::Randomisation), 3U);
  EXPECT_EQ(ChosenOf(centre.rowErrors, SelectionRule::Randomisation), 3U);
  EXPECT_EQ(ChosenOf(uv.rowErrors, SelectionRule::Q2), 3U);  // the fourth gains 1.4 %, the fifth 18 %
}

TEST(ComponentChoice, OfOneStandardErrorTakesTheLeastNumberWithinIt) {
  // MSE 5, 2, 1; the errors of 2 components, 0 and 2, have the standard error sqrt(2) / sqrt(2) = 1: 2 <= 1 + 1.
  const RealMatrix errors = RowsOf({{4, 2, 0}, {6, 2, 2}});
  const ComponentChoice choice = ChooseComponents(errors, SelectionRecipe());
  EXPECT_EQ(choice.best, 2U);
  EXPECT_DOUBLE_EQ(choice.limit, 2.0);
  EXPECT_THAT(choice.compared, ElementsAre(5, 2, 1));
  EXPECT_EQ(choice.chosen, 1U);
}

TEST(ComponentChoice, CanBeNoComponent) {
  const RealMatrix errors = RowsOf({{1, 2}, {1, 1.5}, {1, 0.75}});
  for (const SelectionRule rule :
       {SelectionRule::OneSE, SelectionRule::Randomisation, SelectionRule::Min, SelectionRule::Q2}) {
    EXPECT_EQ(ChosenOf(errors, rule), 0U);
  }
}

TEST(ComponentChoice, OfTiesIsTheLeastNumber) {
  const ComponentChoice choice = ChooseComponents(RowsOf({{3, 1, 1}, {3, 1, 1}}), Rule(SelectionRule::Min));
  EXPECT_EQ(choice.best, 1U);
  EXPECT_EQ(choice.chosen, 1U);
}

TEST(ComponentChoice, ByQ2StopsBeforeTheFirstGainThatIsTooSmall) {
  const RealMatrix errors = RowsOf({{8, 4, 4, 0}, {8, 4, 4, 0}});
  const ComponentChoice choice = ChooseComponents(errors, Rule(SelectionRule::Q2));
  EXPECT_EQ(choice.chosen, 1U);  // and does not look ahead to the third
  EXPECT_EQ(choice.best, 3U);
  EXPECT_THAT(choice.compared, ElementsAre(IsNan(), 0.5, 0.0, 1.0));
  EXPECT_EQ(choice.limit, 0.05);
  SelectionRecipe lower = Rule(SelectionRule::Q2);
  lower.q2Limit = 0.0;
  EXPECT_EQ(ChooseComponents(errors, lower).chosen, 1U);  // the second gains nothing, which is not above 0
  lower.q2Limit = -0.01;
  EXPECT_EQ(ChooseComponents(errors, lower).chosen, 3U);
  EXPECT_EQ(ChooseComponents(RowsOf({{1, 0, 0}}), lower).chosen, 1U);  // nothing is left of PRESS to gain from
}

TEST(ComponentChoice, LeavesRowsWithoutErrorsOut) {
  RealMatrix errors = RowsOf({{4, 2, 0}, {kNotANumber, kNotANumber, kNotANumber}, {6, 2, 2}});
  const ComponentChoice choice = ChooseComponents(errors, SelectionRecipe());
  EXPECT_DOUBLE_EQ(choice.limit, 2.0);
  EXPECT_THAT(choice.compared, ElementsAre(5, 2, 1));
}

TEST(ComponentChoice, TakesGroupsForTheStandardErrorAndRowsForTheMeans) {
  // Groups {0, 2} and {4}: means 1 and 4 under the best number, of standard error 1.5; MSE over the rows 2.
  const RealMatrix errors = RowsOf({{9, 0}, {9, 2}, {9, 4}});
  const std::vector<int> groups = {0, 0, 1};
  const ComponentChoice choice = ChooseComponents(errors, SelectionRecipe(), &groups);
  EXPECT_THAT(choice.compared, ElementsAre(9, 2));
  EXPECT_DOUBLE_EQ(choice.limit, 2.0 + 1.5);
}

TEST(ComponentChoice, WithOneUnitHasNoStandardError) {
  const std::vector<int> groups = {0, 0};
  EXPECT_DOUBLE_EQ(ChooseComponents(RowsOf({{9, 0}, {9, 4}}), SelectionRecipe(), &groups).limit, 2.0);
}

/// The p-value of a column against column b by the words of the generator, one sum after the other.
double PlainP(const RealMatrix& errors, std::size_t a, std::size_t b, int flips, std::uint64_t seed) {
  RandomDraws draws(seed, RandomUse::SignFlips);
  std::vector<double> sums(static_cast<std::size_t>(flips), 0.0);
  double found = 0.0;
  for (std::size_t first = 0; first < errors.rows; first += 64) {
    for (double& sum : sums) {
      const std::uint64_t word = draws.Word();
      for (std::size_t i = first; i < errors.rows && i < first + 64; ++i) {
        const double d = errors(i, a) - errors(i, b);
        sum += (word >> (i - first) & 1U) != 0 ? -d : d;
      }
    }
  }
  for (std::size_t i = 0; i < errors.rows; ++i) found += errors(i, a) - errors(i, b);
  int count = 0;
  for (const double sum : sums) count += sum >= found ? 1 : 0;
  return (1.0 + count) / (flips + 1.0);
}

TEST(ComponentChoice, ByRandomisationHasThePValuesOfThePlainCount) {
  RandomDraws draws(3);
  RealMatrix errors(150, 4);  // two full words and a part of one
  for (std::size_t i = 0; i < errors.rows; ++i) {
    for (std::size_t a = 0; a < 4; ++a) {
      errors(i, a) = static_cast<double>(draws.Below(1U << 20)) + (a == 0 ? 1.0e5 : 0.0);  // sums are exact
    }
  }
  SelectionRecipe recipe = Rule(SelectionRule::Randomisation);
  recipe.seed = 11;
  recipe.flips = 199;
  const ComponentChoice choice = ChooseComponents(errors, recipe);
  for (std::size_t a = 0; a < 4; ++a) EXPECT_EQ(choice.compared[a], PlainP(errors, a, choice.best, 199, 11)) << a;
  EXPECT_EQ(choice.compared[choice.best], 1.0);
  EXPECT_EQ(choice.limit, 0.05);
}

TEST(ComponentChoice, ByRandomisationCountsEqualSumsWhateverTheirRounding) {
  // d = 0.3, -0.1, -0.2: the sum is 0 in exact numbers. Of the eight flips two give 0 and three more.
  SelectionRecipe recipe = Rule(SelectionRule::Randomisation);
  recipe.flips = 9999;
  const RealMatrix errors = RowsOf({{1.3, 1.0}, {0.9, 1.0}, {0.8, 1.0}});
  const double p = ChooseComponents(errors, recipe).compared[1];
  // Five of eight, with the standard deviation 0.005 of 9999 runs, four of them for the one seed that is.
  EXPECT_NEAR(p, 0.625, 0.02);
}

TEST(ComponentChoice, ByRandomisationTakesGroupsForUnits) {
  // Two groups: one sum in four is as large as that of both gains.
  const RealMatrix errors = RowsOf({{2, 1}, {2, 1}, {2, 1}, {2, 1}, {2, 1}, {2, 1}, {2, 1}, {2, 1}});
  const std::vector<int> groups = {0, 0, 0, 0, 1, 1, 1, 1};
  const SelectionRecipe recipe = Rule(SelectionRule::Randomisation);
  EXPECT_EQ(ChooseComponents(errors, recipe).chosen, 1U);           // 1 of 256
  const ComponentChoice choice = ChooseComponents(errors, recipe, &groups);
  EXPECT_NEAR(choice.compared[0], 0.25, 0.055);                     // four standard deviations of 999 runs
  EXPECT_EQ(choice.chosen, 0U);
}

TEST(ComponentChoice, ByRandomisationStopsWhenTheBarWantsTo) {
  ProgressLog log;
  log.stopAt = 2;
  const auto bar = RecordingBar(&log);
  const RealMatrix errors(1000, 3, 1.0);
  EXPECT_THROW(ChooseComponents(errors, Rule(SelectionRule::Randomisation), nullptr, bar.get()), Stopped);
  EXPECT_EQ(log.calls.size(), 2U);
}

TEST(ComponentChoice, RefusesRecipesThatMakeNoSense) {
  for (const double alpha : {0.0, 1.0, kNotANumber}) {
    SelectionRecipe recipe = Rule(SelectionRule::Randomisation);
    recipe.alpha = alpha;
    EXPECT_EQ(FailureOf<BadRequest>([&] { ChooseComponents(RealMatrix(2, 1, 1.0), recipe); }),
              "alpha is above 0 and below 1");
  }
  SelectionRecipe recipe = Rule(SelectionRule::Randomisation);
  recipe.flips = 0;
  EXPECT_EQ(FailureOf<BadRequest>([&] { ChooseComponents(RealMatrix(2, 1, 1.0), recipe); }),
            "a randomisation takes one run or more");
}

}  // namespace
}  // namespace kalmia::analysis
