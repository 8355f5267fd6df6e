#include "kalmia/opls/NCOPLS.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "OPLSCase.h"
#include "kalmia/opls/NCOPLSPred.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/NCPLSPred.h"
#include "pcapls/PlainPLS.h"
#include "testing/RandomTables.h"

namespace {

/// Rounding of a cell to float.
constexpr double kUnit = 0x1p-24;

// ---- one complete Y: the same predictions as PLS, divided otherwise

class NCOPLSOfOneY : public ::testing::TestWithParam<int> {  // orthogonal components
 protected:
  const Tables tables_ = RelatedTables(24, 9, 1, 0.0, 3);
};

INSTANTIATE_TEST_SUITE_P(OrthogonalComponents, NCOPLSOfOneY, ::testing::Values(0, 1, 2, 4));

TEST_P(NCOPLSOfOneY, PredictsAsPLSDoesWithThatManyComponentsAndOneMore) {
  const int orthogonal = GetParam();
  NCOPLS opls = FittedOPLS(tables_, 1, orthogonal);
  NCPLS pls(&tables_.X, &tables_.Y, 200);
  for (int a = 0; a <= orthogonal; ++a) AddComponent(&pls);
  for (const NCDataMatrix<float>& X : {tables_.X, RelatedTables(10, 9, 1, 0.0, 4).X}) {
    NCPLSPred expected(X, *pls.GetWprim(), *pls.GetPprim(), *pls.GetCprim(), 0.9999F);
    for (int a = 0; a <= orthogonal; ++a) expected.CalcNextComponent();
    // Both round each score, loading and weight of each component, and the table after it, to float; the condition of
    // these components on each other is below 10.
    const double tolerance = 100 * (orthogonal + 1) * kUnit;
    EXPECT_LT(RelativeGapOf(*PredictedBy(&opls, X).GetYPred(), *expected.GetYPred()), tolerance);
  }
  EXPECT_LT(RelativeGapOf(opls.GetYResiduals(), *pls.GetYResiduals()), 100 * (orthogonal + 1) * kUnit);
}

/// The columns about their means.
NCDataMatrix<float> Centred(NCDataMatrix<float> table) {
  for (int j = 1; j <= table.SizeColumns(); ++j) {
    const auto mean = static_cast<float>(table.GetColumnMean(j));
    for (int i = 1; i <= table.SizeRows(); ++i) table(i, j, table[i][j] - mean);
  }
  return table;
}

double CorrelationOf(NCDataVector<float> a, NCDataVector<float> b) {
  long double mean = 0.0L;
  a.DetrendMean(mean);
  b.DetrendMean(mean);
  return static_cast<double>(a.Correlation(b));
}

class NCOPLSOfOneCentredY : public ::testing::TestWithParam<int> {  // orthogonal components
 protected:
  const Tables uncentred_ = RelatedTables(24, 9, 1, 0.0, 3);
  const Tables tables_{Centred(uncentred_.X), Centred(uncentred_.Y)};
};

INSTANTIATE_TEST_SUITE_P(OrthogonalComponents, NCOPLSOfOneCentredY, ::testing::Values(1, 2, 4));

TEST_P(NCOPLSOfOneCentredY, OrthogonalScoresAreUncorrelatedWithY) {
  const NCOPLS opls = FittedOPLS(tables_, 1, GetParam());
  const NCDataVector<float> y = tables_.Y.GetColumn(1);
  for (int o = 1; o <= GetParam(); ++o)
    // Each cell of the scores is rounded, and so are the weights, the filtered table and its scores beneath it.
    EXPECT_LT(std::abs(CorrelationOf((*opls.GetTOprim())[o], y)), 100 * kUnit) << o;
}

TEST_P(NCOPLSOfOneCentredY, OrthogonalScoresAreUncorrelatedWithEachOtherAndWithThePredictiveOnes) {
  const NCOPLS opls = FittedOPLS(tables_, 1, GetParam());
  std::vector<NCDataVector<float>> scores = {(*opls.GetTprim())[1]};
  for (int o = 1; o <= GetParam(); ++o) scores.push_back((*opls.GetTOprim())[o]);
  for (std::size_t a = 0; a < scores.size(); ++a)
    for (std::size_t b = 0; b < a; ++b)
      EXPECT_LT(std::abs(CorrelationOf(scores[a], scores[b])), 100 * kUnit) << a << ' ' << b;
}

TEST_P(NCOPLSOfOneCentredY, TheYScoresOfAnOrthogonalComponentAreMissingForItHasNothingToDoWithY) {
  const NCOPLS opls = FittedOPLS(tables_, 1, GetParam());
  for (int o = 1; o <= GetParam(); ++o) {
    EXPECT_EQ((*opls.GetUOprim())[o].GetNumMisVal(), 24);
    for (const auto* matrix : {opls.GetTOprim(), opls.GetPOprim(), opls.GetCOprim(), opls.GetWOprim()})
      EXPECT_EQ((*matrix)[o].GetNumMisVal(), 0);
  }
}

TEST(NCOPLS, WeightOfOneYIsTheNormalisedProductOfYAndX) {
  const Tables tables = RelatedTables(24, 9, 1, 0.0, 3);
  const NCOPLS opls = FittedOPLS(tables, 1, 0);
  plain::Vector w;
  for (const plain::Vector& column : plain::Transposed(plain::TableOf(tables.X)))
    w.push_back(plain::Dot(plain::VectorOf(tables.Y.GetColumn(1)), column));
  const double length = std::sqrt(plain::SquaresOf(w));
  for (double& cell : w) cell /= length;
  // The product is rounded once in a cell, its quotient by the length again.
  EXPECT_LT(plain::RelativeGap(plain::VectorOf((*opls.GetWprim())[1]), w), 2 * kUnit);
}

// ---- what holds of all tables

struct Shape {
  const char* name;
  int rows, xVariables, yVariables;
  double holes;
  int predictive;
};

class NCOPLSOnTables : public ::testing::TestWithParam<Shape> {
 protected:
  Tables tables_ = RelatedTables(GetParam().rows, GetParam().xVariables, GetParam().yVariables, GetParam().holes, 7);
};

const Shape kShapes[] = {{"OneY", 24, 9, 1, 0.0, 1},           {"ThreeY", 24, 9, 3, 0.0, 2},
                         {"Wide", 12, 40, 3, 0.0, 3},          {"OneYWithHoles", 24, 9, 1, 0.1, 1},
                         {"ThreeYWithHoles", 24, 9, 3, 0.1, 2}, {"WideWithHoles", 15, 40, 2, 0.1, 2}};

INSTANTIATE_TEST_SUITE_P(, NCOPLSOnTables, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

TEST_P(NCOPLSOnTables, PredictivePartOrthogonalPartAndResidualsGiveTheTablesBack) {
  const NCOPLS opls = FittedOPLS(tables_, GetParam().predictive, 2);
  const NCDataMatrix<float> x = PartOf(*opls.GetTprim(), *opls.GetPprim()) +
                                PartOf(*opls.GetTOprim(), *opls.GetPOprim()) + opls.GetXResiduals();
  const NCDataMatrix<float> y = PartOf(*opls.GetTprim(), *opls.GetCprim()) +
                                PartOf(*opls.GetTOprim(), *opls.GetCOprim()) + opls.GetYResiduals();
  // Per component a rounding of the product and one of the sum, on both ways.
  const double tolerance = 4 * (GetParam().predictive + 2) * kUnit;
  EXPECT_LT(RelativeGapOf(x, tables_.X), tolerance);
  EXPECT_LT(RelativeGapOf(y, tables_.Y), tolerance);
}

TEST_P(NCOPLSOnTables, EveryComponentStandsInARowAndEveryBlockIsKept) {
  const NCOPLS opls = FittedOPLS(tables_, GetParam().predictive, 2);
  const auto [name, N, K, M, holes, A] = GetParam();
  EXPECT_EQ(opls.SizeComponents(), A);
  EXPECT_EQ(opls.SizeOrthogonalComponents(), 2);
  for (const auto* blocks : {opls.GetWMatrices(), opls.GetPMatrices(), opls.GetCMatrices()}) {
    ASSERT_EQ(blocks->size(), 3U);
    const int columns = blocks == opls.GetCMatrices() ? M : K;
    for (const NCDataMatrix<float>& block : *blocks) {
      EXPECT_EQ(block.SizeRows(), A);
      EXPECT_EQ(block.SizeColumns(), columns);
      EXPECT_EQ(block.GetNumMisVal(), 0);
    }
  }
  EXPECT_EQ(opls.GetWprim(), &opls.GetWMatrices()->back());
  EXPECT_EQ(opls.GetPprim(), &opls.GetPMatrices()->back());
  EXPECT_EQ(opls.GetCprim(), &opls.GetCMatrices()->back());
  EXPECT_EQ(opls.GetTprim()->SizeColumns(), N);
  EXPECT_EQ(opls.GetUprim()->SizeRows(), A);
  EXPECT_EQ(opls.GetTOprim()->SizeColumns(), N);
  EXPECT_EQ(opls.GetPOprim()->SizeColumns(), K);
  EXPECT_EQ(opls.GetCOprim()->SizeColumns(), M);
}

TEST_P(NCOPLSOnTables, WeightsHaveUnitLengthAndOrthogonalOnesStandAtRightAnglesToTheBlockBeforeThem) {
  const NCOPLS opls = FittedOPLS(tables_, GetParam().predictive, 2);
  for (const NCDataMatrix<float>& W : *opls.GetWMatrices())
    for (int a = 1; a <= W.SizeRows(); ++a) EXPECT_NEAR(static_cast<double>(W[a].GetSS()), 1.0, 4 * kUnit);
  for (int o = 1; o <= 2; ++o) {
    EXPECT_NEAR(static_cast<double>((*opls.GetWOprim())[o].GetSS()), 1.0, 4 * kUnit);
    if (GetParam().holes > 0.0) continue;  // the regressions of a table with holes are no projection
    const NCDataMatrix<float>& W = (*opls.GetWMatrices())[static_cast<std::size_t>(o - 1)];
    // The filtered table is rounded to float after each of the block, and is below 10 times what is left of it.
    for (int a = 1; a <= W.SizeRows(); ++a)
      EXPECT_LT(std::abs(static_cast<double>((*opls.GetWOprim())[o] * W[a])), 100 * kUnit) << o << ' ' << a;
  }
}

TEST_P(NCOPLSOnTables, LeavesTheCallersTablesAlone) {
  const auto x = CellsOf(tables_.X);
  const auto y = CellsOf(tables_.Y);
  FittedOPLS(tables_, GetParam().predictive, 2);
  EXPECT_EQ(CellsOf(tables_.X), x);
  EXPECT_EQ(CellsOf(tables_.Y), y);
}

TEST_P(NCOPLSOnTables, CountsOfHolesStayExact) {
  const NCOPLS opls = FittedOPLS(tables_, GetParam().predictive, 2);
  EXPECT_TRUE(HasExactCounts(opls.GetXResiduals()));
  EXPECT_TRUE(HasExactCounts(opls.GetYResiduals()));
  for (const auto* matrix : {opls.GetTprim(), opls.GetUprim(), opls.GetTOprim(), opls.GetUOprim(), opls.GetWprim()})
    EXPECT_TRUE(HasExactCounts(*matrix));
}

TEST_P(NCOPLSOnTables, CopiesAreModelsOfTheirOwnAndGoOnAsTheOriginalDoes) {
  const auto goOn = [](NCOPLS* model) {
    if (model->SizeOrthogonalComponents() > 0) {
      model->NegatePredictiveComp(1);
      model->NegateOComp(1);
    }
    model->NextComponent(nullptr);
  };
  for (const int orthogonal : {-1, 1}) {  // -1: no block either
    SCOPED_TRACE(orthogonal);
    NCOPLS opls = FittedOPLS(tables_, GetParam().predictive, orthogonal);
    const std::string before = Everything(opls);
    NCOPLS copy(opls), assigned(&tables_.Y, &tables_.Y, 1, 1);
    assigned = opls;
    assigned = *&assigned;
    for (NCOPLS* other : {&copy, &assigned}) {
      EXPECT_EQ(Everything(*other), before);
      goOn(other);
      EXPECT_EQ(Everything(opls), before);
    }
    goOn(&opls);
    for (const NCOPLS* other : {&copy, &assigned}) EXPECT_EQ(Everything(*other), Everything(opls));
  }
}

}  // namespace
