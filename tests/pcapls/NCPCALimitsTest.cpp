// Principal components of tables that have hardly any: constant, empty, repeated, of one row or one column.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "PCAValidationCase.h"
#include "PlainPCA.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/support/NCError.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;


void AddComponent(NCPCA* model) {
  model->NextComponent(nullptr, nullptr, 0, nullptr);
  model->CalculateResiduals();
}

bool CannotBeComputed(const NCDataMatrix<float>& X) {
  NCPCA model(&X, 50);
  try {
    model.NextComponent(nullptr, nullptr, 0, nullptr);
    return false;
  } catch (const NCError& error) {
    EXPECT_EQ(error.GetMessage(), "PCA component could not be computed.");
    EXPECT_EQ(model.GetComponents(), 1);
    EXPECT_EQ(model.GetPprim()->SizeRows(), 0);
    return true;
  }
}

TEST(NCPCALimits, CannotComputeAComponentOfNothing) {
  EXPECT_TRUE(CannotBeComputed(NCDataMatrix<float>(3, 4)));        // all missing
  EXPECT_TRUE(CannotBeComputed(NCDataMatrix<float>(3, 4, 0.0F)));  // nothing but zeros
  EXPECT_TRUE(CannotBeComputed(NCDataMatrix<float>(3, 1)));
  NCDataMatrix<float> noColumns;
  noColumns.SetSize(3, 0);
  EXPECT_TRUE(CannotBeComputed(noColumns));
}

TEST(NCPCALimits, CannotComputeAComponentOfCellsThatAreNotFinite) {
  for (const float wrong : {std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN()})
    for (const double holes : {0.0, 0.2}) {
      NCDataMatrix<float> X = RandomMatrix<float>(6, 3, holes, 1);
      X(2, 3, wrong);
      EXPECT_TRUE(CannotBeComputed(X)) << wrong << ", holes " << holes;
    }
}

TEST(NCPCALimits, OfOneRowAreWhatTheRowGivesEvenNothing) {
  struct Row {
    NCDataMatrix<float> X;
    std::vector<float> p;
    float t;
  };
  const float inf = std::numeric_limits<float>::infinity();
  const Row rows[] = {{MatrixOf<float>({{0, 3, 4}}), {0.0F, 0.6F, 0.8F}, 5.0F},
                      {MatrixOf<float>({{0, 0, kMissing}}), {0, 0, kMissing}, 0.0F},
                      {MatrixOf<float>({{kMissing, kMissing}}), {kMissing, kMissing}, kMissing},
                      {MatrixOf<float>({{-7}}), {-1}, 7.0F}};
  for (const Row& row : rows) {
    NCPCA model(&row.X, 50);
    AddComponent(&model);
    EXPECT_EQ(CellsOf((*model.GetPprim())[1]), row.p);
    EXPECT_THAT(CellsOf((*model.GetTprim())[1]), ElementsAre(row.t));
    EXPECT_EQ(model.GetIterations(), 1);
    for (const NCDataMatrix<float>* matrix : {model.GetPprim(), model.GetTprim(), model.GetResiduals()})
      EXPECT_TRUE(HasExactCounts(*matrix));
  }
  const NCDataMatrix<float> infinite = MatrixOf<float>({{1, inf}});
  NCPCA model(&infinite, 50);
  AddComponent(&model);
  EXPECT_EQ((*model.GetTprim())[1][1], inf);
}

TEST(NCPCALimits, OfOneRowWithoutColumnsHaveAScoreOfZero) {
  NCDataMatrix<float> X;
  X.SetSize(1, 0);
  NCPCA model(&X, 50);
  AddComponent(&model);
  EXPECT_EQ(model.GetPprim()->SizeRows(), 1);
  EXPECT_EQ(model.GetPprim()->SizeColumns(), 0);
  EXPECT_THAT(CellsOf((*model.GetTprim())[1]), ElementsAre(0.0F));
}

TEST(NCPCALimits, OfOneColumnAreTheColumnItself) {
  const NCDataMatrix<float> X = MatrixOf<float>({{3}, {-1}, {kMissing}, {2}});
  NCPCA model(&X, 50);
  AddComponent(&model);
  EXPECT_THAT(CellsOf((*model.GetPprim())[1]), ElementsAre(1.0F));
  EXPECT_THAT(CellsOf((*model.GetTprim())[1]), ElementsAre(3, -1, kMissing, 2));
  EXPECT_EQ(model.GetIterations(), 1);
  EXPECT_THAT(CellsOf(*model.GetResiduals()),
              ElementsAre(ElementsAre(0), ElementsAre(0), ElementsAre(kMissing), ElementsAre(0)));
  EXPECT_TRUE(CannotBeComputed(*model.GetResiduals())) << "nothing is left";
}

TEST(NCPCALimits, GiveAConstantColumnThatIsCentredNoLoading) {
  NCDataMatrix<float> X = TableOfThreeDirections(10, 5, 0.0);
  X.SetColumn(3, 0.0F);
  NCPCA model(&X, 200);
  for (int a = 1; a <= 3; ++a) {
    AddComponent(&model);
    EXPECT_EQ((*model.GetPprim())[a][3], 0.0F);
  }
  for (int i = 1; i <= 10; ++i) EXPECT_EQ((*model.GetResiduals())[i][3], 0.0F);
}

TEST(NCPCALimits, PassOverAnEmptyRowAndAnEmptyColumn) {
  NCDataMatrix<float> X = TableOfThreeDirections(10, 5, 0.0);
  NCDataMatrix<float> holed = X;
  holed.SetRow(4, kMissing);
  holed.SetColumn(2, kMissing);
  NCDataMatrix<float> without = X;
  without.RemoveRows(4, 1);
  without.RemoveColumns(2, 1);
  NCPCA model(&holed, 200);
  NCPCA twin(&without, 200);
  for (int a = 1; a <= 2; ++a) {
    AddComponent(&model);
    AddComponent(&twin);
    EXPECT_EQ((*model.GetPprim())[a][2], 0.0F) << "beside a t with a hole the column's sums are 0, not missing";
    EXPECT_EQ((*model.GetTprim())[a][4], kMissing);
    plain::Vector p = plain::VectorOf((*model.GetPprim())[a]);
    plain::Vector t = plain::VectorOf((*model.GetTprim())[a]);
    p.erase(p.begin() + 1);
    t.erase(t.begin() + 3);
    // The same component but for the start, whose filled hole weighs next to nothing: both are where t moves by less
    // than 1e-5 a round; the directions of the table are far apart.
    EXPECT_LT(plain::SineOfAngle(p, plain::VectorOf((*twin.GetPprim())[a])), 2e-5);
    EXPECT_LT(plain::SineOfAngle(t, plain::VectorOf((*twin.GetTprim())[a])), 2e-5);
    EXPECT_TRUE(HasExactCounts(*model.GetResiduals()));
  }
}

TEST(NCPCALimits, GiveAnEmptyColumnNoLoading) {
  NCDataMatrix<float> X = TableOfThreeDirections(10, 5, 0.0);
  X.SetColumn(2, kMissing);
  NCPCA model(&X, 200);
  AddComponent(&model);
  for (int k = 1; k <= 5; ++k) EXPECT_EQ((*model.GetPprim())[1][k] == kMissing, k == 2);
  EXPECT_EQ(model.GetResiduals()->GetNumMisVal(), 10);
}

TEST(NCPCALimits, OfRepeatedColumnsLoadThemAlike) {
  const NCDataVector<float> column = RandomVector<float>(8, 0.0, 1);
  NCDataMatrix<float> X;
  for (int k = 1; k <= 3; ++k) X.InsertColumn(k, column);
  NCPCA model(&X, 50);
  AddComponent(&model);
  const NCDataVector<float>& p = (*model.GetPprim())[1];
  EXPECT_EQ(p[1], p[2]);
  EXPECT_EQ(p[2], p[3]);
  EXPECT_FLOAT_EQ(p[1], static_cast<float>(std::sqrt(1.0 / 3.0)));
}

TEST(NCPCALimits, OfRepeatedRowsScoreThemAlike) {
  const NCDataVector<float> row = RandomVector<float>(5, 0.0, 1);
  NCDataMatrix<float> X = RandomMatrix<float>(4, 5, 0.0, 2);
  for (int i = 1; i <= 3; ++i) X.push_back(row);
  NCPCA model(&X, 300);
  for (int a = 1; a <= 2; ++a) {
    AddComponent(&model);
    const NCDataVector<float>& t = (*model.GetTprim())[a];
    EXPECT_EQ(t[5], t[6]);
    EXPECT_EQ(t[6], t[7]);
  }
}

TEST(NCPCALimits, BehindTheRankAreRoundingOrCannotBeComputed) {
  // Rank 2, and every product of the table exact: what is left behind the second component is rounding alone.
  const NCDataMatrix<float> scores = MatrixOf<float>({{1, 2, -3, 4, -2}, {2, -1, 0, 1, 3}});
  const NCDataMatrix<float> loadings = MatrixOf<float>({{1, 0, 2, -1}, {0, 1, -1, 2}});
  const NCDataMatrix<float> X = scores.MatrixMultiply(loadings, true, false);
  NCPCA model(&X, 100);
  for (int a = 1; a <= 2; ++a) AddComponent(&model);
  const double total = plain::SquaresOf(plain::TableOf(X));
  // Two components round each cell, 2^-24 of the largest at most; with p and t rounded likewise, 4 of these squared.
  EXPECT_LT(static_cast<double>(model.GetResiduals()->GetSS()), 64 * 0x1p-48 * total);
  for (int a = 3; a <= 6; ++a) {
    const int before = model.GetPprim()->SizeRows();
    try {
      AddComponent(&model);
    } catch (const NCError&) {
      EXPECT_EQ(model.GetPprim()->SizeRows(), before);
      break;
    }
    EXPECT_LE(model.GetIterations(), 100);
    EXPECT_LT(plain::SquaresOf(plain::VectorOf(model.GetTprim()->back())), 64 * 0x1p-48 * total);
  }
}

TEST(NCPCALimits, OfTwoEqualSingularValuesSpanTheirPlane) {
  // Any two orthogonal directions of the plane will do: with the third they still give the whole table.
  const NCDataMatrix<float> X = MatrixOf<float>({{4, 4, 0}, {4, -4, 0}, {0, 0, 1}, {0, 0, -1}});
  NCPCA model(&X, 100);
  for (int a = 1; a <= 3; ++a) {
    AddComponent(&model);
    EXPECT_LT(model.GetIterations(), 100);
  }
  for (int a = 1; a <= 2; ++a) {
    // Both singular values are sqrt(32); the starting column lies in the plane and stays what it is but for rounding.
    EXPECT_NEAR(plain::SquaresOf(plain::VectorOf((*model.GetTprim())[a])), 32.0, 32 * 4 * 0x1p-24);
    EXPECT_NEAR((*model.GetPprim())[a][3], 0.0F, 4 * 0x1p-24);
  }
  EXPECT_NEAR(plain::SquaresOf(plain::VectorOf((*model.GetTprim())[3])), 2.0, 2 * 4 * 0x1p-24);
  EXPECT_LT(static_cast<double>(model.GetResiduals()->GetSS()), 66 * 16 * 0x1p-48);
}

TEST(NCPCALimits, HoldAColumnWithFewValuesUpByAThirdOfTheScores) {
  // t = (1, 1, 1) from the start; the second column has one cell left, with a third of t't: just not held up. Of four
  // rows it has a quarter: 8 / (4 / 3) = 6 rather than 8.
  for (const int rows : {3, 4}) {
    NCDataMatrix<float> X(rows, 2);
    X.SetColumn(1, 100.0F);
    X(1, 2, 8.0F);
    const NCDataVector<float> ones(rows, 1.0F);
    NCPCA model(&X, 1);
    model.NextComponent(nullptr, nullptr, 0, &ones);
    const NCDataVector<float>& p = (*model.GetPprim())[1];
    // Two divisions by the norm, rounded to float, of which this is the quotient.
    EXPECT_NEAR(p[2] / p[1], rows == 3 ? 0.08F : 0.06F, 0.08F * 4 * 0x1p-24F);
  }
}

TEST(NCPCALimits, EmptyTheRowOfAnObservationWithoutAScoreWhenTheComponentIsTakenOut) {
  // The only cell of the last row belongs to a variable that is left out, so that there is nothing to score it by.
  const NCDataMatrix<float> X = MatrixOf<float>({{1, 2, 3}, {2, 1, 4}, {kMissing, kMissing, 5}});
  const NCIntegralVector<int, -99> groups = Ints({0, 0, 1});
  NCPCA model(&X, 100);
  model.NextComponent(nullptr, &groups, 1, nullptr);
  EXPECT_EQ((*model.GetTprim())[1][3], kMissing);
  EXPECT_EQ((*model.GetTprim())[1].GetNumMisVal(), 1);
  model.CalculateResiduals();
  EXPECT_THAT(CellsOf((*model.GetResiduals())[3]), Each(kMissing));
  EXPECT_TRUE(HasExactCounts(*model.GetResiduals()));
}

}  // namespace
