// The model itself: what its matrices are.
#include "kalmia/o2pls/NCO2PLS.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "O2PLSCase.h"
#include "PlainO2PLS.h"
#include "kalmia/o2pls/NCO2PLSPred.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"

namespace {

using Table = NCDataMatrix<float>;

constexpr int kMaxIterations = 500;

/// Each of the few iterations that a component rests on ends when it moves by at most 1e-5 of its length; what is left
/// of a deflation passes such errors on, here not ten times over.
constexpr double kConvergence = 1e-4;

/// Sums of a hundred float cells, rounded a handful of times.
constexpr double kRounding = 1e-5;

NCO2PLS Fitted(const FloatBlocks& blocks, int predictive, int xOrthogonal, int yOrthogonal) {
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/false, kMaxIterations);
  model.Fit(predictive, xOrthogonal, yOrthogonal);
  return model;
}

double Length(const plain::Vector& v) { return std::sqrt(plain::Dot(v, v)); }

/// Whether the rows agree in length and, but for the sign, in direction.
void ExpectSameRows(const plain::Table& rows, const plain::Table& expected, const char* what) {
  SCOPED_TRACE(what);
  ASSERT_EQ(rows.size(), expected.size());
  for (std::size_t a = 0; a < rows.size(); ++a) {
    EXPECT_LT(plain::SineOfAngle(rows[a], expected[a]), kConvergence) << "row " << a + 1;
    EXPECT_NEAR(Length(rows[a]) / Length(expected[a]), 1.0, kConvergence) << "row " << a + 1;
  }
}

// ---- Against a twin

struct Shape {
  const char* name;
  plain::BlocksShape blocks;
  double noise;
  int predictive, xOrthogonal, yOrthogonal;
};

const Shape kShapes[] = {{"Plain", {40, 8, 6, 2, 1, 1}, 0.05, 2, 1, 1},
                         {"OnlyPredictive", {40, 8, 6, 2, 0, 0}, 0.05, 2, 0, 0},
                         {"OneY", {30, 6, 1, 1, 1, 0}, 0.02, 1, 1, 0},
                         {"OneX", {30, 1, 5, 1, 0, 1}, 0.02, 1, 0, 1},
                         {"Wide", {20, 60, 30, 2, 1, 1}, 0.01, 2, 1, 1},
                         {"ThreeInCommon", {60, 12, 9, 3, 1, 1}, 0.01, 3, 1, 1},
                         {"TwoUnique", {60, 12, 9, 1, 2, 2}, 0.01, 1, 2, 2}};

class NCO2PLSOnBlocks : public ::testing::TestWithParam<Shape> {
 protected:
  NCO2PLSOnBlocks()
      : blocks_(MakeFloatBlocks(GetParam().blocks, GetParam().noise, 7)),
        model_(Fitted(blocks_, GetParam().predictive, GetParam().xOrthogonal, GetParam().yOrthogonal)) {}

  FloatBlocks blocks_;
  NCO2PLS model_;
};

INSTANTIATE_TEST_SUITE_P(, NCO2PLSOnBlocks, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

TEST_P(NCO2PLSOnBlocks, HasTheMatricesOfAPlainTwin) {
  const Shape& s = GetParam();
  const plain::O2PLS expected = plain::FitO2PLS(plain::TableOf(blocks_.X), plain::TableOf(blocks_.Y), s.predictive,
                                                s.xOrthogonal, s.yOrthogonal);
  const plain::O2PLS model = PlainOf(model_);
  ExpectSameRows(model.W, expected.W, "W");
  ExpectSameRows(model.T, expected.T, "T");
  ExpectSameRows(model.P, expected.P, "P");
  ExpectSameRows(model.C, expected.C, "C");
  ExpectSameRows(model.U, expected.U, "U");
  ExpectSameRows(model.Q, expected.Q, "Q");
  ExpectSameRows(model.To, expected.To, "To");
  ExpectSameRows(model.Wo, expected.Wo, "Wo");
  ExpectSameRows(model.Po, expected.Po, "Po");
  ExpectSameRows(model.Uo, expected.Uo, "Uo");
  ExpectSameRows(model.Co, expected.Co, "Co");
  ExpectSameRows(model.Qo, expected.Qo, "Qo");
  EXPECT_EQ(model.R.size(), expected.R.size());
  EXPECT_EQ(model.S.size(), expected.S.size());
}

TEST_P(NCO2PLSOnBlocks, PutsTheFirstWeightAlongTheFirstRightSingularVectorOfTheCrossProduct) {
  if (GetParam().xOrthogonal + GetParam().yOrthogonal > 0) model_ = Fitted(blocks_, GetParam().predictive, 0, 0);
  const plain::Table product = plain::Product(plain::Transposed(plain::TableOf(blocks_.Y)), plain::TableOf(blocks_.X));
  EXPECT_LT(plain::SineOfAngle(plain::TableOf(model_.GetW())[0], plain::FirstLoading(product)), kConvergence);
}

TEST_P(NCO2PLSOnBlocks, KeepsOrthogonalScoresAtRightAnglesToItsOwnPredictiveScores) {
  const auto expectRightAngles = [](const plain::Table& some, const plain::Table& others) {
    for (const plain::Vector& a : some)
      for (const plain::Vector& b : others)
        EXPECT_LT(std::abs(plain::Dot(a, b)) / (Length(a) * Length(b)), kRounding);
  };
  const plain::O2PLS m = PlainOf(model_);
  expectRightAngles(m.To, m.T);
  expectRightAngles(m.Uo, m.U);
}

TEST_P(NCO2PLSOnBlocks, KeepsOrthogonalWeightsAtRightAnglesToThePredictiveOnesWhereTheCrossProductHasTheirRank) {
  FloatBlocks clean = MakeFloatBlocks(GetParam().blocks, 0.0, 7);
  const Shape& s = GetParam();
  const plain::O2PLS m = PlainOf(Fitted(clean, s.predictive, s.xOrthogonal, s.yOrthogonal));
  for (const auto& [some, others] : {std::pair{&m.Wo, &m.W}, {&m.Co, &m.C}})
    for (const plain::Vector& a : *some)
      for (const plain::Vector& b : *others) EXPECT_LT(std::abs(plain::Dot(a, b)), kConvergence);
}

TEST_P(NCO2PLSOnBlocks, LeavesNothingOfBlocksWithoutNoise) {
  // X = T'P + To'Po and Y = U'Q + Uo'Qo: the residual is what the iterations and rounding leave.
  const Shape& s = GetParam();
  const FloatBlocks clean = MakeFloatBlocks(s.blocks, 0.0, 7);
  const plain::O2PLS m = PlainOf(Fitted(clean, s.predictive, s.xOrthogonal, s.yOrthogonal));
  const auto left = [](plain::Table block, const plain::Table& T, const plain::Table& P, const plain::Table& To,
                       const plain::Table& Po) {
    const double all = plain::SquaresOf(block);
    for (std::size_t a = 0; a < T.size(); ++a) plain::AddOuter(&block, T[a], P[a], -1.0);
    for (std::size_t a = 0; a < To.size(); ++a) plain::AddOuter(&block, To[a], Po[a], -1.0);
    return std::sqrt(plain::SquaresOf(block) / all);
  };
  EXPECT_LT(left(plain::TableOf(clean.X), m.T, m.P, m.To, m.Po), kConvergence);
  EXPECT_LT(left(plain::TableOf(clean.Y), m.U, m.Q, m.Uo, m.Qo), kConvergence);
}

TEST_P(NCO2PLSOnBlocks, SplitsTheSumOfSquaresIntoJointOrthogonalAndResidual) {
  // The scores of a block, predictive and orthogonal, are all at right angles to each other, and the residual to them:
  // so the squares of the parts add up to those of the block, noise and all.
  const plain::O2PLS m = PlainOf(model_);
  const auto expectSum = [](plain::Table block, const plain::Table& T, const plain::Table& P, const plain::Table& To,
                            const plain::Table& Po) {
    const double all = plain::SquaresOf(block);
    double parts = 0.0;
    const auto take = [&](const plain::Table& scores, const plain::Table& loadings) {
      for (std::size_t a = 0; a < scores.size(); ++a) {
        parts += plain::Dot(scores[a], scores[a]) * plain::Dot(loadings[a], loadings[a]);
        plain::AddOuter(&block, scores[a], loadings[a], -1.0);
      }
    };
    take(T, P);
    take(To, Po);
    EXPECT_NEAR(parts + plain::SquaresOf(block), all, kRounding * all);
    for (const plain::Table* scores : {&T, &To})
      for (const plain::Vector& t : *scores)
        EXPECT_LT(Length(plain::TransposedProduct(block, t)), kRounding * Length(t) * std::sqrt(all));
  };
  expectSum(plain::TableOf(blocks_.Y), m.U, m.Q, m.Uo, m.Qo);
  expectSum(plain::TableOf(blocks_.X), m.T, m.P, m.To, m.Po);
}

TEST_P(NCO2PLSOnBlocks, RelatesTheScoresByLeastSquares) {
  const plain::O2PLS m = PlainOf(model_);
  const auto expectRelation = [](const plain::Table& relation, const plain::Table& from, const plain::Table& to) {
    const plain::Table expected = plain::Product(plain::Inverse(plain::Product(from, plain::Transposed(from))),
                                                 plain::Product(from, plain::Transposed(to)));
    double largest = 0.0;
    for (const auto& row : expected)
      for (const double cell : row) largest = std::max(largest, std::abs(cell));
    ASSERT_EQ(relation.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
      for (std::size_t j = 0; j < expected.size(); ++j)
        // The normal equations are inverted in float; their condition is at most (4 / 1)^2 here.
        EXPECT_NEAR(relation[i][j], expected[i][j], 16 * kRounding * largest);
  };
  expectRelation(m.Lambda, m.T, m.U);
  expectRelation(m.XLambda, m.U, m.T);
}

TEST_P(NCO2PLSOnBlocks, RegressesTheWholeBlocksOnTheOrthogonalScoresOfTheOther) {
  const plain::O2PLS m = PlainOf(model_);
  const auto expectRegression = [](const plain::Table& block, const plain::Table& scores, const plain::Table& result) {
    ASSERT_EQ(result.size(), scores.size());
    for (std::size_t a = 0; a < scores.size(); ++a) {
      const plain::Vector sums = plain::TransposedProduct(block, scores[a]);
      const double ss = plain::Dot(scores[a], scores[a]);
      for (std::size_t j = 0; j < sums.size(); ++j)
        EXPECT_NEAR(result[a][j], sums[j] / ss, kRounding * std::sqrt(plain::SquaresOf(block) / ss));
    }
  };
  expectRegression(plain::TableOf(blocks_.X), m.Uo, m.R);
  expectRegression(plain::TableOf(blocks_.Y), m.To, m.S);
}

TEST_P(NCO2PLSOnBlocks, CoefficientsReproduceThePredictionOfBothBlocks) {
  // Exactly so only where Wo is at right angles to W: without noise.
  const Shape& s = GetParam();
  const FloatBlocks clean = MakeFloatBlocks(s.blocks, 0.0, 7);
  const NCO2PLS m = Fitted(clean, s.predictive, s.xOrthogonal, s.yOrthogonal);
  const auto expectSame = [](const Table& predicted, const Table& product) {
    const Table difference = predicted - product;
    EXPECT_LT(std::sqrt(static_cast<double>(difference.GetSS() / predicted.GetSS())), kConvergence);
  };
  expectSame(NCO2PLSYPred(&clean.X, &m).GetYPred(),
             clean.X * NCO2PLS::GetCoefficients(m.GetW(), m.GetP(), m.GetWo(), m.GetPo(), m.GetLambda(), m.GetS(),
                                                m.GetQ()));
  expectSame(NCO2PLSXPred(&clean.Y, &m).GetXPred(),
             clean.Y * NCO2PLS::GetCoefficients(m.GetC(), m.GetQ(), m.GetCo(), m.GetQo(), m.GetXLambda(), m.GetR(),
                                                m.GetP()));
}

TEST_P(NCO2PLSOnBlocks, PredictsTheSameWithTheBlocksSwapped) {
  const Shape& s = GetParam();
  const NCO2PLS swapped = Fitted({blocks_.Y, blocks_.X}, s.predictive, s.yOrthogonal, s.xOrthogonal);
  const Table one = NCO2PLSYPred(&blocks_.X, &model_).GetYPred(), other = NCO2PLSXPred(&blocks_.X, &swapped).GetXPred();
  EXPECT_LT(std::sqrt(static_cast<double>((one - other).GetSS() / one.GetSS())), kConvergence);
}

TEST_P(NCO2PLSOnBlocks, GivesTheSameModelWhicheverSideGoesFirst) {
  const Shape& s = GetParam();
  NCO2PLS other(blocks_.X, blocks_.Y, /*checkDimensions=*/false, kMaxIterations);
  for (int i = 0; i < s.yOrthogonal; ++i) other.NextOrthogonalComponent(/*xSide=*/false, s.predictive);
  for (int i = 0; i < s.xOrthogonal; ++i) other.NextOrthogonalComponent(/*xSide=*/true, s.predictive);
  other.CalculatePredictiveComps(s.predictive);
  other.Finalise();
  other.EndFit();
  EXPECT_EQ(Everything(other), Everything(model_)) << "no side sees the orthogonal components of the other";
}

TEST_P(NCO2PLSOnBlocks, GivesTheSameModelWhenFittedAgain) {
  const auto before = Everything(model_);
  model_.Fit(GetParam().predictive, GetParam().xOrthogonal, GetParam().yOrthogonal);
  EXPECT_EQ(Everything(model_), before);
}

TEST_P(NCO2PLSOnBlocks, LeavesTheBlocksAsTheyAre) {
  EXPECT_EQ(CellsOf(model_.GetX()), CellsOf(blocks_.X));
  EXPECT_EQ(CellsOf(model_.GetY()), CellsOf(blocks_.Y));
  EXPECT_EQ(model_.SizeXColumns(), GetParam().blocks.xVariables);
  EXPECT_EQ(model_.SizeYColumns(), GetParam().blocks.yVariables);
  EXPECT_EQ(model_.SizePredComps(), GetParam().predictive);
  EXPECT_EQ(model_.SizeXSideOrthoComps(), GetParam().xOrthogonal);
  EXPECT_EQ(model_.SizeYSideOrthoComps(), GetParam().yOrthogonal);
}

FloatBlocks SmallBlocks() { return MakeFloatBlocks({20, 6, 5, 2, 1, 1}, 0.05, 3); }

// ---- Stops, threads, memory

TEST(NCO2PLS, IsAsBeforeTheStepWheneverTheUserStopsOne) {
  const FloatBlocks blocks = SmallBlocks();
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/false, kMaxIterations);
  model.NextOrthogonalComponent(/*xSide=*/true, 2);
  model.CalculatePredictiveComps(1);
  model.SubtractLastPredictiveComp();
  const auto before = Everything(model);
  int stops = 0;
  for (int stopAt = 1;; ++stopAt) {
    ProgressLog log;
    log.stopAt = stopAt;
    const RecordOwnBars bars(&log);
    NCO2PLS predictive = model, orthogonal = model;
    const bool stopped = TextOf([&] { predictive.NextPredictiveComp(); }).has_value();
    ProgressLog second;
    second.stopAt = stopAt;
    const RecordOwnBars secondBars(&second);
    const bool alsoStopped = TextOf([&] { orthogonal.NextOrthogonalComponent(/*xSide=*/true, 1); }).has_value();
    if (stopped) {
      EXPECT_EQ(Everything(predictive), before);
    }
    if (alsoStopped) {
      EXPECT_EQ(Everything(orthogonal), before);
    }
    if (!stopped && !alsoStopped) break;
    ++stops;
  }
  EXPECT_GT(stops, 2);
}

TEST(NCO2PLS, GivesTheSameBitsFromAnyNumberOfThreads) {
  const FloatBlocks blocks = MakeFloatBlocks({300, 200, 150, 2, 1, 1}, 0.05, 3);
  std::vector<std::vector<std::vector<std::vector<float>>>> results;
  for (const int threads : {1, 2, 3}) {
    const Threads some(threads);
    results.push_back(Everything(Fitted(blocks, 2, 1, 1)));
  }
  EXPECT_TRUE(results[1] == results[0]);
  EXPECT_TRUE(results[2] == results[0]);
}

TEST(NCO2PLS, MakesNoTableOfColumnsByColumnsOfAWideBlock) {
  const FloatBlocks blocks = MakeFloatBlocks({20, 3000, 5, 1, 1, 1}, 0.01, 3);
  const std::int64_t twoBlocks = 4LL * 20 * (3000 + 5);
  const PeakBytesDuring meter;
  const NCO2PLS model = Fitted(blocks, 1, 1, 1);
  // Working copies of X, its cross product with Y, and a row of results: a few times the blocks; a table of
  // columns by columns would be 150 times.
  EXPECT_LT(meter.GetBytes(), 6 * twoBlocks);
}

// ---- Refusals at the start

TEST(NCO2PLS, RefusesBlocksThatDoNotBelongTogetherOrHaveHoles) {
  const Table whole = RandomMatrix<float>(6, 3, 0, 1);
  Table holed = whole;
  holed(2, 2, kHole<float>);
  const Table longer = RandomMatrix<float>(7, 3, 0, 1);
  const char* const rows = "Internal error in NCO2PLS\nX and Y matrices have different number of rows.";
  const char* const holes = "Internal error in NCO2PLS\nThe X and Y matrices can not contain missing values.";
  const struct {
    const char* what;
    const Table &X, &Y;
    const char* text;
  } cases[] = {{"X longer", longer, whole, rows},
               {"Y longer", whole, longer, rows},
               {"X with a hole", holed, whole, holes},
               {"Y with a hole", whole, holed, holes},
               {"both", holed, longer, rows}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(TextOf([&] { NCO2PLS(c.X, c.Y, /*checkDimensions=*/false, 10); }), c.text);
  }
}

}  // namespace
