#include "kalmia/pcapls/PLSCrossValidation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "CrossValidationCase.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/RandomTables.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using Groups = NCIntegralVector<int, -99>;


Groups GroupsOf(const std::vector<int>& numbers) { return Groups(numbers.data(), static_cast<int>(numbers.size())); }

// ---- Set-up

TEST(PLSCrossValidation, StartsAtZeroWithRoomForItsResults) {
  CrossValidationCase data(10, 4, 2, 0.0);
  const PLSCrossValidation validation(data.model.get(), 7, nullptr);
  EXPECT_EQ(validation.GetQ2Tot(), 0.0F);
  EXPECT_EQ(validation.GetQ2TotCum(), 0.0F);
  EXPECT_THAT(CellsOf(*validation.GetQ2YVarCum()), ElementsAre(0.0F, 0.0F));
  EXPECT_EQ(validation.GetSSY()->Size(), 7);
  ASSERT_EQ(validation.GetYPredResiduals()->SizeRows(), 10);
  ASSERT_EQ(validation.GetYPredResiduals()->SizeColumns(), 2);
  for (const auto& row : CellsOf(*validation.GetYPredResiduals())) EXPECT_THAT(row, Each(kMissing));
  EXPECT_EQ(validation.GetWSet()->SizeRows(), 0);
}

TEST(PLSCrossValidation, CutsTheRoundsToTheObservationsAndDealsTheGroupsByTheCutNumber) {
  CrossValidationCase data(5, 3, 1, 0.0);
  data.AddComponent();
  PLSCrossValidation tooMany(data.model.get(), 100, nullptr);
  PLSCrossValidation leaveOneOut(data.model.get(), 5, nullptr);
  data.Validate(&tooMany);
  data.Validate(&leaveOneOut);
  EXPECT_EQ(tooMany.GetWSet()->SizeRows(), 5);
  EXPECT_EQ(CellsOf(*tooMany.GetTSet()), CellsOf(*leaveOneOut.GetTSet()));
  EXPECT_EQ(CellsOf(*tooMany.GetYPredResiduals()), CellsOf(*leaveOneOut.GetYPredResiduals()));
  // By 100 groups observation 5 would be in group 5, which no round of 0 to 4 leaves out.
  EXPECT_NE((*tooMany.GetTPred())[5], kMissing);
}

TEST(PLSCrossValidation, TakesTheDefaultGroupsForNoneAndOtherwiseACopyOfThoseGiven) {
  CrossValidationCase data(9, 3, 1, 0.0);
  data.AddComponent();
  Groups groups = GetDeafultCVGroupsVector(9, 7);
  PLSCrossValidation byDefault(data.model.get(), 7, nullptr);
  PLSCrossValidation given(data.model.get(), 7, &groups);
  groups(1) = 0;
  data.Validate(&byDefault);
  data.Validate(&given);
  EXPECT_EQ(Everything(given), Everything(byDefault));
}

TEST(PLSCrossValidation, PredictsNoObservationThatNoRoundLeavesOut) {
  CrossValidationCase data(6, 3, 1, 0.0);
  data.AddComponent();
  const Groups groups = GroupsOf({0, 1, 0, 1, 2, -1});
  PLSCrossValidation validation(data.model.get(), 2, &groups);
  data.Validate(&validation);
  for (const int i : {5, 6}) {
    EXPECT_EQ((*validation.GetTPred())[i], kMissing);
    EXPECT_EQ((*validation.GetYPredResiduals())[i][1], kMissing);
    EXPECT_NE((*validation.GetTSet())[1][i], kMissing) << "it is in the training of each round";
  }
}

TEST(PLSCrossValidation, LeavesNothingOutInARoundWhoseGroupIsEmpty) {
  CrossValidationCase data(6, 3, 1, 0.0);
  data.AddComponent();
  const Groups groups = GroupsOf({0, 2, 0, 2, 0, 2});
  PLSCrossValidation validation(data.model.get(), 3, &groups);
  data.Validate(&validation);
  ASSERT_EQ(validation.GetWSet()->SizeRows(), 3);
  EXPECT_EQ(CellsOf((*validation.GetWSet())[2]), CellsOf(data.Weights())) << "group 1: the model itself";
}

TEST(PLSCrossValidation, GoesOnFromTheCumulatedValuesItIsGiven) {
  CrossValidationCase data(20, 5, 2, 0.1);
  PLSCrossValidation whole(data.model.get(), 7, nullptr);
  data.AddComponent();
  data.Validate(&whole);
  data.model->CalculateResiduals();
  data.AddComponent();
  PLSCrossValidation continued(data.model.get(), whole.GetQ2TotCum(), *whole.GetQ2YVarCum(), 7, nullptr);
  EXPECT_EQ(continued.GetQ2Tot(), 0.0F);
  EXPECT_EQ(continued.GetQ2TotCum(), whole.GetQ2TotCum());
  data.Validate(&whole);
  data.Validate(&continued);
  EXPECT_EQ(continued.GetQ2Tot(), whole.GetQ2Tot());
  EXPECT_EQ(continued.GetQ2TotCum(), whole.GetQ2TotCum());
  EXPECT_EQ(CellsOf(*continued.GetQ2YVarCum()), CellsOf(*whole.GetQ2YVarCum()));
  EXPECT_NE(whole.GetQ2TotCum(), whole.GetQ2Tot());
}

TEST(PLSCrossValidation, CopiesEverythingButTheModel) {
  CrossValidationCase data(12, 4, 2, 0.1);
  data.AddComponent();
  PLSCrossValidation original(data.model.get(), 4, nullptr);
  PLSCrossValidation copy = original;
  const std::string fresh = Everything(copy);
  data.Validate(&original);
  EXPECT_EQ(Everything(copy), fresh);
  data.Validate(&copy);
  EXPECT_EQ(Everything(copy), Everything(original));
  PLSCrossValidation assigned(data.model.get(), 2, nullptr);
  assigned = original;
  EXPECT_EQ(Everything(assigned), Everything(original));
}

// ---- Sums of squares, signs, residuals

TEST(PLSCrossValidation, TakesTheSumsOfTheLastCallAsOriginalFromTheSecondComponentOn) {
  CrossValidationCase data(15, 4, 2, 0.0);
  PLSCrossValidation validation(data.model.get(), 3, nullptr);
  data.AddComponent();
  data.Validate(&validation);
  const auto afterFirst = CellsOf(*validation.GetSSY());
  data.model->CalculateResiduals();
  data.AddComponent();
  data.Validate(&validation);
  EXPECT_EQ(CellsOf(*validation.GetSSYOriginal()), afterFirst);
  EXPECT_NE(CellsOf(*validation.GetSSY()), afterFirst);
}

TEST(PLSCrossValidation, TurnsTheRoundsAlongTheModelsWeightsButNotTheirPredictions) {
  CrossValidationCase data(12, 4, 1, 0.1);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 4, nullptr);
  data.Validate(&validation);
  data.model->FlipComponent(1);  // one Y: the rounds do not look at their start, and come out as before
  PLSCrossValidation turned(data.model.get(), 4, nullptr);
  data.Validate(&turned);
  const auto expectNegated = [](const NCDataMatrix<float>& a, const NCDataMatrix<float>& b) {
    for (int r = 1; r <= 4; ++r)
      for (int k = 1; k <= a.SizeColumns(); ++k) EXPECT_EQ(a[r][k], b[r][k] == kMissing ? kMissing : -b[r][k]);
  };
  expectNegated(*turned.GetWSet(), *validation.GetWSet());
  expectNegated(*turned.GetCSet(), *validation.GetCSet());
  expectNegated(*turned.GetPSet(), *validation.GetPSet());
  expectNegated(*turned.GetTSet(), *validation.GetTSet());
  EXPECT_EQ(CellsOf(*turned.GetTPred()), CellsOf(*validation.GetTPred()));
  EXPECT_EQ(CellsOf(*turned.GetYPredResiduals()), CellsOf(*validation.GetYPredResiduals()));
  for (int r = 1; r <= 4; ++r) EXPECT_GT((*turned.GetWSet())[r] * data.Weights(), 0.0L);
}

TEST(PLSCrossValidation, LeavesYItselfAsResidualWhereARoundKnowsNothingOfTheVariable) {
  CrossValidationCase data(8, 3, 2, 0.0);
  // The second Y variable is present in group 0 alone, so that the round that leaves it out has none of it.
  const Groups groups = GroupsOf({0, 1, 0, 1, 0, 1, 0, 1});
  for (const int i : {2, 4, 6, 8}) data.Y(i, 2, kMissing);
  data.Restart();
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 2, &groups);
  data.Validate(&validation);
  EXPECT_EQ((*validation.GetCSet())[1][2], kMissing);
  for (const int i : {1, 3, 5, 7}) EXPECT_EQ((*validation.GetYPredResiduals())[i][2], data.Y[i][2]);
  for (const int i : {2, 4, 6, 8}) EXPECT_EQ((*validation.GetYPredResiduals())[i][2], kMissing);
  EXPECT_EQ((*validation.GetQ2YVar())[2], 0.0F) << "press is ss";
}

TEST(PLSCrossValidation, PredictsTheMeanForAnObservationWithoutData) {
  CrossValidationCase data(8, 3, 1, 0.0);
  data.X.SetRow(3, kMissing);
  data.Restart();
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 4, nullptr);
  data.Validate(&validation);
  EXPECT_EQ((*validation.GetTPred())[3], kMissing);
  EXPECT_EQ((*validation.GetYPredResiduals())[3][1], data.Y[3][1]);
}

// ---- Q2 at its limits

TEST(PLSCrossValidation, HasALimitOfOneTwentiethUpToAHundredObservations) {
  CrossValidationCase hundred(100, 2, 1, 0.0);
  CrossValidationCase more(101, 2, 1, 0.0);
  EXPECT_EQ(PLSCrossValidation(hundred.model.get(), 7, nullptr).GetQ2Lim(), 0.05F);
  EXPECT_EQ(PLSCrossValidation(more.model.get(), 7, nullptr).GetQ2Lim(), 0.0F);
}

TEST(PLSCrossValidation, GivesAVariableWithoutVarianceQ2ZeroAndCumulatedOneIfItHadSomeAtTheStart) {
  CrossValidationCase data(10, 3, 3, 0.0);
  for (int i = 1; i <= 10; ++i) {
    data.Y(i, 2, 0.0F);
    data.Y(i, 3, kMissing);
  }
  data.Restart();
  data.AddComponent();
  for (const float original : {0.0F, kMissing, 1e-37F, 1.2e-37F, 5.0F}) {
    SCOPED_TRACE(original);
    PLSCrossValidation validation(data.model.get(), 5, nullptr);
    data.ssY(2, original);
    data.ssY(3, original);
    data.Validate(&validation);
    const float expected = original >= 1.2e-37F ? 1.0F : 0.0F;
    for (const int j : {2, 3}) {
      EXPECT_EQ((*validation.GetQ2YVar())[j], 0.0F);
      EXPECT_EQ((*validation.GetQ2YVarCum())[j], expected);
    }
    EXPECT_EQ(validation.GetQ2Tot(), (*validation.GetQ2YVar())[1]) << "only the first variable has any variance";
  }
}

TEST(PLSCrossValidation, GivesATableWithoutVarianceQ2ZeroAndCumulatedOne) {
  CrossValidationCase data(10, 3, 1, 0.0);
  data.Y.SetAllValues(0.0F);
  data.Restart();
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 5, nullptr);
  data.Validate(&validation);
  EXPECT_EQ(validation.GetQ2Tot(), 0.0F);
  EXPECT_EQ(validation.GetQ2TotCum(), 1.0F);
  EXPECT_EQ((*validation.GetQ2YVarCum())[1], 0.0F) << "it had none at the start either";
}

TEST(PLSCrossValidation, LowersTheCumulatedValueByAFactorOfOnePointOneAtMost) {
  // One X variable; y has outliers of opposite sign at its ends, each predicted from the other: press is far beyond ss.
  const NCDataMatrix<float> X = MatrixOf<float>({{10}, {10}, {1}, {-1}});
  const NCDataMatrix<float> Y = MatrixOf<float>({{10}, {-10}, {1}, {-1}});
  CrossValidationCase data(X, Y);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 4, nullptr);
  data.Validate(&validation);
  ASSERT_LT(validation.GetQ2Tot(), -0.1F);
  ASSERT_LT((*validation.GetQ2YVar())[1], -0.1F);
  const float once = static_cast<float>(1.0 - 1.1);
  EXPECT_EQ(validation.GetQ2TotCum(), once);
  EXPECT_EQ((*validation.GetQ2YVarCum())[1], once);
  data.Validate(&validation);
  EXPECT_EQ(validation.GetQ2TotCum(), static_cast<float>(1.0 - (1.0 - static_cast<double>(once)) * 1.1));
}

TEST(PLSCrossValidation, NeverFailsOnTablesThatHaveNothingToSay) {
  CrossValidationCase nan(8, 3, 2, 0.0);
  nan.X(2, 2, std::nanf(""));
  CrossValidationCase empty(NCDataMatrix<float>(8, 3), NCDataMatrix<float>(8, 2));
  CrossValidationCase zero(NCDataMatrix<float>(8, 3, 0.0F), NCDataMatrix<float>(8, 2, 0.0F));
  for (CrossValidationCase* data : {&nan, &empty, &zero}) {
    data->Restart();
    data->AddComponent();
    PLSCrossValidation validation(data->model.get(), 4, nullptr);
    EXPECT_NO_THROW(data->Validate(&validation));
    EXPECT_EQ(validation.GetWSet()->SizeRows(), 4);
  }
}

}  // namespace
