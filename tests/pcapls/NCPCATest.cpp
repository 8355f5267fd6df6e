#include "kalmia/pcapls/NCPCA.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testing/RandomTables.h"

namespace {

using ::testing::ElementsAre;

TEST(NCPCA, OfOneRowIsTheRowAtUnitLengthAndItsLength) {
  const NCDataMatrix<float> x = MatrixOf<float>({{3, kHole<float>, -4}});
  for (const int maxIterations : {0, 1, 50}) {
    NCPCA model(&x, maxIterations);
    EXPECT_TRUE(model.NextComponent(nullptr, nullptr, 0, nullptr));
    EXPECT_THAT(CellsOf((*model.GetPprim())[1]), ElementsAre(0.6F, kHole<float>, -0.8F));
    EXPECT_THAT(CellsOf((*model.GetTprim())[1]), ElementsAre(5.0F));
    EXPECT_EQ(model.GetIterations(), 1);
  }
}

TEST(NCPCA, TakesATableOfRankOneApartInOneComponent) {
  // t p' of whole numbers whose squares add up to squares: every step is exact but for the last bit of a division.
  const NCDataMatrix<float> x = MatrixOf<float>({{6, 8}, {-12, -16}, {12, 16}});
  NCPCA model(&x, 50);
  model.NextComponent(nullptr, nullptr, 0, nullptr);
  EXPECT_THAT(CellsOf((*model.GetPprim())[1]), ElementsAre(0.6F, 0.8F));
  EXPECT_THAT(CellsOf((*model.GetTprim())[1]), ElementsAre(10, -20, 20));
  EXPECT_EQ(model.GetComponents(), 1);
  model.CalculateResiduals();
  EXPECT_LT(static_cast<double>(model.GetResiduals()->GetSS()), 1e-12);  // 900 times the square of 2^-23, and some
}

}  // namespace
