#include "kalmia/pcapls/PLSCrossValidation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

#include "PlainPls.h"
#include "kalmia/pcapls/NCPLSPred.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/support/LanguageString.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/StreamAttacks.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using Groups = NCIntegralVector<int, -99>;

constexpr float kMissing = kHole<float>;

NCDataVector<float> ColumnSquaresOf(const NCDataMatrix<float>& matrix) {
  NCDataVector<float> squares(matrix.SizeColumns());
  for (int j = 1; j <= squares.Size(); ++j) squares(j, static_cast<float>(matrix.GetColumnSS(j, 0.0L)));
  return squares;
}

Groups GroupsOf(const std::vector<int>& numbers) { return Groups(numbers.data(), static_cast<int>(numbers.size())); }

/// A model and what its cross-validation needs; Y is made of X and noise.
struct Case {
  Case(int rows, int xVariables, int yVariables, double holes, unsigned seed = 1)
      : X(RandomMatrix<float>(rows, xVariables, holes, seed)),
        Y(RandomMatrix<float>(rows, yVariables, holes, seed + 100)) {
    for (int i = 1; i <= rows; ++i)
      for (int j = 1; j <= yVariables; ++j)
        if (X[i][j] != kMissing && Y[i][j] != kMissing) Y(i, j, 3.0F * X[i][j] + 0.5F * Y[i][j]);
    Restart();
  }
  Case(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y) : X(x), Y(y) { Restart(); }

  void Restart() {
    model = std::make_unique<NCPLS>(&X, &Y, maxIterations);
    ssY = ColumnSquaresOf(Y);
  }
  void AddComponent() { model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false); }
  const NCDataVector<float>& Weights() const { return (*model->GetWprim())[model->GetComponents()]; }
  void Validate(PLSCrossValidation* validation, NCProgress* progress = nullptr, bool quiet = true) const {
    validation->NextComponent(&Weights(), maxIterations, ssY, progress, quiet);
  }

  NCDataMatrix<float> X;
  NCDataMatrix<float> Y;
  int maxIterations = 100;
  NCDataVector<float> ssY;
  std::unique_ptr<NCPLS> model;
};

/// Everything that a validation holds, for comparisons to the bit.
std::string Everything(const PLSCrossValidation& validation) {
  std::ostringstream all;
  all << *validation.GetWSet() << *validation.GetCSet() << *validation.GetPSet() << *validation.GetTSet()
      << *validation.GetTPred() << *validation.GetYPredResiduals() << *validation.GetQ2YVar()
      << *validation.GetQ2YVarCum() << *validation.GetSSY() << *validation.GetSSYOriginal();
  all << validation.GetQ2Tot() << ' ' << validation.GetQ2TotCum();
  return all.str();
}

// ---- Against a twin in double that leaves groups out

struct Shape {
  const char* name;
  int rows, xVariables, yVariables;
  double holes;
};

class PLSCrossValidationOnTables : public ::testing::TestWithParam<Shape> {};

const Shape kShapes[] = {{"OneY", 20, 5, 1, 0.0},          {"ThreeY", 20, 5, 3, 0.0},
                         {"Wide", 15, 40, 2, 0.0},         {"OneYWithHoles", 25, 6, 1, 0.15},
                         {"ThreeYWithHoles", 25, 6, 3, 0.15}, {"WideWithHoles", 15, 40, 2, 0.15}};

INSTANTIATE_TEST_SUITE_P(, PLSCrossValidationOnTables, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

/// The prediction errors of one component, all in double. Each round runs exactly `roundsOfLoop` rounds.
plain::Table ErrorsOfTwin(const plain::Table& X, const plain::Table& Y, const plain::Vector& w, const Groups& groups,
                          int rounds, int roundsOfLoop) {
  plain::Table errors = Y;
  for (int group = 0; group < rounds; ++group) {
    plain::Table keptX, keptY;
    for (std::size_t i = 0; i < X.size(); ++i)
      if (groups[static_cast<int>(i) + 1] != group) {
        keptX.push_back(X[i]);
        keptY.push_back(Y[i]);
      }
    const plain::Component component = plain::Fit(keptX, keptY, &w, roundsOfLoop);
    for (std::size_t i = 0; i < X.size(); ++i)
      if (groups[static_cast<int>(i) + 1] == group) {
        const double t = plain::RegressRows({X[i]}, component.w).front();
        for (std::size_t j = 0; j < Y[i].size(); ++j)
          if (!std::isnan(t)) errors[i][j] = Y[i][j] - t * component.c[j];
      }
  }
  return errors;
}

TEST_P(PLSCrossValidationOnTables, Q2IsThatOfTheTwinInDoubleOverSeveralComponents) {
  const Shape& shape = GetParam();
  Case data(shape.rows, shape.xVariables, shape.yVariables, shape.holes);
  // Two rounds of a loop that needs more, so that both sides do the same number; with one Y variable one is all.
  data.maxIterations = 2;
  const int roundsOfLoop = shape.yVariables == 1 ? 1 : 2;
  data.Restart();
  const int rounds = 7;
  const Groups groups = GetDeafultCVGroupsVector(shape.rows, rounds);
  PLSCrossValidation validation(data.model.get(), rounds, nullptr);
  plain::Vector unexplained(static_cast<std::size_t>(shape.yVariables), 1.0);
  double unexplainedTotal = 1.0;
  for (int a = 1; a <= 3; ++a) {
    SCOPED_TRACE("component " + std::to_string(a));
    data.AddComponent();
    data.Validate(&validation);
    const plain::Table Y = plain::TableOf(*data.model->GetYResiduals());
    const plain::Table errors = ErrorsOfTwin(plain::TableOf(*data.model->GetXResiduals()), Y,
                                             plain::VectorOf(data.Weights()), groups, rounds, roundsOfLoop);
    const plain::Table found = plain::TableOf(*validation.GetYPredResiduals());
    // A prediction is off by the roundings of w, t and c (see NCPLSTest), 16 times 2^-24 of what the table has; an
    // error of that size in each cell changes press / ss by twice as much, relative to ss.
    const double tolerance = 32 * 0x1p-24;
    EXPECT_LT(plain::RelativeGap(plain::Transposed(found).front(), plain::Transposed(errors).front()), tolerance);
    for (std::size_t j = 0; j < unexplained.size(); ++j) {
      const double ratio = plain::SquaresOf(plain::Transposed(errors)[j]) / plain::SquaresOf(plain::Transposed(Y)[j]);
      unexplained[j] *= std::min(ratio, 1.1);
      EXPECT_NEAR((*validation.GetQ2YVar())[static_cast<int>(j) + 1], 1.0 - ratio, tolerance * std::max(ratio, 1.0));
      EXPECT_NEAR((*validation.GetQ2YVarCum())[static_cast<int>(j) + 1], 1.0 - unexplained[j], a * tolerance);
    }
    const double ratio = plain::SquaresOf(errors) / plain::SquaresOf(Y);
    unexplainedTotal *= std::min(ratio, 1.1);
    EXPECT_NEAR(validation.GetQ2Tot(), 1.0 - ratio, tolerance * std::max(ratio, 1.0));
    EXPECT_NEAR(validation.GetQ2TotCum(), 1.0 - unexplainedTotal, a * tolerance);
    data.model->CalculateResiduals();
  }
}

TEST_P(PLSCrossValidationOnTables, RoundsAreModelsOfTheRestAndPredictionsOfTheGroupToTheBit) {
  const Shape& shape = GetParam();
  Case data(shape.rows, shape.xVariables, shape.yVariables, shape.holes);
  const int rounds = 4;
  const Groups groups = GetDeafultCVGroupsVector(shape.rows, rounds);
  PLSCrossValidation validation(data.model.get(), rounds, &groups);
  data.AddComponent();
  data.Validate(&validation);
  for (int group = 0; group < rounds; ++group) {
    SCOPED_TRACE("group " + std::to_string(group));
    NCDataMatrix<float> keptX, keptY, leftOut;
    std::vector<int> kept, left;
    for (int i = 1; i <= shape.rows; ++i) {
      (groups[i] == group ? leftOut : keptX).push_back(data.X[i]);
      (groups[i] == group ? left : kept).push_back(i);
      if (groups[i] != group) keptY.push_back(data.Y[i]);
    }
    NCPLS round(&keptX, &keptY, data.maxIterations);
    round.NextComponent(nullptr, &data.Weights(), /*quiet=*/true, /*strict=*/false);
    round.CalculateResiduals();
    NCPLSPred prediction(leftOut, *round.GetWprim(), *round.GetPprim(), *round.GetCprim(), 0.9999F);
    prediction.CalcNextComponent();

    const bool turned = (*round.GetWprim())[1] * data.Weights() < 0.0L;
    for (std::size_t k = 0; k < left.size(); ++k) {
      const float t = (*prediction.GetTPred())[static_cast<int>(k) + 1];
      EXPECT_EQ((*validation.GetTPred())[left[k]], t) << "with the sign of its round";
      EXPECT_EQ((*validation.GetTSet())[group + 1][left[k]], turned && t != kMissing ? -t : t);
      for (int j = 1; j <= shape.yVariables; ++j) {
        const float y = data.Y[left[k]][j];
        const float expected = y == kMissing ? y : y - (*prediction.GetYPred())[static_cast<int>(k) + 1][j];
        EXPECT_EQ((*validation.GetYPredResiduals())[left[k]][j], expected);
      }
    }
    if (turned) round.FlipComponent(1);
    EXPECT_EQ(CellsOf((*validation.GetWSet())[group + 1]), CellsOf((*round.GetWprim())[1]));
    EXPECT_EQ(CellsOf((*validation.GetCSet())[group + 1]), CellsOf((*round.GetCprim())[1]));
    EXPECT_EQ(CellsOf((*validation.GetPSet())[group + 1]), CellsOf((*round.GetPprim())[1]));
    for (std::size_t k = 0; k < kept.size(); ++k)
      EXPECT_EQ((*validation.GetTSet())[group + 1][kept[k]], (*round.GetTprim())[1][static_cast<int>(k) + 1]);
    EXPECT_EQ((*validation.GetSSY())[group + 1], static_cast<float>(round.GetYResiduals()->GetSS()));
    EXPECT_EQ((*validation.GetSSYOriginal())[group + 1], static_cast<float>(keptY.GetSS()));
  }
  for (const NCDataMatrix<float>* matrix :
       {validation.GetWSet(), validation.GetCSet(), validation.GetPSet(), validation.GetTSet(),
        validation.GetYPredResiduals()})
    EXPECT_TRUE(HasExactCounts(*matrix));
}

TEST_P(PLSCrossValidationOnTables, LeavesTheModelAsItIs) {
  const Shape& shape = GetParam();
  Case data(shape.rows, shape.xVariables, shape.yVariables, shape.holes);
  data.AddComponent();
  const std::string before = StreamOf(*data.model);
  PLSCrossValidation validation(data.model.get(), 5, nullptr);
  data.Validate(&validation);
  EXPECT_EQ(StreamOf(*data.model), before);
}

// ---- Set-up

TEST(PLSCrossValidation, StartsAtZeroWithRoomForItsResults) {
  Case data(10, 4, 2, 0.0);
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
  Case data(5, 3, 1, 0.0);
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
  Case data(9, 3, 1, 0.0);
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
  Case data(6, 3, 1, 0.0);
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
  Case data(6, 3, 1, 0.0);
  data.AddComponent();
  const Groups groups = GroupsOf({0, 2, 0, 2, 0, 2});
  PLSCrossValidation validation(data.model.get(), 3, &groups);
  data.Validate(&validation);
  ASSERT_EQ(validation.GetWSet()->SizeRows(), 3);
  EXPECT_EQ(CellsOf((*validation.GetWSet())[2]), CellsOf(data.Weights())) << "group 1: the model itself";
}

TEST(PLSCrossValidation, GoesOnFromTheCumulatedValuesItIsGiven) {
  Case data(20, 5, 2, 0.1);
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
  Case data(12, 4, 2, 0.1);
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
  Case data(15, 4, 2, 0.0);
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
  Case data(12, 4, 1, 0.1);
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
  Case data(8, 3, 2, 0.0);
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
  Case data(8, 3, 1, 0.0);
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
  Case hundred(100, 2, 1, 0.0);
  Case more(101, 2, 1, 0.0);
  EXPECT_EQ(PLSCrossValidation(hundred.model.get(), 7, nullptr).GetQ2Lim(), 0.05F);
  EXPECT_EQ(PLSCrossValidation(more.model.get(), 7, nullptr).GetQ2Lim(), 0.0F);
}

TEST(PLSCrossValidation, GivesAVariableWithoutVarianceQ2ZeroAndCumulatedOneIfItHadSomeAtTheStart) {
  Case data(10, 3, 3, 0.0);
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
  Case data(10, 3, 1, 0.0);
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
  Case data(X, Y);
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

// ---- Progress

std::string RoundText(int round, int rounds) {
  CString text;
  text.Format(LanguageString::Get(10163), round, rounds);
  return static_cast<const char*>(text);
}

TEST(PLSCrossValidation, NamesEachRoundAndLeavesTheRangeToItsModel) {
  Case data(9, 3, 1, 0.0);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 2, nullptr);
  ProgressLog log;
  data.Validate(&validation, RecordingBar(&log).get(), /*quiet=*/false);
  EXPECT_EQ(log.Joined(), "SetText " + RoundText(1, 2) + "; SetRange 1 0; SetText " + RoundText(2, 2) +
                              "; SetRange 1 0; ~");
}

TEST(PLSCrossValidation, OpensABarOfItsOwnUnlessQuiet) {
  Case data(9, 3, 1, 0.0);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 2, nullptr);
  ProgressLog log;
  const RecordOwnBars factory(&log);
  data.Validate(&validation, nullptr, /*quiet=*/true);
  EXPECT_EQ(log.Joined(), "");
  data.Validate(&validation, nullptr, /*quiet=*/false);
  EXPECT_EQ(log.Joined(), "open  0 1 0 0 1 null; SetText " + RoundText(1, 2) + "; SetRange 1 0; SetText " +
                              RoundText(2, 2) + "; SetRange 1 0; ~");
}

TEST(PLSCrossValidation, NamesItsRoundsOnAQuietCallersBarToo) {
  Case data(9, 3, 1, 0.0);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 2, nullptr);
  ProgressLog log;
  data.Validate(&validation, RecordingBar(&log).get(), /*quiet=*/true);
  EXPECT_EQ(log.Joined(), "SetText " + RoundText(1, 2) + "; SetText " + RoundText(2, 2) + "; ~");
}

TEST(PLSCrossValidation, RunsToItsEndWhateverTheUserWants) {
  Case data(12, 4, 2, 0.1);
  data.AddComponent();
  PLSCrossValidation watched(data.model.get(), 3, nullptr);
  PLSCrossValidation silent(data.model.get(), 3, nullptr);
  ProgressLog log;
  log.stopAt = 1;
  EXPECT_NO_THROW(data.Validate(&watched, RecordingBar(&log).get(), /*quiet=*/false));
  data.Validate(&silent);
  EXPECT_EQ(Everything(watched), Everything(silent));
}

TEST(PLSCrossValidation, NeverFailsOnTablesThatHaveNothingToSay) {
  Case nan(8, 3, 2, 0.0);
  nan.X(2, 2, std::nanf(""));
  Case empty(NCDataMatrix<float>(8, 3), NCDataMatrix<float>(8, 2));
  Case zero(NCDataMatrix<float>(8, 3, 0.0F), NCDataMatrix<float>(8, 2, 0.0F));
  for (Case* data : {&nan, &empty, &zero}) {
    data->Restart();
    data->AddComponent();
    PLSCrossValidation validation(data->model.get(), 4, nullptr);
    EXPECT_NO_THROW(data->Validate(&validation));
    EXPECT_EQ(validation.GetWSet()->SizeRows(), 4);
  }
}

/// A bar whose user does not wait for an answer.
struct Impatient {};
class ThrowingSink : public NCProgress::Sink {
 public:
  explicit ThrowingSink(int texts) : texts_(texts) {}
  void SetRange(float, float) override {}
  bool SetValue(float) override { return true; }
  void SetText(const char*) override {
    if (--texts_ == 0) throw Impatient();
  }
  bool PushSubRange(float, float) override { return true; }
  bool PopSubRange() override { return true; }
  bool IsBreakPressed() override { return false; }
  bool NextSpin() override { return true; }
  void SpinDone() override {}

 private:
  int texts_;
};

TEST(PLSCrossValidation, StaysAsItWasWhereTheBarThrows) {
  Case data(12, 4, 2, 0.1);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 3, nullptr);
  data.Validate(&validation);
  const std::string before = Everything(validation);
  for (int texts = 1; texts <= 3; ++texts) {
    NCProgress bar(std::make_unique<ThrowingSink>(texts));
    EXPECT_THROW(data.Validate(&validation, &bar, /*quiet=*/false), Impatient);
    EXPECT_EQ(Everything(validation), before);
  }
}

}  // namespace
