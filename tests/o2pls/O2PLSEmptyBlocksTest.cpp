// Blocks without columns have no components, whichever of the two it is.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "O2PLSCase.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;

struct Case {
  const char* what;
  int xColumns, yColumns;
  const char* text;
};

const Case kCases[] = {{"XWithoutColumns", 0, 3, "The X block has no columns."},
                       {"YWithoutColumns", 3, 0, "The Y block has no columns."},
                       {"BothWithoutColumns", 0, 0, "The X block has no columns."}};

class O2PLSEmptyBlocks : public ::testing::TestWithParam<Case> {
 protected:
  const Table X_ = RandomMatrix<float>(9, GetParam().xColumns, 0, 1);
  const Table Y_ = RandomMatrix<float>(9, GetParam().yColumns, 0, 2);
};

INSTANTIATE_TEST_SUITE_P(, O2PLSEmptyBlocks, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return info.param.what; });

TEST_P(O2PLSEmptyBlocks, AreRefusedByNameByEveryStepOfAModel) {
  for (const bool checkDimensions : {false, true}) {
    NCO2PLS model(X_, Y_, checkDimensions, 100);
    EXPECT_EQ(TextOf([&] { model.Fit(1, 0, 0); }), GetParam().text);
    EXPECT_EQ(TextOf([&] { model.Fit(2, 1, 0); }), GetParam().text);
    EXPECT_EQ(TextOf([&] { model.Fit(1, 0, 1); }), GetParam().text);
    for (const bool xSide : {false, true})
      EXPECT_EQ(TextOf([&] { model.NextOrthogonalComponent(xSide, 1); }), GetParam().text);
    EXPECT_EQ(TextOf([&] { model.CalculatePredictiveComps(1); }), GetParam().text);
    EXPECT_EQ(model.SizePredComps() + model.SizeXSideOrthoComps() + model.SizeYSideOrthoComps(), 0);
    EXPECT_EQ(TextOf([&] { model.Fit(0, 0, 0); }), std::nullopt) << "no component, no fault";
  }
}

TEST_P(O2PLSEmptyBlocks, AreRefusedByNameByACrossValidation) {
  NCIntegralVector<int, -99> groups = GetDeafultCVGroupsVector(9, 3);
  for (const int n : {-1, 0, 1}) {
    EXPECT_EQ(TextOf([&] { O2PLSCrossValidation(&X_, &Y_, 3, nullptr, nullptr, 100, n, n, n); }), GetParam().text);
    EXPECT_EQ(TextOf([&] { O2PLSCrossValidation(&X_, &Y_, 3, nullptr, &groups, 100, n, n, n); }), GetParam().text);
  }
}

TEST_P(O2PLSEmptyBlocks, HaveNoPredictiveComponentsWhetherSearchedForOrGiven) {
  for (const int components : {-1, 0, 1, 2}) {
    SCOPED_TRACE(components);
    const O2PLSPredictiveComponentEstimator estimator(&X_, &Y_, 3, nullptr, components);
    EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 0);
    EXPECT_EQ(estimator.GetQ2().Size(), 0);
    EXPECT_EQ(estimator.GetR2().Size(), 0);
    EXPECT_EQ(estimator.GetSignificance().Size(), 0);
  }
}

TEST(O2PLSRowlessBlocks, HaveNoComponents) {
  const Table X(0, 3), Y(0, 2), none;
  for (const Table* x : {&X, &none}) {
    NCO2PLS model(*x, Y, /*checkDimensions=*/false, 100);
    const std::string text = x == &none ? "The X block has no columns." : "PCA component could not be computed.";
    EXPECT_EQ(TextOf([&] { model.Fit(1, 0, 0); }),
              "Internal error in NCO2PLS::NextPredictiveComp.\nFunction call out of sequence.");
    EXPECT_EQ(TextOf([&] { model.Fit(1, 1, 0); }), text);
    EXPECT_EQ(TextOf([&] { model.Fit(1, 0, 1); }), text);
    EXPECT_EQ(TextOf([&] { O2PLSCrossValidation(x, &Y, 3, nullptr, nullptr, 100, 1, 0, 0); }),
              "Internal error in O2PLSCrossValidation::O2PLSCrossValidation");
    EXPECT_EQ(O2PLSPredictiveComponentEstimator(x, &Y, 3, nullptr, 1).GetNumberOfPredictiveComponents(), 0);
    EXPECT_EQ(O2PLSPredictiveComponentEstimator(x, &Y, 3, nullptr, -1).GetNumberOfPredictiveComponents(), 0);
  }
}

}  // namespace
