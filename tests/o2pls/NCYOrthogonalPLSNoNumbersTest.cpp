// A table with cells that are no numbers has no weights to search for.
#include <gtest/gtest.h>

#include <limits>

#include "O2PLSCase.h"
#include "kalmia/o2pls/NCYOrthogonalPLS.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;

TEST(NCYOrthogonalPLSNoNumbers, EndASearchBeforeItStarts) {
  const Table Y = RandomMatrix<float>(12, 2, 0, 2);
  for (const float wrong : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
    for (const int maxIterations : {1, 200}) {
      Table X = RandomMatrix<float>(12, 5, 0, 1);
      X(3, 2, wrong);
      NCYOrthogonalPLS model(&X, &Y, maxIterations, 0);
      EXPECT_EQ(TextOf([&] { model.NextComponent(/*showProgress=*/false); }), "PCA component could not be computed.");
      EXPECT_EQ(model.GetComponents(), 0);
      EXPECT_NE(model.GetY(), nullptr) << "it has not been looked at";
    }
}

TEST(NCYOrthogonalPLSNoNumbers, WouldLeaveMissingWeightsThatCountAsNoChange) {
  NCDataVector<float> missing(5);
  missing.Normalise();
  EXPECT_EQ(missing.GetNumMisVal(), 5) << "there is nothing to give a length to";
  EXPECT_EQ(missing.Difference(RandomVector<float>(5, 0, 1)), -99.0L) << "below any limit";
}

}  // namespace
