// The Y scores of orthogonal components, which are missing where a component has next to nothing to do with Y.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "OPLSCase.h"
#include "kalmia/opls/NCOPLS.h"
#include "testing/RandomTables.h"

namespace {

constexpr int kRows = 24;
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Missing Y scores of the first orthogonal component.
int MissingYScoresOf(const NCOPLS& model) { return (*model.GetUOprim())[1].GetNumMisVal(); }

TEST(NCOPLSYScores, AreNumbersOfAComponentThatHasToDoWithY) {
  EXPECT_EQ(MissingYScoresOf(FittedOPLS(RelatedTables(kRows, 9, 3, 0.0, 5), 1, 1)), 0);
}

TEST(NCOPLSYScores, OfARebuiltModelAreNumbersWhereTheModelHadThemMissing) {
  const Tables tables = RelatedTables(kRows, 9, 1, 0.0, 5);
  const NCOPLS model = FittedOPLS(tables, 1, 1);
  ASSERT_EQ(MissingYScoresOf(model), kRows);
  const NCOPLS rebuilt(&tables.X, &tables.Y, model.GetWMatrices(), model.GetPMatrices(), model.GetCMatrices(),
                       model.GetWOprim(), model.GetPOprim(), model.GetCOprim(), 1, 200);
  EXPECT_EQ(MissingYScoresOf(rebuilt), 0);
}

/// A model in whose orthogonal component |c| |t| / |Y| = relation. Y1 is explained by X1; X2, which stands at right
/// angles to Y1 and not to X1, is the orthogonal component, and Y2 is a little of it.
NCOPLS ModelOfRelation(float relation, float xUnit, float yUnit) {
  const NCDataMatrix<float> X = MatrixOf<float>({{1, 0}, {1, xUnit}, {-1, 0}, {0, xUnit}});
  const float little = relation * yUnit;
  const NCDataMatrix<float> Y = MatrixOf<float>({{yUnit, 0}, {0, little}, {-yUnit, 0}, {0, little}});
  return FittedOPLS({X, Y}, 1, 1);
}

TEST(NCOPLSYScores, AreMissingBelowAMillionthOverTheRootOfTheVariablesInWhateverUnits) {
  // The limit for two variables is 7.07e-7; that of one would be 1e-6.
  for (const float xUnit : {1.0F, 8.0F})
    for (const float yUnit : {1.0F, 32.0F}) {
      EXPECT_EQ(MissingYScoresOf(ModelOfRelation(7.5e-7F, xUnit, yUnit)), 0) << xUnit << ' ' << yUnit;
      EXPECT_EQ(MissingYScoresOf(ModelOfRelation(6.6e-7F, xUnit, yUnit)), 4) << xUnit << ' ' << yUnit;
    }
}

TEST(NCOPLSYScores, AreMissingWithoutAnyRelation) {
  const NCOPLS model = ModelOfRelation(0.0F, 1.0F, 1.0F);
  EXPECT_EQ((*model.GetCOprim())[1].GetSS(), 0.0L) << "exactly";
  EXPECT_EQ(MissingYScoresOf(model), 4);
}

/// One Y with holes, so that the orthogonal component has to do with it.
Tables InUnits(float xUnit, float yUnit) {
  Tables tables = RelatedTables(kRows, 9, 1, 0.1, 5);
  for (int i = 1; i <= kRows; ++i) {
    for (int j = 1; j <= 9; ++j)
      if (tables.X[i][j] != kHole<float>) tables.X(i, j, xUnit * tables.X[i][j]);
    if (tables.Y[i][1] != kHole<float>) tables.Y(i, 1, yUnit * tables.Y[i][1]);
  }
  return tables;
}

TEST(NCOPLSYScores, AreMissingWhereTheRelationIsInfinite) {
  const int holes = RelatedTables(kRows, 9, 1, 0.1, 5).Y.GetNumMisVal();
  const NCOPLS finite = FittedOPLS(InUnits(1e-10F, 1.0F), 1, 1);
  EXPECT_EQ(MissingYScoresOf(finite), holes) << "rows without Y alone";
  const NCOPLS infinite = FittedOPLS(InUnits(1e-10F, 1e30F), 1, 1);  // Y per X is beyond the floats
  ASSERT_TRUE(std::isinf((*infinite.GetCOprim())[1][1]));
  EXPECT_EQ(MissingYScoresOf(infinite), kRows);
}

TEST(NCOPLSYScores, AreMissingWhereTheRelationIsNoNumber) {
  Tables tables = RelatedTables(kRows, 9, 1, 0.0, 3);
  tables.X(3, 3, kInfinity);
  const NCOPLS model = FittedOPLS(tables, 1, 1);
  ASSERT_TRUE(std::isnan((*model.GetCOprim())[1][1]));
  EXPECT_EQ(MissingYScoresOf(model), kRows);
}

TEST(NCOPLSYScores, AreMissingWhereTheComponentHasNoScores) {
  // The predictive component takes all of the only variable; the root of its missing sums of squares is no number.
  const NCOPLS model = FittedOPLS(RelatedTables(kRows, 1, 1, 0.0, 3), 1, 1);
  EXPECT_EQ((*model.GetTOprim())[1].GetNumMisVal(), kRows);
  EXPECT_EQ((*model.GetCOprim())[1].GetSS(), static_cast<long double>(kHole<float>));
  EXPECT_EQ(MissingYScoresOf(model), kRows);
}

}  // namespace
