#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "OPLSCase.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/support/NCError.h"
#include "pcapls/PlainPLS.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/StreamAttacks.h"

namespace {

/// The calls while the model takes one more step.
std::string CallsOfNextComponent(NCOPLS* model) {
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  model->NextComponent(bar.get());
  return log.Joined();
}

TEST(NCOPLSProgress, RunsThroughTheBlockAndNestsItInAnOrthogonalStep) {
  NCOPLS model = FittedOPLS(RelatedTables(20, 6, 2, 0.0, 1), 2, -1);
  const std::string block = "SetRange 0 10; PushSubRange 0 9; SetRange 0 1; PopSubRange; SetValue 10";
  EXPECT_EQ(CallsOfNextComponent(&model), block);
  EXPECT_EQ(CallsOfNextComponent(&model),
            "SetRange 0 10; IsBreakPressed; PushSubRange 1 10; " + block + "; PopSubRange");
}

TEST(NCOPLSProgress, ShowsHowFarTheCrossProductOfWhatIsLeftHasFallen) {
  const Tables tables = RelatedTables(20, 6, 1, 0.2, 1);
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  NCOPLS model(&tables.X, &tables.Y, 1, 200);
  model.NextComponent(bar.get());
  float last = 0.0F;
  int passes = 0;
  for (const std::string& call : log.calls) {
    if (call.rfind("SetValue ", 0) != 0 || call == "SetValue 10") continue;
    const float value = std::stof(call.substr(9));
    EXPECT_GE(value, last) << "the product never grows but for the last pass, which shows 1: " << log.Joined();
    last = value;
    ++passes;
  }
  EXPECT_GT(passes, 1);
  EXPECT_GE(last, 1.0F) << "ends where the product has grown, or below a hundredth of the first: " << log.Joined();
}

/// The values that a model's bar shows within its first block.
std::vector<float> ValuesOfTheFirstBlock(const Tables& tables, int maxIterations) {
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  NCOPLS model(&tables.X, &tables.Y, 1, maxIterations);
  model.NextComponent(bar.get());
  std::vector<float> values;
  for (const std::string& call : log.calls)
    if (call.rfind("SetValue ", 0) == 0) values.push_back(std::stof(call.substr(9)));
  values.pop_back();  // the end of the block
  return values;
}

/// |Y'X|, holes of X being 0.
double CrossProductOf(const Tables& tables) {
  plain::Table X = plain::TableOf(tables.X);
  for (plain::Vector& row : X)
    for (double& cell : row)
      if (std::isnan(cell)) cell = 0.0;
  return std::sqrt(plain::SquaresOf(plain::Product(plain::Transposed(plain::TableOf(tables.Y)), X)));
}

TEST(NCOPLSProgress, ShowsOneLessTheShareThatIsLeftAboveOneHundredth) {
  Tables tables = RelatedTables(20, 6, 1, 0.0, 1);
  for (int i = 1; i <= 20; i += 3) tables.X(i, 1 + i % 6, kHole<float>);
  const NCOPLS onePass = FittedOPLS(tables, 1, 0, /*maxIterations=*/1);
  const NCDataVector<float> w = (*onePass.GetWprim())[1];
  Tables left = tables;
  left.X.AddVprimV(tables.X.SpecialNipalsRegressRowsFix(w, nullptr, 0), w, -1.0F);
  const double first = CrossProductOf(tables);
  const std::vector<float> values = ValuesOfTheFirstBlock(tables, /*maxIterations=*/2);
  ASSERT_EQ(values.size(), 1U);
  EXPECT_NEAR(values[0], 1.0 - (CrossProductOf(left) - 0.01 * first) / first, 1e-5);  // six digits are recorded
}

TEST(NCOPLSProgress, ShowsZeroWhereThereIsNothingToExplain) {
  Tables tables = RelatedTables(20, 6, 1, 0.2, 1);
  tables.Y.SetAllValues(0.0F);
  EXPECT_EQ(ValuesOfTheFirstBlock(tables, /*maxIterations=*/4), std::vector<float>(3, 0.0F));
}

TEST(NCOPLSProgress, ChangesNoNumber) {
  const Tables tables = RelatedTables(20, 6, 2, 0.1, 1);
  NCOPLS watched(&tables.X, &tables.Y, 2, 200);
  for (int o = 0; o <= 2; ++o) CallsOfNextComponent(&watched);
  EXPECT_EQ(Everything(watched), Everything(FittedOPLS(tables, 2, 2)));
}

TEST(NCOPLSProgress, EveryStopThrowsAndLeavesTheTablesAndOtherModelsAlone) {
  const Tables tables = RelatedTables(20, 6, 2, 0.1, 1);
  const auto x = CellsOf(tables.X);
  const auto y = CellsOf(tables.Y);
  const NCOPLS expected = FittedOPLS(tables, 2, 2);
  for (const int done : {-1, 0, 1}) {  // orthogonal components before the step; -1: no block either
    int questions = 0;
    for (int stopAt = 1; stopAt < 1000; ++stopAt) {
      SCOPED_TRACE("stopped at call " + std::to_string(stopAt) + " of the step after " + std::to_string(done));
      NCOPLS model = FittedOPLS(tables, 2, done);
      ProgressLog log;
      log.stopAt = stopAt;
      const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
      try {
        model.NextComponent(bar.get());
        EXPECT_LT(static_cast<int>(log.calls.size()), stopAt) << "went on although it was stopped";
        break;
      } catch (const NCError& error) {
        EXPECT_STREQ(error.GetMessage(), "OPLS component aborted.");
        EXPECT_EQ(error.GetLevel(), NCError::Level2);
        ++questions;
      }
      EXPECT_EQ(CellsOf(tables.X), x);
      EXPECT_EQ(CellsOf(tables.Y), y);
      model = FittedOPLS(tables, 2, 2);
      EXPECT_EQ(Everything(model), Everything(expected)) << "assigned over, it is as good as new";
    }
    EXPECT_GT(questions, 3);
  }
}

}  // namespace
