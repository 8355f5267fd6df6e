// The principal components inside OPLS models report to the caller's bar, where one is given.
#include <gtest/gtest.h>

#include <vector>

#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/OPLSCrossValidation.h"
#include "testing/CallersBar.h"
#include "testing/RandomTables.h"

namespace {

using Matrix = NCDataMatrix<float>;

std::vector<CalculationWithABar> Calculations() {
  const Matrix x = RandomMatrix<float>(20, 6, 0.0, 1), y = RandomMatrix<float>(20, 3, 0.0, 2);
  return {{"a model",
           [=](NCProgress* bar) {
             NCOPLS model(&x, &y, 2, 200);
             for (int a = 0; a < 2; ++a) model.NextComponent(/*progress=*/nullptr, bar);
             return CellsOf(*model.GetTprim());
           }},
          {"a cross-validation", [=](NCProgress* bar) {
             OPLSCrossValidation validation(&x, &y, 2, 4, /*progress=*/nullptr, /*groups=*/nullptr, bar);
             validation.NextComponent(/*progress=*/nullptr, bar);
             return CellsOf(validation.GetYPredResiduals());
           }}};
}

TEST(OPLSCallersBar, TakesThePlaceOfTheOwnBarsAndChangesNoResult) {
  ExpectTheCallersBarInPlaceOfTheOwn(Calculations());
}

TEST(OPLSCallersBar, StopsTheCalculationWithAnNCError) { ExpectNCErrorsOnceTheCallersBarStops(Calculations()); }

}  // namespace
