#include "kalmia/pcapls/NCPCAPred.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "PCAValidationCase.h"
#include "PlainPLS.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/ScoreEstimator.h"
#include "testing/RandomTables.h"

namespace {

using ::testing::Each;

constexpr int kVariables = 8;

/// A model of three components of a complete table.
class NCPCAPredTest : public ::testing::Test {
 protected:
  NCPCAPredTest() : X_(TableOfThreeDirections(20, kVariables, 0.0)), model_(&X_, 200) {
    for (int a = 1; a <= 3; ++a) {
      model_.NextComponent(nullptr, nullptr, 0, nullptr);
      model_.CalculateResiduals();
    }
  }

  NCPCAPred PredictionOf(const NCDataMatrix<float>& X, float tolerance = 1.0F) const {
    return NCPCAPred(&X, model_.GetPprim(), 50, tolerance);
  }

  NCDataMatrix<float> X_;
  NCPCA model_;
};

TEST_F(NCPCAPredTest, HasAllScoresFromTheStartAndTheTableAsItIs) {
  const NCPCAPred prediction = PredictionOf(X_);
  EXPECT_EQ(prediction.GetResidualsCompComputed(), 0);
  EXPECT_EQ(prediction.GetMaxComp(), 3);
  EXPECT_EQ(prediction.SizeObservations(), 20);
  EXPECT_EQ(prediction.GetTPredPrim()->SizeRows(), 3);
  EXPECT_EQ(prediction.GetTPredPrim()->SizeColumns(), 20);
  EXPECT_EQ(prediction.GetTPredPrim()->GetNumMisVal(), 0);
  EXPECT_EQ(CellsOf(*prediction.GetXResiduals()), CellsOf(X_));
}

TEST_F(NCPCAPredTest, GivesTheTrainingRowsTheScoresAndResidualsOfTheModel) {
  NCPCAPred prediction = PredictionOf(X_);
  for (int a = 1; a <= 3; ++a) {
    prediction.CalcNextResidual();
    EXPECT_EQ(prediction.GetResidualsCompComputed(), a);
    // The model divides by p'p in double, where here products are added up in float, eight cells below 20.
    const plain::Vector t = plain::VectorOf((*model_.GetTprim())[a]);
    const plain::Vector predicted = plain::VectorOf((*prediction.GetTPredPrim())[a]);
    for (std::size_t i = 0; i < t.size(); ++i) EXPECT_NEAR(predicted[i], t[i], a * 8 * 20 * 0x1p-24);
  }
  for (int i = 1; i <= 20; ++i)
    for (int k = 1; k <= kVariables; ++k)
      EXPECT_NEAR((*prediction.GetXResiduals())[i][k], (*model_.GetResiduals())[i][k], 3 * 8 * 20 * 0x1p-24);
}

TEST_F(NCPCAPredTest, GivesEachRowTheScoresOfTheEstimatorToTheBit) {
  const NCDataMatrix<float> fresh = RandomMatrix<float>(15, kVariables, 0.2, 3);
  ASSERT_GT(fresh.GetNumMisVal(), 0);
  const NCPCAPred prediction = PredictionOf(fresh);
  const ScoreEstimator estimator(*model_.GetPprim(), 50);
  NCDataMatrix<float> T(3, 15);
  for (int i = 1; i <= 15; ++i) estimator.GetT(T, i, fresh[i]);
  EXPECT_EQ(CellsOf(*prediction.GetTPredPrim()), CellsOf(T));
  EXPECT_TRUE(HasExactCounts(*prediction.GetTPredPrim()));
}

TEST_F(NCPCAPredTest, TakesTheComponentsOutOfXOneByOne) {
  const NCDataMatrix<float> fresh = RandomMatrix<float>(6, kVariables, 0.1, 4);
  NCPCAPred prediction = PredictionOf(fresh);
  const auto scores = CellsOf(*prediction.GetTPredPrim());
  plain::Table rest = plain::TableOf(fresh);
  for (int a = 1; a <= 3; ++a) {
    prediction.CalcNextResidual();
    plain::Deflate(&rest, plain::VectorOf((*prediction.GetTPredPrim())[a]), plain::VectorOf((*model_.GetPprim())[a]));
    const plain::Table found = plain::TableOf(*prediction.GetXResiduals());
    for (std::size_t i = 0; i < rest.size(); ++i)
      for (std::size_t k = 0; k < kVariables; ++k) {
        EXPECT_EQ(std::isnan(found[i][k]), std::isnan(rest[i][k]));
        if (std::isnan(rest[i][k])) continue;
        EXPECT_NEAR(found[i][k], rest[i][k], a * 16 * 0x1p-24);  // a rounding each, of cells below 16
      }
    EXPECT_TRUE(HasExactCounts(*prediction.GetXResiduals()));
  }
  EXPECT_EQ(CellsOf(*prediction.GetTPredPrim()), scores) << "scores never change";
}

TEST_F(NCPCAPredTest, ScoresAnObservationAtTheToleranceAndNoneAboveIt) {
  NCDataMatrix<float> fresh = RandomMatrix<float>(3, kVariables, 0.0, 5);
  for (int k = 1; k <= 4; ++k) fresh(2, k, kMissing);
  for (int k = 1; k <= 5; ++k) fresh(3, k, kMissing);
  const NCPCAPred prediction = PredictionOf(fresh, 0.5F);
  EXPECT_EQ(prediction.GetTPredPrim()->GetColumnMisVal(1), 0);
  EXPECT_EQ(prediction.GetTPredPrim()->GetColumnMisVal(2), 0) << "4 of 8 is half";
  EXPECT_EQ(prediction.GetTPredPrim()->GetColumnMisVal(3), 3);
}

TEST_F(NCPCAPredTest, FormsTheShareOfHolesInDouble) {
  // 0.7F is a little less than 7 / 10: seven holes of ten are too many.
  const NCDataMatrix<float> P = RandomMatrix<float>(2, 10, 0.0, 6);
  NCDataMatrix<float> fresh = RandomMatrix<float>(2, 10, 0.0, 7);
  for (int k = 1; k <= 7; ++k) fresh(1, k, kMissing);
  for (int k = 1; k <= 6; ++k) fresh(2, k, kMissing);
  ASSERT_LT(static_cast<double>(0.7F), 7.0 / 10.0);
  const NCPCAPred prediction(&fresh, &P, 50, 0.7F);
  EXPECT_EQ(prediction.GetTPredPrim()->GetColumnMisVal(1), 2);
  EXPECT_EQ(prediction.GetTPredPrim()->GetColumnMisVal(2), 0);
}

TEST_F(NCPCAPredTest, ScoresOnlyCompleteObservationsWithoutTolerance) {
  NCDataMatrix<float> fresh = RandomMatrix<float>(3, kVariables, 0.0, 8);
  fresh(2, 3, kMissing);
  const NCPCAPred prediction = PredictionOf(fresh, 0.0F);
  EXPECT_THAT(CellsOf(prediction.GetTPredPrim()->GetColumn(2)), Each(kMissing));
  for (const int i : {1, 3}) EXPECT_EQ(prediction.GetTPredPrim()->GetColumnMisVal(i), 0);
  for (const float below : {-0.1F, -1e30F}) {
    const NCPCAPred none = PredictionOf(fresh, below);
    EXPECT_EQ(none.GetTPredPrim()->GetNumMisVal(), 9) << "not even those";
  }
}

TEST_F(NCPCAPredTest, LeavesTheRowOfAnObservationWithoutScoresAsItIs) {
  NCDataMatrix<float> fresh = RandomMatrix<float>(3, kVariables, 0.0, 9);
  fresh(2, 3, kMissing);
  NCPCAPred some = PredictionOf(fresh, 0.0F);
  NCPCAPred all = PredictionOf(fresh);
  for (int a = 1; a <= 3; ++a) {
    some.CalcNextResidual();
    all.CalcNextResidual();
    EXPECT_EQ(CellsOf((*some.GetXResiduals())[2]), CellsOf(fresh[2]));
    for (const int i : {1, 3}) EXPECT_EQ(CellsOf((*some.GetXResiduals())[i]), CellsOf((*all.GetXResiduals())[i]));
    EXPECT_TRUE(HasExactCounts(*some.GetXResiduals()));
  }
}

TEST_F(NCPCAPredTest, GivesAnObservationWithoutAnyCellScoresOfZeroWhereAllMayBeMissing) {
  NCDataMatrix<float> fresh = RandomMatrix<float>(2, kVariables, 0.0, 10);
  fresh.SetRow(2, kMissing);
  NCPCAPred prediction = PredictionOf(fresh, 1.0F);
  EXPECT_THAT(CellsOf(prediction.GetTPredPrim()->GetColumn(2)), Each(0.0F));
  prediction.CalcNextResidual();
  EXPECT_THAT(CellsOf((*prediction.GetXResiduals())[2]), Each(kMissing));
}

TEST_F(NCPCAPredTest, EmptiesTheColumnOfAVariableWithoutALoadingInTheRowsThatAreScored) {
  NCDataMatrix<float> P = *model_.GetPprim();
  P.SetColumn(4, kMissing);
  NCDataMatrix<float> fresh = RandomMatrix<float>(2, kVariables, 0.0, 11);
  fresh(2, 1, kMissing);
  NCPCAPred prediction(&fresh, &P, 50, 0.0F);
  prediction.CalcNextResidual();
  EXPECT_EQ((*prediction.GetXResiduals())[1][4], kMissing);
  EXPECT_EQ((*prediction.GetXResiduals())[2][4], fresh[2][4]);
  EXPECT_TRUE(HasExactCounts(*prediction.GetXResiduals()));
}

TEST_F(NCPCAPredTest, LeavesTheCallersTableAlone) {
  const auto before = CellsOf(X_);
  NCPCAPred prediction = PredictionOf(X_);
  prediction.CalcNextResidual();
  EXPECT_EQ(CellsOf(X_), before);
  EXPECT_NE(CellsOf(*prediction.GetXResiduals()), before);
}

TEST_F(NCPCAPredTest, CopiesGoOnByThemselves) {
  NCPCAPred original = PredictionOf(X_);
  original.CalcNextResidual();
  NCPCAPred copy(original);
  NCPCAPred assigned = PredictionOf(RandomMatrix<float>(2, kVariables, 0.3, 1));
  assigned = original;
  const auto before = CellsOf(*original.GetXResiduals());
  copy.CalcNextResidual();
  assigned.CalcNextResidual();
  EXPECT_EQ(CellsOf(*original.GetXResiduals()), before);
  EXPECT_EQ(original.GetResidualsCompComputed(), 1);
  original.CalcNextResidual();
  for (const NCPCAPred* other : {&copy, &assigned}) {
    EXPECT_EQ(CellsOf(*other->GetXResiduals()), CellsOf(*original.GetXResiduals()));
    EXPECT_EQ(CellsOf(*other->GetTPredPrim()), CellsOf(*original.GetTPredPrim()));
    EXPECT_EQ(other->GetResidualsCompComputed(), 2);
  }
}

TEST_F(NCPCAPredTest, DoesNothingWithoutRowsColumnsOrComponents) {
  NCDataMatrix<float> noRows;
  noRows.SetSize(0, kVariables);
  NCPCAPred none = PredictionOf(noRows);
  none.CalcNextResidual();
  EXPECT_EQ(none.SizeObservations(), 0);
  EXPECT_EQ(none.GetTPredPrim()->SizeRows(), 3);

  NCDataMatrix<float> noColumns;
  NCDataMatrix<float> noLoadings;
  noColumns.SetSize(4, 0);
  noLoadings.SetSize(2, 0);
  const NCPCAPred without(&noColumns, &noLoadings, 50, 1.0F);
  EXPECT_EQ(without.GetTPredPrim()->GetNumMisVal(), 8);

  NCDataMatrix<float> noComponents;
  noComponents.SetSize(0, kVariables);
  const NCPCAPred nothing(&X_, &noComponents, 50, 1.0F);
  EXPECT_EQ(nothing.GetMaxComp(), 0);
  EXPECT_EQ(nothing.GetTPredPrim()->SizeRows(), 0);
}

}  // namespace
