#include "kalmia/pcapls/PCACrossValidation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "PCAValidationCase.h"
#include "kalmia/kernels/simd/Lanes.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/StreamAttacks.h"
#include "testing/Threads.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using Groups = NCIntegralVector<int, -99>;


// ---- Default groups

std::vector<int> GroupsOf(int count, int groups) {
  const Groups vector = GetDeafultCVGroupsVector(count, groups);
  return std::vector<int>(vector.begin(), vector.end());
}

TEST(GetDeafultCVGroupsVector, DealsTheElementsOutFromGroupOneOn) {
  EXPECT_THAT(GroupsOf(9, 7), ElementsAre(1, 2, 3, 4, 5, 6, 0, 1, 2));
}

TEST(GetDeafultCVGroupsVector, PutsEverythingIntoGroupZeroWhereThereIsOneGroup) {
  EXPECT_THAT(GroupsOf(3, 1), ElementsAre(0, 0, 0));
}

TEST(GetDeafultCVGroupsVector, LeavesGroupsEmptyThatAreMoreThanTheElements) {
  EXPECT_THAT(GroupsOf(2, 5), ElementsAre(1, 2));
}

TEST(GetDeafultCVGroupsVector, NeedsAGroup) {
  EXPECT_THROW(GroupsOf(3, 0), NCError);
  EXPECT_THROW(GroupsOf(3, -2), NCError);
}

TEST(GetDeafultCVGroupsVector, IsEmptyWithoutElements) { EXPECT_TRUE(GroupsOf(0, 3).empty()); }

// ---- Set-up

TEST(PCACrossValidation, StartsAtZeroWithAMissingResidualForEachCell) {
  PCAValidationCase data(6, 4, 0.0);
  const PCACrossValidation validation(data.model.get(), 3, nullptr, nullptr);
  EXPECT_EQ(validation.GetQ2Tot(), 0.0F);
  EXPECT_EQ(validation.GetQ2TotCum(), 0.0F);
  EXPECT_THAT(CellsOf(*validation.GetQ2XVarCum()), ElementsAre(0, 0, 0, 0));
  ASSERT_EQ(validation.GetXPredResiduals()->SizeRows(), 6);
  ASSERT_EQ(validation.GetXPredResiduals()->SizeColumns(), 4);
  for (const auto& row : CellsOf(*validation.GetXPredResiduals())) EXPECT_THAT(row, Each(kMissing));
  EXPECT_EQ(validation.GetPSet()->SizeRows(), 0);
  EXPECT_EQ(validation.GetTSet()->SizeRows(), 0);
}

TEST(PCACrossValidation, CutsTheRoundsToTheSmallerSideAndDealsBothGroupsByTheCutNumber) {
  for (const auto& [rows, columns] : {std::pair{12, 4}, {4, 12}}) {
    PCAValidationCase data(rows, columns, 0.0);
    data.AddComponent();
    PCACrossValidation tooMany(data.model.get(), 7, nullptr, nullptr);
    const Groups observations = GetDeafultCVGroupsVector(rows, 4), variables = GetDeafultCVGroupsVector(columns, 4);
    PCACrossValidation four(data.model.get(), 4, &observations, &variables);
    data.Validate(&tooMany);
    data.Validate(&four);
    EXPECT_EQ(tooMany.GetPSet()->SizeRows(), 4);
    EXPECT_EQ(Everything(tooMany), Everything(four));
  }
}

TEST(PCACrossValidation, CopiesTheGroupsItIsGiven) {
  PCAValidationCase data(8, 6, 0.0);
  data.AddComponent();
  Groups observations = GetDeafultCVGroupsVector(8, 3), variables = GetDeafultCVGroupsVector(6, 3);
  PCACrossValidation given(data.model.get(), 3, &observations, &variables);
  PCACrossValidation byDefault(data.model.get(), 3, nullptr, nullptr);
  observations(1) = 0;
  variables(1) = 0;
  data.Validate(&given);
  data.Validate(&byDefault);
  EXPECT_EQ(Everything(given), Everything(byDefault));
}

TEST(PCACrossValidation, GoesOnFromTheCumulatedValuesItIsGiven) {
  PCAValidationCase data(15, 6, 0.1);
  PCACrossValidation whole(data.model.get(), 5, nullptr, nullptr);
  data.AddComponent();
  data.Validate(&whole);
  data.model->CalculateResiduals();
  data.AddComponent();
  PCACrossValidation continued(data.model.get(), whole.GetQ2TotCum(), *whole.GetQ2XVarCum(), 5, nullptr, nullptr);
  EXPECT_EQ(continued.GetQ2Tot(), 0.0F);
  EXPECT_EQ(continued.GetQ2TotCum(), whole.GetQ2TotCum());
  data.Validate(&whole);
  data.Validate(&continued);
  EXPECT_EQ(Everything(continued), Everything(whole));
  EXPECT_NE(whole.GetQ2TotCum(), whole.GetQ2Tot());
}

TEST(PCACrossValidation, TakesItsOwnVectorsForTheArguments) {
  PCAValidationCase data(15, 6, 0.1);
  data.AddComponent();
  PCACrossValidation validation(data.model.get(), 5, nullptr, nullptr);
  data.Validate(&validation);
  PCACrossValidation twin = validation;
  const NCDataVector<float> copy = *twin.GetQ2XVarCum();
  validation.NextComponent(*validation.GetQ2XVarCum(), nullptr);
  twin.NextComponent(copy, nullptr);
  EXPECT_EQ(Everything(validation), Everything(twin));
}

TEST(PCACrossValidation, CopiesEverythingButTheModel) {
  PCAValidationCase data(12, 5, 0.1);
  data.AddComponent();
  PCACrossValidation original(data.model.get(), 4, nullptr, nullptr);
  PCACrossValidation copy = original;
  const std::string fresh = Everything(copy);
  data.Validate(&original);
  EXPECT_EQ(Everything(copy), fresh);
  data.Validate(&copy);
  EXPECT_EQ(Everything(copy), Everything(original));
  PCACrossValidation assigned(data.model.get(), 2, nullptr, nullptr);
  assigned = original;
  EXPECT_EQ(Everything(assigned), Everything(original));
}

// ---- Rounds

TEST(PCACrossValidation, TurnsBothSetsAlongTheModelsComponent) {
  PCAValidationCase data(12, 5, 0.1);
  data.AddComponent();
  PCACrossValidation validation(data.model.get(), 4, nullptr, nullptr);
  data.Validate(&validation);
  NCDataMatrix<float> p = *data.model->GetPprim(), t = *data.model->GetTprim();
  for (int r = 1; r <= 4; ++r) {
    EXPECT_GT((*validation.GetPSet())[r] * p[1], 0.0L);
    EXPECT_GT((*validation.GetTSet())[r] * t[1], 0.0L);
  }
  // The same component with the other sign: as it is only a start and a reference, everything turns and nothing else
  // changes.
  p.MultiplyRow(1, -1.0F);
  t.MultiplyRow(1, -1.0F);
  NCPCA turnedModel(&data.X, &p, &t, 200);
  PCACrossValidation turned(&turnedModel, 4, nullptr, nullptr);
  data.Validate(&turned);
  for (int r = 1; r <= 4; ++r) {
    for (int j = 1; j <= 5; ++j) EXPECT_EQ((*turned.GetPSet())[r][j], -(*validation.GetPSet())[r][j]);
    for (int i = 1; i <= 12; ++i) EXPECT_EQ((*turned.GetTSet())[r][i], -(*validation.GetTSet())[r][i]);
  }
  EXPECT_EQ(Judgement(turned), Judgement(validation));
}

TEST(PCACrossValidation, TurnsAScoreThatCameOutAgainstTheModels) {
  // All cells are 1, so that in a few rounds all rows come to the same score, whose sign the second and third row
  // give: the first one has but two of the variables of group 0. In the model's scores its -2 outweighs them.
  NCDataMatrix<float> X(3, 6, 1.0F);
  for (int j = 3; j <= 5; ++j) X(1, j, kMissing);
  const NCDataMatrix<float> p(1, 6, 0.4F), t = MatrixOf<float>({{-2, 0.9F, 0.9F}});
  const Groups variables = Ints({0, 0, 0, 0, 0, 1}), observations = Ints({0, 1, 1});
  NCPCA model(&X, &p, &t, 50);
  PCACrossValidation validation(&model, 2, &observations, &variables);
  validation.NextComponent(NCDataVector<float>(6, 3.0F), nullptr);
  NCPCA round(&X, 5);
  round.NextComponent(nullptr, &variables, 1, &t[1]);
  const NCDataVector<float>& score = (*round.GetTprim())[1];
  ASSERT_LT(score * t[1], 0.0L);
  const float scale = std::sqrt(6.0F / 5.0F);
  for (int i = 1; i <= 3; ++i) EXPECT_EQ((*validation.GetTSet())[2][i], -scale * score[i]);
}

TEST(PCACrossValidation, ScalesAScoreUpForTheVariablesItDidNotSee) {
  // All cells are 1: every score is as long as the root of the number of variables behind it.
  PCAValidationCase data(NCDataMatrix<float>(4, 9, 1.0F));
  data.AddComponent();
  const Groups variables = Ints({0, 0, 0, 0, 0, 1, 1, 2, 2});
  const Groups observations = Ints({0, 1, 2, 0});
  PCACrossValidation validation(data.model.get(), 3, &observations, &variables);
  data.Validate(&validation);
  for (int i = 1; i <= 4; ++i) {
    // sqrt(9 / 4) is 1.5 and the score of four ones 2: exact.
    EXPECT_EQ((*validation.GetTSet())[1][i], 3.0F);
    // sqrt(7) * sqrt(9 / 7): four roundings of at most 2^-24 of 3.
    EXPECT_NEAR((*validation.GetTSet())[2][i], 3.0F, 4 * 3 * 0x1p-24);
  }
  // A loading of 1/3, and thrice as large a score, in as many roundings each.
  EXPECT_NEAR(validation.GetQ2Tot(), 1.0F, 0x1p-20);
}

TEST(PCACrossValidation, LeavesTheRoundsOfIterationToTheNumberOfTheComponent) {
  // A table without any structure: no iteration converges in a few rounds.
  const NCDataMatrix<float> X = RandomMatrix<float>(30, 20, 0, 5);
  struct Limit {
    int component, rounds;
  };
  for (const auto& [component, rounds] : {Limit{1, 5}, {2, 6}, {3, 6}, {4, 6}, {5, 7}, {9, 7}, {10, 8}, {17, 9}}) {
    SCOPED_TRACE("component " + std::to_string(component));
    const NCDataMatrix<float> earlierP(component - 1, 20, 0.0F), earlierT(component - 1, 30, 0.0F);
    NCPCA model(&X, &earlierP, &earlierT, /*maxIterations=*/1);
    model.NextComponent(nullptr, nullptr, 0, nullptr);
    ASSERT_EQ(model.GetComponents(), component);
    PCACrossValidation validation(&model, 3, nullptr, nullptr);
    ProgressLog log;
    validation.NextComponent(NCDataVector<float>(20, 1.0F), RecordingBar(&log).get());
    // Six models; the first round of each sets the range instead of a value.
    EXPECT_EQ(log.Count("SetValue"), 6 * (rounds - 1)) << log.Joined();
    EXPECT_EQ(log.Count("SetRange"), 6 + 1);
  }
}

TEST(PCACrossValidation, TakesTheNewestRowsOfAModelThatDoesNotKnowHowManyItHas) {
  PCAValidationCase data(10, 5, 0.0);
  data.AddComponent();
  data.model->CalculateResiduals();
  data.AddComponent();
  NCPCA counted(data.model->GetResiduals(), data.model->GetPprim(), data.model->GetTprim(), 200);
  NCPCA uncounted;
  std::istringstream stream(StreamOf(*data.model));
  ASSERT_TRUE(stream >> uncounted);
  ASSERT_EQ(uncounted.GetComponents(), 0);
  PCACrossValidation expected(&counted, 5, nullptr, nullptr), validation(&uncounted, 5, nullptr, nullptr);
  data.Validate(&expected);
  data.Validate(&validation);
  // Five rounds of iteration instead of six: within what the last of them still moves.
  EXPECT_NEAR(validation.GetQ2Tot(), expected.GetQ2Tot(), 1e-2);
}

// ---- Cells that are not predicted

TEST(PCACrossValidation, KeepsAnEmptyVariablesHolesAsResidualsAndItsQ2AtZero) {
  PCAValidationCase data(10, 5, 0.0);
  for (int i = 1; i <= 10; ++i) data.X(i, 2, kMissing);
  data.Restart();
  data.AddComponent();
  PCACrossValidation validation(data.model.get(), 4, nullptr, nullptr);
  data.Validate(&validation);
  for (int r = 1; r <= 4; ++r) EXPECT_EQ((*validation.GetPSet())[r][2], kMissing);
  for (int i = 1; i <= 10; ++i) EXPECT_EQ((*validation.GetXPredResiduals())[i][2], kMissing);
  EXPECT_EQ((*validation.GetQ2XVar())[2], 0.0F);
  EXPECT_EQ((*validation.GetQ2XVarCum())[2], 0.0F) << "ss is -99: it had no variance either";
}

TEST(PCACrossValidation, LeavesXAsResidualWhereTheLoadingIsMissing) {
  PCAValidationCase data(12, 5, 0.0);
  const Groups observations = GetDeafultCVGroupsVector(12, 3);
  // Variable 2 is known in group 0 alone: without that group it has no loading, so its cells there have no prediction,
  // and elsewhere it has no cells.
  for (int i = 1; i <= 12; ++i)
    if (observations[i] != 0) data.X(i, 2, kMissing);
  data.Restart();
  data.AddComponent();
  PCACrossValidation validation(data.model.get(), 3, &observations, nullptr);
  data.Validate(&validation);
  EXPECT_EQ((*validation.GetPSet())[1][2], kMissing);
  EXPECT_NE((*validation.GetPSet())[2][2], kMissing);
  for (int i = 1; i <= 12; ++i) EXPECT_EQ((*validation.GetXPredResiduals())[i][2], data.X[i][2]);
  EXPECT_EQ((*validation.GetQ2XVar())[2], 0.0F) << "nothing of it is predicted";
  EXPECT_EQ((*validation.GetQ2XVarCum())[2], 1.0F) << "though it has variance";
  EXPECT_TRUE(HasExactCounts(*validation.GetXPredResiduals()));
}

TEST(PCACrossValidation, LeavesXAsResidualWhereTheScoreIsMissing) {
  PCAValidationCase data(10, 6, 0.0);
  const Groups variables = GetDeafultCVGroupsVector(6, 3);
  // Row 4 is known in the variables of group 1 alone: without them it has no score.
  for (int j = 1; j <= 6; ++j)
    if (variables[j] != 1) data.X(4, j, kMissing);
  data.Restart();
  data.AddComponent();
  PCACrossValidation validation(data.model.get(), 3, nullptr, &variables);
  data.Validate(&validation);
  EXPECT_EQ((*validation.GetTSet())[2][4], kMissing);
  EXPECT_NE((*validation.GetTSet())[1][4], kMissing);
  for (int j = 1; j <= 6; ++j) EXPECT_EQ((*validation.GetXPredResiduals())[4][j], data.X[4][j]);
}

TEST(PCACrossValidation, PredictsNoCellOfAGroupThatNoRoundLeavesOut) {
  PCAValidationCase data(8, 6, 0.0);
  data.AddComponent();
  const Groups observations = Ints({0, 1, 2, 0, 1, 2, 3, -1}), variables = Ints({0, 1, 2, 0, 3, -99});
  PCACrossValidation validation(data.model.get(), 3, &observations, &variables);
  data.Validate(&validation);
  for (int i = 1; i <= 8; ++i)
    for (int j = 1; j <= 6; ++j) {
      const bool predicted = i <= 6 && j <= 4;
      EXPECT_EQ((*validation.GetXPredResiduals())[i][j] == data.X[i][j], !predicted);
    }
  for (const int j : {5, 6}) EXPECT_EQ((*validation.GetQ2XVar())[j], 0.0F);
}

// ---- The machine

TEST(PCACrossValidation, GivesTheSameBitsFromAnyNumberOfThreadsAndWithoutLanes) {
  for (const double holes : {0.0, 0.1}) {
    PCAValidationCase data(400, 301, holes);  // cells enough for a team to pay
    data.AddComponent();
    const auto everything = [&data](int threads) {
      const Threads some(threads);
      EXPECT_EQ(TeamReallyGot(std::int64_t{400} * 301), threads);
      PCACrossValidation validation(data.model.get(), 2, nullptr, nullptr);
      data.Validate(&validation);
      return Everything(validation);
    };
    const std::string one = everything(1);
    EXPECT_TRUE(one == everything(2));
    EXPECT_TRUE(one == everything(3));
    const bool before = kalmia::simd::UsesScalarTwins();
    kalmia::simd::UseScalarTwins(!before);
    EXPECT_TRUE(one == everything(2));
    kalmia::simd::UseScalarTwins(before);
  }
}

}  // namespace
