#include "kalmia/pcapls/ScoreEstimator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "PCAValidationCase.h"
#include "PlainPLS.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/NCPLS.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;


/// The scores of x, written into a table of one column.
std::vector<float> ScoresOf(const NCDataMatrix<float>& P, const NCDataVector<float>& x, int maxIterations = 50) {
  NCDataMatrix<float> T(P.SizeRows(), 1);
  ScoreEstimator(P, maxIterations).GetT(T, 1, x);
  EXPECT_TRUE(HasExactCounts(T));
  return CellsOf(T.GetColumn(1));
}

NCDataMatrix<float> LoadingsOf(int components) {
  const NCDataMatrix<float> X = TableOfThreeDirections(20, 8, 0.0);
  NCPCA model(&X, 200);
  for (int a = 1; a <= components; ++a) {
    model.NextComponent(nullptr, nullptr, 0, nullptr);
    model.CalculateResiduals();
  }
  return *model.GetPprim();
}

/// The regression of x on the loadings with so many components.
std::unique_ptr<NCPLS> Regression(const NCDataMatrix<float>& P, const NCDataVector<float>& x, int components) {
  NCDataMatrix<float> transposed = P;
  transposed.Transpose();
  auto regression = std::make_unique<NCPLS>(&transposed, &x, 50);
  for (int a = 1; a <= components; ++a) {
    regression->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
    regression->CalculateResiduals();
  }
  return regression;
}

std::vector<float> RegressionScores(const NCDataMatrix<float>& P, const NCDataVector<float>& x, int components) {
  return CellsOf(Regression(P, x, components)->GetRegressionCoefficients(-1).GetColumn(1));
}

/// How many components an estimate has: each opens a bar.
int ComponentsTaken(const NCDataMatrix<float>& P, const NCDataVector<float>& x) {
  ProgressLog log;
  const RecordOwnBars factory(&log);
  ScoresOf(P, x);
  return log.Count("open");
}

TEST(ScoreEstimator, ProjectsACompleteObservationOnOrthonormalLoadings) {
  const NCDataMatrix<float> P = LoadingsOf(3);
  const NCDataVector<float> x = RandomVector<float>(8, 0.0, 1);
  const std::vector<float> t = ScoresOf(P, x);
  for (int a = 1; a <= 3; ++a) {
    // Loadings are orthonormal up to a few roundings, and 8 products of cells below 3 are added up in float.
    EXPECT_NEAR(t[static_cast<std::size_t>(a) - 1], static_cast<double>(P[a] * x), 3 * 8 * 8 * 0x1p-24);
  }
}

TEST(ScoreEstimator, ProjectsComponentByComponentInFloatToTheBit) {
  const NCDataMatrix<float> P = RandomMatrix<float>(3, 7, 0.0, 2);  // far from orthogonal
  const NCDataVector<float> x = RandomVector<float>(7, 0.0, 3);
  std::vector<float> r = CellsOf(x);
  std::vector<float> expected;
  for (int a = 1; a <= 3; ++a) {
    float t = 0.0F;
    for (int k = 1; k <= 7; ++k) {
      const float product = P[a][k] * r[static_cast<std::size_t>(k) - 1];
      t += product;
    }
    for (int k = 1; k <= 7; ++k) {
      const float product = P[a][k] * t;
      r[static_cast<std::size_t>(k) - 1] -= product;
    }
    expected.push_back(t);
  }
  EXPECT_EQ(ScoresOf(P, x), expected);
}

TEST(ScoreEstimator, AddsUpInFloat) {
  // 2^24 + 1 is not a float: taken in order, in float, the ones are lost.
  const NCDataMatrix<float> P(1, 3, 1.0F);
  EXPECT_THAT(ScoresOf(P, VectorOf<float>({0x1p24F, 1, 1})), ElementsAre(0x1p24F));
  EXPECT_THAT(ScoresOf(P, VectorOf<float>({1, 1, 0x1p24F})), ElementsAre(0x1p24F + 2));
}

TEST(ScoreEstimator, LeavesAMissingLoadingOutOfTheProjection) {
  const NCDataMatrix<float> P = MatrixOf<float>({{0.6F, kMissing, 0.8F}, {0, 1, 0}});
  EXPECT_THAT(ScoresOf(P, VectorOf<float>({5, 7, 10})), ElementsAre(0.6F * 5 + 0.8F * 10, 7.0F));
}

TEST(ScoreEstimator, WritesTheGivenColumnAlone) {
  const NCDataMatrix<float> P = LoadingsOf(2);
  const ScoreEstimator estimator(P, 50);
  for (const double holes : {0.0, 0.3}) {
    const NCDataVector<float> x = RandomVector<float>(8, holes, 4);
    NCDataMatrix<float> T(2, 3);
    estimator.GetT(T, 2, x);
    EXPECT_EQ(CellsOf(T.GetColumn(2)), ScoresOf(P, x));
    for (const int other : {1, 3}) EXPECT_THAT(CellsOf(T.GetColumn(other)), Each(kMissing));
  }
}

/// Loadings of three components of eight variables, and x with two holes, for which all three count.
NCDataVector<float> WithTwoHoles() {
  NCDataVector<float> x = RandomVector<float>(8, 0.0, 5) * 0.25L;
  for (const int k : {2, 7}) x(k, kMissing);
  return x;
}

TEST(ScoreEstimator, RegressesAnObservationWithHolesOnTheLoadings) {
  const NCDataMatrix<float> P = LoadingsOf(3);
  const NCDataVector<float> x = WithTwoHoles();
  EXPECT_EQ(ScoresOf(P, x), RegressionScores(P, x, 3));
}

TEST(ScoreEstimator, HasTheScoresOfThePlainRegressionInDouble) {
  const NCDataMatrix<float> loadings = LoadingsOf(3);
  const NCDataVector<float> x = WithTwoHoles();
  plain::Table X = plain::Transposed(plain::TableOf(loadings));
  plain::Table y;
  for (const double cell : plain::VectorOf(x)) y.push_back({cell});
  plain::Table W, P, C;
  for (int a = 1; a <= 3; ++a) {
    const plain::Component component = plain::Fit(X, y, nullptr, 1);
    W.push_back(component.w);
    P.push_back(component.p);
    C.push_back(component.c);
    plain::Deflate(&X, component.t, component.p);
    plain::Deflate(&y, component.t, component.c);
  }
  // B = W (P'W)^-1 C', with the components in rows here.
  const plain::Table inner = plain::Inverse(plain::Product(P, plain::Transposed(W)));
  const plain::Table expected = plain::Product(plain::Product(plain::Transposed(W), inner), C);
  const std::vector<float> t = ScoresOf(loadings, x);
  // Each step rounds vectors of length 1 to float, 2^-24; the last component is what is left of the loadings and of x
  // after two others, which makes the roundings that much larger: no more than a hundredfold here.
  for (std::size_t a = 0; a < 3; ++a) EXPECT_NEAR(t[a], expected[a][0], 100 * 0x1p-24) << "score " << a + 1;
}

TEST(ScoreEstimator, TakesNoMoreComponentsThanThereAreCells) {
  // Loadings far from orthogonal, and so many variables that a few have less than a third of a score's squares: the
  // weight of y is shrunk, and something of x is left that a further component would take.
  const NCDataMatrix<float> P = RandomMatrix<float>(3, 24, 0.0, 9);
  for (int present = 1; present <= 4; ++present) {
    SCOPED_TRACE(present);
    NCDataVector<float> x(24);
    for (int k = 1; k <= present; ++k) x(k, 0.125F);
    EXPECT_EQ(ComponentsTaken(P, x), std::min(present, 3));
    EXPECT_EQ(ScoresOf(P, x), RegressionScores(P, x, std::min(present, 3)));
  }
}

TEST(ScoreEstimator, EndsWithTheComponentWhoseWeightOfYIsTwoOrMore) {
  // The weight grows with x, and with a single cell of it by less than a last place at a time: halving finds 2 itself.
  const NCDataMatrix<float> P = LoadingsOf(3);
  const auto weightOfFirst = [&P](const NCDataVector<float>& x) { return (*Regression(P, x, 1)->GetCprim())[1][1]; };
  NCDataVector<float> less = WithTwoHoles();
  less *= 1.999F / weightOfFirst(less);
  NCDataVector<float> x = less;
  constexpr int kCell = 6;
  float below = less[kCell];
  float above = 2 * below;
  x(kCell, above);
  ASSERT_LT(weightOfFirst(less), 2.0F);
  ASSERT_GT(weightOfFirst(x), 2.0F);
  for (int halving = 0; weightOfFirst(x) != 2.0F; ++halving) {
    ASSERT_LT(halving, 60) << "2 was not met";
    x(kCell, below + (above - below) / 2);
    (weightOfFirst(x) < 2.0F ? below : above) = x[kCell];
  }
  less(kCell, below);
  EXPECT_EQ(ComponentsTaken(P, less), 3);
  for (const NCDataVector<float>& more : {x, NCDataVector<float>(x * 3.0L)}) {
    EXPECT_EQ(ComponentsTaken(P, more), 1);
    EXPECT_EQ(ScoresOf(P, more), RegressionScores(P, more, 1)) << "it counts";
  }
}

TEST(ScoreEstimator, EndsWhenLittleIsLeftOfTheLoadingsBesideTheObservation) {
  // Nearly all of x lies where the loadings have nothing, so that little of it takes part.
  const NCDataMatrix<float> P = MatrixOf<float>({{1, 0, 0, 0, 0}, {0, 0.8F, 0, 0, 0}, {0, 0, 0.6F, 0, 0}});
  const auto withRest = [](double rest) {
    return VectorOf<float>({1, 0.5F, 0.25F, kMissing, static_cast<float>(rest)});
  };
  const double left = static_cast<double>(Regression(P, withRest(300), 1)->GetXResiduals()->GetSS());
  const double limit = std::sqrt(left / 1e-5);
  // A part in ten thousand is more than the other cells of x, the rounding of x and that of what is left.
  EXPECT_GT(ComponentsTaken(P, withRest(limit * 0.9999)), 1);
  EXPECT_EQ(ComponentsTaken(P, withRest(limit * 1.0001)), 1);
  EXPECT_EQ(ScoresOf(P, withRest(limit * 1.0001)), RegressionScores(P, withRest(limit * 1.0001), 1));
}

TEST(ScoreEstimator, GivesZerosForAnObservationWithoutAnyCell) {
  const NCDataMatrix<float> P = LoadingsOf(3);
  EXPECT_THAT(ScoresOf(P, NCDataVector<float>(8)), ElementsAre(0, 0, 0));
}

TEST(ScoreEstimator, GivesZerosWhereTheRegressionCannotBegin) {
  const NCDataMatrix<float> P = LoadingsOf(3);
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const float cell : {0.0F, inf, -inf, nan}) {
    NCDataVector<float> x(8, cell);
    x(4, kMissing);
    EXPECT_THAT(ScoresOf(P, x), ElementsAre(0, 0, 0)) << cell;
  }
  NCDataVector<float> x = WithTwoHoles();
  EXPECT_THAT(ScoresOf(NCDataMatrix<float>(2, 8), x), ElementsAre(0, 0)) << "nothing but missing loadings";
}

TEST(ScoreEstimator, WritesASingleMissingCoefficientAsAMissingScore) {
  // w = (-1, 0), t = (1, 0, 0), c = 99: the first coefficient is a hole by accident.
  const NCDataMatrix<float> P = MatrixOf<float>({{-1, 0, 0}, {0, 0, 0.5F}});
  EXPECT_THAT(ScoresOf(P, VectorOf<float>({99, kMissing, 0})), ElementsAre(kMissing, 0.0F));
}

TEST(ScoreEstimator, GivesAComponentWithoutLoadingsAScoreOfZero) {
  NCDataMatrix<float> P = LoadingsOf(3);
  P.SetRow(2, kMissing);
  const std::vector<float> t = ScoresOf(P, WithTwoHoles());
  EXPECT_EQ(t[1], 0.0F) << "beside a u with holes an empty column's sums are 0, not missing";
  EXPECT_NE(t[0], 0.0F);
  EXPECT_NE(t[2], 0.0F);
}

TEST(ScoreEstimator, KeepsTheComponentsFoundWhenTheUserStops) {
  const NCDataMatrix<float> P = LoadingsOf(3);
  const NCDataVector<float> x = WithTwoHoles();
  // A component is a bar that opens, is asked whether to stop, and closes.
  const std::vector<std::vector<float>> expected = {
      {0, 0, 0}, RegressionScores(P, x, 1), RegressionScores(P, x, 2), RegressionScores(P, x, 3)};
  for (int stopAt = 1; stopAt <= 10; ++stopAt) {
    SCOPED_TRACE("stopped at call " + std::to_string(stopAt));
    ProgressLog log;
    log.stopAt = stopAt;
    const RecordOwnBars factory(&log);
    const std::size_t whole = std::min(3, (stopAt - 1) / 3 + (stopAt % 3 == 0 ? 1 : 0));
    EXPECT_EQ(ScoresOf(P, x), expected[whole]);
  }
}

TEST(ScoreEstimator, OpensABarForEachComponentOfAnObservationWithHolesAndNoneForACompleteOne) {
  const NCDataMatrix<float> P = LoadingsOf(3);
  EXPECT_EQ(ComponentsTaken(P, WithTwoHoles()), 3);
  EXPECT_EQ(ComponentsTaken(P, RandomVector<float>(8, 0.0, 1)), 0);
}

TEST(ScoreEstimator, TakesARowOfTheScoresForAnObservation) {
  const NCDataMatrix<float> P = LoadingsOf(3);
  for (const double holes : {0.0, 0.3}) {
    const NCDataVector<float> x = RandomVector<float>(8, holes, 4);
    NCDataMatrix<float> T(3, 8);
    T.SetRow(1, x);
    ScoreEstimator(P, 50).GetT(T, 2, T[1]);
    EXPECT_EQ(CellsOf(T.GetColumn(2)), ScoresOf(P, x));
    EXPECT_TRUE(HasExactCounts(T));
  }
}

TEST(ScoreEstimator, WritesARowForEachComponentAndNoFurtherOne) {
  const NCDataMatrix<float> P = LoadingsOf(2);
  for (const NCDataVector<float>& x : {WithTwoHoles(), RandomVector<float>(8, 0.0, 1), NCDataVector<float>(8)}) {
    NCDataMatrix<float> T(3, 1, 7.0F);
    ScoreEstimator(P, 50).GetT(T, 1, x);
    const std::vector<float> scores = ScoresOf(P, x);
    EXPECT_THAT(CellsOf(T.GetColumn(1)), ElementsAre(scores[0], scores[1], 7.0F));
  }
}

TEST(ScoreEstimator, DoesNothingWithoutVariablesOrComponents) {
  NCDataMatrix<float> T(2, 1);
  NCDataMatrix<float> noVariables;
  noVariables.SetSize(2, 0);
  ScoreEstimator(noVariables, 50).GetT(T, 1, NCDataVector<float>());
  EXPECT_THAT(CellsOf(T.GetColumn(1)), Each(kMissing));

  NCDataMatrix<float> noComponents;
  noComponents.SetSize(0, 3);
  NCDataMatrix<float> none;
  none.SetSize(0, 1);
  for (const double holes : {0.0, 0.5, 1.0})
    ScoreEstimator(noComponents, 50).GetT(none, 1, RandomVector<float>(3, holes, 1));
  EXPECT_EQ(none.SizeRows(), 0);
}

TEST(ScoreEstimator, CopiesAreEstimatorsOfTheirOwn) {
  const NCDataMatrix<float> P = LoadingsOf(3);
  ScoreEstimator assigned(LoadingsOf(1), 50);
  {
    const ScoreEstimator original(P, 50);
    const ScoreEstimator copy(original);
    assigned = copy;
  }
  for (const double holes : {0.0, 0.3}) {
    const NCDataVector<float> x = RandomVector<float>(8, holes, 6);
    NCDataMatrix<float> T(3, 1);
    assigned.GetT(T, 1, x);
    EXPECT_EQ(CellsOf(T.GetColumn(1)), ScoresOf(P, x));
  }
}

}  // namespace
