#include "kalmia/o2pls/NCO2PLSPred.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>

#include "O2PLSCase.h"
#include "PlainO2PLS.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;


/// Cells of at most twenty, each rounded to float a dozen times on the way, in sums of a dozen terms.
constexpr double kRounding = 1e-4;

NCO2PLS Fitted(const FloatBlocks& blocks, int predictive, int xOrthogonal, int yOrthogonal) {
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/false, 500);
  model.Fit(predictive, xOrthogonal, yOrthogonal);
  return model;
}

/// Blocks to fit, and new rows of the same kind.
struct Case {
  Case() : all(MakeFloatBlocks({50, 7, 6, 2, 2, 1}, 0.05, 5)) {
    fit = {all.X.GetRowSubMatrix(1, 40), all.Y.GetRowSubMatrix(1, 40)};
    fresh = {all.X.GetRowSubMatrix(41, 50), all.Y.GetRowSubMatrix(41, 50)};
  }
  FloatBlocks all, fit, fresh;
};

void ExpectNear(const Table& table, const plain::Table& expected, const char* what) {
  SCOPED_TRACE(what);
  ASSERT_EQ(static_cast<std::size_t>(table.SizeRows()), expected.size());
  for (int i = 1; i <= table.SizeRows(); ++i)
    for (int j = 1; j <= table.SizeColumns(); ++j)
      EXPECT_NEAR(table[i][j], expected[static_cast<std::size_t>(i) - 1][static_cast<std::size_t>(j) - 1], kRounding);
}

TEST(NCO2PLSPred, PredictsBothBlocksAsAPlainTwinDoes) {
  const Case c;
  for (const auto& [xOrthogonal, yOrthogonal] : {std::pair{0, 0}, {1, 0}, {2, 1}}) {
    const NCO2PLS model = Fitted(c.fit, 2, xOrthogonal, yOrthogonal);
    const plain::O2PLS plainModel = PlainOf(model);
    const plain::Prediction ofY = plain::PredictY(plain::TableOf(c.fresh.X), plainModel, 6);
    const NCO2PLSYPred y(&c.fresh.X, &model);
    ExpectNear(y.GetYPred(), ofY.predicted, "Y");
    ExpectNear(y.GetT(), ofY.scores, "T");
    ExpectNear(y.GetTo(), ofY.orthogonalScores, "To");
    const plain::Prediction ofX = plain::PredictY(plain::TableOf(c.fresh.Y), plain::Swapped(plainModel), 7);
    const NCO2PLSXPred x(&c.fresh.Y, &model);
    ExpectNear(x.GetXPred(), ofX.predicted, "X");
    ExpectNear(x.GetU(), ofX.scores, "U");
    ExpectNear(x.GetUo(), ofX.orthogonalScores, "Uo");
  }
}

TEST(NCO2PLSPred, ComesCloseToTheTruth) {
  const Case c;
  const NCO2PLS model = Fitted(c.fit, 2, 2, 1);
  // What is unique to a block cannot be predicted, so it is taken out of the truth: the rows without orthogonal scores.
  Table truth = c.fresh.Y;
  const NCO2PLSXPred own(&c.fresh.Y, &model);
  truth.AddVprimV(own.GetUo()[1], model.GetQo()[1], -1.0F);
  const Table errors = NCO2PLSYPred(&c.fresh.X, &model).GetYPred() - truth;
  EXPECT_LT(static_cast<double>(errors.GetSS()), 0.05 * static_cast<double>(truth.GetSS()));
}

TEST(NCO2PLSPred, GivesTheFittedScoresOfTheRowsItWasFittedToWhereThereIsNoNoise) {
  const FloatBlocks blocks = MakeFloatBlocks({40, 7, 6, 2, 1, 1}, 0.0, 5);
  const NCO2PLS model = Fitted(blocks, 2, 1, 1);
  const NCO2PLSYPred y(&blocks.X, &model);
  const auto close = [](const Table& a, const Table& b) {
    return std::sqrt(static_cast<double>((a - b).GetSS() / b.GetSS())) < kRounding;
  };
  EXPECT_TRUE(close(y.GetT(), model.GetT()));
  EXPECT_TRUE(close(y.GetTo(), model.GetTo()));
  const NCO2PLSXPred x(&blocks.Y, &model);
  EXPECT_TRUE(close(x.GetU(), model.GetU()));
  EXPECT_TRUE(close(x.GetUo(), model.GetUo()));
}

TEST(NCO2PLSPred, PredictsTheSameBitsFromStoredMatrices) {
  const Case c;
  const NCO2PLS m = Fitted(c.fit, 2, 2, 1);
  const NCO2PLSYPred y(&c.fresh.X, &m);
  const NCO2PLSYPred storedY(c.fresh.X, m.GetP(), m.GetW(), m.GetQ(), m.GetWo(), m.GetPo(), m.GetS(), m.GetLambda(),
                             m.SizeYColumns());
  EXPECT_EQ(CellsOf(storedY.GetYPred()), CellsOf(y.GetYPred()));
  EXPECT_EQ(CellsOf(storedY.GetT()), CellsOf(y.GetT()));
  EXPECT_EQ(CellsOf(storedY.GetTo()), CellsOf(y.GetTo()));
  const NCO2PLSXPred x(&c.fresh.Y, &m);
  const NCO2PLSXPred storedX(c.fresh.Y, m.GetQ(), m.GetC(), m.GetP(), m.GetCo(), m.GetQo(), m.GetR(), m.GetXLambda(),
                             m.SizeXColumns());
  EXPECT_EQ(CellsOf(storedX.GetXPred()), CellsOf(x.GetXPred()));
  EXPECT_EQ(CellsOf(storedX.GetU()), CellsOf(x.GetU()));
  EXPECT_EQ(CellsOf(storedX.GetUo()), CellsOf(x.GetUo()));
}

TEST(NCO2PLSPred, GoesByTheMatricesItIsGivenEvenIfNoFitGivesSuch) {
  // Of a fitted model weights and loadings have right angles by which some steps could be exchanged.
  const auto random = [](int rows, int columns, unsigned seed) {
    return plain::TableOf(RandomMatrix<float>(rows, columns, 0, seed));
  };
  const auto ofUnitLength = [&](int rows, int columns, unsigned seed) {
    plain::Table table = random(rows, columns, seed);
    for (plain::Vector& row : table) plain::Normalise(&row);
    return table;
  };
  plain::O2PLS m;
  m.P = random(2, 5, 1);
  m.W = ofUnitLength(2, 5, 2);
  m.Q = random(2, 4, 3);
  m.Wo = ofUnitLength(2, 5, 4);
  m.Po = random(2, 5, 5);
  m.S = random(2, 4, 6);
  m.Lambda = random(2, 2, 7);
  const Table X = RandomMatrix<float>(6, 5, 0, 8);
  using plain::ToFloat;
  const NCO2PLSYPred y(X, ToFloat(m.P), ToFloat(m.W), ToFloat(m.Q), ToFloat(m.Wo), ToFloat(m.Po), ToFloat(m.S),
                       ToFloat(m.Lambda), 4);
  const plain::Prediction expected = plain::PredictY(plain::TableOf(X), m, 4);
  ExpectNear(y.GetYPred(), expected.predicted, "Y");
  ExpectNear(y.GetT(), expected.scores, "T");
  ExpectNear(y.GetTo(), expected.orthogonalScores, "To");
}

TEST(NCO2PLSPred, OfAModelWithoutOrthogonalComponentsIsThePredictiveTermAlone) {
  const Case c;
  const NCO2PLS m = Fitted(c.fit, 2, 0, 0);
  const NCO2PLSYPred y(&c.fresh.X, &m);
  EXPECT_EQ(y.GetTo().SizeRows(), 0);
  const Table inner = y.GetT().MatrixMultiply(m.GetLambda(), true, false);
  EXPECT_EQ(CellsOf(y.GetYPred()), CellsOf(inner * m.GetQ())) << "added to zeros";
}

TEST(NCO2PLSPred, OfAModelWithoutPredictiveComponentsIsTheOrthogonalTermOrZeros) {
  const Table X = RandomMatrix<float>(4, 3, 0, 1), none;
  const NCO2PLSYPred zeros(X, none, none, none, none, none, none, none, 2);
  EXPECT_EQ(CellsOf(zeros.GetYPred()), CellsOf(Table(4, 2, 0.0F)));
  EXPECT_EQ(zeros.GetT().SizeRows(), 0);
  EXPECT_EQ(zeros.GetTo().SizeRows(), 0);

  const Table wo = MatrixOf<float>({{1, 0, 0}}), s = MatrixOf<float>({{2, -1}});
  const NCO2PLSYPred orthogonal(X, none, none, none, wo, wo, s, none, 2);
  EXPECT_EQ(orthogonal.GetT().SizeRows(), 0);
  for (int i = 1; i <= 4; ++i) {
    EXPECT_EQ(orthogonal.GetTo()[1][i], X[i][1]);
    EXPECT_EQ(orthogonal.GetYPred()[i][1], 2 * X[i][1]);
    EXPECT_EQ(orthogonal.GetYPred()[i][2], -X[i][1]);
  }
}

TEST(NCO2PLSPred, OfAModelOfNothingHasTheColumnsOfTheOtherBlock) {
  const Case c;
  const NCO2PLS m = Fitted(c.fit, 0, 0, 0);
  EXPECT_EQ(CellsOf(NCO2PLSYPred(&c.fresh.X, &m).GetYPred()), CellsOf(Table(10, 6, 0.0F)));
  EXPECT_EQ(CellsOf(NCO2PLSXPred(&c.fresh.Y, &m).GetXPred()), CellsOf(Table(10, 7, 0.0F)));
}

TEST(NCO2PLSPred, TakesTheScoresOfRowsWithHolesFromTheCellsThatAreThere) {
  const Case c;
  const NCO2PLS m = Fitted(c.fit, 2, 2, 1);
  const NCO2PLSYPred whole(&c.fresh.X, &m);
  Table holed = c.fresh.X;
  holed(3, 2, kMissing);
  for (int k = 1; k <= 7; ++k) holed(5, k, kMissing);
  const NCO2PLSYPred y(&holed, &m);
  // The first orthogonal score by hand: the cells that are there over what of the weights lies opposite them, held up
  // at a third.
  plain::Table row = plain::TableOf(holed.GetRowSubMatrix(3, 3));
  const plain::O2PLS p = PlainOf(m);
  const auto score = [&](const plain::Vector& w) {
    double sum = 0.0, squares = 0.0;
    for (std::size_t k = 0; k < w.size(); ++k) {
      if (k == 1) continue;
      sum += row[0][k] * w[k];
      squares += w[k] * w[k];
    }
    return sum / std::max(squares, 1.0 / 3.0);
  };
  for (const plain::Vector& w : p.W) plain::AddOuter(&row, {score(w)}, w, -1.0);
  EXPECT_NEAR(y.GetTo()[1][3], score(p.Wo[0]), kRounding);
  for (int i = 1; i <= 10; ++i)
    for (int j = 1; j <= 6; ++j) {
      if (i == 5) {
        EXPECT_EQ(y.GetYPred()[i][j], kMissing) << "nothing is known of this row";
      } else if (i == 3) {
        EXPECT_NE(y.GetYPred()[i][j], kMissing);
        EXPECT_NE(y.GetYPred()[i][j], whole.GetYPred()[i][j]);
      } else {
        EXPECT_EQ(y.GetYPred()[i][j], whole.GetYPred()[i][j]) << "no other row is touched";
      }
    }
  EXPECT_TRUE(HasExactCounts(y.GetYPred()));
}

TEST(NCO2PLSPred, ChangesNeitherTheNewRowsNorTheModelAndOutlivesBoth) {
  const Case c;
  auto model = std::make_unique<NCO2PLS>(Fitted(c.fit, 2, 1, 1));
  auto X = std::make_unique<Table>(c.fresh.X);
  const auto before = Everything(*model);
  const NCO2PLSYPred y(X.get(), model.get());
  EXPECT_EQ(CellsOf(*X), CellsOf(c.fresh.X));
  EXPECT_EQ(Everything(*model), before);
  const auto predicted = CellsOf(y.GetYPred());
  model.reset();
  X.reset();
  const NCO2PLSYPred copy = y;
  EXPECT_EQ(CellsOf(y.GetYPred()), predicted);
  EXPECT_EQ(CellsOf(copy.GetYPred()), predicted);
  EXPECT_EQ(CellsOf(copy.GetT()), CellsOf(y.GetT()));
}

TEST(NCO2PLSPred, PredictsNoRowsForNoRows) {
  const Case c;
  const NCO2PLS m = Fitted(c.fit, 2, 1, 1);
  Table none;
  none.SetSize(0, 7);
  EXPECT_EQ(NCO2PLSYPred(&none, &m).GetYPred().SizeRows(), 0);
}

}  // namespace
