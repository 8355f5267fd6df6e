// Columns far from zero: the same numbers with 1e7 on top of them give the same models, and come back with it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>

#include "kalmia/analysis/cluster/ClusterResult.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/FillResult.h"
#include "kalmia/analysis/fit/FilterResult.h"
#include "kalmia/analysis/fit/O2PLSResult.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/fit/PredictResult.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/report/InfoReport.h"
#include "kalmia/analysis/report/PredictReport.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr double kFar = 1e7;  ///< a whole number: adding it rounds the binary fractions below by nothing

/// Rows of x1 to x4 and y1, y2 as 1024ths, which doubles hold exactly even with kFar on top; every `holes`-th X cell is
/// missing, 0: none.
std::string TableText(double offset, int rows, int holes) {
  std::mt19937 random(5);
  std::normal_distribution<double> normal;
  std::ostringstream text;
  text.precision(17);
  text << "x1,x2,x3,x4,y1,y2\n";
  int cell = 0;
  for (int r = 0; r < rows; ++r) {
    double x[4];
    for (double& value : x) value = normal(random);
    const double y[] = {x[0] + 0.5 * x[1] + 0.3 * normal(random), x[2] - x[0] + 0.3 * normal(random)};
    for (const double value : x) {
      if (holes > 0 && ++cell % holes == 0) {
        text << ",";
      } else {
        text << offset + std::round(value * 1024) / 1024 << ",";
      }
    }
    text << offset + std::round(y[0] * 1024) / 1024 << "," << offset + std::round(y[1] * 1024) / 1024 << "\n";
  }
  return text.str();
}

Table SmallTable(double offset, int rows = 40, int holes = 0) {
  return Table(TableText(offset, rows, holes), "t.csv");
}

PLSRecipe PLSOf(NCScale::Scaling scaling = NCScale::ScalingUnitVariance) {
  PLSRecipe recipe;
  recipe.y = {"y1..y2"};
  recipe.x = {"x1..x4"};
  recipe.scaling = scaling;
  recipe.components = 2;
  return recipe;
}

/// What is left of two mean-free tables of which one had its mean taken off in double: a rounding of each cell to
/// single precision, 2^-24 of it, before a model of condition below 100 and after it.
constexpr double kRounding = 1e-5;

TEST(ShiftedColumns, GiveThePLSModelOfTheirDifferences) {
  for (const int holes : {0, 7}) {
    for (const auto scaling : {NCScale::ScalingUnitVariance, NCScale::ScalingPareto, NCScale::ScalingCentre}) {
      const PLSResult near = Fit(PLSOf(scaling), SmallTable(0, 40, holes));
      const PLSResult far = Fit(PLSOf(scaling), SmallTable(kFar, 40, holes));
      EXPECT_THAT(near.model.xScaling.shifts, IsEmpty());
      EXPECT_EQ(far.model.xScaling.shifts.size(), 4U);
      EXPECT_EQ(far.model.yScaling.shifts.size(), 2U);
      for (int j = 0; j < 2; ++j) {
        const auto column = static_cast<std::size_t>(j);
        EXPECT_NEAR(far.model.quality[column].rmsee, near.model.quality[column].rmsee, kRounding);
        EXPECT_NEAR(far.model.quality[column].rmsecv, near.model.quality[column].rmsecv, kRounding);
        for (std::size_t i = 0; i < 40; ++i) {
          EXPECT_NEAR(far.fitted[i].y[column] - kFar, near.fitted[i].y[column], 10 * kRounding) << i;
        }
      }
    }
  }
}

TEST(ShiftedColumns, ArePredictedByAStoredModelAsInTheFitAndByItsCoefficients) {
  const Table table = SmallTable(kFar);
  const PLSResult fit = Fit(PLSOf(), table);
  const StoredModel file = ReadModelFile(ModelFileBytes(fit.model), "m");
  const auto& stored = std::get<StoredPLS>(file);
  EXPECT_EQ(stored.fileVersion, kModelVersion);
  const PLSPredictions predicted = Predict(stored, table);
  const Coefficients coefficients =
      CoefficientsInOriginalUnits(*fit.model.pls, fit.model.xScaling, fit.model.yScaling);
  for (std::size_t i = 0; i < 40; ++i) {
    EXPECT_EQ(predicted.predictions[i].y, fit.fitted[i].y) << i;
    EXPECT_EQ(predicted.measured[0][i], table.Column(4).numbers[i]);
    double sum = coefficients.intercepts[0];
    for (int k = 0; k < 4; ++k) {
      sum += coefficients.slopes[static_cast<std::size_t>(k)][0] * table.Column(k).numbers[i];
    }
    // Coefficients are floats: 2^-24 of each, times a cell of up to 4 once the means cancel.
    EXPECT_NEAR(sum, fit.fitted[i].y[0], 1e-5) << i;
  }
}

TEST(ShiftedColumns, GiveThePCAAndOPLSModelsOfTheirDifferences) {
  PCARecipe pca;
  pca.x = {"x1..x4"};
  pca.components = 2;
  const PCAResult nearPCA = Fit(pca, SmallTable(0)), farPCA = Fit(pca, SmallTable(kFar));
  for (int a = 1; a <= 2; ++a)
    for (int i = 1; i <= 40; ++i) {
      EXPECT_NEAR((*farPCA.model.pca->GetTprim())[a][i], (*nearPCA.model.pca->GetTprim())[a][i], 1e-3)
          << "each is iterated until a step is below 1e-4 or so of its length";
    }
  OPLSRecipe opls;
  opls.x = {"x1..x4"};
  opls.y = {"y1"};
  opls.components = 1;
  const OPLSResult nearOPLS = Fit(opls, SmallTable(0)), farOPLS = Fit(opls, SmallTable(kFar));
  EXPECT_NEAR(farOPLS.model.quality[0].rmsee, nearOPLS.model.quality[0].rmsee, kRounding);
  EXPECT_NEAR(farOPLS.fitted[3].y[0] - kFar, nearOPLS.fitted[3].y[0], 10 * kRounding);
}

TEST(ShiftedColumns, OfBothBlocksComeBackFromO2PLS) {
  O2PLSRecipe recipe;
  recipe.x = {"x1..x4"};
  recipe.y = {"y1..y2"};
  recipe.numbers = O2PLSNumbers{2, 0, 0};
  const O2PLSResult near = Fit(recipe, SmallTable(0), SmallTable(0));
  const O2PLSResult far = Fit(recipe, SmallTable(kFar), SmallTable(kFar));
  for (std::size_t i = 0; i < 40; ++i) {
    EXPECT_NEAR(far.fittedY[i].y[0] - kFar, near.fittedY[i].y[0], 10 * kRounding);
    EXPECT_NEAR(far.fittedX[i].y[2] - kFar, near.fittedX[i].y[2], 10 * kRounding);
  }
  const StoredModel stored = ReadModelFile(ModelFileBytes(far.model), "m");
  EXPECT_EQ(ModelFileBytes(stored), ModelFileBytes(far.model));
}

TEST(ShiftedColumns, AreFilteredAndFilledWithTheirDigits) {
  FilterRecipe filter;
  filter.x = {"x1..x4"};
  filter.y = {"y1"};
  filter.components = 1;
  const FilterResult nearFilter = Fit(filter, SmallTable(0)), farFilter = Fit(filter, SmallTable(kFar));
  FillRecipe fill;
  fill.components = 1;
  const Table holed = SmallTable(kFar, 40, 9);
  const FillResult nearFill = Fit(fill, SmallTable(0, 40, 9)), farFill = Fit(fill, holed);
  for (int i = 0; i < 40; ++i)
    for (int k = 0; k < 4; ++k) {
      EXPECT_NEAR(farFilter.filtered.cells.Row(i)[k] - kFar, nearFilter.filtered.cells.Row(i)[k], 10 * kRounding);
      const double filled =
          InUnitsOfTable(farFill.filled.cells[i + 1][k + 1], farFill.shifts[static_cast<std::size_t>(k)]);
      EXPECT_NEAR(filled - kFar, nearFill.filled.cells[i + 1][k + 1], 1e-3) << "cells are settled to 1e-4 of s";
    }
}

TEST(ShiftedColumns, ThatAreConstantAreFilledWithTheirValueToTheLastDigit) {
  FillRecipe recipe;
  recipe.components = 0;
  const Table table("k,a\n16777217,1\n,2\n16777217,4\n", "t.csv");
  const FillResult result = Fit(recipe, table);
  Notes notes;
  EXPECT_EQ(FilledText(table, result, "", {}, &notes, nullptr), "k,a\n16777217,1\n16777217,2\n16777217,4\n");
}

TEST(ShiftedColumns, HaveTheClustersOfTheirDifferences) {
  ClusterRecipe recipe;
  recipe.x = {"x1..x4"};
  const ClusterResult near = Fit(recipe, SmallTable(0)), far = Fit(recipe, SmallTable(kFar));
  ASSERT_EQ(near.merges.size(), far.merges.size());
  for (std::size_t i = 0; i < near.merges.size(); ++i) {
    EXPECT_NEAR(far.merges[i].height, near.merges[i].height, kRounding * near.merges.back().height);
  }
}

TEST(ShiftedColumns, AreNamedWithTheModelAndOnlyThere) {
  const PLSResult near = Fit(PLSOf(), SmallTable(0)), far = Fit(PLSOf(), SmallTable(kFar));
  EXPECT_THAT(InfoText(StoredModel(ReadModelFile(ModelFileBytes(far.model), "m")), "m"),
              HasSubstr("X shifted         x1 by "));
  EXPECT_THAT(InfoJson(StoredModel(ReadModelFile(ModelFileBytes(far.model), "m")), "m"), HasSubstr("\"shift\": "));
  const std::string without = InfoText(StoredModel(ReadModelFile(ModelFileBytes(near.model), "m")), "m");
  EXPECT_THAT(without, Not(HasSubstr("shifted")));
}

TEST(ShiftedColumns, ArePredictedInTextWithTheDigitsThatVary) {
  const Table table = SmallTable(kFar, 20);
  const PLSResult fit = Fit(PLSOf(), table);
  const PLSPredictions predicted = Predict(fit.model, table);
  std::ostringstream value;
  value.precision(13);  // of 1e7 and what varies by some ones: six behind the point
  value << predicted.predictions[2].y[0];
  EXPECT_THAT(PredictText(fit.model, table, predicted), HasSubstr(value.str().substr(0, 13)));
}

TEST(ShiftedColumns, AreNoneWithoutCentringAndANoteSaysWhatIsLost) {
  PCARecipe recipe;
  recipe.x = {"x1..x2"};
  recipe.components = 1;
  recipe.scaling = NCScale::ScalingNone;
  const PCAResult result = Fit(recipe, SmallTable(kFar));
  EXPECT_THAT(result.model.xScaling.shifts, IsEmpty());
  EXPECT_THAT(result.notes.Lines(),
              Contains("the mean is more than 1000 standard deviations from 0, and nothing centres the column, so "
                       "that single precision keeps few digits of what varies: x1 and x2"));
  EXPECT_THAT(Fit(recipe, SmallTable(0)).notes.Lines(), Each(Not(HasSubstr("the mean is more"))));
}

TEST(ShiftedColumns, ThatAreConstantAreNotedAsThatAlone) {
  PCARecipe recipe;
  recipe.components = 1;
  recipe.scaling = NCScale::ScalingNone;
  const Table table("a,b,k\n1,2,0.1\n2,3,0.1\n4,1,0.1\n", "t");
  EXPECT_THAT(Fit(recipe, table).notes.Lines(), Each(Not(HasSubstr("the mean is more"))));
}

TEST(ShiftedColumns, ThatAFileCannotHaveAreRefused) {
  PLSRecipe recipe = PLSOf();
  PLSResult fit = Fit(recipe, SmallTable(kFar, 12));
  for (const double lie : {std::nan(""), HUGE_VAL, 1e300}) {
    fit.model.xScaling.shifts[1] = lie;
    const std::string bytes = ModelFileBytes(fit.model);
    EXPECT_THROW(ReadModelFile(bytes, "m"), BadFile) << lie;
  }
  fit.model.xScaling.shifts.assign(4, 0.0);
  EXPECT_THROW(ReadModelFile(ModelFileBytes(fit.model), "m"), BadFile) << "a count of shifts of which none is one";
}

TEST(ShiftedColumns, AreNoConstantsWhereSinglePrecisionTellsNoCellFromAnother) {
  PLSRecipe recipe;
  recipe.y = {"y"};
  recipe.components = 1;
  const PLSResult result = Fit(recipe, Table("x,y\n1000000001,1\n1000000002,2\n1000000004,4\n1000000003,3\n", "t"));
  EXPECT_THAT(result.data.constantColumns, IsEmpty());
  EXPECT_NEAR(result.model.components[0].r2xCum, 1.0, 1e-6);
  EXPECT_NEAR(result.model.quality[0].rmsee, 0.0, 1e-6);
}

}  // namespace
}  // namespace kalmia::analysis
