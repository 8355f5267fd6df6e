// What models say of the rows of a table: a model, a table and a bar are all that it takes.

#include "kalmia/analysis/fit/PredictResult.h"

#include <gtest/gtest.h>

#include <memory>

#include "TestTables.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/O2PLSResult.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

Table SmallTable() { return Table(LinearTable(30, 5, 1), "t.csv"); }

PLSResult FittedPLS() {
  PLSRecipe recipe;
  recipe.id = "name";
  recipe.y = {"y"};
  recipe.components = 2;
  return Fit(recipe, SmallTable());
}

TEST(PredictResult, HoldsPredictionsBesideWhatWasMeasuredAndTheRowsNames) {
  const PLSResult fit = FittedPLS();
  const PLSPredictions result = Predict(fit.model, SmallTable());
  EXPECT_EQ(result.components, 2);
  EXPECT_EQ(result.rows.names, fit.model.rowNames) << "by the column that named the training rows";
  ASSERT_EQ(result.predictions.size(), 30U);
  ASSERT_EQ(result.measured.size(), 1U);
  EXPECT_EQ(result.measured[0].size(), 30U);
  for (const RowPrediction& row : result.predictions) EXPECT_EQ(row.y.size(), 1U) << row.reason;
}

TEST(PredictResult, OfPrincipalComponentsIsTheScoresOfEachRow) {
  PCARecipe recipe;
  recipe.id = "name";
  recipe.exclude = {"y"};
  recipe.components = 1;
  const PCAResult fit = Fit(recipe, SmallTable());
  EXPECT_EQ(Predict(fit.model, SmallTable(), "name").scores.size(), 30U);
}

TEST(PredictResult, OfTwoBlocksGoesBothWays) {
  const TwoBlocks blocks = SharedBlocks(60, 1);
  const Table x(blocks.x, "x.csv"), y(blocks.y, "y.csv");
  O2PLSRecipe recipe;
  recipe.id = "name";
  recipe.numbers = O2PLSNumbers{1, 1, 1};
  O2PLSResult fit = Fit(recipe, x, y);
  EXPECT_EQ(Predict(fit.model, x, "name").predictions.front().y.size(), 4U);
  TurnAround(&fit.model);
  EXPECT_EQ(Predict(fit.model, y, "name").predictions.front().y.size(), 6U);
}

TEST(PredictResult, StopsWhereTheBarWantsTo) {
  const PLSResult fit = FittedPLS();
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  EXPECT_THROW(Predict(fit.model, SmallTable(), "name", bar.get()), Stopped);
}

TEST(Predict, RefusesAnO2PLSModelThatKeptNoComponentAndSoDoesAFile) {
  StoredO2PLS model;
  EXPECT_THROW(Predict(model, SmallTable()), BadRequest);
  EXPECT_THROW(ModelFileBytes(model), BadRequest);
}

}  // namespace
}  // namespace kalmia::analysis
