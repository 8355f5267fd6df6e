#include "kalmia/o2pls/O2PLSCVResults.h"

#include <cstddef>

#include "kalmia/o2pls/internal/FlipRows.h"

void O2PLSCVResults::FlipPredictiveModel(const std::vector<bool>& xFlips, const std::vector<bool>& yFlips) {
  for (std::size_t i = 0; i < TSet.size(); ++i) {
    const bool anyX = kalmia::FlipRows(xFlips, {&TSet[i], &PSet[i], &WSet[i]});
    const bool anyY = kalmia::FlipRows(yFlips, {&USet[i], &CSet[i], &QSet[i]});
    if (!anyX && !anyY) continue;
    LambdaSet[i] = TSet[i].GetRegressionCoefficients(USet[i]);
    XLambdaSet[i] = USet[i].GetRegressionCoefficients(TSet[i]);
  }
}
