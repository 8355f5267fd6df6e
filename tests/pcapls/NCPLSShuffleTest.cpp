#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "RelatedTables.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

// The order of the rows of Y, changed for a permutation test.

namespace {

using ::testing::ElementsAre;


TEST(NCPLSShuffle, PutsTheRowsOfYIntoTheGivenOrder) {
  const Tables tables = RelatedTables(5, 3, 2, 0.3, 16);
  NCPLS model(&tables.X, &tables.Y, 50);
  int order[] = {-12345, 3, 1, 5, 2, 4};  // element 0 is not looked at
  model.ShuffleYResiduals(order);
  for (int i = 1; i <= 5; ++i) EXPECT_EQ(CellsOf((*model.GetYResiduals())[i]), CellsOf(tables.Y[order[i]]));
  EXPECT_TRUE(HasExactCounts(*model.GetYResiduals()));
  EXPECT_EQ(CellsOf(*model.GetXResiduals()), CellsOf(tables.X));
}

TEST(NCPLSShuffle, CountsHolesThatTheTableDidNotKnowOf) {
  const NCDataMatrix<float> X = RandomMatrix<float>(2, 2, 0.0, 1);
  NCDataMatrix<float> Y = RandomMatrix<float>(2, 1, 0.0, 2);
  Y(1)(1, kMissing);  // through the row: the table's own counts stay at 0
  ASSERT_EQ(Y.GetNumMisVal(), 0);
  NCPLS model(&X, &Y, 50);
  int order[] = {0, 2, 1};
  model.ShuffleYResiduals(order);
  EXPECT_TRUE(HasExactCounts(*model.GetYResiduals()));
  EXPECT_EQ(model.GetYResiduals()->GetNumMisVal(), 1);
}

TEST(NCPLSShuffle, IsRefusedOnceThereIsAComponent) {
  const Tables tables = RelatedTables(5, 3, 1, 0.0, 17);
  NCPLS model(&tables.X, &tables.Y, 50);
  AddComponent(&model);
  const std::string before = StreamOf(model);
  int order[] = {0, 5, 4, 3, 2, 1};
  try {
    model.ShuffleYResiduals(order);
    ADD_FAILURE() << "no error";
  } catch (const NCError& error) {
    EXPECT_EQ(error.GetMessage(), LanguageString::Get(10162));
    EXPECT_EQ(error.GetLevel(), NCError::Level0);
  }
  EXPECT_EQ(StreamOf(model), before);
}

TEST(NCPLSShuffle, TakesARowTwice) {
  const NCDataMatrix<float> X = RandomMatrix<float>(3, 2, 0.0, 1);
  const NCDataMatrix<float> Y = MatrixOf<float>({{1, 2}, {3, kMissing}, {5, 6}});
  NCPLS model(&X, &Y, 50);
  int order[] = {-1, 2, 2, 1};
  model.ShuffleYResiduals(order);
  EXPECT_THAT(CellsOf(*model.GetYResiduals()),
              ElementsAre(ElementsAre(3, kMissing), ElementsAre(3, kMissing), ElementsAre(1, 2)));
  EXPECT_TRUE(HasExactCounts(*model.GetYResiduals()));
}

}  // namespace
