#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <vector>

#include "RelatedTables.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

// PLS components where holes come up by themselves, and what the results share with copies of them.

namespace {

using ::testing::Each;
using ::testing::ElementsAre;


TEST(NCPLSLimits, GoesOnWhereWhatIsLeftOfUIsZero) {
  // t = (-49.5, -49.5), c = (4, 2), u = (-99, 0): the first cell of u is lost by accident, and the other is 0, from
  // which every change counts as large. The second round has nothing to go by and ends.
  const NCDataMatrix<float> X = MatrixOf<float>({{49.5F}, {49.5F}});
  const NCDataMatrix<float> Y = MatrixOf<float>({{-396, -198}, {0, 0}});
  NCPLS once(&X, &Y, 1);
  once.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
  ASSERT_THAT(CellsOf((*once.GetUprim())[1]), ElementsAre(kMissing, 0.0F));
  NCPLS model(&X, &Y, 50);
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
  EXPECT_EQ(model.GetIterations(), 2);
}

TEST(NCPLSLimits, EmptiesTheRowsOfAnObservationWithoutAScore) {
  Tables tables = RelatedTables(8, 3, 2, 0.0, 9);
  tables.X.SetRow(4, kMissing);
  NCPLS model(&tables.X, &tables.Y, 50);
  AddComponent(&model);
  ASSERT_EQ((*model.GetTprim())[1][4], kMissing);
  EXPECT_EQ((*model.GetTprim())[1].GetNumMisVal(), 1);
  for (const NCDataMatrix<float>* residuals : {model.GetXResiduals(), model.GetYResiduals()}) {
    for (int i = 1; i <= 8; ++i) EXPECT_EQ((*residuals)[i].GetNumMisVal(), i == 4 ? residuals->SizeColumns() : 0);
    EXPECT_THAT(CellsOf((*residuals)[4]), Each(kMissing));
    EXPECT_TRUE(HasExactCounts(*residuals));
  }
}

TEST(NCPLSLimits, LeavesCopiesOfItsResultsAloneWhenAComponentIsTurnedOrAppended) {
  const Tables tables = RelatedTables(8, 3, 2, 0.1, 10);
  NCPLS model(&tables.X, &tables.Y, 50);
  AddComponent(&model);
  const NCDataMatrix<float> copies[] = {*model.GetCprim(), *model.GetPprim(), *model.GetWprim(), *model.GetUprim(),
                                        *model.GetTprim()};
  std::vector<std::vector<std::vector<float>>> before;
  for (const auto& copy : copies) before.push_back(CellsOf(copy));
  const auto expectUntouched = [&] {
    for (std::size_t k = 0; k < before.size(); ++k) EXPECT_EQ(CellsOf(copies[k]), before[k]);
  };
  model.FlipComponent(1);
  EXPECT_NE(CellsOf(*model.GetWprim()), before[2]);
  expectUntouched();
  AddComponent(&model);
  EXPECT_EQ(model.GetWprim()->SizeRows(), 2);
  expectUntouched();
}

TEST(NCPLSLimits, TakesTheProductWithAnEmptyRowOfLoadingsIntoWStarAsTheNumberItIs) {
  const NCDataMatrix<float> P = MatrixOf<float>({{kMissing, kMissing}, {0, 1}});
  // With a complete row of weights the product is 0.
  const NCDataMatrix<float> complete = NCPLS::GetWStarPrim(MatrixOf<float>({{1, 2}, {3, 5}}), P);
  EXPECT_THAT(CellsOf(complete), ElementsAre(ElementsAre(1, 2), ElementsAre(3, 5)));
  // Where that row has a hole too it is -99: 3 + 99 * 1.
  const NCDataMatrix<float> holed = NCPLS::GetWStarPrim(MatrixOf<float>({{1, 2}, {3, kMissing}}), P);
  EXPECT_THAT(CellsOf(holed), ElementsAre(ElementsAre(1, 2), ElementsAre(102, kMissing)));
  EXPECT_TRUE(HasExactCounts(holed));
}

TEST(NCPLSLimits, CountsFromOneAndPutsNewRowsInFrontAfterAReadOfVersionTwo) {
  const Tables tables = RelatedTables(8, 4, 2, 0.1, 11);
  NCPLS whole(&tables.X, &tables.Y, 50);
  AddComponent(&whole);
  NCPLS read;
  std::istringstream stream(StreamOf(whole));
  ASSERT_TRUE(stream >> read);
  AddComponent(&whole);
  AddComponent(&read);
  EXPECT_EQ(read.GetComponents(), 1);
  using Accessor = const NCDataMatrix<float>* (NCPLS::*)() const;
  for (const Accessor get :
       {&NCPLS::GetCprim, &NCPLS::GetPprim, &NCPLS::GetWprim, &NCPLS::GetUprim, &NCPLS::GetTprim}) {
    ASSERT_EQ((read.*get)()->SizeRows(), 2);
    EXPECT_EQ(CellsOf((*(read.*get)())[1]), CellsOf((*(whole.*get)())[2]));
    EXPECT_EQ(CellsOf((*(read.*get)())[2]), CellsOf((*(whole.*get)())[1]));
  }
  EXPECT_EQ(CellsOf(*read.GetXResiduals()), CellsOf(*whole.GetXResiduals()));
  EXPECT_EQ(CellsOf(*read.GetYResiduals()), CellsOf(*whole.GetYResiduals()));
}

TEST(NCPLSLimits, HasNothingToSayOfTablesWithoutRows) {
  NCDataMatrix<float> X;
  NCDataMatrix<float> Y;
  X.SetSize(0, 3);
  for (const int yVariables : {1, 2}) {
    Y.SetSize(0, yVariables);
    NCPLS model(&X, &Y, 50);
    try {
      model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
      ADD_FAILURE() << "no error";
    } catch (const NCError& error) {
      EXPECT_EQ(error.GetLevel(), NCError::Level1);
    }
    model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
    model.CalculateResiduals();
    EXPECT_EQ(model.GetComponents(), 1);
    EXPECT_THAT(CellsOf((*model.GetWprim())[1]), Each(kMissing));
    EXPECT_THAT(CellsOf((*model.GetCprim())[1]), Each(kMissing));
    EXPECT_EQ(model.GetTprim()->SizeColumns(), 0);
  }
}

}  // namespace
