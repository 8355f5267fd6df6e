#include "kalmia/pcapls/NCPLS.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

#include "PlainPLS.h"
#include "RelatedTables.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr int kComponents = 3;

struct Shape {
  const char* name;
  int rows, xVariables, yVariables;
  double holes;
};

std::string NameOf(const ::testing::TestParamInfo<Shape>& info) { return info.param.name; }

const Shape kShapes[] = {{"OneY", 12, 5, 1, 0.0},         {"ThreeY", 12, 5, 3, 0.0},
                         {"Wide", 7, 40, 2, 0.0},         {"OneYWithHoles", 20, 6, 1, 0.15},
                         {"ThreeYWithHoles", 20, 6, 3, 0.15}, {"WideWithHoles", 9, 40, 2, 0.15}};

class NCPLSOnTables : public ::testing::TestWithParam<Shape> {
 protected:
  NCPLSOnTables()
      : tables_(RelatedTables(GetParam().rows, GetParam().xVariables, GetParam().yVariables, GetParam().holes, 1)),
        model_(&tables_.X, &tables_.Y, 60) {}

  Tables tables_;
  NCPLS model_;
};

INSTANTIATE_TEST_SUITE_P(, NCPLSOnTables, ::testing::ValuesIn(kShapes), NameOf);

TEST_P(NCPLSOnTables, EachComponentIsThatOfThePlainAlgorithmInDouble) {
  for (int a = 1; a <= kComponents; ++a) {
    SCOPED_TRACE("component " + std::to_string(a));
    const plain::Table X = plain::TableOf(*model_.GetXResiduals());
    const plain::Table Y = plain::TableOf(*model_.GetYResiduals());
    AddComponent(&model_);
    const plain::Component twin = plain::Fit(X, Y, nullptr, model_.GetIterations());
    // Each vector is rounded to float once, 2^-24 of its length, and takes over what the one it came from had lost,
    // lengthened by at most the norm of the table over that of its image, below 4 here; with four vectors in a round,
    // and rounds that forget the earlier ones, 16 times 2^-24.
    const double tolerance = 16 * 0x1p-24;
    EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model_.GetWprim())[a]), twin.w), tolerance);
    EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model_.GetTprim())[a]), twin.t), tolerance);
    EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model_.GetPprim())[a]), twin.p), tolerance);
    EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model_.GetCprim())[a]), twin.c), tolerance);
    EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model_.GetUprim())[a]), twin.u), tolerance);
  }
}

TEST_P(NCPLSOnTables, ModelPlusResidualsGivesBothTablesBack) {
  for (int a = 1; a <= kComponents; ++a) AddComponent(&model_);
  const auto gap = [this](const NCDataMatrix<float>& table, const NCDataMatrix<float>& loadings,
                          const NCDataMatrix<float>& residuals) {
    double largest = 0.0;
    double largestTerm = 0.0;
    for (int i = 1; i <= table.SizeRows(); ++i)
      for (int j = 1; j <= table.SizeColumns(); ++j) {
        EXPECT_EQ(table[i][j] == kMissing, residuals[i][j] == kMissing);
        if (table[i][j] == kMissing) continue;
        double sum = residuals[i][j];
        for (int a = 1; a <= kComponents; ++a) {
          const double term = static_cast<double>((*model_.GetTprim())[a][i]) * loadings[a][j];
          largestTerm = std::max({largestTerm, std::abs(term), static_cast<double>(std::abs(table[i][j]))});
          sum += term;
        }
        largest = std::max(largest, std::abs(sum - table[i][j]));
      }
    return largest / largestTerm;
  };
  // Each component rounds a cell once, to float; a cell on the way is at most the sum of all terms, the table's own
  // among them.
  const double tolerance = kComponents * (kComponents + 1) * 0x1p-24;
  EXPECT_LT(gap(tables_.X, *model_.GetPprim(), *model_.GetXResiduals()), tolerance);
  EXPECT_LT(gap(tables_.Y, *model_.GetCprim(), *model_.GetYResiduals()), tolerance);
}

TEST_P(NCPLSOnTables, ScoresOfCompleteTablesAreOrthogonalAndWeightsOrthonormal) {
  if (GetParam().holes > 0.0) {
    AddComponent(&model_);
    const plain::Vector w = plain::VectorOf((*model_.GetWprim())[1]);
    EXPECT_NEAR(plain::SquaresOf(w), 1.0, 4 * 0x1p-24);  // unit length is all that holes leave
    return;
  }
  const double normOfX = std::sqrt(plain::SquaresOf(plain::TableOf(tables_.X)));
  for (int a = 1; a <= kComponents; ++a) AddComponent(&model_);
  for (int a = 1; a <= kComponents; ++a)
    for (int b = 1; b <= a; ++b) {
      const plain::Vector ta = plain::VectorOf((*model_.GetTprim())[a]);
      const plain::Vector tb = plain::VectorOf((*model_.GetTprim())[b]);
      const plain::Vector wa = plain::VectorOf((*model_.GetWprim())[a]);
      const plain::Vector wb = plain::VectorOf((*model_.GetWprim())[b]);
      const double lengths = std::sqrt(plain::SquaresOf(ta) * plain::SquaresOf(tb));
      // Deflation leaves the roundings of the cells of X, of t and of p, each 2^-24 of at most |X|, in the direction
      // of earlier scores and weights; the new score, and the covariance that gives the weight, are shorter than X.
      const double tolerance = 4 * 0x1p-24 * normOfX / std::sqrt(plain::SquaresOf(ta));
      EXPECT_NEAR(plain::Dot(ta, tb) / lengths, a == b ? 1.0 : 0.0, tolerance) << a << ", " << b;
      EXPECT_NEAR(plain::Dot(wa, wb), a == b ? 1.0 : 0.0, 4 * tolerance) << a << ", " << b;
    }
}

TEST_P(NCPLSOnTables, LeavesTheCallersTablesAlone) {
  const auto X = CellsOf(tables_.X);
  const auto Y = CellsOf(tables_.Y);
  for (int a = 1; a <= kComponents; ++a) AddComponent(&model_);
  EXPECT_EQ(CellsOf(tables_.X), X);
  EXPECT_EQ(CellsOf(tables_.Y), Y);
}

TEST_P(NCPLSOnTables, ItsCountsOfHolesStayExact) {
  for (int a = 1; a <= kComponents; ++a) AddComponent(&model_);
  for (const NCDataMatrix<float>* matrix :
       {model_.GetCprim(), model_.GetPprim(), model_.GetWprim(), model_.GetTprim(), model_.GetUprim(),
        model_.GetXResiduals(), model_.GetYResiduals()})
    EXPECT_TRUE(HasExactCounts(*matrix));
}

TEST_P(NCPLSOnTables, TurningAComponentLeavesCoefficientsAndResidualsToTheBit) {
  for (int a = 1; a <= kComponents; ++a) AddComponent(&model_);
  const auto coefficients = CellsOf(model_.GetRegressionCoefficients(-1));
  const auto residuals = CellsOf(*model_.GetXResiduals());
  const auto w = CellsOf((*model_.GetWprim())[2]);
  const auto other = CellsOf((*model_.GetWprim())[1]);
  model_.FlipComponent(2);
  for (std::size_t k = 0; k < w.size(); ++k)
    EXPECT_EQ(CellsOf((*model_.GetWprim())[2])[k], w[k] == kMissing ? kMissing : -w[k]);
  EXPECT_EQ(CellsOf((*model_.GetWprim())[1]), other);
  EXPECT_EQ(CellsOf(model_.GetRegressionCoefficients(-1)), coefficients);
  EXPECT_EQ(CellsOf(*model_.GetXResiduals()), residuals);
}

TEST(NCPLS, TurnsAllFiveVectorsOfAComponent) {
  const Tables tables = RelatedTables(6, 3, 2, 0.0, 1);
  NCPLS model(&tables.X, &tables.Y, 50);
  NCPLS turned(&tables.X, &tables.Y, 50);
  AddComponent(&model);
  AddComponent(&turned);
  turned.FlipComponent(1);
  using Accessor = const NCDataMatrix<float>* (NCPLS::*)() const;
  for (const Accessor get :
       {&NCPLS::GetCprim, &NCPLS::GetPprim, &NCPLS::GetWprim, &NCPLS::GetUprim, &NCPLS::GetTprim})
    for (int i = 1; i <= (model.*get)()->SizeColumns(); ++i)
      EXPECT_EQ((*(turned.*get)())[1][i], -(*(model.*get)())[1][i]);
}

TEST(NCPLS, NeedsOneRoundAndNoStartForOneY) {
  const Tables tables = RelatedTables(10, 4, 1, 0.1, 2);
  NCPLS model(&tables.X, &tables.Y, 50);
  NCPLS started(&tables.X, &tables.Y, 50);
  const NCDataVector<float> start = RandomVector<float>(4, 0.0, 3);
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  started.NextComponent(nullptr, &start, /*quiet=*/true, /*strict=*/true);
  EXPECT_EQ(model.GetIterations(), 1);
  EXPECT_EQ(StreamOf(started), StreamOf(model));
}

TEST(NCPLS, TakesAVectorOfYAsATableOfOneColumn) {
  const Tables tables = RelatedTables(10, 4, 1, 0.1, 2);
  const NCDataVector<float> y = tables.Y.GetColumn(1);
  NCPLS fromTable(&tables.X, &tables.Y, 50);
  NCPLS fromVector(&tables.X, &y, 50);
  AddComponent(&fromTable);
  AddComponent(&fromVector);
  EXPECT_EQ(StreamOf(fromVector), StreamOf(fromTable));
}

TEST(NCPLS, StartsFromWeightsThroughThreeRegressionsWhereThereAreSeveralY) {
  const Tables tables = RelatedTables(10, 4, 3, 0.0, 4);
  const NCDataVector<float> start = RandomVector<float>(4, 0.0, 5);
  NCPLS model(&tables.X, &tables.Y, /*maxIterations=*/1);
  model.NextComponent(nullptr, &start, /*quiet=*/true, /*strict=*/true);
  const plain::Vector weights = plain::VectorOf(start);
  const plain::Component twin = plain::Fit(plain::TableOf(tables.X), plain::TableOf(tables.Y), &weights, 1);
  // Three regressions before the round's four, all rounded to float: see EachComponentIsThatOfThePlainAlgorithm.
  EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model.GetWprim())[1]), twin.w), 16 * 0x1p-24);
  EXPECT_LT(plain::RelativeGap(plain::VectorOf((*model.GetUprim())[1]), twin.u), 16 * 0x1p-24);
}

TEST(NCPLS, RunsAtLeastOneRoundAndNoMoreThanItsLimit) {
  const Tables tables = RelatedTables(12, 5, 3, 0.0, 1);
  NCPLS free(&tables.X, &tables.Y, 1000);
  AddComponent(&free);
  ASSERT_GT(free.GetIterations(), 2);
  for (const int limit : {-1, 0, 1, 2}) {
    NCPLS model(&tables.X, &tables.Y, limit);
    AddComponent(&model);
    EXPECT_EQ(model.GetIterations(), std::max(limit, 1));
    EXPECT_EQ(model.GetComponents(), 1);
  }
}

TEST(NCPLS, EndsWhenUMovesByAHundredThousandthOfItsLength) {
  const Tables tables = RelatedTables(12, 5, 3, 0.0, 1);
  NCPLS model(&tables.X, &tables.Y, 1000);
  AddComponent(&model);
  const auto changeOfRound = [&tables](int round) {
    NCPLS now(&tables.X, &tables.Y, round);
    NCPLS before(&tables.X, &tables.Y, round - 1);
    AddComponent(&now);
    AddComponent(&before);
    return (*now.GetUprim())[1].Difference((*before.GetUprim())[1]);
  };
  EXPECT_LE(changeOfRound(model.GetIterations()), 1e-10L);
  EXPECT_GT(changeOfRound(model.GetIterations() - 1), 1e-10L);
}

TEST(NCPLS, AppendsTheSameComponentTwiceWithoutADeflationInBetween) {
  const Tables tables = RelatedTables(10, 4, 2, 0.1, 6);
  NCPLS model(&tables.X, &tables.Y, 50);
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  EXPECT_EQ(model.GetComponents(), 2);
  EXPECT_EQ(CellsOf((*model.GetTprim())[2]), CellsOf((*model.GetTprim())[1]));
  EXPECT_EQ(CellsOf((*model.GetCprim())[2]), CellsOf((*model.GetCprim())[1]));
}

TEST(NCPLS, DeflatesTwiceWhenAskedTwiceAndNotBeforeTheFirstComponent) {
  const Tables tables = RelatedTables(10, 4, 2, 0.0, 7);
  NCPLS model(&tables.X, &tables.Y, 50);
  model.CalculateResiduals();
  EXPECT_EQ(CellsOf(*model.GetXResiduals()), CellsOf(tables.X));
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  NCDataMatrix<float> X = tables.X;
  NCDataMatrix<float> Y = tables.Y;
  for (int times = 1; times <= 2; ++times) {
    model.CalculateResiduals();
    X.AddVprimV((*model.GetTprim())[1], (*model.GetPprim())[1], -1.0F);
    Y.AddVprimV((*model.GetTprim())[1], (*model.GetCprim())[1], -1.0F);
    EXPECT_EQ(CellsOf(*model.GetXResiduals()), CellsOf(X));
    EXPECT_EQ(CellsOf(*model.GetYResiduals()), CellsOf(Y));
  }
}

TEST(NCPLS, RestoresItsSevenTablesInTheirOrder) {
  const NCDataMatrix<float> X = RandomMatrix<float>(4, 3, 0.0, 1);
  const NCDataMatrix<float> Y = RandomMatrix<float>(4, 2, 0.0, 2);
  const NCDataMatrix<float> C = RandomMatrix<float>(2, 2, 0.0, 3);
  const NCDataMatrix<float> P = RandomMatrix<float>(2, 3, 0.0, 4);
  const NCDataMatrix<float> W = RandomMatrix<float>(2, 3, 0.0, 5);
  const NCDataMatrix<float> U = RandomMatrix<float>(2, 4, 0.0, 6);
  const NCDataMatrix<float> T = RandomMatrix<float>(2, 4, 0.0, 7);
  const NCPLS model(&X, &Y, &C, &P, &W, &U, &T, 50);
  EXPECT_EQ(CellsOf(*model.GetXResiduals()), CellsOf(X));
  EXPECT_EQ(CellsOf(*model.GetYResiduals()), CellsOf(Y));
  EXPECT_EQ(CellsOf(*model.GetCprim()), CellsOf(C));
  EXPECT_EQ(CellsOf(*model.GetPprim()), CellsOf(P));
  EXPECT_EQ(CellsOf(*model.GetWprim()), CellsOf(W));
  EXPECT_EQ(CellsOf(*model.GetUprim()), CellsOf(U));
  EXPECT_EQ(CellsOf(*model.GetTprim()), CellsOf(T));
  EXPECT_EQ(model.GetComponents(), 2);
  EXPECT_EQ(model.GetIterations(), 0);
}

TEST(NCPLS, DoesNotDeflateByARowThatAStoredModelDoesNotHave) {
  const Tables tables = RelatedTables(6, 3, 2, 0.0, 8);
  const NCDataMatrix<float> P = RandomMatrix<float>(2, 3, 0.0, 1);
  const NCDataMatrix<float> W = RandomMatrix<float>(2, 3, 0.0, 2);
  const NCDataMatrix<float> C = RandomMatrix<float>(1, 2, 0.0, 3);  // one row less than the components
  const NCDataMatrix<float> scores = RandomMatrix<float>(2, 6, 0.0, 4);
  NCPLS model(&tables.X, &tables.Y, &C, &P, &W, &scores, &scores, 50);
  model.CalculateResiduals();
  EXPECT_EQ(CellsOf(*model.GetXResiduals()), CellsOf(tables.X));
  EXPECT_EQ(CellsOf(*model.GetYResiduals()), CellsOf(tables.Y));
}

TEST(NCPLS, EndsQuietlyWhereNoChangeCanBeMeasured) {
  const NCDataMatrix<float> X = RandomMatrix<float>(4, 3, 0.0, 1);
  const NCDataMatrix<float> Y(4, 2);  // no data: u has no cell to compare
  NCPLS model(&X, &Y, 50);
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
  EXPECT_EQ(model.GetIterations(), 1);
  EXPECT_THAT(CellsOf((*model.GetUprim())[1]), Each(kMissing));
}

}  // namespace
