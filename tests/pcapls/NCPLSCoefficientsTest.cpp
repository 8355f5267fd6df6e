#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PlainPLS.h"
#include "RelatedTables.h"
#include "kalmia/pcapls/NCPLS.h"
#include "testing/RandomTables.h"

namespace {

using ::testing::ElementsAre;


TEST(NCPLSWStar, IsWTimesTheInverseOfPW) {
  const Tables tables = RelatedTables(15, 6, 2, 0.0, 10);
  NCPLS model(&tables.X, &tables.Y, 100);
  for (int a = 1; a <= 4; ++a) AddComponent(&model);
  const plain::Table W = plain::TableOf(*model.GetWprim());
  const plain::Table P = plain::TableOf(*model.GetPprim());
  // With components in rows: W* = (W P')^-1 W, the transpose of W (P'W)^-1. The recursion takes P'W as upper triangular
  // with a unit diagonal, which holds up to the float rounding of w, p and X: below 1e-6 in these cells.
  const plain::Table expected = plain::Product(plain::Inverse(plain::Product(W, plain::Transposed(P))), W);
  const plain::Table wStar = plain::TableOf(model.GetWStarPrim());
  for (std::size_t a = 0; a < wStar.size(); ++a) EXPECT_LT(plain::RelativeGap(wStar[a], expected[a]), 4e-6) << a;
}

TEST(NCPLSWStar, GivesTheScoresFromTheUndeflatedTable) {
  const Tables tables = RelatedTables(15, 6, 2, 0.0, 11);
  NCPLS model(&tables.X, &tables.Y, 100);
  for (int a = 1; a <= 4; ++a) AddComponent(&model);
  const plain::Table scores =
      plain::Product(plain::TableOf(model.GetWStarPrim()), plain::Transposed(plain::TableOf(tables.X)));
  const plain::Table T = plain::TableOf(*model.GetTprim());
  // As above; a score is shorter than X, here by less than 10.
  for (std::size_t a = 0; a < T.size(); ++a) EXPECT_LT(plain::RelativeGap(scores[a], T[a]), 1e-5) << a;
}

TEST(NCPLSWStar, FollowsItsRecursionOnNumbersWorkedByHand) {
  const NCDataMatrix<float> W = MatrixOf<float>({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  const NCDataMatrix<float> P = MatrixOf<float>({{1, 2, 3}, {0, 1, 4}, {0, 0, 1}});
  // w*1 = w1; w*2 = w2 - 2 w*1; w*3 = w3 - (p1 w3) w*1 - (p2 w3) w*2 = w3 - 3 w*1 - 4 w*2 = (5, -4, 1). The products
  // are with w3 itself: with what w*3 has become after the first step they would be 3 and 4 - 0 alike, but for p2.
  const NCDataMatrix<float> wStar = NCPLS::GetWStarPrim(W, P);
  EXPECT_THAT(CellsOf(wStar[1]), ElementsAre(1, 0, 0));
  EXPECT_THAT(CellsOf(wStar[2]), ElementsAre(-2, 1, 0));
  EXPECT_THAT(CellsOf(wStar[3]), ElementsAre(5, -4, 1));
}

TEST(NCPLSWStar, MultipliesWithTheRowOfWAndNotWithWhatItHasBecome) {
  const NCDataMatrix<float> W = MatrixOf<float>({{1, 0}, {0, 1}, {1, 1}});
  const NCDataMatrix<float> P = MatrixOf<float>({{1, 1}, {1, 1}, {1, 1}});
  // w*2 = w2 - 1 w*1 = (-1, 1); w*3 = w3 - 2 w*1 - 2 w*2 = (1, 1) - (2, 0) - (-2, 2) = (1, -1). With the row as it is
  // after the first step, (-1, 1), the second product would be 0.
  EXPECT_THAT(CellsOf(NCPLS::GetWStarPrim(W, P)[3]), ElementsAre(1, -1));
}

TEST(NCPLSWStar, HasNoRowsWithoutComponents) {
  NCDataMatrix<float> none;
  none.SetSize(0, 4);
  const NCDataMatrix<float> wStar = NCPLS::GetWStarPrim(none, none);
  EXPECT_EQ(wStar.SizeRows(), 0);
  EXPECT_EQ(wStar.SizeColumns(), 4);
}

TEST(NCPLSWStar, PassesAHoleOnToLaterRowsAndCountsIt) {
  const NCDataMatrix<float> W = MatrixOf<float>({{1, kMissing, 0}, {0, 1, 0}, {0, 0, 1}});
  const NCDataMatrix<float> P = MatrixOf<float>({{1, 2, 3}, {0, 1, 4}, {0, 0, 1}});
  const NCDataMatrix<float> C = MatrixOf<float>({{1.0F}, {1.0F}, {1.0F}});
  const NCDataMatrix<float> wStar = NCPLS::GetWStarPrim(W, P);
  EXPECT_THAT(CellsOf(wStar[2]), ElementsAre(-2, kMissing, 0));
  EXPECT_THAT(CellsOf(wStar[3]), ElementsAre(5, kMissing, 1));
  EXPECT_TRUE(HasExactCounts(wStar));
  // A hole that the counts did not know of would enter the product as -99.
  EXPECT_THAT(CellsOf(NCPLS::GetRegressionCoefficients(P, W, C).GetColumn(1)), ElementsAre(4, kMissing, 1));
}

TEST(NCPLSCoefficients, OfAllComponentsAreThoseOfTheirNumber) {
  const Tables tables = RelatedTables(12, 5, 2, 0.1, 12);
  NCPLS model(&tables.X, &tables.Y, 50);
  for (int a = 1; a <= 3; ++a) AddComponent(&model);
  const auto all = CellsOf(model.GetRegressionCoefficients(-1));
  EXPECT_EQ(CellsOf(model.GetRegressionCoefficients(3)), all);
  EXPECT_EQ(CellsOf(NCPLS::GetRegressionCoefficients(*model.GetPprim(), *model.GetWprim(), *model.GetCprim())), all);
  EXPECT_EQ(all.size(), 5U);
  EXPECT_EQ(all.front().size(), 2U);
}

TEST(NCPLSCoefficients, OfTheFirstComponentsAreThoseOfTheSmallerModel) {
  const Tables tables = RelatedTables(12, 5, 2, 0.1, 13);
  NCPLS model(&tables.X, &tables.Y, 50);
  NCPLS smaller(&tables.X, &tables.Y, 50);
  for (int a = 1; a <= 3; ++a) AddComponent(&model);
  for (int a = 1; a <= 2; ++a) AddComponent(&smaller);
  EXPECT_EQ(CellsOf(model.GetRegressionCoefficients(2)), CellsOf(smaller.GetRegressionCoefficients(-1)));
}

TEST(NCPLSCoefficients, OfNoComponentsAreZero) {
  const Tables tables = RelatedTables(6, 3, 2, 0.0, 14);
  NCPLS model(&tables.X, &tables.Y, 50);
  for (const int components : {-1, 0}) {
    const NCDataMatrix<float> none = model.GetRegressionCoefficients(components);
    ASSERT_EQ(none.SizeRows(), 3);
    for (int k = 1; k <= 3; ++k) EXPECT_THAT(CellsOf(none[k]), ElementsAre(0, 0));
  }
  AddComponent(&model);
  EXPECT_EQ(CellsOf(model.GetRegressionCoefficients(0)),
            CellsOf(NCPLS(&tables.X, &tables.Y, 50).GetRegressionCoefficients(-1)));
}

TEST(NCPLSCoefficients, OfAsManyComponentsAsVariablesAreThoseOfLeastSquares) {
  const Tables tables = RelatedTables(20, 3, 1, 0.0, 15);
  NCPLS model(&tables.X, &tables.Y, 50);
  for (int a = 1; a <= 3; ++a) AddComponent(&model);
  const plain::Table X = plain::TableOf(tables.X);
  const plain::Table XtX = plain::Product(plain::Transposed(X), X);
  const plain::Table b =
      plain::Product(plain::Inverse(XtX), plain::Product(plain::Transposed(X), plain::TableOf(tables.Y)));
  const plain::Vector found = plain::VectorOf(model.GetRegressionCoefficients(-1).GetColumn(1));
  // The columns of X are random, their condition is below 3: a few roundings of 2^-24 grow by its square at most.
  EXPECT_LT(plain::RelativeGap(found, plain::Transposed(b).front()), 3 * 9 * 0x1p-24);
}

}  // namespace
