#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "CrossValidationCase.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/support/NCError.h"
#include "testing/MessageOf.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/StreamAttacks.h"

// Cross-validation at its limits: of holes, of variance, of the sign rule.

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using Groups = NCIntegralVector<int, -99>;


/// A validation of the newest component with every cumulated value at `cumulated`.
PLSCrossValidation ContinuedFrom(const CrossValidationCase& data, float cumulated, int rounds, const Groups* groups) {
  return PLSCrossValidation(data.model.get(), cumulated, NCDataVector<float>(data.Y.SizeColumns(), cumulated), rounds,
                            groups);
}

TEST(PLSCrossValidationLimits, ScoresAnObservationWithOneVariableOfSix) {
  CrossValidationCase data(8, 6, 1, 0.0);
  for (int k = 1; k <= 5; ++k) data.X(3, k, kMissing);
  data.Restart();
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 4, nullptr);
  data.Validate(&validation);
  EXPECT_NE((*validation.GetTPred())[3], kMissing);
  EXPECT_NE((*validation.GetYPredResiduals())[3][1], data.Y[3][1]);
}

TEST(PLSCrossValidationLimits, DoesNotScoreAnObservationWithOneVariableOfTwentyThousand) {
  // A share of 0.9999 of 20000 is at most 19998 holes, one less than the variables would allow.
  constexpr int kMany = 20000;
  CrossValidationCase data(4, kMany, 1, 0.0);
  for (int k = 2; k <= kMany; ++k) data.X(3, k, kMissing);
  data.Restart();
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 4, nullptr);
  data.Validate(&validation);
  EXPECT_EQ((*validation.GetTPred())[3], kMissing);
  EXPECT_EQ((*validation.GetYPredResiduals())[3][1], data.Y[3][1]) << "predicted 0";
  EXPECT_NE((*validation.GetTPred())[1], kMissing);
}

TEST(PLSCrossValidationLimits, KeepsRoomForTheSumsOfAllRoundsAskedFor) {
  CrossValidationCase data(5, 3, 1, 0.0);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 100, nullptr);
  EXPECT_EQ(validation.GetSSY()->Size(), 100);
  EXPECT_EQ(validation.GetSSYOriginal()->Size(), 100);
  data.Validate(&validation);
  ASSERT_EQ(validation.GetSSY()->Size(), 100);
  ASSERT_EQ(validation.GetSSYOriginal()->Size(), 100);
  for (int g = 1; g <= 100; ++g) {
    EXPECT_EQ((*validation.GetSSY())[g] != kMissing, g <= 5);
    EXPECT_EQ((*validation.GetSSYOriginal())[g] != kMissing, g <= 5);
  }
}

TEST(PLSCrossValidationLimits, KeepsRoomForTenThousandRoundsWithoutObservationsAtMost) {
  CrossValidationCase data(5, 3, 1, 0.0);
  for (const auto& [rounds, sums] : {std::pair{10004, 10004}, {10005, 10004}, {std::numeric_limits<int>::max(), 10004}})
    EXPECT_EQ(PLSCrossValidation(data.model.get(), rounds, nullptr).GetSSY()->Size(), sums);
}

TEST(PLSCrossValidationLimits, JudgesAVariableFromTheSmallestVarianceOn) {
  // One cell of this size each, squared 1e-37 and 1.2e-37: below and above ten times the smallest normal float.
  const float below = 3.1622777e-19F;
  const float above = 3.4641016e-19F;
  NCDataMatrix<float> Y(10, 2, 0.0F);
  Y(4, 1, below);
  Y(4, 2, above);
  CrossValidationCase data(RandomMatrix<float>(10, 3, 0.0, 1), Y);
  data.AddComponent();
  data.ssY.SetAllValues(0.0F);
  PLSCrossValidation validation = ContinuedFrom(data, 0.5F, 5, nullptr);
  data.Validate(&validation);
  EXPECT_EQ((*validation.GetQ2YVarCum())[1], 0.0F) << "no variance, and none at the start";
  EXPECT_EQ((*validation.GetQ2YVar())[1], 0.0F);
  const double s = static_cast<double>(Y.GetColumnSS(2, 0.0L));
  const double e = static_cast<double>(validation.GetYPredResiduals()->GetColumnSS(2, 0.0L));
  EXPECT_EQ((*validation.GetQ2YVar())[2], static_cast<float>((s - e) / s));
  EXPECT_EQ((*validation.GetQ2YVarCum())[2], static_cast<float>(1.0 - 0.5 * std::min(e / s, 1.1)));
}

TEST(PLSCrossValidationLimits, JudgesATableFromTheSmallestVarianceOn) {
  for (const bool enough : {false, true}) {
    NCDataMatrix<float> Y(10, 1, 0.0F);
    Y(4, 1, enough ? 3.4641016e-19F : 3.1622777e-19F);  // squared 1.2e-37 and 1e-37
    CrossValidationCase data(RandomMatrix<float>(10, 3, 0.0, 1), Y);
    data.AddComponent();
    PLSCrossValidation validation = ContinuedFrom(data, 0.5F, 5, nullptr);
    data.Validate(&validation);
    const double s = static_cast<double>(Y.GetSS());
    const double e = static_cast<double>(validation.GetYPredResiduals()->GetColumnSS(1, 0.0L));
    EXPECT_EQ(validation.GetQ2TotCum(), enough ? static_cast<float>(1.0 - 0.5 * std::min(e / s, 1.1)) : 1.0F);
  }
}

TEST(PLSCrossValidationLimits, TakesTheMissingSumOfNoResidualAsANumberForItsVariableButNotForTheTotal) {
  CrossValidationCase data(6, 3, 1, 0.0);
  data.AddComponent();
  const Groups nobody(std::vector<int>(6, -1).data(), 6);
  PLSCrossValidation validation = ContinuedFrom(data, 0.0F, 2, &nobody);
  data.Validate(&validation);
  for (const auto& row : CellsOf(*validation.GetYPredResiduals())) ASSERT_THAT(row, Each(kMissing));
  const double s = static_cast<double>(data.Y.GetColumnSS(1, 0.0L));
  EXPECT_EQ((*validation.GetQ2YVar())[1], static_cast<float>((s + 99.0) / s));
  EXPECT_EQ((*validation.GetQ2YVarCum())[1], static_cast<float>(1.0 - -99.0 / s));
  EXPECT_EQ(validation.GetQ2Tot(), 1.0F);
  EXPECT_EQ(validation.GetQ2TotCum(), 1.0F);
}

TEST(PLSCrossValidationLimits, TurnsARoundThatHasNoPairWithTheWeightsButNotOneAtARightAngle) {
  CrossValidationCase data(8, 3, 1, 0.0);  // one Y variable: the weights are no start
  data.AddComponent();
  PLSCrossValidation rightAngle(data.model.get(), 4, nullptr);
  PLSCrossValidation noPair(data.model.get(), 4, nullptr);
  const NCDataVector<float> zero(3, 0.0F);
  const NCDataVector<float> missing(3);
  rightAngle.NextComponent(&zero, data.maxIterations, data.ssY, nullptr, /*quiet=*/true);
  noPair.NextComponent(&missing, data.maxIterations, data.ssY, nullptr, /*quiet=*/true);
  const Groups groups = GetDeafultCVGroupsVector(8, 4);
  NCDataMatrix<float> X;
  NCDataMatrix<float> Y;
  X.SetSize(0, 3);
  Y.SetSize(0, 1);
  for (int i = 1; i <= 8; ++i)
    if (groups[i] != 0) {
      X.push_back(data.X[i]);
      Y.push_back(data.Y[i]);
    }
  NCPLS firstRound(&X, &Y, data.maxIterations);
  firstRound.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
  EXPECT_EQ(CellsOf((*rightAngle.GetWSet())[1]), CellsOf((*firstRound.GetWprim())[1]));
  for (int g = 1; g <= 4; ++g)
    for (int k = 1; k <= 3; ++k) EXPECT_EQ((*noPair.GetWSet())[g][k], -(*rightAngle.GetWSet())[g][k]);
}

TEST(PLSCrossValidationLimits, TakesItsOwnResultsAsArguments) {
  CrossValidationCase data(10, 4, 2, 0.1);
  data.AddComponent();
  PLSCrossValidation aliased(data.model.get(), 5, nullptr);
  data.Validate(&aliased);
  PLSCrossValidation copied = aliased;
  NCDataVector<float> w;
  NCDataVector<float> ssY;
  w.CopyZeroBasedVector(CellsOf((*aliased.GetWSet())[1]).data(), 4);
  ssY.CopyZeroBasedVector(CellsOf(*aliased.GetQ2YVarCum()).data(), 2);
  aliased.NextComponent(&(*aliased.GetWSet())[1], data.maxIterations, *aliased.GetQ2YVarCum(), nullptr, true);
  copied.NextComponent(&w, data.maxIterations, ssY, nullptr, true);
  EXPECT_EQ(CellsOf(*aliased.GetWSet()), CellsOf(*copied.GetWSet()));
  EXPECT_EQ(CellsOf(*aliased.GetTSet()), CellsOf(*copied.GetTSet()));
  EXPECT_EQ(CellsOf(*aliased.GetYPredResiduals()), CellsOf(*copied.GetYPredResiduals()));
  EXPECT_EQ(CellsOf(*aliased.GetQ2YVar()), CellsOf(*copied.GetQ2YVar()));
  EXPECT_EQ(CellsOf(*aliased.GetQ2YVarCum()), CellsOf(*copied.GetQ2YVarCum()));
  EXPECT_EQ(aliased.GetQ2TotCum(), copied.GetQ2TotCum());
}

TEST(PLSCrossValidationLimits, OverwritesTheOriginalSumsOnlyForAModelOfOneComponent) {
  CrossValidationCase data(12, 4, 2, 0.1);
  data.AddComponent();
  NCPLS read;  // of version 2: it has a component and counts none
  std::istringstream stream(StreamOf(*data.model));
  ASSERT_TRUE(stream >> read);
  ASSERT_EQ(read.GetComponents(), 0);
  PLSCrossValidation uncounted(&read, 3, nullptr);
  uncounted.NextComponent(&data.Weights(), data.maxIterations, data.ssY, nullptr, /*quiet=*/true);
  EXPECT_THAT(CellsOf(*uncounted.GetSSYOriginal()), Each(kMissing));
  EXPECT_THAT(CellsOf(*uncounted.GetSSY()), Each(testing::Ge(0.0F)));

  data.model->CalculateResiduals();
  data.AddComponent();
  PLSCrossValidation later = ContinuedFrom(data, 0.5F, 3, nullptr);
  data.Validate(&later);
  EXPECT_THAT(CellsOf(*later.GetSSYOriginal()), Each(kMissing));
}

TEST(PLSCrossValidationLimits, SetsTheRangeOnceARoundAndNeverMovesTheBarWhateverTheIterations) {
  CrossValidationCase data(12, 4, 3, 0.1);
  data.AddComponent();
  ASSERT_GT(data.model->GetIterations(), 1);
  PLSCrossValidation validation(data.model.get(), 3, nullptr);
  ProgressLog log;
  data.Validate(&validation, RecordingBar(&log).get(), /*quiet=*/false);
  EXPECT_EQ(log.Count("SetText"), 3) << log.Joined();
  EXPECT_EQ(log.Count("SetRange"), 3);
  EXPECT_EQ(log.calls.size(), 7U) << "and the bar's end";
}

TEST(PLSCrossValidationLimits, RefusesGroupsThatAreNotOneForEachObservation) {
  CrossValidationCase data(8, 3, 2, 0.1);
  data.AddComponent();
  const NCDataVector<float> cumulated(2, 0.0F);
  for (const int count : {0, 3, 7, 9}) {
    SCOPED_TRACE(count);
    const NCIntegralVector<int, -99> groups(count, 0);
    const std::string text = "Cross validation: there are " + std::to_string(count) + " groups for 8 observations.";
    EXPECT_EQ(MessageOf([&] { PLSCrossValidation(data.model.get(), 4, &groups); }), text);
    EXPECT_EQ(MessageOf([&] { PLSCrossValidation(data.model.get(), 0.0F, cumulated, 4, &groups); }), text);
  }
  const NCIntegralVector<int, -99> groups(8, 0);
  EXPECT_NO_THROW(PLSCrossValidation(data.model.get(), 4, &groups));
}

TEST(PLSCrossValidationLimits, LeavesNothingOutInLessThanOneRound) {
  for (const int rounds : {0, -1, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(rounds);
    CrossValidationCase data(6, 3, 2, 0.1);
    data.AddComponent();
    PLSCrossValidation validation(data.model.get(), rounds, nullptr);
    data.Validate(&validation);
    EXPECT_EQ(validation.GetWSet()->SizeRows(), 0);
    EXPECT_THAT(CellsOf(*validation.GetTPred()), Each(kMissing));
    EXPECT_EQ(validation.GetYPredResiduals()->GetNumMisVal(), 12);
    EXPECT_EQ(validation.GetSSY()->Size(), 0);
  }
}

TEST(PLSCrossValidationLimits, JudgesNothingInLessThanOneRoundSoThatNoComponentPasses) {
  for (const int rounds : {0, -1, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(rounds);
    CrossValidationCase data(6, 3, 2, 0.1);
    data.AddComponent();
    data.ssY(2, 0.0F);
    PLSCrossValidation validation = ContinuedFrom(data, 0.5F, rounds, nullptr);
    data.Validate(&validation);
    EXPECT_EQ(validation.GetQ2Tot(), 0.0F);
    EXPECT_EQ(validation.GetQ2TotCum(), 1.0F) << "as where no variance is left";
    EXPECT_THAT(CellsOf(*validation.GetQ2YVar()), ElementsAre(0.0F, 0.0F));
    EXPECT_THAT(CellsOf(*validation.GetQ2YVarCum()), ElementsAre(1.0F, 0.0F));
  }
}

TEST(PLSCrossValidationLimits, HasNoRoundsForAModelWithoutObservations) {
  const NCDataMatrix<float> X(0, 3), Y(0, 2);
  NCPLS model(&X, &Y, 10);
  PLSCrossValidation validation(&model, 7, nullptr);
  EXPECT_EQ(validation.GetYPredResiduals()->SizeRows(), 0);
  const NCDataVector<float> w(3, 1.0F), ssY(2, 1.0F);
  validation.NextComponent(&w, 10, ssY, nullptr, /*quiet=*/true);
  EXPECT_EQ(validation.GetQ2Tot(), 0.0F);
  EXPECT_THAT(CellsOf(*validation.GetQ2YVar()), Each(0.0F));
  EXPECT_EQ(validation.GetWSet()->SizeRows(), 0);
}

TEST(PLSCrossValidationLimits, RefusesAModelThatHasBecomeAnotherOneOfAnotherSize) {
  struct Other {
    int rows, xVariables, yVariables;
    const char* what;
  };
  const Other others[] = {{600, 3, 2, "600 observations, and had 6"}, {5, 3, 2, "5 observations, and had 6"},
                          {6, 40, 2, "40 X variables, and had 3"},    {6, 2, 2, "2 X variables, and had 3"},
                          {6, 3, 30, "30 Y variables, and had 2"},    {6, 3, 1, "1 Y variables, and had 2"}};
  for (const Other& other : others) {
    SCOPED_TRACE(other.what);
    CrossValidationCase data(6, 3, 2, 0.1), another(other.rows, other.xVariables, other.yVariables, 0.1);
    data.AddComponent();
    another.AddComponent();
    PLSCrossValidation validation(data.model.get(), 3, nullptr);
    data.Validate(&validation);
    const std::string before = Everything(validation);
    std::istringstream stream(StreamOf(*another.model));
    ASSERT_TRUE(stream >> *data.model);
    const NCDataVector<float>& w = (*data.model->GetWprim())[1];
    EXPECT_EQ(MessageOf([&] { validation.NextComponent(&w, 20, another.ssY, nullptr, /*quiet=*/true); }),
              std::string("Cross validation: the model has ") + other.what + " when the validation was made.");
    EXPECT_EQ(Everything(validation), before);
  }
}

TEST(PLSCrossValidationLimits, RefusesVectorsThatHaveNotOneCellForEachVariable) {
  CrossValidationCase data(6, 3, 2, 0.1);
  data.AddComponent();
  const NCDataVector<float> one(1, 0.5F), two(2, 0.5F), three(3, 0.5F), four(4, 0.5F);
  const auto refusal = [&](const NCDataVector<float>& w, const NCDataVector<float>& ssY,
                           const NCDataVector<float>& cumulated) {
    return MessageOf([&] {
      PLSCrossValidation validation(data.model.get(), 0.5F, cumulated, 3, nullptr);
      validation.NextComponent(&w, 20, ssY, nullptr, /*quiet=*/true);
    });
  };
  EXPECT_EQ(refusal(three, two, two), std::nullopt);
  EXPECT_EQ(refusal(two, two, two), "Cross validation: w has 2 cells for 3 variables.");
  EXPECT_EQ(refusal(four, two, two), "Cross validation: w has 4 cells for 3 variables.");
  EXPECT_EQ(refusal(three, one, two), "Cross validation: ssY has 1 cells for 2 variables.");
  EXPECT_EQ(refusal(three, three, two), "Cross validation: ssY has 3 cells for 2 variables.");
  EXPECT_EQ(refusal(three, two, one), "Cross validation: q2YVarCum has 1 cells for 2 variables.");
  EXPECT_EQ(refusal(three, two, three), "Cross validation: q2YVarCum has 3 cells for 2 variables.");
}

TEST(PLSCrossValidationLimits, PredictsNothingInASingleRoundThatLeavesAllOut) {
  CrossValidationCase data(6, 3, 2, 0.1);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 1, nullptr);
  data.Validate(&validation);
  ASSERT_EQ(validation.GetWSet()->SizeRows(), 1);
  EXPECT_THAT(CellsOf((*validation.GetWSet())[1]), Each(kMissing));
  EXPECT_THAT(CellsOf(*validation.GetTPred()), Each(kMissing));
  EXPECT_EQ(CellsOf(*validation.GetYPredResiduals()), CellsOf(data.Y));
  EXPECT_EQ(validation.GetQ2Tot(), 0.0F) << "press is ss";
  EXPECT_EQ(validation.GetQ2TotCum(), 0.0F);
}

}  // namespace
