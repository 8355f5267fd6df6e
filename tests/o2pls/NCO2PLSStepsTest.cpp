// In which order the steps of the model may be called, copies and signs.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "O2PLSCase.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/NCO2PLSPred.h"
#include "kalmia/pcapls/NCPCA.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;

constexpr int kMaxIterations = 500;
constexpr const char* kOutOfSequence =
    "Internal error in NCO2PLS::NextPredictiveComp.\nFunction call out of sequence.";

/// Sums of a hundred float cells, rounded a handful of times.
constexpr double kRounding = 1e-5;

NCO2PLS Fitted(const FloatBlocks& blocks, int predictive, int xOrthogonal, int yOrthogonal, bool check = false) {
  NCO2PLS model(blocks.X, blocks.Y, check, kMaxIterations);
  model.Fit(predictive, xOrthogonal, yOrthogonal);
  return model;
}

// ---- The order of the steps

FloatBlocks SmallBlocks() { return MakeFloatBlocks({20, 6, 5, 2, 1, 1}, 0.05, 3); }

TEST(NCO2PLS, HasNoComponentsAfterAFitOfNone) {
  const FloatBlocks blocks = SmallBlocks();
  for (const bool check : {false, true}) {
    const NCO2PLS model = Fitted(blocks, 0, 0, 0, check);
    for (const auto& cells : Everything(model)) EXPECT_TRUE(cells.empty());
  }
}

TEST(NCO2PLS, StartsAFitAnewFromOrthogonalComponentsAlone) {
  const FloatBlocks blocks = SmallBlocks();
  const NCO2PLS whole = Fitted(blocks, 1, 1, 1);
  for (const bool xSide : {true, false}) {
    NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/false, kMaxIterations);
    model.NextOrthogonalComponent(xSide, 1);
    model.Fit(1, 1, 1);
    EXPECT_EQ(Everything(model), Everything(whole));
  }
}

NCDataVector<float> FirstLoading(const Table& table, int rounds) {
  NCPCA model(&table, rounds);
  model.NextComponent(nullptr, nullptr, 0, nullptr);
  return (*model.GetPprim())[1];
}

TEST(NCO2PLS, HandsItsLimitOfRoundsToEveryPrincipalComponent) {
  constexpr int kRounds = 2;
  const Table X = RandomMatrix<float>(20, 6, 0, 1), Y = RandomMatrix<float>(20, 5, 0, 2);
  NCO2PLS model(X, Y, /*checkDimensions=*/false, kRounds);
  model.Fit(2, 1, 1);
  const auto orthogonalWeights = [](const Table& own, const Table& other, int rounds) {
    Table rest = own, scores;
    for (int a = 1; a <= 2; ++a) {
      const NCDataVector<float> w = FirstLoading(other.MatrixMultiply(rest, true, false), rounds);
      const NCDataVector<float> t = rest.SpecialNipalsRegressRowsFix(w, nullptr, 0);
      rest.AddVprimV(t, w, -1.0F);
      scores.push_back(t);
    }
    return CellsOf(FirstLoading(scores.MatrixMultiply(rest, false, false), rounds));
  };
  EXPECT_EQ(CellsOf(model.GetWo())[0], orthogonalWeights(X, Y, kRounds));
  EXPECT_NE(CellsOf(model.GetWo())[0], orthogonalWeights(X, Y, kMaxIterations)) << "else it would show nothing";
  EXPECT_EQ(CellsOf(model.GetCo())[0], orthogonalWeights(Y, X, kRounds));

  const Table to = model.GetTo(), po = model.GetPo(), uo = model.GetUo(), qo = model.GetQo();
  Table x = X, y = Y;
  x.AddVprimV(to[1], po[1], -1.0F);
  y.AddVprimV(uo[1], qo[1], -1.0F);
  const Table product = y.MatrixMultiply(x, true, false);
  EXPECT_EQ(CellsOf(model.GetW())[0], CellsOf(FirstLoading(product, kRounds)));
  EXPECT_NE(CellsOf(model.GetW())[0], CellsOf(FirstLoading(product, kMaxIterations)));
}

TEST(NCO2PLS, IsEmptyByDefault) {
  const NCO2PLS model;
  EXPECT_EQ(model.SizeXColumns(), 0);
  EXPECT_EQ(model.SizeYColumns(), 0);
  for (const auto& cells : Everything(model)) EXPECT_TRUE(cells.empty());
}

TEST(NCO2PLS, RefusesAPredictiveComponentOutOfSequence) {
  const FloatBlocks blocks = SmallBlocks();
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/false, kMaxIterations);
  const auto next = [&] { model.NextPredictiveComp(); };
  EXPECT_EQ(TextOf(next), kOutOfSequence) << "before the working blocks are made";
  model.InitPredCompCalculation();
  EXPECT_EQ(TextOf(next), std::nullopt);
  model.NextOrthogonalComponent(/*xSide=*/true, 1);
  EXPECT_EQ(TextOf(next), kOutOfSequence) << "an orthogonal component clears the working blocks";
  model.Fit(1, 1, 1);
  EXPECT_EQ(TextOf(next), kOutOfSequence) << "a fit ends without them";
  model.CalculatePredictiveComps(1);
  model.EndFit();
  EXPECT_EQ(TextOf(next), kOutOfSequence);
  model.CalculatePredictiveComps(1);
  model.UnFit();
  EXPECT_EQ(TextOf(next), kOutOfSequence);
  EXPECT_EQ(model.SizePredComps(), 0);
}

TEST(NCO2PLS, AppendsTheSameComponentAgainUnlessItIsSubtracted) {
  const FloatBlocks blocks = SmallBlocks();
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/false, kMaxIterations);
  model.InitPredCompCalculation();
  model.NextPredictiveComp();
  model.NextPredictiveComp();
  EXPECT_EQ(CellsOf(model.GetT())[1], CellsOf(model.GetT())[0]);
  model.SubtractLastPredictiveComp();
  model.NextPredictiveComp();
  EXPECT_NE(CellsOf(model.GetT())[2], CellsOf(model.GetT())[0]);
}

TEST(NCO2PLS, IsAModelOfFewerComponentsWhenFinalisedInBetween) {
  const FloatBlocks blocks = SmallBlocks();
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/false, kMaxIterations);
  model.NextOrthogonalComponent(/*xSide=*/true, 2);
  model.InitPredCompCalculation();
  model.NextPredictiveComp();
  model.SubtractLastPredictiveComp();
  model.Finalise();
  EXPECT_EQ(model.GetLambda().SizeRows(), 1);
  EXPECT_EQ(model.GetS().SizeRows(), 1);
  model.NextPredictiveComp();
  model.Finalise();
  EXPECT_EQ(model.GetLambda().SizeRows(), 2);
  EXPECT_EQ(model.GetS().SizeRows(), 1) << "not appended to";
  EXPECT_EQ(Everything(model), Everything(Fitted(blocks, 2, 1, 0)));
}

TEST(NCO2PLS, TakesOneMoreOrthogonalComponentWhenFitted) {
  const FloatBlocks blocks = SmallBlocks();
  NCO2PLS model = Fitted(blocks, 2, 1, 0);
  model.NextOrthogonalComponent(/*xSide=*/true, model.SizePredComps());
  model.CalculatePredictiveComps(model.SizePredComps());
  model.Finalise();
  EXPECT_EQ(Everything(model), Everything(Fitted(blocks, 2, 2, 0)));
}

TEST(NCO2PLS, KeepsOrthogonalMatricesRAndSWhereThePredictiveOnesStartAnew) {
  NCO2PLS model = Fitted(SmallBlocks(), 2, 1, 1);
  model.InitPredCompCalculation();
  for (const Table& cleared : {model.GetT(), model.GetU(), model.GetP(), model.GetW(), model.GetC(), model.GetQ(),
                               model.GetLambda(), model.GetXLambda()})
    EXPECT_EQ(cleared.SizeRows(), 0);
  for (const Table& kept : {model.GetTo(), model.GetWo(), model.GetPo(), model.GetUo(), model.GetCo(), model.GetQo(),
                            model.GetR(), model.GetS()})
    EXPECT_EQ(kept.SizeRows(), 1);
}

TEST(NCO2PLS, RefusesAnOrthogonalComponentWithoutPredictiveOnes) {
  const FloatBlocks blocks = SmallBlocks();
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/false, kMaxIterations);
  for (const bool xSide : {true, false})
    EXPECT_EQ(TextOf([&] { model.NextOrthogonalComponent(xSide, 0); }),
              "Internal error in NCO2PLS\nAn orthogonal component needs a predictive component.");
  EXPECT_EQ(model.SizeXSideOrthoComps() + model.SizeYSideOrthoComps(), 0);
}

TEST(NCO2PLS, HasAMissingScoreForAnOrthogonalComponentOfNothingBesideOnePredictiveComponent) {
  // One variable is all taken by the predictive component: the weight is zero, as the principal component of a single
  // row of zeros, and no score goes with it.
  const Table X = RandomMatrix<float>(8, 1, 0, 1), Y = RandomMatrix<float>(8, 3, 0, 2);
  NCO2PLS model(X, Y, /*checkDimensions=*/false, kMaxIterations);
  model.NextOrthogonalComponent(/*xSide=*/true, 1);
  EXPECT_EQ(model.GetWo()[1][1], 0.0F);
  EXPECT_EQ(model.GetTo()[1].GetNumMisVal(), 8);
}

// ---- Copies

TEST(NCO2PLS, CopiesOfAModelGoTheirOwnWays) {
  const FloatBlocks blocks = SmallBlocks();
  NCO2PLS model = Fitted(blocks, 2, 1, 1);
  const auto all = Everything(model);
  NCO2PLS copy(model), assigned;
  assigned = model;
  EXPECT_EQ(Everything(copy), all);
  EXPECT_EQ(Everything(assigned), all);
  copy.UnFit();
  assigned.Fit(1, 0, 0);
  EXPECT_EQ(Everything(model), all);
  EXPECT_EQ(CellsOf(copy.GetX()), CellsOf(blocks.X)) << "UnFit leaves the blocks";
  copy.swap(assigned);
  EXPECT_EQ(copy.SizePredComps(), 1);
  EXPECT_EQ(assigned.SizePredComps(), 0);
}

TEST(NCO2PLS, MovesAModelAndLeavesAnEmptyOne) {
  NCO2PLS model = Fitted(SmallBlocks(), 2, 1, 1);
  const auto all = Everything(model);
  const NCO2PLS moved(std::move(model));
  EXPECT_EQ(Everything(moved), all);
  EXPECT_EQ(model.SizePredComps() + model.SizeXColumns(), 0);
  model = moved;
  EXPECT_EQ(Everything(model), all);
}

TEST(NCO2PLS, CopiesTheLimitsAndTheStateOfTheSteps) {
  const FloatBlocks blocks = MakeFloatBlocks({10, 3, 3, 1, 1, 1}, 0.05, 3);
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/true, kMaxIterations);
  model.InitPredCompCalculation();
  NCO2PLS copy;
  copy = model;
  EXPECT_NO_THROW(copy.NextPredictiveComp()) << "the working blocks are copied";
  EXPECT_THROW(copy.NextOrthogonalComponent(/*xSide=*/true, 4), NCO2PLSDimensionalityException);
  copy = NCO2PLS(blocks.X, blocks.Y, /*checkDimensions=*/false, kMaxIterations);
  EXPECT_NO_THROW(copy.NextOrthogonalComponent(/*xSide=*/true, 4));
}

TEST(NCO2PLS, HandsOutMatricesThatNobodyElseHolds) {
  NCO2PLS model = Fitted(SmallBlocks(), 2, 1, 1);
  const auto all = Everything(model);
  Table t = model.GetT();
  t(1, 1, 1e6F);
  EXPECT_EQ(Everything(model), all);
}

// ---- Signs

TEST(NCO2PLS, FlipsTheFlaggedRowsOfEachSide) {
  NCO2PLS model = Fitted(SmallBlocks(), 2, 2, 2);
  const NCO2PLS before = model;
  model.FlipPredictiveModel({false, true}, {true, false});
  model.FlipXSideModel({true, false});
  model.FlipYSideModel({false, true});
  const auto expectFlipped = [](const Table& now, const Table& then, int row, const char* what) {
    SCOPED_TRACE(what);
    Table expected = then;
    expected.MultiplyRow(row, -1.0F);
    EXPECT_EQ(CellsOf(now), CellsOf(expected));
  };
  expectFlipped(model.GetT(), before.GetT(), 2, "T");
  expectFlipped(model.GetP(), before.GetP(), 2, "P");
  expectFlipped(model.GetW(), before.GetW(), 2, "W");
  expectFlipped(model.GetU(), before.GetU(), 1, "U");
  expectFlipped(model.GetC(), before.GetC(), 1, "C");
  expectFlipped(model.GetQ(), before.GetQ(), 1, "Q");
  expectFlipped(model.GetTo(), before.GetTo(), 1, "To");
  expectFlipped(model.GetWo(), before.GetWo(), 1, "Wo");
  expectFlipped(model.GetPo(), before.GetPo(), 1, "Po");
  expectFlipped(model.GetS(), before.GetS(), 1, "S");
  expectFlipped(model.GetUo(), before.GetUo(), 2, "Uo");
  expectFlipped(model.GetCo(), before.GetCo(), 2, "Co");
  expectFlipped(model.GetQo(), before.GetQo(), 2, "Qo");
  expectFlipped(model.GetR(), before.GetR(), 2, "R");
  EXPECT_EQ(CellsOf(model.GetLambda()), CellsOf(model.GetT().GetRegressionCoefficients(model.GetU())));
  EXPECT_EQ(CellsOf(model.GetXLambda()), CellsOf(model.GetU().GetRegressionCoefficients(model.GetT())));
  EXPECT_NE(CellsOf(model.GetLambda()), CellsOf(before.GetLambda()));
}

TEST(NCO2PLS, PredictsTheSameWhateverTheSigns) {
  const FloatBlocks blocks = SmallBlocks();
  NCO2PLS model = Fitted(blocks, 2, 1, 1);
  const Table before = NCO2PLSYPred(&blocks.X, &model).GetYPred();
  model.FlipPredictiveModel({true, false}, {false, true});
  model.FlipXSideModel({true});
  model.FlipYSideModel({true});
  const Table difference = NCO2PLSYPred(&blocks.X, &model).GetYPred() - before;
  EXPECT_LT(static_cast<double>(difference.GetSS() / before.GetSS()), kRounding * kRounding);
}

TEST(NCO2PLS, PassesOverFlagsWithoutRowsAndRowsWithoutFlags) {
  NCO2PLS model = Fitted(SmallBlocks(), 2, 2, 2);
  const auto all = Everything(model);
  model.FlipPredictiveModel({}, {});
  model.FlipXSideModel({});
  model.FlipYSideModel({});
  EXPECT_EQ(Everything(model), all);
  model.FlipXSideModel({false, false, true, true});
  model.FlipPredictiveModel({false, false, true}, {});
  EXPECT_EQ(Everything(model), all);
  model.FlipXSideModel({true});
  EXPECT_NE(CellsOf(model.GetTo())[0], all[6][0]);
  EXPECT_EQ(CellsOf(model.GetTo())[1], all[6][1]) << "a short vector of flags leaves the later rows";
}

TEST(NCO2PLS, ComputesTheInnerRelationsAnewOnlyWhereAPredictiveRowWasFlipped) {
  const FloatBlocks blocks = SmallBlocks();
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/false, kMaxIterations);
  model.NextOrthogonalComponent(/*xSide=*/true, 2);
  model.NextOrthogonalComponent(/*xSide=*/false, 2);
  model.CalculatePredictiveComps(2);
  model.FlipXSideModel({true});
  model.FlipYSideModel({true});
  model.FlipPredictiveModel({false, false}, {false, false});
  EXPECT_EQ(model.GetLambda().SizeRows(), 0);
  model.FlipPredictiveModel({}, {true});
  EXPECT_EQ(model.GetLambda().SizeRows(), 2);
}

}  // namespace
