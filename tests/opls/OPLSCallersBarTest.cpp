// The principal components inside OPLS models report to the caller's bar, where one is given.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/OPLSCrossValidation.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Cells = std::vector<std::vector<float>>;

Cells CellsOf(const Matrix& matrix) {
  Cells cells;
  for (const NCDataVector<float>& row : matrix) cells.emplace_back(row.begin(), row.end());
  return cells;
}

struct Calculation {
  const char* what;
  std::function<Cells(NCProgress*)> run;  ///< some of its results, with the bar of the models
};

std::vector<Calculation> Calculations() {
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
  for (const Calculation& calculation : Calculations()) {
    SCOPED_TRACE(calculation.what);
    ProgressLog given, own;
    const RecordOwnBars bars(&own);
    const Cells with = calculation.run(RecordingBar(&given).get());
    EXPECT_GT(given.Count("SetRange"), 0);
    EXPECT_EQ(own.calls, std::vector<std::string>{});
    EXPECT_EQ(with, calculation.run(nullptr));
    EXPECT_GT(own.Count("open"), 0);
  }
}

TEST(OPLSCallersBar, StopsTheCalculationWithAnNCError) {
  for (const Calculation& calculation : Calculations()) {
    ProgressLog log;
    log.stopAt = 1;
    EXPECT_THROW(calculation.run(RecordingBar(&log).get()), NCError) << calculation.what;
  }
}

}  // namespace
