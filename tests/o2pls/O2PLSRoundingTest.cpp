// What the estimator and the cross-validation sum in double and what they round to float, to the bit: from models that
// are fitted anew for each number, and from blocks whose numbers are known without rounding.
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
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;
using Vector = NCDataVector<float>;
using Groups = NCIntegralVector<int, -99>;

constexpr int kGroups = 4;
constexpr int kMaxIterations = 3;  // of the models, so that it shows; the estimator has a limit of its own

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

constexpr int kEstimatorIterations = 200;

double AbsoluteSum(const Table& table) {
  double sum = 0.0;
  for (const Vector& row : table)
    for (const float cell : row) sum += std::fabs(static_cast<double>(cell));
  return sum;
}

/// A model of one component, and what is left of any rows without it.
struct OneComponent {
  OneComponent(const Table& X, const Table& Y) : model(X, Y, false, kEstimatorIterations) { model.Fit(1, 0, 0); }
  static Table Scores(const Table& rows, const Table& weights) {
    Table scores;
    scores.push_back(rows.SpecialNipalsRegressRowsFix(weights[1], nullptr, 0));
    return scores;
  }
  static double SquaresLeft(Table rows, const Table& weights) {
    rows.AddVprimV(Scores(rows, weights)[1], weights[1], -1.0F);
    return SquaresOf(rows);
  }
  /// Y'X of these rows as the component has it.
  Table CrossProduct(const Table& X, const Table& Y) const {
    const Table products = Scores(Y, model.GetC()).MatrixMultiply(Scores(X, model.GetW()), false, true);
    return model.GetC().MatrixMultiply(products, true, false).MatrixMultiply(model.GetW(), false, false);
  }
  NCO2PLS model;
};

TEST(O2PLSRounding, TheEstimatorsComponentIsThatOfModelsOfOneComponentToTheBit) {
  for (const auto& [X, Y] : SomeBlocks()) {
    const Groups groups = GetDeafultCVGroupsVector(X.SizeRows(), kGroups);
    const Table whole = Y.MatrixMultiply(X, true, false);
    Table predicted(whole.SizeRows(), whole.SizeColumns(), 0.0F);
    double leftX = 0.0, leftY = 0.0;
    for (int g = 0; g < kGroups; ++g) {
      const OneComponent component(RowsOf(X, groups, g, false), RowsOf(Y, groups, g, false));
      const Table heldOutX = RowsOf(X, groups, g, true), heldOutY = RowsOf(Y, groups, g, true);
      leftX += component.SquaresLeft(heldOutX, component.model.GetW());
      leftY += component.SquaresLeft(heldOutY, component.model.GetC());
      predicted += component.CrossProduct(heldOutX, heldOutY);
    }
    const O2PLSPredictiveComponentEstimator estimator(&X, &Y, -1, &groups, 1);
    const auto shareWithout = [](double left, double all) { return static_cast<float>(1.0 - left / all); };
    EXPECT_EQ(estimator.GetQ2X()[1], shareWithout(leftX, SquaresOf(X)));
    EXPECT_EQ(estimator.GetQ2Y()[1], shareWithout(leftY, SquaresOf(Y)));
    EXPECT_EQ(estimator.GetQ2()[1], shareWithout(AbsoluteSum(whole - predicted), AbsoluteSum(whole)));
    const OneComponent all(X, Y);
    EXPECT_EQ(estimator.GetR2X()[1], shareWithout(all.SquaresLeft(X, all.model.GetW()), SquaresOf(X)));
    EXPECT_EQ(estimator.GetR2Y()[1], shareWithout(all.SquaresLeft(Y, all.model.GetC()), SquaresOf(Y)));
    Table fitted(whole.SizeRows(), whole.SizeColumns(), 0.0F);
    fitted.AddVprimV(all.model.GetC()[1] * (all.model.GetT()[1] * all.model.GetU()[1]), all.model.GetW()[1], 1.0F);
    EXPECT_EQ(estimator.GetR2()[1], shareWithout(AbsoluteSum(whole - fitted), AbsoluteSum(whole)));
  }
}

/// Columns at right angles to each other within each of four groups of eight rows, column j of X beside column j of Y.
/// The cells are `x[j]` and `y[j]`, plus or minus; their products fall with j. So the components are the columns, and
/// nothing is rounded before the numbers.
struct RightAngles {
  std::vector<int> x, y;

  FloatBlocks Blocks() const {
    FloatBlocks blocks{Table(32, 3), Table(32, 3)};
    for (int i = 0; i < 32; ++i)
      for (int j = 0; j < 3; ++j) {
        const int sign = i / kGroups >> j & 1 ? 1 : -1;  // the default groups take the rows in turn
        blocks.X(i + 1, j + 1, static_cast<float>(sign * x[static_cast<std::size_t>(j)]));
        blocks.Y(i + 1, j + 1, static_cast<float>(sign * y[static_cast<std::size_t>(j)]));
      }
    return blocks;
  }

  /// The share of sum(a[j] b[j]) that the first components have.
  static double Share(const std::vector<int>& a, const std::vector<int>& b, std::size_t components) {
    double all = 0.0, left = 0.0;
    for (std::size_t j = 0; j < a.size(); ++j) {
      all += static_cast<double>(a[j]) * b[j];
      left += j < components ? 0.0 : static_cast<double>(a[j]) * b[j];
    }
    return 1.0 - left / all;
  }
};

/// Of numbers whose shares a float holds only rounded.
std::vector<RightAngles> SomeRightAngles() {
  std::vector<RightAngles> all;
  for (int k = 0; k < 16; ++k) all.push_back({{2049 + 2 * k, 1031 + 6 * k, 517}, {1999, 1501 - 2 * k, 771 + 4 * k}});
  return all;
}

std::vector<float> SharesOf(const std::vector<int>& a, const std::vector<int>& b) {
  std::vector<float> shares;
  for (std::size_t n = 1; n <= a.size(); ++n) shares.push_back(static_cast<float>(RightAngles::Share(a, b, n)));
  return shares;
}

TEST(O2PLSRounding, TheEstimatorRoundsTheSharesOfColumnsAtRightAnglesOnce) {
  for (const RightAngles& angles : SomeRightAngles()) {
    const FloatBlocks blocks = angles.Blocks();
    const Groups groups = GetDeafultCVGroupsVector(32, kGroups);
    const O2PLSPredictiveComponentEstimator estimator(&blocks.X, &blocks.Y, -1, &groups, 3);
    for (const Vector& ofProducts : {estimator.GetQ2(), estimator.GetR2()})
      EXPECT_EQ(CellsOf(ofProducts), SharesOf(angles.x, angles.y));
    for (const Vector& ofX : {estimator.GetQ2X(), estimator.GetR2X()})
      EXPECT_EQ(CellsOf(ofX), SharesOf(angles.x, angles.x));
    for (const Vector& ofY : {estimator.GetQ2Y(), estimator.GetR2Y()})
      EXPECT_EQ(CellsOf(ofY), SharesOf(angles.y, angles.y));
  }
}

TEST(O2PLSRounding, TheEstimatorHoldsAGainInDoubleAgainstItsLimit) {
  Gains gains;
  for (const RightAngles& angles : SomeRightAngles()) {
    const FloatBlocks blocks = angles.Blocks();
    const Groups groups = GetDeafultCVGroupsVector(32, kGroups);
    float before = 0.0F;  // the Q2 that is kept
    for (const int a : {1, 2, 3}) {
      const double share = RightAngles::Share(angles.x, angles.y, static_cast<std::size_t>(a));
      const double gain = share - static_cast<double>(before);
      before = static_cast<float>(share);
      ASSERT_TRUE(Gains::CanBeALimit(gain));
      const LimitsAre limit(static_cast<float>(gain));
      const O2PLSPredictiveComponentEstimator estimator(&blocks.X, &blocks.Y, -1, &groups, 3);
      EXPECT_EQ(estimator.GetSignificance()[a], gains.IsAbove(gain) ? 0 : 3);
    }
  }
  EXPECT_TRUE(gains.BothOccurred());
}

// ---- O2PLSCrossValidation

struct Numbers {
  int predictive, ofX, ofY;
};
constexpr Numbers kSomeNumbers[] = {{2, 1, 1}, {3, 2, 0}, {1, 2, 2}};

O2PLSCVResults ResultsOf(const FloatBlocks& blocks, Groups groups, const Numbers& n) {
  return O2PLSCrossValidation(&blocks.X, &blocks.Y, 0, nullptr, &groups, kMaxIterations, n.predictive, n.ofX, n.ofY)
      .GetResults();
}

/// What is wrong with the predictions of held-out rows, by models that are fitted anew to the other rows.
class Predictions {
 public:
  explicit Predictions(const FloatBlocks& blocks) : blocks_(blocks) {}

  Groups GroupsOfRows() const { return GetDeafultCVGroupsVector(blocks_.X.SizeRows(), kGroups); }

  /// Of Y from X, by `kept` of the predictive components that the orthogonal ones were found beside.
  Table ErrorsOfY(int group, const Numbers& n, int kept) const {
    const Table X = HeldOut(blocks_.X, group);
    const NCO2PLS model = Model(group, n, kept);
    return NCO2PLSYPred(&X, &model).GetYPred() - HeldOut(blocks_.Y, group);
  }

  double PressOfY(const Numbers& n) const {
    double press = 0.0;
    for (int g = 0; g < kGroups; ++g) press += SquaresOf(ErrorsOfY(g, n, n.predictive));
    return press;
  }

  double PressOfX(const Numbers& n) const {
    double press = 0.0;
    for (int g = 0; g < kGroups; ++g) {
      const Table Y = HeldOut(blocks_.Y, g);
      const NCO2PLS model = Model(g, n, n.predictive);
      press += SquaresOf(NCO2PLSXPred(&Y, &model).GetXPred() - HeldOut(blocks_.X, g));
    }
    return press;
  }

 private:
  Table HeldOut(const Table& block, int group) const { return RowsOf(block, GroupsOfRows(), group, true); }

  NCO2PLS Model(int group, const Numbers& n, int kept) const {
    const Groups groups = GroupsOfRows();
    NCO2PLS model(RowsOf(blocks_.X, groups, group, false), RowsOf(blocks_.Y, groups, group, false), false,
                  kMaxIterations);
    for (int o = 0; o < n.ofX; ++o) model.NextOrthogonalComponent(true, n.predictive);
    for (int o = 0; o < n.ofY; ++o) model.NextOrthogonalComponent(false, n.predictive);
    model.CalculatePredictiveComps(kept);
    model.Finalise();
    return model;
  }

  const FloatBlocks& blocks_;
};

/// Sums of squares of the variables of Y, as floats.
Vector SquaresOfVariables(const Table& Y) {
  Vector squares(Y.SizeColumns());
  for (int j = 1; j <= squares.Size(); ++j) squares(j, static_cast<float>(Y.GetColumnSS(j, 0.0L)));
  return squares;
}

/// Q2 in double for 0, 1, ... orthogonal components of a side. The total is a float but for the first of them.
std::vector<double> Q2InDouble(const FloatBlocks& blocks, const Numbers& n, bool xSide) {
  const Predictions predictions(blocks);
  const double total =
      xSide ? static_cast<double>(SquaresOfVariables(blocks.Y).GetSum()) : SquaresOf(blocks.X);
  std::vector<double> q2;
  for (int o = 0; o <= (xSide ? n.ofX : n.ofY); ++o) {
    const double press = xSide ? predictions.PressOfY({n.predictive, o, n.ofY})
                               : predictions.PressOfX({n.predictive, n.ofX, o});
    q2.push_back(1.0 - press / (o == 0 ? total : static_cast<double>(static_cast<float>(total))));
  }
  return q2;
}

std::vector<float> Q2OfComponents(const std::vector<double>& q2) { return {q2.begin() + 1, q2.end()}; }

TEST(O2PLSRounding, TheQ2OfOrthogonalComponentsIsThatOfModelsFittedAnewToTheBit) {
  for (const FloatBlocks& blocks : SomeBlocks())
    for (const Numbers& n : kSomeNumbers) {
      if (n.predictive + n.ofY > blocks.Y.SizeColumns()) continue;
      SCOPED_TRACE(std::to_string(n.predictive) + " predictive");
      const O2PLSCVResults results = ResultsOf(blocks, Predictions(blocks).GroupsOfRows(), n);
      EXPECT_EQ(CellsOf(results.Q2XSide), Q2OfComponents(Q2InDouble(blocks, n, true)));
      EXPECT_EQ(CellsOf(results.Q2YSide), Q2OfComponents(Q2InDouble(blocks, n, false)));
    }
}

TEST(O2PLSRounding, TheErrorsOfPredictiveComponentsAreThoseOfModelsFittedAnewToTheBit) {
  for (const FloatBlocks& blocks : SomeBlocks())
    for (const Numbers& n : kSomeNumbers) {
      if (n.predictive + n.ofY > blocks.Y.SizeColumns()) continue;
      SCOPED_TRACE(std::to_string(n.predictive) + " predictive");
      const Predictions predictions(blocks);
      const Groups groups = predictions.GroupsOfRows();
      const O2PLSCVResults results = ResultsOf(blocks, groups, n);
      const Vector all = SquaresOfVariables(blocks.Y);
      for (int g = 0; g < kGroups; ++g)
        EXPECT_EQ(results.SSTable[1][g + 1], static_cast<float>(SquaresOf(RowsOf(blocks.Y, groups, g, true))));
      for (int a = 1; a <= n.predictive; ++a) {
        Vector press(all.Size(), 0.0F);  // of variables, rounded after each group
        for (int g = 0; g < kGroups; ++g) {
          const Table errors = predictions.ErrorsOfY(g, n, a);
          double ofGroup = 0.0;
          for (int j = 1; j <= all.Size(); ++j) {
            const double squares = static_cast<double>(errors.GetColumnSS(j, 0.0L));
            ofGroup += squares;
            press(j, static_cast<float>(static_cast<double>(press[j]) + squares));
          }
          EXPECT_EQ(results.SSTable[a + 1][g + 1], static_cast<float>(ofGroup));
        }
        EXPECT_EQ(CellsOf(results.Q2Var)[static_cast<std::size_t>(a) - 1], CellsOf((all - press).DotDivide(all)));
        EXPECT_EQ(results.Q2Cum[a], static_cast<float>(1.0 - static_cast<double>(press.GetSum()) /
                                                                 static_cast<double>(all.GetSum())));
      }
    }
}

TEST(O2PLSRounding, TheCrossValidationHoldsAGainInDoubleAgainstItsLimit) {
  Gains gains;
  constexpr Numbers kNumbers{1, 2, 2};
  for (const FloatBlocks& blocks : SomeBlocks(10)) {
    if (kNumbers.predictive + kNumbers.ofY > blocks.Y.SizeColumns()) continue;
    for (const bool xSide : {true, false}) {
      const std::vector<double> q2 = Q2InDouble(blocks, kNumbers, xSide);
      for (std::size_t o = 1; o < q2.size(); ++o) {
        const double gain = q2[o] - q2[o - 1];
        if (!Gains::CanBeALimit(gain)) continue;
        const LimitsAre limit(static_cast<float>(gain));
        const O2PLSCVResults results = ResultsOf(blocks, Predictions(blocks).GroupsOfRows(), kNumbers);
        const Groups& codes = xSide ? results.XSideSignificance : results.YSideSignificance;
        EXPECT_EQ(codes[static_cast<int>(o)], gains.IsAbove(gain) ? 0 : 3);
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
