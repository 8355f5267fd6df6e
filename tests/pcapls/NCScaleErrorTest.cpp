#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <memory>
#include <string>

#include "ScaleOf.h"
#include "kalmia/pcapls/NCScale.h"
#include "kalmia/support/LanguageString.h"
#include "testing/RandomTables.h"

// Tables that cannot be scaled, and what is left of them.

namespace {

using ::testing::ElementsAre;


/// The error of fitting one column of that type, as a copy that outlives the throw; null if there is none.
std::unique_ptr<NCScaleError> ErrorOfFitting(NCScale::Scaling type, std::initializer_list<float> cells) {
  NCDataMatrix<float> matrix;
  matrix.InsertColumn(1, VectorOf<float>(cells));
  try {
    ScaleOf({type}).ScaleMatrix(&matrix, /*newModel=*/true);
  } catch (const NCScaleError& error) {
    return std::unique_ptr<NCScaleError>(error.Clone());
  }
  return nullptr;
}

struct Misfit {
  const char* what;
  std::initializer_list<float> cells;
  NCScale::Scaling type;
  NCScaleError::Error code;
  unsigned text;
};

// Factors: 1 / s beyond 1e35 needs s < 1e-35, 1 / s below 1e-35 is s > 1e35; for 1 / sqrt(s) no float column can do it.
const Misfit kMisfits[] = {
    {"no value", {kMissing, kMissing}, NCScale::ScalingUnitVariance, NCScaleError::ErrorTooFewValues, 10071},
    {"one value", {5, kMissing}, NCScale::ScalingPareto, NCScaleError::ErrorTooFewValues, 10071},
    {"one value, before its lack of variance", {5}, NCScale::ScalingUnitVariance, NCScaleError::ErrorTooFewValues,
     10071},
    {"a constant", {5, 5, 5}, NCScale::ScalingUnitVariance, NCScaleError::ErrorVarianceOutOfRange, 10072},
    {"a constant, Pareto", {5, 5, 5}, NCScale::ScalingPareto, NCScaleError::ErrorVarianceOutOfRange, 10072},
    {"a factor above 1e35", {1e-36F, -1e-36F}, NCScale::ScalingUnitVariance, NCScaleError::ErrorVarianceOutOfRange,
     10073},
    {"a factor below 1e-35", {1e36F, -1e36F}, NCScale::ScalingUnitVariance, NCScaleError::ErrorFactorTooSmall, 10074},
};

TEST(NCScaleError, NamesTheReasonWhyAColumnCannotBeScaled) {
  for (const Misfit& misfit : kMisfits) {
    SCOPED_TRACE(misfit.what);
    const std::unique_ptr<NCScaleError> error = ErrorOfFitting(misfit.type, misfit.cells);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->Column, 1);
    EXPECT_EQ(error->Code, misfit.code);
    EXPECT_EQ(error->GetMessage(), LanguageString::Get(misfit.text));
    EXPECT_EQ(error->GetLevel(), NCError::Level0);
  }
}

struct Width {
  int rows, columns;
};

/// Of three variables each scaling is; a table without rows has its columns all the same.
class NCScaleErrorOfWidth : public ::testing::TestWithParam<Width> {};

INSTANTIATE_TEST_SUITE_P(, NCScaleErrorOfWidth, ::testing::Values(Width{4, 2}, Width{4, 4}, Width{4, 0}, Width{0, 2}),
                         [](const auto& info) {
                           return std::to_string(info.param.rows) + "x" + std::to_string(info.param.columns);
                         });

TEST_P(NCScaleErrorOfWidth, RefusesATableOfAnotherWidthWhetherItIsFittedOrScaledAndLeavesBothAsTheyAre) {
  const NCDataMatrix<float> matrix =
      GetParam().rows == 0 ? NCDataMatrix<float>(0, GetParam().columns)
                           : RandomMatrix<float>(GetParam().rows, GetParam().columns, 0.0, 4);
  for (const NCScale::Scaling type : {NCScale::ScalingNone, NCScale::ScalingCentre, NCScale::ScalingUnitVariance})
    for (const bool newModel : {false, true}) {
      SCOPED_TRACE(std::to_string(type) + (newModel ? ", fitted" : ", scaled"));
      NCScale scale = ScaleOfAll(3, type);
      NCDataMatrix<float> fitted = RandomMatrix<float>(5, 3, 0.0, 5);
      scale.ScaleMatrix(&fitted, /*newModel=*/true);
      const auto centres = CellsOf(*scale.GetCentres()), factors = CellsOf(*scale.GetScales());
      NCDataMatrix<float> scaled = matrix;
      try {
        scale.ScaleMatrix(&scaled, newModel);
        ADD_FAILURE() << "no error";
      } catch (const NCScaleError& error) {
        EXPECT_EQ(error.Column, 0);
        EXPECT_EQ(error.Code, NCScaleError::ErrorWrongVariableCount);
        EXPECT_EQ(error.GetMessage(), LanguageString::Get(10070));
      }
      EXPECT_EQ(CellsOf(scaled), CellsOf(matrix));
      EXPECT_EQ(CellsOf(*scale.GetCentres()), centres);
      EXPECT_EQ(CellsOf(*scale.GetScales()), factors);
    }
}

TEST(NCScaleError, NeverFailsOnColumnsWithoutAFactor) {
  for (const NCScale::Scaling type : {NCScale::ScalingNone, NCScale::ScalingCentre}) {
    EXPECT_EQ(ErrorOfFitting(type, {5, 5, 5}), nullptr) << "constant";
    EXPECT_EQ(ErrorOfFitting(type, {5}), nullptr) << "one value";
    EXPECT_EQ(ErrorOfFitting(type, {kMissing, kMissing}), nullptr) << "empty";
  }
}

TEST(NCScaleError, LeavesAnErrorBehindAsAllCentredNoneMultipliedAndTheLowerFactorsStored) {
  NCDataMatrix<float> matrix = MatrixOf<float>({{1, 5, 1}, {3, 5, 3}});
  NCScale scale = ScaleOfAll(3, NCScale::ScalingUnitVariance);
  try {
    scale.ScaleMatrix(&matrix, /*newModel=*/true);
    ADD_FAILURE() << "no error";
  } catch (const NCScaleError& error) {
    EXPECT_EQ(error.Column, 2);
  }
  EXPECT_THAT(CellsOf(matrix), ElementsAre(ElementsAre(-1.0F, 0.0F, -1.0F), ElementsAre(1.0F, 0.0F, 1.0F)));
  EXPECT_THAT(CellsOf(*scale.GetCentres()), ElementsAre(2.0F, 5.0F, 2.0F));
  EXPECT_THAT(CellsOf(*scale.GetScales()), ElementsAre(static_cast<float>(1.0 / std::sqrt(2.0)), kMissing, kMissing));
}

TEST(NCScaleError, ClonesAsItselfThroughItsBase) {
  const NCScaleError error(3, NCScaleError::ErrorFactorTooSmall, "too wide");
  const NCError& base = error;
  const std::unique_ptr<NCError> clone(base.Clone());
  const auto* copy = dynamic_cast<const NCScaleError*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->Column, 3);
  EXPECT_EQ(copy->Code, NCScaleError::ErrorFactorTooSmall);
  EXPECT_EQ(copy->GetMessage(), "too wide");
}

}  // namespace
