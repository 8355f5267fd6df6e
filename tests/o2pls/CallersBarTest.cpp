// Calculations that open bars of their own report to the caller's instead, where one is given.
#include <gtest/gtest.h>

#include <vector>

#include "FillingCase.h"
#include "O2PLSCase.h"
#include "kalmia/o2pls/NCYOrthogonalPLS.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"
#include "kalmia/o2pls/PLSMissingValueEstimator.h"
#include "testing/CallersBar.h"
#include "testing/RandomTables.h"

namespace {

using Matrix = NCDataMatrix<float>;

FloatBlocks Blocks() { return MakeFloatBlocks({24, 6, 5, 1, 1, 1}, 0.1, 3); }

std::vector<CalculationWithABar> Calculations() {
  return {{"a model",
           [](NCProgress* bar) {
             NCO2PLS model(Blocks().X, Blocks().Y, /*checkDimensions=*/false, 200);
             model.Fit(1, 1, 1, bar);
             return CellsOf(model.GetT());
           }},
          {"a filter",
           [](NCProgress* bar) {
             const FloatBlocks blocks = Blocks();
             NCYOrthogonalPLS filter(&blocks.X, &blocks.Y, 200, /*maxPLSComponents=*/0);
             filter.NextComponent(bar);
             return CellsOf(*filter.GetTprim());
           }},
          {"a filling", [](NCProgress* bar) {
             filling::Tables tables = filling::TwoScores(/*share=*/0.02F, /*weight=*/4.5F);
             PLSMissingValueEstimator(tables.X, tables.Y, /*both=*/true, bar);
             return CellsOf(tables.X);
           }}};
}

TEST(CallersBar, TakesThePlaceOfTheOwnBarsAndChangesNoResult) { ExpectTheCallersBarInPlaceOfTheOwn(Calculations()); }

TEST(CallersBar, StopsTheCalculationWithAnNCError) { ExpectNCErrorsOnceTheCallersBarStops(Calculations()); }

/// A stop is to these a principal component that cannot be computed, as O2PLSPredictiveComponentEstimator says.
TEST(CallersBar, ShowsThePrincipalComponentsOfACrossValidation) {
  const FloatBlocks blocks = Blocks();
  const auto scores = [&blocks](NCProgress* bar) {
    const O2PLSPredictiveComponentEstimator estimator(&blocks.X, &blocks.Y, 4, nullptr, -1, bar);
    EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 1);
    const O2PLSCrossValidation validation(&blocks.X, &blocks.Y, 4, /*progress=*/nullptr, /*groups=*/nullptr, 200, 1, 1,
                                          1, bar);
    return CellsOf(validation.GetResults().TSet.front());
  };
  ExpectTheCallersBarInPlaceOfTheOwn({{"cross-validations", scores}});
}

}  // namespace
