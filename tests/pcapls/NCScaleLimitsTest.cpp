#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <vector>

#include "ScaleOf.h"
#include "kalmia/pcapls/NCScale.h"
#include "testing/RandomTables.h"

// Scaling where the table is empty or narrow, where -99 is met by accident, and at the limits of the factors.

namespace {

using ::testing::Each;
using ::testing::ElementsAre;


/// A scaling as a stream may bring it: these centres, factors and types.
NCScale ReadFrom(const NCDataVector<float>& centres, const NCDataVector<float>& factors,
                 const std::vector<int>& types) {
  std::stringstream stream;
  VexStreamableData(1, "NCS").Write(stream);
  stream << centres << factors;
  WriteFourBytes(types.data(), static_cast<int>(types.size()), stream);
  NCScale scale;
  EXPECT_TRUE(stream >> scale);
  return scale;
}

TEST(NCScaleLimits, KeepsAndAppliesCentreAndFactorOfAnUndefinedOrUnknownTypeUnderANewFit) {
  NCScale scale = ReadFrom(VectorOf<float>({10, -4}), VectorOf<float>({2, 0.5F}), {0, -7});
  NCDataMatrix<float> matrix = MatrixOf<float>({{1, 2}, {3, kMissing}});
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  EXPECT_THAT(CellsOf(*scale.GetCentres()), ElementsAre(10.0F, -4.0F));
  EXPECT_THAT(CellsOf(*scale.GetScales()), ElementsAre(2.0F, 0.5F));
  EXPECT_THAT(CellsOf(matrix), ElementsAre(ElementsAre(-18.0F, 3.0F), ElementsAre(-14.0F, kMissing)));
}

TEST(NCScaleLimits, FitsCentresOfZeroToATableWithoutRows) {
  NCDataMatrix<float> matrix;
  matrix.SetSize(0, 3);
  NCScale none(3);
  none.ScaleMatrix(&matrix, /*newModel=*/true);
  EXPECT_THAT(CellsOf(*none.GetCentres()), Each(kMissing));
  NCScale centred = ScaleOfAll(3, NCScale::ScalingCentre);
  centred.ScaleMatrix(&matrix, /*newModel=*/true);
  EXPECT_THAT(CellsOf(*centred.GetCentres()), Each(0.0F));
  EXPECT_THAT(CellsOf(*centred.GetScales()), Each(kMissing));
  EXPECT_EQ(matrix.SizeRows(), 0);
  EXPECT_EQ(matrix.SizeColumns(), 3);
}

TEST(NCScaleLimits, HasTooFewValuesForAFactorInATableWithoutRows) {
  for (const NCScale::Scaling type : {NCScale::ScalingPareto, NCScale::ScalingUnitVariance}) {
    NCDataMatrix<float> matrix;
    matrix.SetSize(0, 3);
    try {
      ScaleOfAll(3, type).ScaleMatrix(&matrix, /*newModel=*/true);
      ADD_FAILURE() << "no error";
    } catch (const NCScaleError& error) {
      EXPECT_EQ(error.Column, 1);
      EXPECT_EQ(error.Code, NCScaleError::ErrorTooFewValues);
    }
  }
}

TEST(NCScaleLimits, TakesFactorsJustWithinTheirLimits) {
  for (const float factor : {5e34F, 2e-35F}) {
    SCOPED_TRACE(factor);
    const float cell = static_cast<float>(1.0 / (static_cast<double>(factor) * std::sqrt(2.0)));
    NCDataMatrix<float> matrix = MatrixOf<float>({{cell}, {-cell}});
    NCScale scale = ScaleOfAll(1, NCScale::ScalingUnitVariance);
    ASSERT_NO_THROW(scale.ScaleMatrix(&matrix, /*newModel=*/true));
    EXPECT_FLOAT_EQ((*scale.GetScales())[1], factor);  // the cells were rounded to float
    EXPECT_FLOAT_EQ(matrix[1][1], static_cast<float>(std::sqrt(0.5)));
  }
}

TEST(NCScaleLimits, DividesByTheRootOfTheMeanSquareWhereTheMeanIsTheMissingValueItself) {
  const double deviation = std::sqrt(98.0 * 98.0 + 100.0 * 100.0);  // not centred: around 0, and n - 1 is 1
  const struct {
    NCScale::Scaling type;
    float factor;
  } cases[] = {{NCScale::ScalingPareto, static_cast<float>(1.0 / std::sqrt(deviation))},
               {NCScale::ScalingUnitVariance, static_cast<float>(1.0 / deviation)}};
  for (const auto& [type, factor] : cases) {
    NCDataMatrix<float> matrix = MatrixOf<float>({{-98.0F}, {-100.0F}});
    NCScale scale = ScaleOfAll(1, type);
    scale.ScaleMatrix(&matrix, /*newModel=*/true);
    EXPECT_EQ((*scale.GetCentres())[1], kMissing);
    EXPECT_EQ((*scale.GetScales())[1], factor);
    EXPECT_THAT(CellsOf(matrix), ElementsAre(ElementsAre(-98.0F * factor), ElementsAre(-100.0F * factor)));
  }
}

TEST(NCScaleLimits, TreatsACentredCellThatLandsOnTheMissingValueAsTheTableDoes) {
  const NCDataMatrix<float> cells = MatrixOf<float>({{-100.0F}, {98.0F}, {-1.0F}});  // the mean is -1
  NCDataMatrix<float> expected = cells;
  expected.TransformToDotSubRowVector(VectorOf<float>({-1}));
  NCDataMatrix<float> centred = cells;
  ScaleOfAll(1, NCScale::ScalingCentre).ScaleMatrix(&centred, /*newModel=*/true);
  EXPECT_THAT(CellsOf(centred), ElementsAre(ElementsAre(kMissing), ElementsAre(99.0F), ElementsAre(0.0F)));
  EXPECT_EQ(centred.GetColumnMisVal(1), expected.GetColumnMisVal(1));

  const double squares = static_cast<double>(expected.GetColumnSS(1, 0.0L));
  const int n = 3 - expected.GetColumnMisVal(1);
  const float factor = static_cast<float>(1.0 / std::sqrt(squares / (n - 1)));
  expected.TransformToColumnScaled(VectorOf<float>({factor}));
  NCDataMatrix<float> scaled = cells;
  NCScale unit = ScaleOfAll(1, NCScale::ScalingUnitVariance);
  unit.ScaleMatrix(&scaled, /*newModel=*/true);
  EXPECT_EQ((*unit.GetScales())[1], factor);
  EXPECT_EQ(CellsOf(scaled), CellsOf(expected));
}

TEST(NCScaleLimits, ForgetsWhatAStreamBroughtForTypesWithoutItUnderANewFit) {
  NCScale scale = ReadFrom(VectorOf<float>({10, 20}), VectorOf<float>({2, 3}),
                           {NCScale::ScalingNone, NCScale::ScalingCentre});
  NCDataMatrix<float> matrix = MatrixOf<float>({{1, 2}, {3, 4}});
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  EXPECT_THAT(CellsOf(*scale.GetCentres()), ElementsAre(kMissing, 3.0F));
  EXPECT_THAT(CellsOf(*scale.GetScales()), Each(kMissing));
  EXPECT_THAT(CellsOf(matrix), ElementsAre(ElementsAre(1.0F, -1.0F), ElementsAre(3.0F, 1.0F)));
}

TEST(NCScaleLimits, AppliesWhatIsStoredWhateverTheTypes) {
  NCScale scale = ReadFrom(VectorOf<float>({10, kMissing, 20}), VectorOf<float>({2, 3, kMissing}),
                           {NCScale::ScalingNone, NCScale::ScalingCentre, NCScale::ScalingUnitVariance});
  NCDataMatrix<float> matrix = MatrixOf<float>({{1, 2, 3}, {4, kMissing, 6}});
  scale.ScaleMatrix(&matrix, /*newModel=*/false);
  EXPECT_THAT(CellsOf(matrix), ElementsAre(ElementsAre(-18.0F, 6.0F, -17.0F), ElementsAre(-12.0F, kMissing, -14.0F)));
}

TEST(NCScaleLimits, KeepsTheFactorsOfAnEarlierFitFromTheVariableOnThatCannotBeScaled) {
  NCDataMatrix<float> first = MatrixOf<float>({{-1, -2, -4}, {1, 2, 4}});
  NCScale scale = ScaleOfAll(3, NCScale::ScalingUnitVariance);
  scale.ScaleMatrix(&first, /*newModel=*/true);
  const std::vector<float> factors = CellsOf(*scale.GetScales());
  NCDataMatrix<float> second = MatrixOf<float>({{-4, 5, -1}, {4, 5, 1}});
  EXPECT_THROW(scale.ScaleMatrix(&second, /*newModel=*/true), NCScaleError);
  EXPECT_THAT(CellsOf(*scale.GetScales()), ElementsAre(factors[2], factors[1], factors[2]));
}

TEST(NCScaleLimits, LeavesItsOwnVectorsAloneWhereTheTableSharesTheirCells) {
  const NCDataVector<float> centres = VectorOf<float>({10, 20});
  const NCDataVector<float> factors = VectorOf<float>({2, 3});
  NCScale scale = ReadFrom(centres, factors, {NCScale::ScalingUnitVariance, NCScale::ScalingUnitVariance});
  NCDataMatrix<float> matrix;
  matrix.InsertRow(1, *scale.GetCentres());
  matrix.InsertRow(2, *scale.GetScales());
  scale.ScaleMatrix(&matrix, /*newModel=*/false);
  EXPECT_THAT(CellsOf(matrix), ElementsAre(ElementsAre(0.0F, 0.0F), ElementsAre(-16.0F, -51.0F)));
  EXPECT_EQ(CellsOf(*scale.GetCentres()), CellsOf(centres));
  EXPECT_EQ(CellsOf(*scale.GetScales()), CellsOf(factors));
}

TEST(NCScaleLimits, CopiesDeeplyFromOneThatSharesToo) {
  NCScale original = ScaleOfAll(1, NCScale::ScalingUnitVariance);
  NCScale sharing;
  sharing = original;
  NCScale copy(sharing);
  copy.SetType(1, NCScale::ScalingPareto);
  EXPECT_EQ(original.GetScaleType(1), NCScale::ScalingUnitVariance);
  EXPECT_EQ(sharing.GetScaleType(1), NCScale::ScalingUnitVariance);
}

}  // namespace
