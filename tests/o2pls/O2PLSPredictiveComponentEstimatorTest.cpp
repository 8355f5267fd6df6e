#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "O2PLSCase.h"
#include "PlainO2PLS.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using Estimator = O2PLSPredictiveComponentEstimator;
using Table = NCDataMatrix<float>;

/// The weights come from iterations that end at a change of 1e-5; shares are of the order of 1.
constexpr double kConvergence = 1e-4;

/// The limit is one for the whole process: for the length of a scope it is this one.
struct LimitIs {
  explicit LimitIs(float limit) { SetO2PLSPredictiveQ2Limit(limit); }
  ~LimitIs() { SetO2PLSPredictiveQ2Limit(0.01F); }
};

std::vector<int> CodesOf(const Estimator& estimator) {
  const auto codes = estimator.GetSignificance();
  return {codes.begin(), codes.end()};
}

Estimator Estimate(const FloatBlocks& blocks, int fixed, int groups = 7) {
  return Estimator(&blocks.X, &blocks.Y, groups, nullptr, fixed);
}

// ---- A twin, in double

struct Expected {
  plain::Vector q2, q2X, q2Y, r2, r2X, r2Y;
};

struct Direction {
  plain::Vector w, c;
};

Direction DirectionOf(const plain::Table& X, const plain::Table& Y) {
  Direction d{plain::FirstLoading(plain::Product(plain::Transposed(Y), X)), {}};
  d.c = plain::TransposedProduct(Y, plain::Product(X, d.w));
  plain::Normalise(&d.c);
  return d;
}

double Absolute(const plain::Table& a, const plain::Table& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t j = 0; j < a[i].size(); ++j) sum += std::abs(a[i][j] - b[i][j]);
  return sum;
}

Expected Twin(const FloatBlocks& blocks, const NCIntegralVector<int, -99>& groups, int components) {
  const plain::Table X = plain::TableOf(blocks.X), Y = plain::TableOf(blocks.Y);
  const plain::Table product = plain::Product(plain::Transposed(Y), X);
  const plain::Table zeros(Y[0].size(), plain::Vector(X[0].size(), 0.0));
  const double all = Absolute(product, zeros);
  const auto n = static_cast<std::size_t>(components);
  plain::Vector pressX(n, 0.0), pressY(n, 0.0);
  std::vector<plain::Table> predictions(n, zeros);
  const int last = *std::max_element(groups.begin(), groups.end());
  for (int g = 0; g <= last; ++g) {
    plain::Table trainX, trainY, testX, testY;
    for (std::size_t i = 0; i < X.size(); ++i) {
      const bool held = groups[static_cast<int>(i) + 1] == g;
      (held ? testX : trainX).push_back(X[i]);
      (held ? testY : trainY).push_back(Y[i]);
    }
    plain::Table tTest, uTest, C, W;
    for (std::size_t a = 0; a < n; ++a) {
      const Direction d = DirectionOf(trainX, trainY);
      tTest.push_back(plain::Product(testX, d.w));
      uTest.push_back(plain::Product(testY, d.c));
      C.push_back(d.c);
      W.push_back(d.w);
      plain::AddOuter(&trainX, plain::Product(trainX, d.w), d.w, -1.0);
      plain::AddOuter(&trainY, plain::Product(trainY, d.c), d.c, -1.0);
      plain::AddOuter(&testX, tTest.back(), d.w, -1.0);
      plain::AddOuter(&testY, uTest.back(), d.c, -1.0);
      pressX[a] += plain::SquaresOf(testX);
      pressY[a] += plain::SquaresOf(testY);
      for (std::size_t i = 0; i <= a; ++i)
        for (std::size_t j = 0; j <= a; ++j)
          plain::AddOuter(&predictions[a], C[i], W[j], plain::Dot(uTest[i], tTest[j]));
    }
  }
  Expected e;
  plain::Table leftX = X, leftY = Y, fitted = zeros;
  for (std::size_t a = 0; a < n; ++a) {
    e.q2.push_back(1 - Absolute(product, predictions[a]) / all);
    e.q2X.push_back(1 - pressX[a] / plain::SquaresOf(X));
    e.q2Y.push_back(1 - pressY[a] / plain::SquaresOf(Y));
    const Direction d = DirectionOf(leftX, leftY);
    const plain::Vector t = plain::Product(leftX, d.w), u = plain::Product(leftY, d.c);
    plain::AddOuter(&leftX, t, d.w, -1.0);
    plain::AddOuter(&leftY, u, d.c, -1.0);
    plain::AddOuter(&fitted, d.c, d.w, plain::Dot(t, u));
    e.r2.push_back(1 - Absolute(product, fitted) / all);
    e.r2X.push_back(1 - plain::SquaresOf(leftX) / plain::SquaresOf(X));
    e.r2Y.push_back(1 - plain::SquaresOf(leftY) / plain::SquaresOf(Y));
  }
  return e;
}

void ExpectNear(const NCDataVector<float>& series, const plain::Vector& expected, const char* what) {
  SCOPED_TRACE(what);
  ASSERT_EQ(static_cast<std::size_t>(series.Size()), expected.size());
  for (int a = 1; a <= series.Size(); ++a)
    EXPECT_NEAR(series[a], expected[static_cast<std::size_t>(a) - 1], kConvergence) << "component " << a;
}

TEST(O2PLSPredictiveComponentEstimator, HasTheSeriesOfAPlainTwin) {
  for (const int fixed : {1, 2, 3}) {
    const FloatBlocks blocks = MakeFloatBlocks({30, 8, 6, 3, 1, 1}, 0.05, 11);
    const auto groups = GetDeafultCVGroupsVector(30, 5);
    const Expected expected = Twin(blocks, groups, fixed);
    const Estimator estimator(&blocks.X, &blocks.Y, -1, &groups, fixed);
    EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), fixed);
    ExpectNear(estimator.GetQ2(), expected.q2, "Q2");
    ExpectNear(estimator.GetQ2X(), expected.q2X, "Q2X");
    ExpectNear(estimator.GetQ2Y(), expected.q2Y, "Q2Y");
    ExpectNear(estimator.GetR2(), expected.r2, "R2");
    ExpectNear(estimator.GetR2X(), expected.r2X, "R2X");
    ExpectNear(estimator.GetR2Y(), expected.r2Y, "R2Y");
  }
}

TEST(O2PLSPredictiveComponentEstimator, FindsTheComponentsInCommonOfBlocksWithLittleNoise) {
  for (const int common : {1, 2, 3})
    for (unsigned seed = 1; seed <= 5; ++seed) {
      const Estimator estimator = Estimate(MakeFloatBlocks({60, 12, 10, common, 0, 0}, 0.01, seed), -1);
      EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), common) << "seed " << seed;
      std::vector<int> codes(static_cast<std::size_t>(common), 0);
      codes.push_back(3);
      EXPECT_EQ(CodesOf(estimator), codes);
      EXPECT_EQ(estimator.GetQ2().Size(), common + 1) << "that of the refused component is kept";
      EXPECT_EQ(estimator.GetR2().Size(), common);
    }
}

TEST(O2PLSPredictiveComponentEstimator, MostlyFindsThemUnderVariationOfTheirOwnAndNoise) {
  // What is unique is nearly as strong as what is common and lies over it, at an angle that is drawn too. All twenty
  // draws were right when this was written; two are left to chance. The numbers found go into the report of the test.
  int hits = 0;
  std::string found;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const Estimator estimator = Estimate(MakeFloatBlocks({80, 30, 20, 2, 1, 1}, 0.1, seed), -1);
    hits += estimator.GetNumberOfPredictiveComponents() == 2 ? 1 : 0;
    found += std::to_string(estimator.GetNumberOfPredictiveComponents());
  }
  RecordProperty("found", found);
  EXPECT_GE(hits, 18) << found;
}

TEST(O2PLSPredictiveComponentEstimator, TakesTheDefaultGroupsWhereNoneAreGiven) {
  const FloatBlocks blocks = MakeFloatBlocks({30, 6, 5, 2, 1, 1}, 0.2, 4);
  const auto groups = GetDeafultCVGroupsVector(30, 6);
  const Estimator given(&blocks.X, &blocks.Y, -1, &groups, 2), defaults(&blocks.X, &blocks.Y, 6, nullptr, 2),
      other(&blocks.X, &blocks.Y, 5, nullptr, 2);
  EXPECT_EQ(CellsOf(given.GetQ2()), CellsOf(defaults.GetQ2()));
  EXPECT_NE(CellsOf(given.GetQ2()), CellsOf(other.GetQ2()));
}

TEST(O2PLSPredictiveComponentEstimator, ComputesNothingForNoComponents) {
  const Estimator estimator = Estimate(MakeFloatBlocks({30, 6, 5, 2, 1, 1}, 0.2, 4), 0);
  EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 0);
  for (const auto& series : {estimator.GetQ2(), estimator.GetQ2X(), estimator.GetQ2Y(), estimator.GetR2(),
                             estimator.GetR2X(), estimator.GetR2Y()})
    EXPECT_EQ(series.Size(), 0);
  EXPECT_TRUE(CodesOf(estimator).empty());
}

// ---- Codes, and the end of a search

TEST(O2PLSPredictiveComponentEstimator, FindsNothingInFourObservations) {
  const Estimator estimator = Estimate(MakeFloatBlocks({4, 3, 3, 1, 0, 0}, 0.0, 4), -1, 4);
  EXPECT_EQ(CodesOf(estimator), std::vector<int>{4});
  EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 0);
  EXPECT_EQ(estimator.GetQ2().Size(), 1);
  EXPECT_EQ(estimator.GetR2().Size(), 0);
}

TEST(O2PLSPredictiveComponentEstimator, JudgesOneComponentOfFiveObservationsAndNoSecondOne) {
  const Estimator estimator = Estimate(MakeFloatBlocks({5, 4, 4, 2, 0, 0}, 0.01, 4), 2, 5);
  const std::vector<int> codes = CodesOf(estimator);
  ASSERT_EQ(codes.size(), 2U);
  EXPECT_TRUE(codes[0] == 0 || codes[0] == 3);
  EXPECT_EQ(codes[1], 4);
  EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 2) << "a fixed number is not cut by its codes";
}

TEST(O2PLSPredictiveComponentEstimator, TriesOneComponentOfASingleVariable) {
  for (const auto& [xVariables, yVariables] : {std::pair{5, 1}, {1, 5}, {1, 1}}) {
    const Estimator estimator = Estimate(MakeFloatBlocks({30, xVariables, yVariables, 1, 0, 0}, 0.05, 4), -1);
    EXPECT_EQ(CodesOf(estimator), std::vector<int>{0});
    EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 1);
  }
}

TEST(O2PLSPredictiveComponentEstimator, StopsWhereNothingIsLeftOfOneBlockAndKeepsThatComponent) {
  // X is of rank one and without noise; Y holds X's score and another one.
  const FloatBlocks clean = MakeFloatBlocks({30, 5, 4, 1, 0, 2}, 0.0, 4);
  for (const bool swapped : {false, true}) {
    const Estimator estimator = Estimate(swapped ? FloatBlocks{clean.Y, clean.X} : clean, -1);
    EXPECT_EQ(CodesOf(estimator), std::vector<int>{0});
    EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 1);
    EXPECT_NEAR((swapped ? estimator.GetQ2Y() : estimator.GetQ2X())[1], 1.0F, 1e-6F);
  }
}

TEST(O2PLSPredictiveComponentEstimator, GoesOnWhereMoreThanAMillionthOfTheHeldOutRowsIsLeft) {
  int justAbove = 0, justBelow = 0;
  for (float size = 0.01F; size > 1e-5F; size *= 0.8F) {
    FloatBlocks blocks{Table(32, 2), Table(32, 3)};
    for (int i = 1; i <= 32; ++i) {
      const float first = i % 2 == 0 ? 1.0F : -1.0F, second = (i - 1) / 2 % 2 == 0 ? 1.0F : -1.0F;
      blocks.X(i, 1, first);
      blocks.X(i, 2, size * second);
      blocks.Y(i, 1, first);
      blocks.Y(i, 2, 0.5F * second);
      blocks.Y(i, 3, i % 3 == 0 ? 0.5F : -0.25F);
    }
    for (const bool swapped : {false, true}) {
      const FloatBlocks turned = swapped ? FloatBlocks{blocks.Y, blocks.X} : blocks;
      const Estimator one = Estimate(turned, 1), search = Estimate(turned, -1);
      ASSERT_EQ(CodesOf(one), std::vector<int>{0});
      const double left = 1.0 - static_cast<double>((swapped ? one.GetQ2Y() : one.GetQ2X())[1]);
      if (std::fabs(left - 1e-6) < 1.2e-7) continue;  // Q2 has two roundings of 6e-8
      EXPECT_EQ(search.GetQ2().Size() > 1, left > 1e-6) << left;
      justAbove += left > 1e-6 && left < 8e-6 ? 1 : 0;
      justBelow += left > 2e-7 && left < 1e-6 ? 1 : 0;
    }
  }
  EXPECT_GT(justAbove, 0);
  EXPECT_GT(justBelow, 0);
}

TEST(O2PLSPredictiveComponentEstimator, TriesAFixedNumberWhateverTheCodes) {
  const FloatBlocks blocks = MakeFloatBlocks({30, 6, 5, 3, 0, 0}, 0.1, 4);
  const LimitIs limit(0.99F);
  const Estimator search = Estimate(blocks, -1);
  EXPECT_EQ(search.GetNumberOfPredictiveComponents(), 0);
  EXPECT_EQ(CodesOf(search), std::vector<int>{3});
  const Estimator fixed = Estimate(blocks, 3);
  EXPECT_EQ(fixed.GetNumberOfPredictiveComponents(), 3);
  EXPECT_EQ(CodesOf(fixed), (std::vector<int>{3, 3, 3}));
  EXPECT_EQ(fixed.GetR2().Size(), 3);
}

TEST(O2PLSPredictiveComponentEstimator, GoesByTheLimitThatIsSetWithinBounds) {
  const FloatBlocks blocks = MakeFloatBlocks({60, 12, 10, 2, 1, 1}, 0.01, 1);
  const Estimator usual = Estimate(blocks, -1);
  ASSERT_EQ(usual.GetNumberOfPredictiveComponents(), 2);
  const float gain = usual.GetQ2()[2] - usual.GetQ2()[1];
  {
    const LimitIs limit(gain + 0.01F);
    EXPECT_EQ(Estimate(blocks, -1).GetNumberOfPredictiveComponents(), 1);
    for (const float ignored : {1.0F, -0.1F, 2.0F, -99.0F, std::nanf("")}) {
      SetO2PLSPredictiveQ2Limit(ignored);
      EXPECT_EQ(Estimate(blocks, -1).GetNumberOfPredictiveComponents(), 1) << ignored;
    }
    SetO2PLSPredictiveQ2Limit(0.0F);
    EXPECT_GE(Estimate(blocks, -1).GetNumberOfPredictiveComponents(), 2);
  }
  EXPECT_EQ(Estimate(blocks, -1).GetNumberOfPredictiveComponents(), 2);
}

// ---- Blocks without variance, failures, odd groups

TEST(O2PLSPredictiveComponentEstimator, FindsNoComponentOfABlockWithoutVariance) {
  const Table X = RandomMatrix<float>(20, 5, 0, 1);
  for (const int columns : {1, 3}) {
    const FloatBlocks blocks{X, Table(20, columns, 0.0F)};
    EXPECT_EQ(Estimate(blocks, -1).GetNumberOfPredictiveComponents(), 0) << columns;
  }
  const Estimator one = Estimate({X, Table(20, 1, 0.0F)}, 1);
  EXPECT_EQ(one.GetNumberOfPredictiveComponents(), 1) << "of one column the fixed number stands, without a Q2";
  EXPECT_FALSE(std::isfinite(one.GetQ2()[1]));
  EXPECT_EQ(CodesOf(one), std::vector<int>{3});
  EXPECT_EQ(Estimate({X, Table(20, 3, 0.0F)}, 1).GetNumberOfPredictiveComponents(), 0);
}

void ExpectNothing(const Estimator& estimator) {
  EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 0);
  for (const auto& series : {estimator.GetQ2(), estimator.GetQ2X(), estimator.GetQ2Y(), estimator.GetR2(),
                             estimator.GetR2X(), estimator.GetR2Y()})
    EXPECT_EQ(series.Size(), 0);
  EXPECT_TRUE(CodesOf(estimator).empty());
}

TEST(O2PLSPredictiveComponentEstimator, AnswersNoneWithEmptySeriesWhereTheSearchFails) {
  FloatBlocks blocks = MakeFloatBlocks({20, 5, 4, 1, 0, 0}, 0.1, 4);
  blocks.X(7, 2, std::numeric_limits<float>::infinity());
  for (const int fixed : {-1, 2}) ExpectNothing(Estimate(blocks, fixed));
}

TEST(O2PLSPredictiveComponentEstimator, AStopAnswersNoneInTheSearchAndTheCompleteComponentsAfterIt) {
  const FloatBlocks blocks = MakeFloatBlocks({20, 5, 4, 2, 0, 0}, 0.1, 4);
  const Estimator whole = Estimate(blocks, 2, 3);
  std::vector<int> found;
  for (bool stopped = true; stopped;) {
    SCOPED_TRACE("stop at call " + std::to_string(found.size() + 1));
    ProgressLog log;
    log.stopAt = static_cast<int>(found.size()) + 1;
    const RecordOwnBars bars(&log);
    const Estimator estimator = Estimate(blocks, 2, 3);
    stopped = static_cast<int>(log.calls.size()) >= log.stopAt && estimator.GetQ2().Size() < 2;
    const int components = estimator.GetNumberOfPredictiveComponents();
    found.push_back(components);
    ASSERT_EQ(estimator.GetQ2().Size(), components);
    ASSERT_EQ(estimator.GetR2Y().Size(), components);
    ASSERT_EQ(CodesOf(estimator).size(), static_cast<std::size_t>(components));
    for (int a = 1; a <= components; ++a) {
      EXPECT_EQ(estimator.GetQ2()[a], whole.GetQ2()[a]);
      EXPECT_EQ(estimator.GetR2X()[a], whole.GetR2X()[a]);
    }
  }
  EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
  EXPECT_EQ(found.front(), 0);
  EXPECT_NE(std::find(found.begin(), found.end(), 1), found.end()) << "a stop while the second one is fitted to all";
  EXPECT_EQ(found.back(), 2);
}

TEST(O2PLSPredictiveComponentEstimator, AGroupWithoutObservationsPredictsNothing) {
  const FloatBlocks blocks = MakeFloatBlocks({20, 5, 4, 2, 0, 0}, 0.1, 4);
  std::vector<int> cells, shifted;
  for (int i = 0; i < 20; ++i) {
    cells.push_back(i % 4);
    shifted.push_back(i % 4 < 2 ? i % 4 : i % 4 + 1);  // nobody is in group 2
  }
  const auto groups = Ints(cells), withEmpty = Ints(shifted);
  const Estimator one(&blocks.X, &blocks.Y, -1, &groups, 2), other(&blocks.X, &blocks.Y, -1, &withEmpty, 2);
  EXPECT_EQ(CellsOf(other.GetQ2()), CellsOf(one.GetQ2()));
  EXPECT_EQ(CellsOf(other.GetQ2X()), CellsOf(one.GetQ2X()));
}

TEST(O2PLSPredictiveComponentEstimator, AnswersNoneWhereOneGroupHoldsEverything) {
  const FloatBlocks blocks = MakeFloatBlocks({20, 5, 4, 2, 0, 0}, 0.1, 4);
  const NCIntegralVector<int, -99> groups(20, 0);
  EXPECT_EQ(Estimator(&blocks.X, &blocks.Y, -1, &groups, -1).GetNumberOfPredictiveComponents(), 0);
}

TEST(O2PLSPredictiveComponentEstimator, LeavesTheBlocksAsTheyAreAndCopiesWhole) {
  const FloatBlocks blocks = MakeFloatBlocks({20, 5, 4, 2, 0, 0}, 0.1, 4);
  const auto x = CellsOf(blocks.X), y = CellsOf(blocks.Y);
  const Estimator estimator = Estimate(blocks, 2);
  EXPECT_EQ(CellsOf(blocks.X), x);
  EXPECT_EQ(CellsOf(blocks.Y), y);
  const Estimator copy = estimator;
  EXPECT_EQ(CellsOf(copy.GetR2()), CellsOf(estimator.GetR2()));
  EXPECT_EQ(copy.GetNumberOfPredictiveComponents(), 2);
}

}  // namespace
