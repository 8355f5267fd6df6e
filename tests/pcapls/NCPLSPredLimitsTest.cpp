#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kalmia/pcapls/NCPLSPred.h"
#include "testing/RandomTables.h"

// PLS prediction where a score lands on -99 by accident.

namespace {

using ::testing::ElementsAre;


/// One component of one X and one Y variable: with w = 1/2 a cell x has the score 2 x.
class NCPLSPredLimits : public ::testing::Test {
 protected:
  NCPLSPred PredictionOf(const NCDataMatrix<float>& X) const { return NCPLSPred(X, half_, half_, three_, 1.0F); }

  const NCDataMatrix<float> half_{1, 1, 0.5F};
  const NCDataMatrix<float> three_{1, 1, 3.0F};
};

TEST_F(NCPLSPredLimits, TakesAScoreThatLandsOnTheMissingValueAsMissing) {
  NCPLSPred prediction = PredictionOf(MatrixOf<float>({{-49.5F}, {1.0F}}));
  prediction.CalcNextComponent();
  EXPECT_THAT(CellsOf(*prediction.GetTPred()), ElementsAre(kMissing, 2.0F));
  EXPECT_EQ(prediction.GetTPred()->GetNumMisVal(), 1);
  EXPECT_THAT(CellsOf(*prediction.GetXResiduals()), ElementsAre(ElementsAre(-49.5F), ElementsAre(0.0F)));
  EXPECT_THAT(CellsOf(*prediction.GetYPred()), ElementsAre(ElementsAre(0.0F), ElementsAre(6.0F)));
  EXPECT_TRUE(HasExactCounts(*prediction.GetXResiduals()));
}

TEST_F(NCPLSPredLimits, EmptiesARowOfXWhoseScoreIsTheMissingValueWithAnotherSign) {
  // What is added to X is -t p': -99 there says that nothing is known. The prediction takes t itself.
  for (const float second : {1.0F, kMissing}) {  // without and with an observation that has no score
    NCPLSPred prediction = PredictionOf(MatrixOf<float>({{49.5F}, {second}}));
    prediction.CalcNextComponent();
    EXPECT_EQ((*prediction.GetTPred())[1], 99.0F);
    EXPECT_EQ((*prediction.GetXResiduals())[1][1], kMissing);
    EXPECT_EQ((*prediction.GetYPred())[1][1], 297.0F);
    EXPECT_TRUE(HasExactCounts(*prediction.GetXResiduals()));
  }
}

}  // namespace
