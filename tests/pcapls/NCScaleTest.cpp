#include "kalmia/pcapls/NCScale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <vector>

#include "ScaleOf.h"
#include "kalmia/support/LanguageString.h"
#include "testing/RandomTables.h"

namespace {

using ::testing::ElementsAre;
using ::testing::Each;


std::vector<float> ColumnOf(const NCDataMatrix<float>& matrix, int column) { return CellsOf(matrix.GetColumn(column)); }

// The column 1, 2, 3, 6: mean 3, deviations -2, -1, 0, 3, sum of squares 14, s = sqrt(14 / 3).
const std::initializer_list<float> kColumn = {1, 2, 3, 6};
const double kDeviation = std::sqrt(14.0 / 3.0);

TEST(NCScale, StartsWithNothingFittedAndNoScaling) {
  const NCScale scale(3);
  EXPECT_EQ(scale.GetVariables(), 3);
  EXPECT_THAT(CellsOf(*scale.GetCentres()), ElementsAre(kMissing, kMissing, kMissing));
  EXPECT_THAT(CellsOf(*scale.GetScales()), ElementsAre(kMissing, kMissing, kMissing));
  for (int j = 1; j <= 3; ++j) EXPECT_EQ(scale.GetScaleType(j), NCScale::ScalingNone);
}

TEST(NCScale, RefusesANegativeNumberOfVariables) { EXPECT_THROW(NCScale(-1), NCError); }

TEST(NCScale, HasNoVariablesByDefault) {
  const NCScale scale;
  EXPECT_EQ(scale.GetVariables(), 0);
  EXPECT_EQ(scale.GetCentres()->Size(), 0);
  EXPECT_EQ(scale.GetScales()->Size(), 0);
}

TEST(NCScale, LeavesAColumnAloneCentresItOrDividesByTheDeviationOrItsRoot) {
  NCDataMatrix<float> matrix;
  for (int j = 1; j <= 4; ++j) matrix.InsertColumn(j, VectorOf<float>(kColumn));
  NCScale scale = ScaleOf(
      {NCScale::ScalingNone, NCScale::ScalingCentre, NCScale::ScalingPareto, NCScale::ScalingUnitVariance});
  scale.ScaleMatrix(&matrix, /*newModel=*/true);

  const float pareto = static_cast<float>(1.0 / std::sqrt(kDeviation));
  const float unit = static_cast<float>(1.0 / kDeviation);
  EXPECT_THAT(CellsOf(*scale.GetCentres()), ElementsAre(kMissing, 3.0F, 3.0F, 3.0F));
  EXPECT_THAT(CellsOf(*scale.GetScales()), ElementsAre(kMissing, kMissing, pareto, unit));
  EXPECT_THAT(ColumnOf(matrix, 1), ElementsAre(1.0F, 2.0F, 3.0F, 6.0F));
  EXPECT_THAT(ColumnOf(matrix, 2), ElementsAre(-2.0F, -1.0F, 0.0F, 3.0F));
  EXPECT_THAT(ColumnOf(matrix, 3), ElementsAre(-2.0F * pareto, -pareto, 0.0F, 3.0F * pareto));
  EXPECT_THAT(ColumnOf(matrix, 4), ElementsAre(-2.0F * unit, -unit, 0.0F, 3.0F * unit));
}

TEST(NCScale, LeavesHolesOutOfItsStatisticsAndInTheTable) {
  NCDataMatrix<float> matrix;
  matrix.InsertColumn(1, VectorOf<float>({1, kMissing, 2, 3, kMissing, 6}));
  NCScale scale = ScaleOf({NCScale::ScalingUnitVariance});
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  const float unit = static_cast<float>(1.0 / kDeviation);
  EXPECT_THAT(ColumnOf(matrix, 1), ElementsAre(-2.0F * unit, kMissing, -unit, 0.0F, kMissing, 3.0F * unit));
  EXPECT_TRUE(HasExactCounts(matrix));
}

TEST(NCScale, GivesEveryColumnOfARandomTableMeanZeroAndUnitVariance) {
  NCDataMatrix<float> matrix = RandomMatrix<float>(200, 5, 0.1, 1);
  ScaleOfAll(5, NCScale::ScalingUnitVariance).ScaleMatrix(&matrix, /*newModel=*/true);
  for (int j = 1; j <= 5; ++j) {
    // Cells below 3 in size: centre, cell and factor are each rounded to float once, 2^-24 of at most 3.
    EXPECT_NEAR(static_cast<double>(matrix.GetColumnMean(j)), 0.0, 3 * 3 * 0x1p-24);
    EXPECT_NEAR(static_cast<double>(matrix.GetColumnStdDev(j)), 1.0, 3 * 3 * 0x1p-24);
  }
}

TEST(NCScale, AppliesTheFittedCentresAndFactorsToANewTable) {
  NCDataMatrix<float> training;
  training.InsertColumn(1, VectorOf<float>(kColumn));
  NCScale scale = ScaleOf({NCScale::ScalingUnitVariance});
  scale.ScaleMatrix(&training, /*newModel=*/true);

  NCDataMatrix<float> fresh = MatrixOf<float>({{100.0F}, {kMissing}, {3.0F}});
  scale.ScaleMatrix(&fresh, /*newModel=*/false);
  const float unit = static_cast<float>(1.0 / kDeviation);
  EXPECT_THAT(ColumnOf(fresh, 1), ElementsAre(97.0F * unit, kMissing, 0.0F));
}

TEST(NCScale, LeavesATableAsItIsWhenItWasNeverFitted) {
  const NCDataMatrix<float> matrix = RandomMatrix<float>(4, 3, 0.2, 2);
  NCDataMatrix<float> scaled = matrix;
  NCScale(3).ScaleMatrix(&scaled, /*newModel=*/false);
  EXPECT_EQ(CellsOf(scaled), CellsOf(matrix));
}

TEST(NCScale, LeavesTablesThatShareCellsWithTheScaledOneAlone) {
  const NCDataMatrix<float> matrix = RandomMatrix<float>(6, 2, 0.0, 3);
  const auto before = CellsOf(matrix);
  NCScale scale = ScaleOfAll(2, NCScale::ScalingUnitVariance);
  NCDataMatrix<float> fitted = matrix;
  scale.ScaleMatrix(&fitted, /*newModel=*/true);
  NCDataMatrix<float> applied = matrix;
  scale.ScaleMatrix(&applied, /*newModel=*/false);
  EXPECT_EQ(CellsOf(matrix), before);
  EXPECT_EQ(CellsOf(applied), CellsOf(fitted));
}

TEST(NCScale, KeepsTheFitWhenAVariableIsSetToTheTypeItHas) {
  NCDataMatrix<float> matrix;
  matrix.InsertColumn(1, VectorOf<float>(kColumn));
  NCScale scale = ScaleOf({NCScale::ScalingUnitVariance});
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  scale.SetType(1, NCScale::ScalingUnitVariance);
  EXPECT_EQ((*scale.GetCentres())[1], 3.0F);
  EXPECT_EQ((*scale.GetScales())[1], static_cast<float>(1.0 / kDeviation));
}

TEST(NCScale, ForgetsTheFitOfAVariableWhoseTypeChanges) {
  NCDataMatrix<float> matrix = RandomMatrix<float>(5, 2, 0.0, 5);
  NCScale scale = ScaleOfAll(2, NCScale::ScalingUnitVariance);
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  const float centre = (*scale.GetCentres())[2];
  const float factor = (*scale.GetScales())[2];
  scale.SetType(1, NCScale::ScalingPareto);
  scale.SetType(1, NCScale::ScalingUnitVariance);  // and back: the fit stays forgotten
  EXPECT_THAT(CellsOf(*scale.GetCentres()), ElementsAre(kMissing, centre));
  EXPECT_THAT(CellsOf(*scale.GetScales()), ElementsAre(kMissing, factor));
}

TEST(NCScale, LeavesCentreAndFactorOfAnUndefinedOrUnknownTypeAsTheyAre) {
  NCDataMatrix<float> matrix = RandomMatrix<float>(5, 2, 0.0, 6);
  const auto before = CellsOf(matrix);
  NCScale scale = ScaleOf({NCScale::ScalingUndefined, static_cast<NCScale::Scaling>(-7)});
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  EXPECT_EQ(CellsOf(matrix), before);
  EXPECT_THAT(CellsOf(*scale.GetCentres()), Each(kMissing));
  EXPECT_EQ(scale.GetScaleType(2), static_cast<NCScale::Scaling>(-7));
}

TEST(NCScale, DividesByOneWhereTwoValuesArePresent) {
  NCDataMatrix<float> matrix = MatrixOf<float>({{1.0F}, {kMissing}, {3.0F}});
  NCScale scale = ScaleOf({NCScale::ScalingUnitVariance});
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  const float factor = static_cast<float>(1.0 / std::sqrt(2.0));  // deviations -1 and 1, n - 1 = 1
  EXPECT_EQ((*scale.GetScales())[1], factor);
  EXPECT_THAT(ColumnOf(matrix, 1), ElementsAre(-factor, kMissing, factor));
}

TEST(NCScale, CentresNothingWhereTheMeanIsTheMissingValueItself) {
  NCDataMatrix<float> matrix = MatrixOf<float>({{-98.0F}, {-100.0F}});
  NCScale scale = ScaleOf({NCScale::ScalingCentre});
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  EXPECT_THAT(ColumnOf(matrix, 1), ElementsAre(-98.0F, -100.0F));
  EXPECT_EQ((*scale.GetCentres())[1], kMissing);
}

TEST(NCScale, SquaresTheCellsCentredByTheRoundedMeanAroundZero) {
  // Their mean, 16777217 / 3, is no float: what rounding it leaves counts as variance. The deviations are formed in
  // float, as the library forms them.
  NCDataMatrix<float> matrix = MatrixOf<float>({{16777216.0F}, {0.0F}, {1.0F}});
  NCScale scale = ScaleOf({NCScale::ScalingUnitVariance});
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  const float centre = static_cast<float>(16777217.0 / 3.0);
  ASSERT_NE(static_cast<double>(centre), 16777217.0 / 3.0);
  double squares = 0.0;
  for (const float cell : {16777216.0F, 0.0F, 1.0F})
    squares += static_cast<double>(cell - centre) * static_cast<double>(cell - centre);
  EXPECT_EQ((*scale.GetCentres())[1], centre);
  EXPECT_EQ((*scale.GetScales())[1], static_cast<float>(1.0 / std::sqrt(squares / 2.0)));
}

TEST(NCScale, TakesAColumnThatDiffersFromAConstantOnlyByRounding) {
  NCDataMatrix<float> matrix = MatrixOf<float>({{1.0F}, {1.0F + 0x1p-23F}, {1.0F}});
  NCScale scale = ScaleOf({NCScale::ScalingUnitVariance});
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  // The mean 1 + 2^-23 / 3 rounds to 1, which leaves one deviation, 2^-23: s = 2^-23 / sqrt(2).
  EXPECT_EQ((*scale.GetScales())[1], static_cast<float>(std::sqrt(2.0) * 0x1p23));
}

TEST(NCScale, TakesAFactorThatIsNotANumber) {
  const float inf = std::numeric_limits<float>::infinity();
  NCDataMatrix<float> matrix = MatrixOf<float>({{inf}, {1.0F}});  // inf - inf is NaN, and so is the sum of squares
  NCScale scale = ScaleOf({NCScale::ScalingUnitVariance});
  EXPECT_NO_THROW(scale.ScaleMatrix(&matrix, /*newModel=*/true));
  EXPECT_TRUE(std::isnan((*scale.GetScales())[1]));
}

TEST(NCScale, CopiesDeeplyWhenConstructedFromAnother) {
  NCScale original = ScaleOf({NCScale::ScalingCentre});
  const NCScale copy(original);
  original.SetType(1, NCScale::ScalingPareto);
  NCDataMatrix<float> matrix;
  matrix.InsertColumn(1, VectorOf<float>(kColumn));
  original.ScaleMatrix(&matrix, /*newModel=*/true);
  EXPECT_EQ(copy.GetScaleType(1), NCScale::ScalingCentre);
  EXPECT_THAT(CellsOf(*copy.GetCentres()), ElementsAre(kMissing));
  EXPECT_THAT(CellsOf(*copy.GetScales()), ElementsAre(kMissing));
}

TEST(NCScale, SharesEverythingWhenAssigned) {
  NCScale assigned(5);
  {
    NCScale original = ScaleOf({NCScale::ScalingCentre, NCScale::ScalingCentre});
    assigned = original;
    original.SetType(2, NCScale::ScalingUnitVariance);
    NCDataMatrix<float> matrix = MatrixOf<float>({{1, 1}, {3, 3}});
    original.ScaleMatrix(&matrix, /*newModel=*/true);
  }
  EXPECT_EQ(assigned.GetVariables(), 2);
  EXPECT_EQ(assigned.GetScaleType(2), NCScale::ScalingUnitVariance);
  EXPECT_THAT(CellsOf(*assigned.GetCentres()), ElementsAre(2.0F, 2.0F));
  EXPECT_THAT(CellsOf(*assigned.GetScales()), ElementsAre(kMissing, static_cast<float>(1.0 / std::sqrt(2.0))));
}

TEST(NCScale, SurvivesBeingAssignedToItself) {
  NCScale scale = ScaleOf({NCScale::ScalingPareto});
  NCScale& same = scale;
  scale = same;
  EXPECT_EQ(scale.GetScaleType(1), NCScale::ScalingPareto);
  EXPECT_EQ(scale.GetVariables(), 1);
}

TEST(NCScale, NamesItsTypesByTheTextsOfTheLanguage) {
  EXPECT_STREQ(NCScale::GetScaleString(NCScale::ScalingUndefined), "");
  EXPECT_STREQ(NCScale::GetScaleString(NCScale::ScalingNone), LanguageString::Get(10066));
  EXPECT_STREQ(NCScale::GetScaleString(NCScale::ScalingCentre), LanguageString::Get(10067));
  EXPECT_STREQ(NCScale::GetScaleString(NCScale::ScalingPareto), LanguageString::Get(10068));
  EXPECT_STREQ(NCScale::GetScaleString(NCScale::ScalingUnitVariance), LanguageString::Get(10069));
  for (int type = 1; type <= 4; ++type)
    EXPECT_GT(std::strlen(NCScale::GetScaleString(static_cast<NCScale::Scaling>(type))), 0U);
}

}  // namespace
