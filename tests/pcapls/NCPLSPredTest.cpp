#include "kalmia/pcapls/NCPLSPred.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "PlainPLS.h"
#include "kalmia/pcapls/NCPLS.h"
#include "testing/RandomTables.h"

namespace {

using ::testing::Each;

constexpr int kVariables = 4;
constexpr float kAnyShare = 0.9999F;  // the limit of holes is then K - c - 1

static_assert(!std::is_copy_constructible_v<NCPLS> && !std::is_copy_assignable_v<NCPLS>);
static_assert(!std::is_copy_constructible_v<NCPLSPred> && !std::is_copy_assignable_v<NCPLSPred>);
static_assert(!std::is_copy_constructible_v<NCPLSResiduals> && !std::is_copy_assignable_v<NCPLSResiduals>);

/// A model of three components of four X and two Y variables on complete tables.
class NCPLSPredTest : public ::testing::Test {
 protected:
  NCPLSPredTest()
      : X_(RandomMatrix<float>(10, kVariables, 0.0, 1)),
        Y_(RandomMatrix<float>(10, 2, 0.0, 2)),
        model_(&X_, &Y_, 100) {
    AddComponents(&model_, 3);
  }

  static void AddComponents(NCPLS* model, int components) {
    for (int a = 1; a <= components; ++a) {
      model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
      model->CalculateResiduals();
    }
  }

  NCPLSPred PredictionOf(const NCDataMatrix<float>& X, float tolerance = kAnyShare) const {
    return NCPLSPred(X, *model_.GetWprim(), *model_.GetPprim(), *model_.GetCprim(), tolerance);
  }

  NCDataMatrix<float> X_;
  NCDataMatrix<float> Y_;
  NCPLS model_;
};

TEST_F(NCPLSPredTest, StartsWithoutScoresAndWithAPredictionOfZero) {
  const NCPLSPred prediction = PredictionOf(X_);
  EXPECT_EQ(prediction.GetCompComputed(), 0);
  EXPECT_EQ(prediction.GetMaxComp(), 3);
  EXPECT_EQ(prediction.SizeObservations(), 10);
  EXPECT_THAT(CellsOf(*prediction.GetTPred()), Each(kMissing));
  EXPECT_EQ(prediction.GetYPred()->SizeRows(), 10);
  EXPECT_EQ(prediction.GetYPred()->SizeColumns(), 2);
  for (const auto& row : CellsOf(*prediction.GetYPred())) EXPECT_THAT(row, Each(0.0F));
  EXPECT_EQ(CellsOf(*prediction.GetXResiduals()), CellsOf(X_));
}

TEST_F(NCPLSPredTest, GivesTheTrainingRowsTheScoresAndResidualsOfTheModelToTheBit) {
  NCPLSPred prediction = PredictionOf(X_);
  for (int a = 1; a <= 3; ++a) {
    prediction.CalcNextComponent();
    EXPECT_EQ(prediction.GetCompComputed(), a);
    EXPECT_EQ(CellsOf(*prediction.GetTPred()), CellsOf((*model_.GetTprim())[a]));
  }
  EXPECT_EQ(CellsOf(*prediction.GetXResiduals()), CellsOf(*model_.GetXResiduals()));
}

TEST_F(NCPLSPredTest, PredictsWhatTheCoefficientsGiveForCompleteRows) {
  const NCDataMatrix<float> fresh = RandomMatrix<float>(6, kVariables, 0.0, 3);
  NCPLSPred prediction = PredictionOf(fresh);
  for (int a = 1; a <= 3; ++a) {
    prediction.CalcNextComponent();
    const plain::Table expected =
        plain::Product(plain::TableOf(fresh), plain::TableOf(model_.GetRegressionCoefficients(a)));
    const plain::Table found = plain::TableOf(*prediction.GetYPred());
    // Both ways round a handful of cells of size 1 to float for each component; the rows themselves are below 3.
    for (std::size_t i = 0; i < found.size(); ++i)
      for (std::size_t j = 0; j < 2; ++j) EXPECT_NEAR(found[i][j], expected[i][j], a * 16 * 0x1p-24);
  }
}

TEST_F(NCPLSPredTest, TakesTheComponentsOutOfX) {
  const NCDataMatrix<float> fresh = RandomMatrix<float>(6, kVariables, 0.0, 3);
  NCPLSPred prediction = PredictionOf(fresh);
  plain::Table rest = plain::TableOf(fresh);
  for (int a = 1; a <= 3; ++a) {
    prediction.CalcNextComponent();
    plain::Deflate(&rest, plain::VectorOf(*prediction.GetTPred()), plain::VectorOf((*model_.GetPprim())[a]));
    const plain::Table found = plain::TableOf(*prediction.GetXResiduals());
    for (std::size_t i = 0; i < rest.size(); ++i)
      for (std::size_t k = 0; k < kVariables; ++k)
        EXPECT_NEAR(found[i][k], rest[i][k], a * 8 * 0x1p-24);  // a rounding each, of cells below 8
  }
}

TEST_F(NCPLSPredTest, ScoresRowsWithHolesWithADenominatorOfAtLeastAThird) {
  // w of the first component, and rows that keep one variable each: what that variable has of w'w decides.
  const plain::Vector w = plain::VectorOf((*model_.GetWprim())[1]);
  NCDataMatrix<float> fresh(kVariables, kVariables);
  for (int k = 1; k <= kVariables; ++k) fresh(k, k, 2.0F);
  NCPLSPred prediction = PredictionOf(fresh);
  prediction.CalcNextComponent();
  bool fixed = false;
  bool bare = false;
  for (std::size_t k = 0; k < kVariables; ++k) {
    const double denominator = std::max(w[k] * w[k], plain::SquaresOf(w) / 3.0);
    (w[k] * w[k] < denominator ? fixed : bare) = true;
    EXPECT_FLOAT_EQ((*prediction.GetTPred())[static_cast<int>(k) + 1], static_cast<float>(2.0 * w[k] / denominator));
  }
  EXPECT_TRUE(fixed);
  EXPECT_TRUE(bare) << "the table was meant to show both";
}

TEST_F(NCPLSPredTest, LeavesAnObservationWithoutDataAsItIs) {
  NCDataMatrix<float> fresh = RandomMatrix<float>(3, kVariables, 0.0, 4);
  fresh.SetRow(2, kMissing);
  NCPLSPred prediction = PredictionOf(fresh);
  for (int a = 1; a <= 3; ++a) {
    prediction.CalcNextComponent();
    EXPECT_EQ((*prediction.GetTPred())[2], kMissing);
    EXPECT_EQ(prediction.GetTPred()->GetNumMisVal(), 1);
    EXPECT_THAT(CellsOf((*prediction.GetYPred())[2]), Each(0.0F));
    EXPECT_THAT(CellsOf((*prediction.GetXResiduals())[2]), Each(kMissing));
  }
  EXPECT_TRUE(HasExactCounts(*prediction.GetYPred()));
  EXPECT_TRUE(HasExactCounts(*prediction.GetXResiduals()));
}

TEST_F(NCPLSPredTest, ScoresOnlyCompleteRowsWithoutTolerance) {
  NCDataMatrix<float> fresh = RandomMatrix<float>(3, kVariables, 0.0, 5);
  fresh(2, 3, kMissing);
  for (const float tolerance : {0.0F, -0.1F}) {  // -0.1 * 4, cut to a whole number, is 0 as well
    NCPLSPred prediction = PredictionOf(fresh, tolerance);
    NCPLSPred complete = PredictionOf(fresh);
    prediction.CalcNextComponent();
    complete.CalcNextComponent();
    EXPECT_EQ((*prediction.GetTPred())[1], (*complete.GetTPred())[1]);
    EXPECT_EQ((*prediction.GetTPred())[2], kMissing);
    EXPECT_EQ(CellsOf((*prediction.GetXResiduals())[1]), CellsOf((*complete.GetXResiduals())[1]));
    EXPECT_EQ(CellsOf((*prediction.GetXResiduals())[2]), CellsOf(fresh[2])) << "not scored, not deflated";
    EXPECT_THAT(CellsOf((*prediction.GetYPred())[2]), Each(0.0F));
    EXPECT_TRUE(HasExactCounts(*prediction.GetXResiduals()));
  }
}

TEST_F(NCPLSPredTest, ScoresNothingWithAToleranceFarBelowZero) {
  for (const float tolerance : {-1.0F, -1e30F, -std::numeric_limits<float>::infinity()}) {
    NCPLSPred prediction = PredictionOf(X_, tolerance);
    prediction.CalcNextComponent();
    EXPECT_THAT(CellsOf(*prediction.GetTPred()), Each(kMissing));
    EXPECT_EQ(CellsOf(*prediction.GetXResiduals()), CellsOf(X_));
  }
}

TEST_F(NCPLSPredTest, AllowsOneHoleLessWithEachComponent) {
  NCDataMatrix<float> fresh = RandomMatrix<float>(4, kVariables, 0.0, 6);
  for (int holes = 1; holes <= 3; ++holes)
    for (int k = 1; k <= holes; ++k) fresh(holes + 1, k, kMissing);  // row i has i - 1 holes
  NCPLSPred prediction = PredictionOf(fresh);
  for (int c = 0; c <= 2; ++c) {
    const auto X = CellsOf(*prediction.GetXResiduals());
    const auto Y = CellsOf(*prediction.GetYPred());
    prediction.CalcNextComponent();
    for (int i = 1; i <= 4; ++i) {
      SCOPED_TRACE("component " + std::to_string(c + 1) + ", " + std::to_string(i - 1) + " holes");
      const bool scored = i - 1 <= kVariables - c - 1;
      EXPECT_EQ((*prediction.GetTPred())[i] != kMissing, scored);
      const std::size_t row = static_cast<std::size_t>(i) - 1;
      EXPECT_EQ(CellsOf((*prediction.GetXResiduals())[i]) == X[row], !scored);
      EXPECT_EQ(CellsOf((*prediction.GetYPred())[i]) == Y[row], !scored);
    }
    EXPECT_TRUE(HasExactCounts(*prediction.GetXResiduals()));
  }
}

TEST_F(NCPLSPredTest, ScoresCompleteRowsAtTheLastOfAsManyComponentsAsVariables) {
  NCPLS model(&X_, &Y_, 100);
  AddComponents(&model, kVariables);
  NCPLSPred prediction(X_, *model.GetWprim(), *model.GetPprim(), *model.GetCprim(), kAnyShare);
  for (int a = 1; a <= kVariables; ++a) prediction.CalcNextComponent();
  EXPECT_EQ(CellsOf(*prediction.GetTPred()), CellsOf((*model.GetTprim())[kVariables]));
}

TEST_F(NCPLSPredTest, ScoresOnlyCompleteRowsAtTheLastOfAsManyComponentsAsVariables) {
  NCPLS model(&X_, &Y_, 100);
  AddComponents(&model, kVariables);
  NCDataMatrix<float> fresh = RandomMatrix<float>(2, kVariables, 0.0, 12);
  fresh(2, 1, kMissing);
  NCPLSPred prediction(fresh, *model.GetWprim(), *model.GetPprim(), *model.GetCprim(), kAnyShare);
  for (int a = 1; a < kVariables; ++a) prediction.CalcNextComponent();
  EXPECT_NE((*prediction.GetTPred())[2], kMissing) << "one hole is allowed until then";
  prediction.CalcNextComponent();
  EXPECT_NE((*prediction.GetTPred())[1], kMissing);
  EXPECT_EQ((*prediction.GetTPred())[2], kMissing);
}

TEST_F(NCPLSPredTest, GivesEachRowTheScoreOfItsOwnRegressionToTheBit) {
  const NCDataMatrix<float> fresh = RandomMatrix<float>(30, kVariables, 0.3, 13);
  ASSERT_GT(fresh.GetNumMisVal(), 0);
  NCPLSPred prediction = PredictionOf(fresh);
  for (int a = 1; a <= 3; ++a) {
    const NCDataMatrix<float> X = *prediction.GetXResiduals();
    prediction.CalcNextComponent();
    for (int i = 1; i <= 30; ++i) {
      const bool scored = X[i].GetNumMisVal() <= kVariables - a;
      const float t = static_cast<float>((*model_.GetWprim())[a].SpecialNipalsRegressFix(X[i]));
      EXPECT_EQ((*prediction.GetTPred())[i], scored ? t : kMissing);
    }
  }
}

TEST_F(NCPLSPredTest, FormsTheNumberOfHolesItAllowsInFloat) {
  // 10 times 0.7F is 7 in float, and a little less than 7 in double, which would be cut to 6.
  ASSERT_LT(static_cast<double>(0.7F) * 10.0, 7.0);
  const NCDataMatrix<float> W = RandomMatrix<float>(1, 10, 0.0, 7);
  const NCDataMatrix<float> C = RandomMatrix<float>(1, 1, 0.0, 8);
  NCDataMatrix<float> fresh = RandomMatrix<float>(2, 10, 0.0, 9);
  for (int k = 1; k <= 7; ++k) fresh(1, k, kMissing);
  for (int k = 1; k <= 8; ++k) fresh(2, k, kMissing);
  NCPLSPred prediction(fresh, W, W, C, 0.7F);
  prediction.CalcNextComponent();
  EXPECT_NE((*prediction.GetTPred())[1], kMissing);
  EXPECT_EQ((*prediction.GetTPred())[2], kMissing);
}

TEST_F(NCPLSPredTest, LeavesPredictionsMissingWhereAWeightOfYIs) {
  NCDataMatrix<float> C = *model_.GetCprim();
  C(1, 2, kMissing);
  NCDataMatrix<float> fresh = RandomMatrix<float>(2, kVariables, 0.0, 10);
  fresh.SetRow(2, kMissing);
  NCPLSPred prediction(fresh, *model_.GetWprim(), *model_.GetPprim(), C, kAnyShare);
  prediction.CalcNextComponent();
  EXPECT_NE((*prediction.GetYPred())[1][1], kMissing);
  EXPECT_EQ((*prediction.GetYPred())[1][2], kMissing);
  EXPECT_THAT(CellsOf((*prediction.GetYPred())[2]), Each(0.0F)) << "not scored: as it was";
  EXPECT_TRUE(HasExactCounts(*prediction.GetYPred()));
}

TEST_F(NCPLSPredTest, WorksInACopyUnlessTold) {
  const auto before = CellsOf(X_);
  NCPLSPred prediction(&X_, model_.GetWprim(), model_.GetPprim(), model_.GetCprim(), kAnyShare);
  NCPLSPred byReference = PredictionOf(X_);
  for (int a = 1; a <= 3; ++a) {
    prediction.CalcNextComponent();
    byReference.CalcNextComponent();
  }
  EXPECT_EQ(CellsOf(X_), before);
  EXPECT_NE(prediction.GetXResiduals(), &X_);
  EXPECT_EQ(CellsOf(*prediction.GetYPred()), CellsOf(*byReference.GetYPred()));
}

TEST_F(NCPLSPredTest, WorksInTheCallersTablesOnRequest) {
  NCPLSPred reference = PredictionOf(X_);
  NCDataMatrix<float> X = X_;
  NCDataMatrix<float> yPred = RandomMatrix<float>(10, 2, 0.2, 11);
  for (const bool flag : {true, false}) {  // the flag only selects this form
    X = X_;
    NCPLSPred prediction(flag, &X, &yPred, *model_.GetWprim(), *model_.GetPprim(), *model_.GetCprim(), kAnyShare);
    EXPECT_EQ(prediction.GetXResiduals(), &X);
    EXPECT_EQ(prediction.GetYPred(), &yPred);
    for (const auto& row : CellsOf(yPred)) EXPECT_THAT(row, Each(0.0F));
    prediction.CalcNextComponent();
  }
  reference.CalcNextComponent();
  EXPECT_EQ(CellsOf(X), CellsOf(*reference.GetXResiduals())) << "and outlives the prediction";
  EXPECT_EQ(CellsOf(yPred), CellsOf(*reference.GetYPred()));
}

TEST_F(NCPLSPredTest, KnowsThatItsZeroedPredictionHasNoHolesAndLeavesSharingTablesAlone) {
  NCDataMatrix<float> X = X_;
  NCDataMatrix<float> yPred = RandomMatrix<float>(10, 2, 0.4, 14);
  ASSERT_GT(yPred.GetNumMisVal(), 0);
  const NCDataMatrix<float> sharing = yPred;
  const auto before = CellsOf(sharing);
  const auto table = CellsOf(X_);
  NCPLSPred prediction(true, &X, &yPred, *model_.GetWprim(), *model_.GetPprim(), *model_.GetCprim(), kAnyShare);
  EXPECT_TRUE(HasExactCounts(yPred));
  EXPECT_EQ(yPred.GetNumMisVal(), 0);
  prediction.CalcNextComponent();
  EXPECT_TRUE(HasExactCounts(yPred));
  EXPECT_EQ(CellsOf(sharing), before);
  EXPECT_EQ(CellsOf(X_), table);
  EXPECT_TRUE(HasExactCounts(sharing));
}

TEST_F(NCPLSPredTest, DoesItsScoresAndResidualsWithoutAPredictionToo) {
  NCPLSPred prediction = PredictionOf(X_);
  NCDataMatrix<float> X = X_;
  NCPLSResiduals residuals(&X, *model_.GetWprim(), *model_.GetPprim(), kAnyShare);
  EXPECT_THAT(CellsOf(residuals), Each(kMissing));
  for (int a = 1; a <= 3; ++a) {
    residuals.CalcNextComponent();
    prediction.CalcNextComponent();
    EXPECT_EQ(CellsOf(residuals), CellsOf(*prediction.GetTPred()));
    EXPECT_EQ(CellsOf(X), CellsOf(*prediction.GetXResiduals()));
  }
  EXPECT_EQ(residuals.GetCompComputed(), 3);
  EXPECT_EQ(residuals.GetMaxComp(), 3);
}

TEST_F(NCPLSPredTest, PredictsNothingForATableWithoutRows) {
  NCDataMatrix<float> none;
  none.SetSize(0, kVariables);
  NCPLSPred prediction = PredictionOf(none);
  prediction.CalcNextComponent();
  EXPECT_EQ(prediction.SizeObservations(), 0);
  EXPECT_EQ(prediction.GetYPred()->SizeRows(), 0);
}

}  // namespace
