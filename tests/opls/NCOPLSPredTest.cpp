#include "kalmia/opls/NCOPLSPred.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "OPLSCase.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

TEST(NCOPLSPred, IsCompleteAfterConstructionForAModelWithoutOrthogonalComponents) {
  const Tables tables = RelatedTables(24, 9, 3, 0.0, 5);
  NCOPLS model = FittedOPLS(tables, 2, 0);
  NCOPLSPred prediction(&tables.X, &model);
  EXPECT_EQ(prediction.GetMaxComp(), 0);
  EXPECT_EQ(prediction.SizePComps(), 2);
  EXPECT_EQ(prediction.SizeOComps(), 0);
  EXPECT_EQ(StreamOf(*prediction.GetTPred()), StreamOf(*model.GetTprim()));
  // Two components, a rounding of the product and one of the sum in each, on both ways.
  EXPECT_LT(RelativeGapOf(tables.Y - *prediction.GetYPred(), model.GetYResiduals()), 8 * 2 * 0x1p-24);
}

class NCOPLSPredOfTheTrainingX : public ::testing::TestWithParam<int> {};  // Y variables
INSTANTIATE_TEST_SUITE_P(YVariables, NCOPLSPredOfTheTrainingX, ::testing::Values(1, 3));

TEST_P(NCOPLSPredOfTheTrainingX, GivesTheFitAfterEveryComponentWithTheOrthogonalPartInIt) {
  const Tables tables = RelatedTables(24, 9, GetParam(), 0.0, 5);
  NCOPLS model = FittedOPLS(tables, 1, 3);
  NCOPLSPred prediction(&tables.X, &model);
  for (int o = 0; o <= 3; ++o) {
    NCOPLS shorter = FittedOPLS(tables, 1, o);
    // Each component is rounded to float in its product and in the sum, on both ways, in cells up to ten times larger
    // than what is left.
    EXPECT_LT(RelativeGapOf(tables.Y - *prediction.GetYPred(), shorter.GetYResiduals()), 40 * (o + 1) * 0x1p-24);
    EXPECT_EQ(StreamOf(*prediction.GetTPred()), StreamOf(*shorter.GetTprim())) << o;
    EXPECT_EQ(StreamOf(*prediction.GetTOPred()), StreamOf(*shorter.GetTOprim())) << o;
    EXPECT_EQ(prediction.SizeOComps(), o);
    if (o < prediction.GetMaxComp()) prediction.CalcNextComponent();
  }
}

TEST(NCOPLSPred, OrthogonalFilterLeavesXAsTheModelDoes) {
  const Tables tables = RelatedTables(24, 9, 2, 0.1, 5);
  NCOPLS model = FittedOPLS(tables, 2, 2);
  NCOPLSPred prediction = PredictedBy(&model, tables.X);
  NCDataMatrix<float> left = prediction.GetXOrthoResiduals();
  for (int a = 1; a <= 2; ++a) left.AddVprimV((*prediction.GetTPred())[a], (*model.GetPprim())[a], -1.0F);
  EXPECT_EQ(StreamOf(left), StreamOf(model.GetXResiduals()));
}

TEST(NCOPLSPred, FromMatricesIsThatFromTheModelToTheBit) {
  const Tables tables = RelatedTables(24, 9, 3, 0.1, 5);
  NCOPLS model = FittedOPLS(tables, 2, 2);
  NCOPLSPred fromModel = PredictedBy(&model, tables.X);
  NCOPLSPred fromMatrices(&tables.X, model.GetWMatrices(), model.GetPMatrices(), model.GetCMatrices(),
                          model.GetWOprim(), model.GetPOprim(), model.GetCOprim());
  for (int o = 1; o <= 2; ++o) fromMatrices.CalcNextComponent();
  EXPECT_EQ(Everything(fromMatrices), Everything(fromModel));
}

TEST(NCOPLSPred, ARowWithoutAnyValueHasNoScoresAndNoPredictionAndTheOthersAreUntouched) {
  const Tables tables = RelatedTables(24, 9, 3, 0.1, 5);
  NCOPLS model = FittedOPLS(tables, 2, 2);
  NCDataMatrix<float> X = RandomMatrix<float>(7, 9, 0.2, 8);
  const NCDataMatrix<float> whole = *PredictedBy(&model, X).GetYPred();
  X.SetRow(3, kHole<float>);
  NCOPLSPred prediction = PredictedBy(&model, X);
  for (const auto* scores : {prediction.GetTPred(), prediction.GetTOPred()})
    for (int a = 1; a <= 2; ++a) EXPECT_EQ((*scores)[a][3], kHole<float>);
  for (int i = 1; i <= 7; ++i)
    if (i == 3)
      EXPECT_EQ((*prediction.GetYPred())[i].GetNumMisVal(), 3);
    else
      EXPECT_EQ(CellsOf((*prediction.GetYPred())[i]), CellsOf(whole[i])) << i;
  EXPECT_TRUE(HasExactCounts(*prediction.GetYPred()));
}

TEST(NCOPLSPred, RowsArePredictedOneByOneAsTogether) {
  const Tables tables = RelatedTables(24, 9, 2, 0.1, 5);
  NCOPLS model = FittedOPLS(tables, 2, 2);
  const NCDataMatrix<float> X = RandomMatrix<float>(5, 9, 0.3, 8);
  const NCDataMatrix<float> together = *PredictedBy(&model, X).GetYPred();
  for (int i = 1; i <= 5; ++i) {
    NCDataMatrix<float> alone;
    alone.push_back(X[i]);
    EXPECT_EQ(CellsOf((*PredictedBy(&model, alone).GetYPred())[1]), CellsOf(together[i])) << i;
  }
}

TEST(NCOPLSPred, TakesAnyNumberOfHoles) {
  const Tables tables = RelatedTables(24, 9, 2, 0.0, 5);
  NCOPLS model = FittedOPLS(tables, 2, 1);
  NCDataMatrix<float> X(1, 9);
  X(1, 6, 1.0F);
  EXPECT_EQ(PredictedBy(&model, X).GetYPred()->GetNumMisVal(), 0);
}

TEST(NCOPLSPred, RefusesAModelWithoutComponents) {
  const Tables tables = RelatedTables(12, 4, 2, 0.0, 5);
  NCOPLS fresh(&tables.X, &tables.Y, 1, 100);
  EXPECT_THROW(NCOPLSPred(&tables.X, &fresh), NCError);
  const NCOPLS model = FittedOPLS(tables, 1, 1);
  using Blocks = std::vector<NCDataMatrix<float>>;
  const Blocks &W = *model.GetWMatrices(), &P = *model.GetPMatrices(), &C = *model.GetCMatrices(), none;
  for (const auto& [w, p, c] : {std::array{&none, &P, &C}, {&W, &none, &C}, {&W, &P, &none}, {&none, &none, &none}})
    EXPECT_THROW(
        NCOPLSPred(&tables.X, w, p, c, model.GetWOprim(), model.GetPOprim(), model.GetCOprim()), NCError);
}

TEST(NCOPLSPred, OfNoObservationsIsEmpty) {
  const Tables tables = RelatedTables(24, 9, 2, 0.0, 5);
  NCOPLS model = FittedOPLS(tables, 2, 2);
  NCOPLSPred prediction = PredictedBy(&model, NCDataMatrix<float>(0, 9));
  EXPECT_EQ(prediction.GetYPred()->SizeRows(), 0);
  EXPECT_EQ(prediction.GetXOrthoResiduals().SizeRows(), 0);
  EXPECT_EQ(prediction.GetTPred()->SizeColumns(), 0);
  EXPECT_EQ(prediction.SizeOComps(), 2);
}

TEST(NCOPLSPred, LeavesTheCallersXAloneAndCopiesGoOnOnTheirOwnAsTheOriginalDoes) {
  const Tables tables = RelatedTables(24, 9, 2, 0.1, 5);
  const auto cells = CellsOf(tables.X);
  NCOPLS model = FittedOPLS(tables, 2, 2);
  NCOPLSPred prediction(&tables.X, &model);
  const std::string before = Everything(prediction);
  NCOPLSPred copy(prediction), assigned(&tables.X, &model);
  assigned.CalcNextComponent();
  assigned = prediction;
  assigned = *&assigned;
  for (NCOPLSPred* other : {&copy, &assigned}) {
    EXPECT_EQ(Everything(*other), before);
    other->CalcNextComponent();
    EXPECT_EQ(Everything(prediction), before);
  }
  prediction.CalcNextComponent();
  for (NCOPLSPred* other : {&copy, &assigned}) EXPECT_EQ(Everything(*other), Everything(prediction));
  EXPECT_EQ(CellsOf(tables.X), cells);
}

}  // namespace
