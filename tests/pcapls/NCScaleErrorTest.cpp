#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <memory>

#include "ScaleOf.h"
#include "kalmia/pcapls/NCScale.h"
#include "kalmia/support/LanguageString.h"
#include "testing/RandomTables.h"

// Tables that cannot be scaled, and what is left of them.

namespace {

using ::testing::ElementsAre;

constexpr float kMissing = kHole<float>;

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

TEST(NCScaleError, RefusesANewTableOfAnotherWidthAndLeavesItAsItIs) {
  NCScale scale(3);
  const NCDataMatrix<float> matrix = RandomMatrix<float>(4, 2, 0.0, 4);
  NCDataMatrix<float> scaled = matrix;
  try {
    scale.ScaleMatrix(&scaled, /*newModel=*/false);
    ADD_FAILURE() << "no error";
  } catch (const NCScaleError& error) {
    EXPECT_EQ(error.Column, 0);
    EXPECT_EQ(error.Code, NCScaleError::ErrorWrongVariableCount);
    EXPECT_EQ(error.GetMessage(), LanguageString::Get(10070));
  }
  EXPECT_EQ(CellsOf(scaled), CellsOf(matrix));
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
