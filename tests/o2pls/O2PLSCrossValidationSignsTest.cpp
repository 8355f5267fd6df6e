// The rounds' models are turned so that they point the way of the first one's.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "O2PLSCase.h"
#include "kalmia/o2pls/NCO2PLSPred.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

constexpr int kRows = 30, kGroups = 5, kMaxIterations = 200;

/// A block beside its own mirror image. Which column a principal component starts from, and so which way it points, is
/// then up to the rows of the round.
Table BesideItsMirrorImage(const Table& block, unsigned seed) {
  Table both(block.SizeRows(), 2 * block.SizeColumns());
  const Table noise = RandomMatrix<float>(block.SizeRows(), block.SizeColumns(), 0, seed);
  for (int i = 1; i <= block.SizeRows(); ++i)
    for (int j = 1; j <= block.SizeColumns(); ++j) {
      both(i, j, block[i][j]);
      both(i, j + block.SizeColumns(), 0.02F * noise[i][j] - block[i][j]);
    }
  return both;
}

/// A model of one round as it is before it is turned, with its predictions.
struct Round {
  Round(const FloatBlocks& blocks, const NCIntegralVector<int, -99>& groups, int group) {
    Table X, Y, heldOutX, heldOutY;
    for (int i = 1; i <= kRows; ++i) {
      (groups[i] == group ? heldOutX : X).push_back(blocks.X[i]);
      (groups[i] == group ? heldOutY : Y).push_back(blocks.Y[i]);
    }
    model = NCO2PLS(X, Y, /*checkDimensions=*/false, kMaxIterations);
    model.Fit(1, 1, 1);
    const NCO2PLSYPred ofY(&heldOutX, &model);
    const NCO2PLSXPred ofX(&heldOutY, &model);
    t = InOrder(model.GetT(), ofY.GetT(), groups, group);
    to = InOrder(model.GetTo(), ofY.GetTo(), groups, group);
    u = InOrder(model.GetU(), ofX.GetU(), groups, group);
    uo = InOrder(model.GetUo(), ofX.GetUo(), groups, group);
  }
  static Vector InOrder(const Table& fitted, const Table& predicted, const NCIntegralVector<int, -99>& groups,
                        int group) {
    Vector scores(kRows);
    int f = 0, p = 0;
    for (int i = 1; i <= kRows; ++i) scores(i, groups[i] == group ? predicted[1][++p] : fitted[1][++f]);
    return scores;
  }
  NCO2PLS model;
  Vector t, to, u, uo;
};

bool PointsAway(const Table& set, int row, const Vector& vector) { return set[row] * vector < 0.0L; }

void ExpectTurned(const Table& set, int row, Vector vector, bool turned) {
  if (turned) vector *= -1.0L;
  EXPECT_EQ(CellsOf(set[row]), CellsOf(vector));
}

TEST(O2PLSCrossValidationSigns, PointTheWayOfTheFirstRoundInAllThatAComponentHas) {
  int ofX = 0, ofY = 0, ofXSide = 0, ofYSide = 0;
  for (unsigned seed = 1; seed <= 6; ++seed) {
    const FloatBlocks half = MakeFloatBlocks({kRows, 3, 3, 1, 1, 1}, 0.1, seed);
    const FloatBlocks blocks{BesideItsMirrorImage(half.X, seed), BesideItsMirrorImage(half.Y, seed + 50)};
    const auto groups = GetDeafultCVGroupsVector(kRows, kGroups);
    const O2PLSCVResults r =
        O2PLSCrossValidation(&blocks.X, &blocks.Y, kGroups, nullptr, nullptr, kMaxIterations, 1, 1, 1).GetResults();
    for (int g = 0; g < kGroups; ++g) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(g));
      const Round round(blocks, groups, g);
      const NCO2PLS& m = round.model;
      const int row = g + 1;
      EXPECT_GT(r.PSet[0][row] * r.PSet[0][1], 0.0L);
      EXPECT_GT(r.CSet[0][row] * r.CSet[0][1], 0.0L);
      EXPECT_GT(r.PoSet[0][row] * r.PoSet[0][1], 0.0L);
      EXPECT_GT(r.CoSet[0][row] * r.CoSet[0][1], 0.0L);
      const bool x = PointsAway(r.PSet[0], row, m.GetP()[1]), y = PointsAway(r.CSet[0], row, m.GetC()[1]),
                 xSide = PointsAway(r.PoSet[0], row, m.GetPo()[1]), ySide = PointsAway(r.CoSet[0], row, m.GetCo()[1]);
      ExpectTurned(r.TSet[0], row, round.t, x);
      ExpectTurned(r.PSet[0], row, m.GetP()[1], x);
      ExpectTurned(r.WSet[0], row, m.GetW()[1], x);
      ExpectTurned(r.USet[0], row, round.u, y);
      ExpectTurned(r.CSet[0], row, m.GetC()[1], y);
      ExpectTurned(r.QSet[0], row, m.GetQ()[1], y);
      ExpectTurned(r.LambdaSet[static_cast<std::size_t>(g)], 1, m.GetLambda()[1], x != y);
      ExpectTurned(r.XLambdaSet[static_cast<std::size_t>(g)], 1, m.GetXLambda()[1], x != y);
      ExpectTurned(r.ToSet[0], row, round.to, xSide);
      ExpectTurned(r.PoSet[0], row, m.GetPo()[1], xSide);
      ExpectTurned(r.WoSet[0], row, m.GetWo()[1], xSide);
      ExpectTurned(r.SSet[0], row, m.GetS()[1], xSide);
      ExpectTurned(r.UoSet[0], row, round.uo, ySide);
      ExpectTurned(r.CoSet[0], row, m.GetCo()[1], ySide);
      ExpectTurned(r.QoSet[0], row, m.GetQo()[1], ySide);
      ExpectTurned(r.RSet[0], row, m.GetR()[1], ySide);
      EXPECT_FALSE(g == 0 && (x || y || xSide || ySide)) << "the first one never turns";
      ofX += x ? 1 : 0;
      ofY += y ? 1 : 0;
      ofXSide += xSide ? 1 : 0;
      ofYSide += ySide ? 1 : 0;
    }
  }
  for (const int turned : {ofX, ofY, ofXSide, ofYSide}) EXPECT_GT(turned, 0);
}

}  // namespace
