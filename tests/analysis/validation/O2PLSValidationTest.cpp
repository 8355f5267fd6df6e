#include "kalmia/analysis/validation/O2PLSValidation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/fit/O2PLSResult.h"
#include "kalmia/analysis/fit/PredictResult.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"
#include "validation/TableLines.h"

namespace kalmia::analysis {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

O2PLSRecipe BlocksRecipe(std::optional<O2PLSNumbers> numbers = std::nullopt) {
  O2PLSRecipe recipe;
  recipe.id = "name";
  recipe.numbers = numbers;
  return recipe;
}

Table XTable(const std::string& text) { return {text, "x.csv"}; }
Table YTable(const std::string& text) { return {text, "y.csv"}; }

/// Expects that each block of the left-out rows is predicted from the other, to the bit, as a model says that was
/// fitted by the public Fit to tables of the other rows.
void ExpectThePredictionsOfO2plsFits(O2PLSRecipe recipe, const TwoBlocks& blocks) {
  const TableLines xLines(blocks.x), yLines(blocks.y);
  const O2PLSValidation validation = Validate(recipe, XTable(blocks.x), YTable(blocks.y));
  ASSERT_TRUE(validation.IsJudged());
  for (int group = 0; group < validation.folds.groups; ++group) {
    const std::vector<std::size_t> in = RowsOutsideGroup(validation.folds, 0, group);
    const std::vector<std::size_t> out = RowsOfGroup(validation.folds, 0, group);
    O2PLSResult fit = Fit(recipe, xLines.SmallTable(in), yLines.SmallTable(in));
    const PLSPredictions y = Predict(fit.model, xLines.SmallTable(out));
    const std::vector<double> xDistances = DistancesToModel(fit.model, fit.model.Components(), y.predictions);
    TurnAround(&fit.model);
    const PLSPredictions x = Predict(fit.model, yLines.SmallTable(out));
    const std::vector<double> yDistances = DistancesToModel(fit.model, fit.model.Components(), x.predictions);
    for (std::size_t i = 0; i < out.size(); ++i) {
      for (std::size_t j = 0; j < validation.yNames.size(); ++j) {
        EXPECT_EQ(validation.y.predicted[1](out[i], j), y.predictions[i].y[j]) << "row " << out[i];
      }
      for (std::size_t k = 0; k < validation.xNames.size(); ++k) {
        EXPECT_EQ(validation.x.predicted[1](out[i], k), x.predictions[i].y[k]) << "row " << out[i];
      }
      EXPECT_EQ(validation.xDistances[out[i]], xDistances[i]);
      EXPECT_EQ(validation.yDistances[out[i]], yDistances[i]);
    }
  }
}

TEST(O2PLSValidation, PredictsBothBlocksAsAFitToTablesOfTheOtherRows) {
  for (const auto scaling : {NCScale::ScalingUnitVariance, NCScale::ScalingPareto, NCScale::ScalingCentre}) {
    for (const O2PLSNumbers& numbers : {O2PLSNumbers{1, 0, 0}, {1, 1, 1}, {2, 1, 0}}) {
      O2PLSRecipe recipe = BlocksRecipe(numbers);
      recipe.scaling = scaling;
      ExpectThePredictionsOfO2plsFits(recipe, SharedBlocks(30, 4));
    }
  }
}

TEST(O2PLSValidation, EstimatesMissingCellsAnewInEachRound) {
  O2PLSRecipe recipe = BlocksRecipe(O2PLSNumbers{1, 1, 1});
  recipe.fill = true;
  TwoBlocks blocks = SharedBlocks(30, 4);
  blocks.x = WithHoles(blocks.x, 29);
  blocks.y = WithHoles(blocks.y, 31);
  ExpectThePredictionsOfO2plsFits(recipe, blocks);
}

TEST(O2PLSValidation, JudgesTheNumbersThatTheFitFinds) {
  const TwoBlocks blocks = SharedBlocks(40, 7);
  const O2PLSResult fit = Fit(BlocksRecipe(), XTable(blocks.x), YTable(blocks.y));
  const O2PLSValidation found = Validate(BlocksRecipe(), XTable(blocks.x), YTable(blocks.y));
  EXPECT_EQ(found.numbers.joint, fit.model.Joint());
  EXPECT_EQ(found.numbers.xUnique, fit.model.XUnique());
  EXPECT_EQ(found.numbers.yUnique, fit.model.YUnique());
  ASSERT_TRUE(found.IsJudged());
  // Each block has one direction in common and one of its own: half of its variance can be predicted.
  EXPECT_GT(found.y.q2[1], 0.2);
  EXPECT_LT(found.y.q2[1], 0.8);
  EXPECT_GT(found.x.q2[1], 0.2);
  EXPECT_LT(found.x.q2[1], 0.8);
}

TEST(O2PLSValidation, HasTheErrorsOfTheMeansOfTheRowsThatStayedIn) {
  const TwoBlocks blocks = SharedBlocks(20, 7);
  const O2PLSValidation validation =
      Validate(BlocksRecipe(O2PLSNumbers{1, 0, 0}), XTable(blocks.x), YTable(blocks.y));
  for (std::size_t j = 0; j < 4; ++j) {
    const std::vector<double> y = NumbersOf(YTable(blocks.y), validation.yNames[j]);
    double squares = 0.0;
    for (int group = 0; group < 7; ++group) {
      const std::vector<std::size_t> in = RowsOutsideGroup(validation.folds, 0, group);
      double mean = 0.0;
      for (const std::size_t i : in) mean += y[i] / static_cast<double>(in.size());
      for (const std::size_t i : RowsOfGroup(validation.folds, 0, group)) squares += std::pow(y[i] - mean, 2);
    }
    EXPECT_NEAR(validation.y.rmsecv(0, j), std::sqrt(squares / 20), 1e-12);
  }
}

TEST(O2PLSValidation, JudgesTheMeanAloneWhereARoundCannotHaveTheComponents) {
  const TwoBlocks blocks = SharedBlocks(6, 7);
  ValidationRecipe halves;
  halves.folds.scheme = FoldScheme::Blocks;
  O2PLSRecipe recipe = BlocksRecipe(O2PLSNumbers{2, 1, 1});  // of 3 rows, which have 2 degrees
  recipe.groups = 2;
  const O2PLSValidation validation = Validate(recipe, XTable(blocks.x), YTable(blocks.y), halves);
  EXPECT_FALSE(validation.IsJudged());
  EXPECT_EQ(validation.y.q2.size(), 1U);
  EXPECT_THAT(validation.xDistances, IsEmpty());
  EXPECT_THAT(validation.notes.Lines(), Contains(HasSubstr("cannot have so many components")));
}

TEST(O2PLSValidation, JudgesTheMeanAloneWhereNothingIsInCommon) {
  O2PLSRecipe recipe;
  recipe.x = {"x1..x5"};
  recipe.y = {"y1..y4"};
  const O2PLSValidation validation =
      Validate(recipe, XTable(UnrelatedTable(30, 5, 1, 3)), YTable(UnrelatedTable(30, 1, 4, 9)));
  EXPECT_EQ(validation.numbers.joint, 0);
  EXPECT_FALSE(validation.IsJudged());
  EXPECT_THAT(validation.notes.Lines(), IsEmpty());
}

TEST(O2PLSValidation, LeavesRowsOfOneLabelOutTogether) {
  const TwoBlocks blocks = SharedBlocks(12, 7);
  const TableLines lines(blocks.x);
  std::string labelled = lines.header + ",batch\n";
  for (std::size_t i = 0; i < lines.rows.size(); ++i) labelled += lines.rows[i] + "," + "ABC"[i / 4] + "\n";
  O2PLSRecipe recipe = BlocksRecipe(O2PLSNumbers{1, 1, 1});
  recipe.groupColumn = "batch";
  const O2PLSValidation labels = Validate(recipe, XTable(labelled), YTable(blocks.y));
  EXPECT_THAT(labels.folds.names, ElementsAre("A", "B", "C"));
  recipe.groupColumn.clear();
  recipe.groups = 3;
  ValidationRecipe three;
  three.folds.scheme = FoldScheme::Blocks;
  const O2PLSValidation dealt = Validate(recipe, XTable(blocks.x), YTable(blocks.y), three);
  EXPECT_EQ(labels.y.press, dealt.y.press);
  EXPECT_EQ(labels.x.press, dealt.x.press);
}

TEST(O2PLSValidation, PredictsAColumnByTheOneValueItHasInARound) {
  const std::string x = "x1,x2,x3\n1,2,3\n2,2,1\n3,1,2\n2,5,5\n4,4,7\n5,1,7\n6,2,7\n7,7,7\n";
  const std::string y = "y1,y2\n1,3\n2,1\n4,2\n3,5\n5,4\n8,6\n7,2\n9,3\n";
  O2PLSRecipe recipe;
  recipe.numbers = O2PLSNumbers{1, 0, 0};
  recipe.groups = 2;
  ValidationRecipe halves;
  halves.folds.scheme = FoldScheme::Blocks;
  const O2PLSValidation validation = Validate(recipe, XTable(x), YTable(y), halves);
  EXPECT_THAT(validation.notes.Lines(), Contains(HasSubstr("1 X column (x3)")));
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(validation.x.predicted[1](i, 2), 7.0);
}

TEST(O2PLSValidation, GivesTheSameBitsOnAnyNumberOfThreads) {
  const TwoBlocks blocks = SharedBlocks(40, 7);
  std::vector<O2PLSValidation> runs;
  for (const int threads : {1, 3}) {
    const Threads team(threads);
    runs.push_back(Validate(BlocksRecipe(O2PLSNumbers{1, 1, 1}), XTable(blocks.x), YTable(blocks.y)));
  }
  EXPECT_EQ(runs[0].y.rowErrors.cells, runs[1].y.rowErrors.cells);
  EXPECT_EQ(runs[0].xDistances, runs[1].xDistances);
}

TEST(O2PLSValidation, StopsWhereverTheBarWantsToStop) {
  const TwoBlocks blocks = SharedBlocks(20, 7);
  const Table x = XTable(blocks.x), y = YTable(blocks.y);
  ProgressLog whole;
  Validate(BlocksRecipe(), x, y, {}, RecordingBar(&whole).get());
  const auto calls = static_cast<int>(whole.calls.size()) - 1;  // the last one closes the bar
  for (int stopAt = 1; stopAt < calls; stopAt += 7) {
    ProgressLog log;
    log.stopAt = stopAt;
    EXPECT_THROW(Validate(BlocksRecipe(), x, y, {}, RecordingBar(&log).get()), Stopped) << "call " << stopAt;
  }
}

}  // namespace
}  // namespace kalmia::analysis
