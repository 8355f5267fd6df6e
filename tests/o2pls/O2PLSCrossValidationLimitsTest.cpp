// Blocks made so that every sum is exact in binary: what happens on the border of a rule.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "O2PLSCase.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"
#include "testing/AllocationMeter.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using Table = NCDataMatrix<float>;
using Groups = NCIntegralVector<int, -99>;

constexpr int kRows = 20;  // five groups of four: sixteen rows to train with, a power of two

struct LimitIs {
  explicit LimitIs(float limit) { SetO2PLSQ2Limit(limit); }
  ~LimitIs() { SetO2PLSQ2Limit(0.01F); }
};

/// +1 or -1; two patterns are at right angles in every four rows that follow each other.
float Common(int row) { return row % 2 == 0 ? 1.0F : -1.0F; }
float Unique(int row) { return (row - 1) / 2 % 2 == 0 ? 1.0F : -1.0F; }

Groups FoursInTurn() {
  Groups groups(kRows);
  for (int i = 1; i <= kRows; ++i) groups(i) = (i - 1) / 4;
  return groups;
}

/// Y = (c, 0), and X = (c + z, z): the predictive score is c + z, half right; without z's component it is c itself.
FloatBlocks Overlaid() {
  FloatBlocks blocks{Table(kRows, 2), Table(kRows, 2, 0.0F)};
  for (int i = 1; i <= kRows; ++i) {
    blocks.X(i, 1, Common(i) + Unique(i));
    blocks.X(i, 2, Unique(i));
    blocks.Y(i, 1, Common(i));
  }
  return blocks;
}

O2PLSCVResults Validate(const FloatBlocks& blocks, int predictive, int xOrthogonal, int yOrthogonal) {
  Groups groups = FoursInTurn();
  return O2PLSCrossValidation(&blocks.X, &blocks.Y, -1, nullptr, &groups, 200, predictive, xOrthogonal, yOrthogonal)
      .GetResults();
}

std::vector<int> CodesOf(const Groups& codes) { return {codes.begin(), codes.end()}; }

TEST(O2PLSCrossValidationLimits, AGainThatEqualsTheLimitIsKeptAndCountedThoughNotSignificant) {
  FloatBlocks blocks = Overlaid();
  blocks.Y.RemoveColumns(2, 1);
  ASSERT_EQ(Validate(blocks, 1, 0, 0).Q2Cum[1], 0.5F);
  ASSERT_EQ(Validate(blocks, 1, 1, 0).Q2Cum[1], 1.0F);
  const struct {
    float limit;
    int found;
    int code;
  } cases[] = {{std::nextafter(0.5F, 0.0F), 1, 0}, {0.5F, 1, 3}, {std::nextafter(0.5F, 1.0F), 0, 3}};
  for (const auto& c : cases) {
    const LimitIs limit(c.limit);
    const O2PLSCVResults r = Validate(blocks, -1, -1, -1);
    EXPECT_EQ(r.PredictiveComponents, 1);
    EXPECT_EQ(r.XSideComponents, c.found) << "all that two variables can have is one";
    EXPECT_EQ(CodesOf(r.XSideSignificance), std::vector<int>{c.code});
    EXPECT_EQ(r.Q2XSide[1], 1.0F);
    EXPECT_EQ(r.ToSet.size(), static_cast<std::size_t>(c.found));
    EXPECT_EQ(r.Q2Cum[1], c.found == 1 ? 1.0F : 0.5F) << "a refused trial is taken back";
    EXPECT_EQ(r.YSideComponents, 0);
    EXPECT_EQ(r.YSideSignificance.Size(), 0) << "one variable has room for no trial";
  }
}

TEST(O2PLSCrossValidationLimits, ATrialThatFailsLeavesTheComponentsThatWereAccepted) {
  const O2PLSCVResults r = Validate(Overlaid(), 1, 3, 0);  // z's component, and then nothing is left to find one in
  EXPECT_EQ(r.XSideComponents, 1);
  EXPECT_EQ(CodesOf(r.XSideSignificance), std::vector<int>{0});
  EXPECT_EQ(r.Q2XSide.Size(), 1);
  EXPECT_EQ(r.WoSet.size(), 1U);
  EXPECT_EQ(r.Q2Cum[1], 1.0F) << "the models are those of one component";
}

TEST(O2PLSCrossValidationLimits, ATrialThatFailsInALaterRoundIsTakenBackInAll) {
  // z occurs in the third group only: without it there is nothing to be had, in the other rounds there is.
  FloatBlocks blocks = Overlaid();
  for (int i = 1; i <= kRows; ++i)
    if ((i - 1) / 4 != 2) {
      blocks.X(i, 1, Common(i));
      blocks.X(i, 2, 0.0F);
    }
  const O2PLSCVResults none = Validate(blocks, 1, 0, 0), failed = Validate(blocks, 1, 1, 0);
  ASSERT_LT(none.Q2Cum[1], 1.0F);
  EXPECT_EQ(failed.XSideComponents, 0);
  EXPECT_EQ(failed.Q2XSide.Size(), 0);
  EXPECT_TRUE(failed.WoSet.empty());
  EXPECT_EQ(CellsOf(failed.Q2Cum), CellsOf(none.Q2Cum));
  EXPECT_EQ(CellsOf(failed.TSet[0]), CellsOf(none.TSet[0]));
  EXPECT_EQ(CellsOf(failed.LambdaSet[0]), CellsOf(none.LambdaSet[0]));
}

// ---- Blocks and groups that do not belong together

constexpr const char* kBadGroups = "Internal error in O2PLSCrossValidation::O2PLSCrossValidation";

TEST(O2PLSCrossValidationLimits, TakeAQ2OfZeroToStartFromButNoInfiniteOne) {
  // The groups of X lie at right angles: what is held out has no score, and Y is predicted as 0.
  Table X(4, 2, 0.0F), Y(4, 1);
  NCIntegralVector<int, -99> groups(4);
  for (int i = 1; i <= 4; ++i) {
    X(i, i <= 2 ? 1 : 2, i % 2 == 0 ? 1.0F : -1.0F);
    Y(i, 1, i % 2 == 0 ? 1.0F : -1.0F);
    groups(i) = i <= 2 ? 0 : 1;
  }
  const O2PLSCVResults r = O2PLSCrossValidation(&X, &Y, 2, nullptr, &groups, 500, 1, 0, 0).GetResults();
  EXPECT_EQ(r.Q2Cum[1], 0.0F);
  EXPECT_EQ(r.PredictiveComponents, 1);
  // The rows of one group predict infinite Y of the other one.
  Table wide(4, 1);
  for (int i = 1; i <= 4; ++i) wide(i, 1, Y.GetColumn(1)[i] * (i <= 2 ? 1e-5F : 1e35F));
  EXPECT_EQ(TextOf([&] { O2PLSCrossValidation(&wide, &Y, 2, nullptr, &groups, 500, 1, 0, 0); }),
            "There is no correlation between X and Y");
}

TEST(O2PLSCrossValidationLimits, HaveMissingScoresOfARoundThatHasNothingLeftBesideOnePredictiveComponentOfOneY) {
  // The second variable of X is zero but in the last row: without it one direction is all of X.
  const Table X = MatrixOf<float>({{1, 0}, {-2, 0}, {3, 0}, {-1, 0}, {2, 0}, {-1, 5}});
  const Table Y = MatrixOf<float>({{1.1F}, {-2.2F}, {2.9F}, {-1.3F}, {2.2F}, {3}});
  NCIntegralVector<int, -99> groups(6);
  for (int i = 1; i <= 6; ++i) groups(i) = i - 1;
  const O2PLSCVResults r = O2PLSCrossValidation(&X, &Y, 6, nullptr, &groups, 500, 1, 1, 0).GetResults();
  ASSERT_EQ(r.ToSet.size(), 1U);
  EXPECT_EQ(r.ToSet[0].GetNumMisVal(), 6) << "of the last round all";
  const Table& squares = r.SSTable;
  EXPECT_EQ(squares[2][6], -99.0F) << "and no errors";
  EXPECT_GT(r.Q2Cum[1], 1.0F);
}

TEST(O2PLSCrossValidationLimits, RefuseBlocksOfDifferentLengths) {
  const Table X = RandomMatrix<float>(12, 5, 0, 1);
  for (const int rows : {9, 14})
    for (const int numbers : {-1, 1}) {
      const Table Y = RandomMatrix<float>(rows, 4, 0, 2);
      EXPECT_EQ(TextOf([&] {
                  O2PLSCrossValidation(&X, &Y, 4, nullptr, nullptr, 100, numbers, numbers, numbers);
                }),
                "Internal error in NCO2PLS\nX and Y matrices have different number of rows.");
      const O2PLSPredictiveComponentEstimator estimator(&X, &Y, 4, nullptr, numbers);
      EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 0) << "no failure leaves its constructor";
      EXPECT_EQ(estimator.GetQ2().Size(), 0);
    }
}

TEST(O2PLSCrossValidationLimits, RefuseGroupsOfWhichNoneIsHeldOut) {
  const FloatBlocks blocks = MakeFloatBlocks({12, 5, 4, 1, 0, 0}, 0.1, 3);
  for (const int number : {-1, -3, -99}) {
    Groups groups(12, number);
    const auto validate = [&](int n) {
      return O2PLSCrossValidation(&blocks.X, &blocks.Y, 4, nullptr, &groups, 100, n, n, n).GetResults();
    };
    EXPECT_EQ(TextOf([&] { validate(1); }), kBadGroups);
    EXPECT_EQ(validate(-1).PredictiveComponents, 0) << "nothing is predicted";
    const O2PLSPredictiveComponentEstimator estimator(&blocks.X, &blocks.Y, 4, &groups, 1);
    EXPECT_EQ(estimator.GetQ2()[1], 0.0F);
  }
  const Table none;
  EXPECT_EQ(TextOf([&] { O2PLSCrossValidation(&none, &none, 4, nullptr, nullptr, 100, 1, 1, 1); }), kBadGroups);
}

TEST(O2PLSCrossValidationLimits, NeverHoldOutAnObservationOfANegativeGroup) {
  const FloatBlocks blocks = MakeFloatBlocks({12, 5, 4, 1, 0, 0}, 0.1, 3);
  Groups groups = Ints({-99, -1, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0});
  const O2PLSCVResults r =
      O2PLSCrossValidation(&blocks.X, &blocks.Y, -1, nullptr, &groups, 100, 1, 0, 0).GetResults();
  ASSERT_EQ(r.SSTable.SizeColumns(), 3);
  double heldOut = 0.0;
  for (int g = 1; g <= 3; ++g) heldOut += static_cast<double>(r.SSTable[1][g]);
  EXPECT_NEAR(heldOut, static_cast<double>(blocks.Y.GetRowSubMatrix(3, 12).GetSS()), 1e-5 * heldOut);
  for (int g = 1; g <= 3; ++g) EXPECT_NE(r.TSet[0][g][1], 0.0F) << "a fitted score in every round";
}

// ---- Memory

TEST(O2PLSCrossValidationLimits, HoldWideBlocksAFewTimes) {
  const FloatBlocks blocks = MakeFloatBlocks({40, 3000, 5, 1, 1, 1}, 0.05, 3);
  const PeakBytesDuring meter;
  const O2PLSCVResults r =
      O2PLSCrossValidation(&blocks.X, &blocks.Y, 7, nullptr, nullptr, 200, 1, 1, 1).GetResults();
  ASSERT_EQ(r.XSideComponents + r.YSideComponents, 2);
  // The working blocks of one round; and of each of the seven the vectors as long as X is wide, with their counts of
  // holes: of the model, of its copy before a trial, of its predictions and in the results, each a fortieth of the
  // blocks or two. Working blocks and copies of the blocks in all rounds would be 24 times the blocks.
  EXPECT_LT(meter.GetBytes(), 10 * 4LL * 40 * (3000 + 5));
}

// ---- Stops in the bars of the components inside

TEST(O2PLSCrossValidationLimits, AStopInsideEndsTheWholeOrASearchButNeverLeavesHalfAResult) {
  const FloatBlocks blocks = MakeFloatBlocks({16, 5, 4, 1, 1, 1}, 0.1, 3);
  const auto x = CellsOf(blocks.X), y = CellsOf(blocks.Y);
  const auto validate = [&] {
    return O2PLSCrossValidation(&blocks.X, &blocks.Y, 3, nullptr, nullptr, 200, 1, 1, 1).GetResults();
  };
  ProgressLog whole;
  {
    const RecordOwnBars bars(&whole);
    validate();
  }
  int thrown = 0, shorter = 0;
  for (int stopAt = 1; stopAt <= static_cast<int>(whole.calls.size()) + 1; ++stopAt) {
    SCOPED_TRACE("stop at call " + std::to_string(stopAt));
    ProgressLog log;
    log.stopAt = stopAt;
    O2PLSCVResults r;
    bool isWhole = true;
    {
      const RecordOwnBars bars(&log);
      isWhole = !TextOf([&] { r = validate(); }).has_value();
    }
    EXPECT_EQ(log.Count("open"), log.Count("~"));
    ASSERT_EQ(CellsOf(blocks.X), x);
    ASSERT_EQ(CellsOf(blocks.Y), y);
    thrown += isWhole ? 0 : 1;
    if (!isWhole || r.PredictiveComponents == 0) continue;
    ASSERT_EQ(r.TSet.size(), static_cast<std::size_t>(r.PredictiveComponents));
    ASSERT_EQ(r.ToSet.size(), static_cast<std::size_t>(r.XSideComponents));
    ASSERT_EQ(r.UoSet.size(), static_cast<std::size_t>(r.YSideComponents));
    ASSERT_EQ(r.Q2XSide.Size(), r.XSideComponents);
    ASSERT_EQ(r.Q2YSide.Size(), r.YSideComponents);
    shorter += r.XSideComponents + r.YSideComponents < 2 ? 1 : 0;
  }
  EXPECT_GT(thrown, 0);
  // A user who has pressed the button does not take it back, so whatever follows a search stops too.
  EXPECT_EQ(shorter, 0);
}

}  // namespace
