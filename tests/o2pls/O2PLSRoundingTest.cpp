// What the estimator and the cross-validation sum in double and what they round to float, to the bit: the same steps by
// the public operations of the tables and the model.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "O2PLSCase.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/NCO2PLSPred.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;
using Vector = NCDataVector<float>;
using Groups = NCIntegralVector<int, -99>;

constexpr int kGroups = 4;
constexpr int kMaxIterations = 3;  // of the models, so that it shows; the estimator has a limit of its own
constexpr double kLimit = static_cast<double>(0.01F);

double SquaresOf(const Table& table) { return static_cast<double>(table.GetSS()); }

Table RowsOf(const Table& table, const Groups& groups, int group, bool heldOut) {
  Table rows;
  for (int i = 1; i <= table.SizeRows(); ++i)
    if ((groups[i] == group) == heldOut) rows.push_back(table[i]);
  return rows;
}

/// Two directions in common, of so nearly the same size that hundreds of rounds do not tell them apart.
FloatBlocks TwoDirectionsAlike() {
  const Table noise = RandomMatrix<float>(16, 4, 0, 3);
  FloatBlocks blocks{Table(16, 2), Table(16, 2)};
  for (int i = 1; i <= 16; ++i)
    for (int j = 1; j <= 2; ++j) {
      const float size = j == 1 ? 1.0F : 0.995F;
      const float pattern = (i - 1) / (2 * j) % 2 == 0 ? size : -size;
      blocks.X(i, j, pattern + 0.02F * noise[i][j]);
      blocks.Y(i, j, pattern + 0.02F * noise[i][j + 2]);
    }
  return blocks;
}

/// Blocks with something in common, and of nothing but noise, whose Q2 lie so near to 0 that a float there tells any
/// rounding of its sums: a single rounding shows in some of the numbers, if not in all.
std::vector<FloatBlocks> SomeBlocks(unsigned seeds = 4) {
  std::vector<FloatBlocks> all;
  for (unsigned seed = 1; seed <= seeds; ++seed) {
    all.push_back(MakeFloatBlocks({26, 7, 5, 2, 1, 1}, 0.3, seed));
    all.push_back({RandomMatrix<float>(20, 5, 0, seed), RandomMatrix<float>(20, 4, 0, seed + 50)});
  }
  all.push_back(TwoDirectionsAlike());
  return all;
}

/// For the length of a scope, what a component has to gain.
struct LimitsAre {
  explicit LimitsAre(float limit) {
    SetO2PLSQ2Limit(limit);
    SetO2PLSPredictiveQ2Limit(limit);
  }
  ~LimitsAre() {
    SetO2PLSQ2Limit(0.01F);
    SetO2PLSPredictiveQ2Limit(0.01F);
  }
};

/// Gains that a float holds only roughly, and whether they are above what it holds.
class Gains {
 public:
  static bool CanBeALimit(double gain) { return gain > 1e-4 && gain < 0.9; }
  bool IsAbove(double gain) {
    const bool above = gain > static_cast<double>(static_cast<float>(gain));
    ++(above ? above_ : below_);
    return above;
  }
  bool BothOccurred() const { return above_ > 0 && below_ > 0; }

 private:
  int above_ = 0, below_ = 0;
};

// ---- O2PLSPredictiveComponentEstimator

Vector FirstLoading(const Table& table) {
  NCPCA model(&table, 200);
  model.NextComponent(nullptr, nullptr, 0, nullptr);
  return (*model.GetPprim())[1];
}

struct Series {
  std::vector<float> q2, q2X, q2Y, r2, r2X, r2Y;
  std::vector<int> codes;
  std::vector<double> gains;
};

double DistanceOf(const Table& a, const Table& b) {
  double sum = 0.0;
  for (int i = 1; i <= a.SizeRows(); ++i)
    for (int j = 1; j <= a.SizeColumns(); ++j) {
      const float difference = a[i][j] - b[i][j];
      sum += std::fabs(static_cast<double>(difference));
    }
  return sum;
}

/// w, t, c and u of two blocks.
struct Direction {
  Direction(const Table& X, const Table& Y)
      : w(FirstLoading(Y.MatrixMultiply(X, true, false))),
        t(X.SpecialNipalsRegressRowsFix(w, nullptr, 0)),
        c(Y.SpecialNipalsRegressColumnsFix(t)) {
    c.Normalise();
    u = Y.SpecialNipalsRegressRowsFix(c, nullptr, 0);
  }
  Vector w, t, c, u;
};

/// A round with its working parts, deflated as its components come.
struct Round {
  Table trainX, trainY, testX, testY;
  Table tTest, uTest, W, C;
};

void AddDirection(Round* round, double* pressX, double* pressY) {
  const Direction d(round->trainX, round->trainY);
  const Vector tTest = round->testX.SpecialNipalsRegressRowsFix(d.w, nullptr, 0);
  const Vector uTest = round->testY.SpecialNipalsRegressRowsFix(d.c, nullptr, 0);
  round->trainX.AddVprimV(d.t, d.w, -1.0F);
  round->trainY.AddVprimV(d.u, d.c, -1.0F);
  round->testX.AddVprimV(tTest, d.w, -1.0F);
  round->testY.AddVprimV(uTest, d.c, -1.0F);
  *pressX += SquaresOf(round->testX);
  *pressY += SquaresOf(round->testY);
  round->tTest.push_back(tTest);
  round->uTest.push_back(uTest);
  round->W.push_back(d.w);
  round->C.push_back(d.c);
}

Series SeriesOf(Table X, Table Y, const Groups& groups, int components) {
  Series series;
  const Table cross = Y.MatrixMultiply(X, true, false), nothing(Y.SizeColumns(), X.SizeColumns(), 0.0F);
  const double all = DistanceOf(cross, nothing), ssX = SquaresOf(X), ssY = SquaresOf(Y);
  std::vector<Round> rounds;
  for (int g = 0; g < kGroups; ++g)
    rounds.push_back({RowsOf(X, groups, g, false), RowsOf(Y, groups, g, false), RowsOf(X, groups, g, true),
                      RowsOf(Y, groups, g, true), {}, {}, {}, {}});
  for (int a = 1; a <= components; ++a) {
    double pressX = 0.0, pressY = 0.0;
    Table prediction = nothing;
    for (Round& r : rounds) {
      AddDirection(&r, &pressX, &pressY);
      const Table scores = r.uTest.MatrixMultiply(r.tTest, false, true);
      prediction += r.C.MatrixMultiply(scores, true, false).MatrixMultiply(r.W, false, false);
    }
    const double q2 = 1.0 - DistanceOf(cross, prediction) / all;
    const double gain = q2 - static_cast<double>(series.q2.empty() ? 0.0F : series.q2.back());
    series.q2.push_back(static_cast<float>(q2));
    series.q2X.push_back(static_cast<float>(1.0 - pressX / ssX));
    series.q2Y.push_back(static_cast<float>(1.0 - pressY / ssY));
    series.codes.push_back(gain > kLimit ? 0 : 3);
    series.gains.push_back(gain);
  }
  Table prediction = nothing;
  for (int a = 1; a <= components; ++a) {
    const Direction d(X, Y);
    X.TransformToSub_V_x_Vt(d.t, d.w);
    Y.TransformToSub_V_x_Vt(d.u, d.c);
    prediction.AddVprimV(d.c * (d.t * d.u), d.w, 1.0F);
    series.r2.push_back(static_cast<float>(1.0 - DistanceOf(cross, prediction) / all));
    series.r2X.push_back(static_cast<float>(1.0 - SquaresOf(X) / ssX));
    series.r2Y.push_back(static_cast<float>(1.0 - SquaresOf(Y) / ssY));
  }
  return series;
}

TEST(O2PLSRounding, TheEstimatorHasTheSeriesOfItsStepsToTheBit) {
  for (const FloatBlocks& blocks : SomeBlocks()) {
    const Groups groups = GetDeafultCVGroupsVector(blocks.X.SizeRows(), kGroups);
    const int components = std::min(blocks.Y.SizeColumns(), 4);
    const Series expected = SeriesOf(blocks.X, blocks.Y, groups, components);
    const O2PLSPredictiveComponentEstimator estimator(&blocks.X, &blocks.Y, -1, &groups, components);
    EXPECT_EQ(CellsOf(estimator.GetQ2()), expected.q2);
    EXPECT_EQ(CellsOf(estimator.GetQ2X()), expected.q2X);
    EXPECT_EQ(CellsOf(estimator.GetQ2Y()), expected.q2Y);
    EXPECT_EQ(CellsOf(estimator.GetR2()), expected.r2);
    EXPECT_EQ(CellsOf(estimator.GetR2X()), expected.r2X);
    EXPECT_EQ(CellsOf(estimator.GetR2Y()), expected.r2Y);
    const auto codes = estimator.GetSignificance();
    EXPECT_EQ(std::vector<int>(codes.begin(), codes.end()), expected.codes);
  }
}

TEST(O2PLSRounding, TheEstimatorHoldsAGainInDoubleAgainstItsLimit) {
  Gains gains;
  for (const FloatBlocks& blocks : SomeBlocks()) {
    const Groups groups = GetDeafultCVGroupsVector(blocks.X.SizeRows(), kGroups);
    const Series expected = SeriesOf(blocks.X, blocks.Y, groups, 2);
    for (int a = 1; a <= 2; ++a) {
      const double gain = expected.gains[static_cast<std::size_t>(a) - 1];
      if (!Gains::CanBeALimit(gain)) continue;
      const LimitsAre limit(static_cast<float>(gain));
      const O2PLSPredictiveComponentEstimator estimator(&blocks.X, &blocks.Y, -1, &groups, 2);
      EXPECT_EQ(estimator.GetSignificance()[a], gains.IsAbove(gain) ? 0 : 3);
    }
  }
  EXPECT_TRUE(gains.BothOccurred());
}

// ---- O2PLSCrossValidation

struct Validated {
  NCO2PLS model;
  Table X, Y;  ///< held out
};

double ErrorsOfY(const Validated& round) {
  return SquaresOf(NCO2PLSYPred(&round.X, &round.model).GetYPred() - round.Y);
}

double ErrorsOfX(const Validated& round) {
  return SquaresOf(NCO2PLSXPred(&round.Y, &round.model).GetXPred() - round.X);
}

/// The steps for given numbers of components.
class Steps {
 public:
  Steps(const FloatBlocks& blocks, const Groups& groups) : ssY_(blocks.Y.SizeColumns()) {
    for (int j = 1; j <= ssY_.Size(); ++j) ssY_(j, static_cast<float>(blocks.Y.GetColumnSS(j, 0.0L)));
    totalY_ = static_cast<double>(ssY_.GetSum());
    totalX_ = SquaresOf(blocks.X);
    for (int g = 0; g < kGroups; ++g)
      rounds_.push_back({NCO2PLS(RowsOf(blocks.X, groups, g, false), RowsOf(blocks.Y, groups, g, false), false,
                                 kMaxIterations),
                         RowsOf(blocks.X, groups, g, true), RowsOf(blocks.Y, groups, g, true)});
  }

  void Run(int predictive, int ofX, int ofY) {
    for (Validated& round : rounds_) round.model.Fit(predictive, 0, 0);
    gainsX.clear();
    q2X = AddComponents(true, ofX);
    q2Y = AddComponents(false, ofY);
    if (ofY > 0) {
      for (Validated& round : rounds_) round.model.Fit(predictive, 0, ofY);
      gainsX.clear();
      q2X = AddComponents(true, ofX);
    }
    Judge(predictive);
  }

  std::vector<float> q2X, q2Y, q2Cum;
  std::vector<std::vector<float>> q2Var, squares;
  std::vector<double> gainsX, gainsY;

 private:
  double Press(bool ofY) const {
    double press = 0.0;
    for (const Validated& round : rounds_) press += ofY ? ErrorsOfY(round) : ErrorsOfX(round);
    return press;
  }

  std::vector<float> AddComponents(bool xSide, int count) {
    const double exactTotal = xSide ? totalY_ : totalX_;
    const double total = static_cast<double>(static_cast<float>(exactTotal));
    double before = 1.0 - Press(xSide) / exactTotal;
    std::vector<float> series;
    for (int o = 0; o < count; ++o) {
      for (Validated& round : rounds_) {
        round.model.NextOrthogonalComponent(xSide, round.model.SizePredComps());
        round.model.CalculatePredictiveComps(round.model.SizePredComps());
        round.model.Finalise();
      }
      const double q2 = 1.0 - Press(xSide) / total;
      series.push_back(static_cast<float>(q2));
      (xSide ? gainsX : gainsY).push_back(q2 - before);
      before = q2;
    }
    return series;
  }

  void Judge(int predictive) {
    squares.emplace_back();
    for (const Validated& round : rounds_) squares.back().push_back(static_cast<float>(round.Y.GetSS()));
    for (Validated& round : rounds_) round.model.InitPredCompCalculation();
    for (int a = 1; a <= predictive; ++a) {
      Vector press(ssY_.Size(), 0.0F);
      squares.emplace_back();
      for (Validated& round : rounds_) {
        round.model.NextPredictiveComp();
        if (a < predictive) round.model.SubtractLastPredictiveComp();
        round.model.Finalise();
        const Table errors = NCO2PLSYPred(&round.X, &round.model).GetYPred() - round.Y;
        double sum = 0.0;
        for (int j = 1; j <= press.Size(); ++j) {
          const double ofColumn = static_cast<double>(errors.GetColumnSS(j, 0.0L));
          sum += ofColumn;
          press(j, static_cast<float>(static_cast<double>(press[j]) + ofColumn));
        }
        squares.back().push_back(static_cast<float>(sum));
      }
      q2Cum.push_back(static_cast<float>(1.0 - static_cast<double>(press.GetSum()) / totalY_));
      q2Var.push_back(CellsOf((ssY_ - press).DotDivide(ssY_)));
    }
  }

  Vector ssY_;
  double totalX_ = 0.0, totalY_ = 0.0;
  std::vector<Validated> rounds_;
};

struct Numbers {
  int predictive, ofX, ofY;
};

O2PLSCVResults ResultsOf(const FloatBlocks& blocks, Groups groups, const Numbers& n) {
  return O2PLSCrossValidation(&blocks.X, &blocks.Y, 0, nullptr, &groups, kMaxIterations, n.predictive, n.ofX, n.ofY)
      .GetResults();
}

TEST(O2PLSRounding, TheCrossValidationHasTheSeriesOfItsStepsToTheBit) {
  for (const FloatBlocks& blocks : SomeBlocks())
    for (const Numbers& n : {Numbers{2, 1, 1}, {3, 2, 0}, {1, 2, 2}}) {
      if (n.predictive + n.ofY > blocks.Y.SizeColumns()) continue;
      SCOPED_TRACE(std::to_string(n.predictive) + " predictive");
      const Groups groups = GetDeafultCVGroupsVector(blocks.X.SizeRows(), kGroups);
      Steps steps(blocks, groups);
      steps.Run(n.predictive, n.ofX, n.ofY);
      const O2PLSCVResults results = ResultsOf(blocks, groups, n);
      EXPECT_EQ(CellsOf(results.Q2XSide), steps.q2X);
      EXPECT_EQ(CellsOf(results.Q2YSide), steps.q2Y);
      EXPECT_EQ(CellsOf(results.Q2Cum), steps.q2Cum);
      EXPECT_EQ(CellsOf(results.Q2Var), steps.q2Var);
      EXPECT_EQ(CellsOf(results.SSTable), steps.squares);
    }
}

TEST(O2PLSRounding, TheCrossValidationHoldsAGainInDoubleAgainstItsLimit) {
  Gains gains;
  constexpr Numbers kNumbers{1, 2, 2};
  for (const FloatBlocks& blocks : SomeBlocks(10)) {
    if (kNumbers.predictive + kNumbers.ofY > blocks.Y.SizeColumns()) continue;
    const Groups groups = GetDeafultCVGroupsVector(blocks.X.SizeRows(), kGroups);
    Steps steps(blocks, groups);
    steps.Run(kNumbers.predictive, kNumbers.ofX, kNumbers.ofY);
    for (const bool xSide : {true, false}) {
      int component = 0;
      for (const double gain : xSide ? steps.gainsX : steps.gainsY) {
        ++component;
        if (!Gains::CanBeALimit(gain)) continue;
        const LimitsAre limit(static_cast<float>(gain));
        const O2PLSCVResults results = ResultsOf(blocks, groups, kNumbers);
        const Groups& codes = xSide ? results.XSideSignificance : results.YSideSignificance;
        EXPECT_EQ(codes[component], gains.IsAbove(gain) ? 0 : 3);
      }
    }
  }
  EXPECT_TRUE(gains.BothOccurred());
}

TEST(O2PLSRounding, TheCrossValidationHoldsTheGainsOfSingleVariablesInDoubleAgainstItsLimit) {
  Gains gains;
  constexpr int kPredictive = 3, kNeeded = 2;  // of four variables
  for (unsigned seed = 1; seed <= 200 && !gains.BothOccurred(); ++seed) {
    const FloatBlocks blocks{RandomMatrix<float>(25, 8, 0, seed), RandomMatrix<float>(25, 4, 0, seed + 50)};
    const Groups groups = GetDeafultCVGroupsVector(25, kGroups);
    const O2PLSPredictiveComponentEstimator estimator(&blocks.X, &blocks.Y, -1, &groups, kPredictive);
    const O2PLSCVResults before = ResultsOf(blocks, groups, {kPredictive, 0, 0});
    const std::vector<float> q2 = CellsOf(before.Q2Cum);
    const int next = static_cast<int>(std::max_element(q2.begin(), q2.end()) - q2.begin()) + 2;
    if (next > kPredictive || estimator.GetSignificance()[next] != 0) continue;
    std::vector<double> ofVariables;
    const Table& q2Var = before.Q2Var;
    for (int j = 1; j <= 4; ++j)
      ofVariables.push_back(static_cast<double>(q2Var[next][j]) - static_cast<double>(q2Var[next - 1][j]));
    std::sort(ofVariables.rbegin(), ofVariables.rend());
    const double gain = ofVariables[kNeeded - 1];
    if (!Gains::CanBeALimit(gain)) continue;
    SetO2PLSQ2Limit(static_cast<float>(gain));
    const O2PLSCVResults results = ResultsOf(blocks, groups, {kPredictive, 0, 0});
    SetO2PLSQ2Limit(0.01F);
    EXPECT_EQ(results.PredictiveSignificance[next], gains.IsAbove(gain) ? 1 : 3) << "seed " << seed;
  }
  EXPECT_TRUE(gains.BothOccurred());
}

}  // namespace
