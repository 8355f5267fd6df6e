#include "kalmia/o2pls/O2PLSCrossValidation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "O2PLSCase.h"
#include "O2PLSTwin.h"
#include "PlainO2PLS.h"
#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"

namespace {

using CrossValidation = O2PLSCrossValidation;
using Table = NCDataMatrix<float>;

constexpr int kMaxIterations = 500;

O2PLSCVResults Validate(const FloatBlocks& blocks, int predictive, int xOrthogonal, int yOrthogonal, int groups = 5) {
  return CrossValidation(&blocks.X, &blocks.Y, groups, nullptr, nullptr, kMaxIterations, predictive, xOrthogonal,
                         yOrthogonal)
      .GetResults();
}

std::vector<int> CodesOf(const NCIntegralVector<int, -99>& codes) { return {codes.begin(), codes.end()}; }

struct LimitIs {
  explicit LimitIs(float limit) { SetO2PLSQ2Limit(limit); }
  ~LimitIs() { SetO2PLSQ2Limit(0.01F); }
};

// ---- Given numbers of components, against a twin

/// The first `count` predictive components of a model.
plain::O2PLS FirstOf(plain::O2PLS m, std::size_t count) {
  for (plain::Table* rows : {&m.T, &m.U, &m.P, &m.W, &m.C, &m.Q}) rows->resize(count);
  const plain::Table inverse = plain::Inverse(plain::Product(m.T, plain::Transposed(m.T)));
  m.Lambda = plain::Product(inverse, plain::Product(m.T, plain::Transposed(m.U)));
  return m;
}

struct Numbers {
  const char* name;
  int predictive, xOrthogonal, yOrthogonal;
};

class O2PLSCrossValidationOfFixedNumbers : public ::testing::TestWithParam<Numbers> {
 protected:
  O2PLSCrossValidationOfFixedNumbers()
      : blocks_(MakeFloatBlocks({30, 8, 6, 2, 1, 1}, 0.1, 7)),
        twin_(blocks_, 5),
        results_(Validate(blocks_, GetParam().predictive, GetParam().xOrthogonal, GetParam().yOrthogonal)) {}

  FloatBlocks blocks_;
  O2PLSTwin twin_;
  O2PLSCVResults results_;
};

INSTANTIATE_TEST_SUITE_P(, O2PLSCrossValidationOfFixedNumbers,
                         ::testing::Values(Numbers{"PredictiveOnly", 2, 0, 0}, Numbers{"OneOfEach", 2, 1, 1},
                                           Numbers{"XSide", 2, 2, 0}, Numbers{"YSide", 2, 0, 1},
                                           Numbers{"OnePredictive", 1, 1, 1}),
                         [](const ::testing::TestParamInfo<Numbers>& info) { return info.param.name; });

TEST_P(O2PLSCrossValidationOfFixedNumbers, HasTheQ2OfAPlainTwin) {
  const Numbers& n = GetParam();
  EXPECT_EQ(results_.PredictiveComponents, n.predictive);
  EXPECT_EQ(results_.XSideComponents, n.xOrthogonal);
  EXPECT_EQ(results_.YSideComponents, n.yOrthogonal);
  ASSERT_EQ(results_.Q2XSide.Size(), n.xOrthogonal);
  ASSERT_EQ(results_.Q2YSide.Size(), n.yOrthogonal);
  ASSERT_EQ(results_.XSideSignificance.Size(), n.xOrthogonal);
  ASSERT_EQ(results_.YSideSignificance.Size(), n.yOrthogonal);
  // With components on Y's side, those of X's side were judged anew with them.
  double before = twin_.Q2OfY(n.predictive, 0, n.yOrthogonal);
  for (int o = 1; o <= n.xOrthogonal; ++o) {
    const double q2 = twin_.Q2OfY(n.predictive, o, n.yOrthogonal);
    EXPECT_NEAR(results_.Q2XSide[o], q2, kConvergence);
    EXPECT_EQ(results_.XSideSignificance[o], q2 - before > 0.01 ? 0 : 3);
    before = q2;
  }
  before = twin_.Q2OfX(n.predictive, n.xOrthogonal, 0);
  for (int o = 1; o <= n.yOrthogonal; ++o) {
    const double q2 = twin_.Q2OfX(n.predictive, n.xOrthogonal, o);
    EXPECT_NEAR(results_.Q2YSide[o], q2, kConvergence);
    EXPECT_EQ(results_.YSideSignificance[o], q2 - before > 0.01 ? 0 : 3);
    before = q2;
  }
}

TEST_P(O2PLSCrossValidationOfFixedNumbers, HasTheErrorsOfAPlainTwinAfterEachPredictiveComponent) {
  const Numbers& n = GetParam();
  ASSERT_EQ(results_.Q2Cum.Size(), n.predictive);
  ASSERT_EQ(results_.SSTable.SizeRows(), n.predictive + 1);
  ASSERT_EQ(results_.SSTable.SizeColumns(), 5);
  for (int a = 1; a <= n.predictive; ++a) {
    double press = 0.0;
    plain::Vector ofVariable(6, 0.0), ssOfVariable(6, 0.0);
    for (std::size_t g = 0; g < 5; ++g) {
      const TwinRound& r = twin_.rounds[g];
      const plain::O2PLS model = FirstOf(
          plain::FitO2PLS(r.trainX, r.trainY, n.predictive, n.xOrthogonal, n.yOrthogonal), static_cast<std::size_t>(a));
      const plain::Table predicted = plain::PredictY(r.testX, model, 6).predicted;
      const double errors = SquaredErrors(predicted, r.testY);
      const int column = static_cast<int>(g) + 1;
      EXPECT_NEAR(results_.SSTable[1][column], plain::SquaresOf(r.testY), 1e-6 * twin_.ssY);
      EXPECT_NEAR(results_.SSTable[a + 1][column], errors, kConvergence * twin_.ssY);
      press += errors;
      for (std::size_t i = 0; i < r.testY.size(); ++i)
        for (std::size_t j = 0; j < 6; ++j) {
          ofVariable[j] += std::pow(predicted[i][j] - r.testY[i][j], 2);
          ssOfVariable[j] += std::pow(r.testY[i][j], 2);
        }
    }
    EXPECT_NEAR(results_.Q2Cum[a], 1 - press / twin_.ssY, kConvergence);
    for (int j = 1; j <= 6; ++j) {
      const std::size_t k = static_cast<std::size_t>(j) - 1;
      EXPECT_NEAR(results_.Q2Var[a][j], 1 - ofVariable[k] / ssOfVariable[k],
                  kConvergence * twin_.ssY / ssOfVariable[k]);
    }
  }
}

// ---- The search

/// What the rule of single variables makes of the estimator's codes.
struct Choice {
  int components;
  std::vector<int> codes;
};

Choice ChoiceOf(const O2PLSCVResults& r, std::vector<int> codes, int needed) {
  int best = 1;
  for (int a = 2; a <= r.Q2Cum.Size(); ++a)
    if (r.Q2Cum[a] > r.Q2Cum[best]) best = a;
  Choice choice{best, std::move(codes)};
  bool chain = true;
  for (std::size_t k = static_cast<std::size_t>(best); k < choice.codes.size(); ++k) {  // component k + 1
    int gaining = 0;
    const int after = static_cast<int>(k) + 1;
    for (int j = 1; j <= r.Q2Var.SizeColumns() && choice.codes[k] == 0; ++j)
      if (double{r.Q2Var[after][j]} - double{r.Q2Var[after - 1][j]} > double{0.01F}) ++gaining;
    chain = chain && choice.codes[k] == 0 && gaining >= needed;
    if (choice.codes[k] == 0) choice.codes[k] = chain ? 1 : 3;
    if (chain) ++choice.components;
  }
  return choice;
}

TEST(O2PLSCrossValidation, KeepsAComponentBehindTheLargestQ2ForTheSakeOfEnoughSingleVariables) {
  bool kept = false, cut = false;
  for (const auto& [variables, needed] : {std::pair{1, 1}, {4, 2}, {6, 2}, {24, 5}, {25, 5}, {100, 20}})
    for (unsigned seed = 1; seed <= (variables < 100 ? 12U : 3U); ++seed) {
      SCOPED_TRACE(std::to_string(variables) + " variables, seed " + std::to_string(seed));
      const FloatBlocks blocks{RandomMatrix<float>(25, 8, 0, seed), RandomMatrix<float>(25, variables, 0, seed + 50)};
      for (const int wanted : {-1, std::min(variables, 4)}) {
        const O2PLSCVResults r = Validate(blocks, wanted, wanted < 0 ? -1 : 0, wanted < 0 ? -1 : 0);
        const O2PLSPredictiveComponentEstimator estimator(&blocks.X, &blocks.Y, 5, nullptr, wanted);
        const int estimated = estimator.GetNumberOfPredictiveComponents();
        if (estimated == 0) continue;
        const Choice expected = ChoiceOf(r, CodesOf(estimator.GetSignificance()), needed);
        EXPECT_EQ(CodesOf(r.PredictiveSignificance), expected.codes);
        EXPECT_EQ(r.PredictiveComponents, wanted < 0 ? expected.components : estimated) << "a fixed number stays";
        EXPECT_EQ(r.Q2Cum.Size(), estimated) << "what is cut off keeps its rows";
        EXPECT_EQ(r.Q2Var.SizeRows(), estimated);
        EXPECT_EQ(r.SSTable.SizeRows(), estimated + 1);
        EXPECT_EQ(r.TSet.size(), static_cast<std::size_t>(r.PredictiveComponents));
        EXPECT_EQ(r.LambdaSet.front().SizeRows(), r.PredictiveComponents);
        kept = kept || std::count(expected.codes.begin(), expected.codes.end(), 1) > 0;
        cut = cut || r.PredictiveComponents < estimated;
      }
    }
  EXPECT_TRUE(kept);
  EXPECT_TRUE(cut);
}

TEST(O2PLSCrossValidation, SavesTheRoundsOfTheNumbersThatStayWhereAComponentIsCutOff) {
  int cut = 0, withOrthogonal = 0;
  for (unsigned seed = 1; seed <= 40 && withOrthogonal < 2; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const FloatBlocks blocks = MakeFloatBlocks({30, 9, 7, 2, 1, 1}, seed % 2 == 0 ? 0.3 : 0.7, seed);
    const O2PLSCVResults r = Validate(blocks, -1, -1, -1);
    if (r.PredictiveComponents == 0 || r.PredictiveComponents == r.Q2Cum.Size()) continue;
    ++cut;
    withOrthogonal += r.XSideComponents + r.YSideComponents > 0 ? 1 : 0;
    const O2PLSCVResults fixed = Validate(blocks, r.PredictiveComponents, r.XSideComponents, r.YSideComponents);
    using Set = std::vector<Table> O2PLSCVResults::*;
    for (const Set set : {&O2PLSCVResults::TSet, &O2PLSCVResults::USet, &O2PLSCVResults::PSet, &O2PLSCVResults::WSet,
                          &O2PLSCVResults::CSet, &O2PLSCVResults::QSet, &O2PLSCVResults::SSet, &O2PLSCVResults::RSet,
                          &O2PLSCVResults::ToSet, &O2PLSCVResults::PoSet, &O2PLSCVResults::WoSet,
                          &O2PLSCVResults::UoSet, &O2PLSCVResults::CoSet, &O2PLSCVResults::QoSet,
                          &O2PLSCVResults::LambdaSet, &O2PLSCVResults::XLambdaSet}) {
      ASSERT_EQ((r.*set).size(), (fixed.*set).size());
      for (std::size_t i = 0; i < (r.*set).size(); ++i) EXPECT_EQ(CellsOf((r.*set)[i]), CellsOf((fixed.*set)[i]));
    }
  }
  EXPECT_GT(cut, 0);
  EXPECT_EQ(withOrthogonal, 2);
}

TEST(O2PLSCrossValidation, EndsASearchWithTheTrialThatGainsLessThanTheLimit) {
  const FloatBlocks blocks = MakeFloatBlocks({40, 10, 8, 1, 1, 0}, 0.1, 3);
  const O2PLSCVResults usual = Validate(blocks, -1, -1, -1);
  ASSERT_GE(usual.PredictiveComponents, 1);
  ASSERT_GE(usual.XSideSignificance.Size(), 1);
  EXPECT_EQ(usual.Q2XSide.Size(), usual.XSideSignificance.Size());
  EXPECT_EQ(usual.XSideComponents, usual.XSideSignificance.Size() - 1) << "the refused one is in the series";
  EXPECT_EQ(CodesOf(usual.XSideSignificance).back(), 3);
  const LimitIs limit(0.99F);
  const O2PLSCVResults none = Validate(blocks, -1, -1, -1);
  EXPECT_EQ(none.XSideComponents, 0);
  EXPECT_EQ(none.YSideComponents, 0);
  EXPECT_EQ(CodesOf(none.XSideSignificance), std::vector<int>{3});
  EXPECT_TRUE(none.ToSet.empty());
  EXPECT_EQ(CellsOf(none.Q2Cum), CellsOf(Validate(blocks, usual.PredictiveComponents, 0, 0).Q2Cum))
      << "the models are back to what they were";
}

TEST(O2PLSCrossValidation, GoesByTheLimitThatIsSetWithinBounds) {
  EXPECT_EQ(CrossValidation::GetQ2Lim(10, 1), 0.01F);
  EXPECT_EQ(CrossValidation::GetQ2Lim(-1, 100), 0.01F) << "the arguments do not matter";
  const LimitIs limit(0.25F);
  for (const float ignored : {1.0F, -0.01F, -99.0F, 7.0F, std::nanf("")}) {
    SetO2PLSQ2Limit(ignored);
    EXPECT_EQ(CrossValidation::GetQ2Lim(10, 1), 0.25F);
  }
  SetO2PLSQ2Limit(0.0F);
  EXPECT_EQ(CrossValidation::GetQ2Lim(10, 1), 0.0F);
}

// ---- Numbers, groups

void ExpectNothingBut(const O2PLSCVResults& r) {
  EXPECT_EQ(r.PredictiveComponents, 0);
  EXPECT_EQ(r.XSideComponents, -1);
  EXPECT_EQ(r.YSideComponents, -1);
  EXPECT_EQ(r.Q2Cum.Size() + r.Q2XSide.Size() + r.Q2YSide.Size() + r.SSTable.SizeRows(), 0);
  EXPECT_TRUE(r.TSet.empty() && r.LambdaSet.empty() && r.ToSet.empty());
}

TEST(O2PLSCrossValidation, ReturnsFromTheFirstStageWithoutPredictiveComponents) {
  const FloatBlocks blocks = MakeFloatBlocks({20, 5, 4, 1, 0, 0}, 0.1, 3);
  ExpectNothingBut(Validate(blocks, 0, 0, 0));
  EXPECT_TRUE(CodesOf(Validate(blocks, 0, 0, 0).PredictiveSignificance).empty());
  ExpectNothingBut(Validate({blocks.X.GetRowSubMatrix(1, 4), blocks.Y.GetRowSubMatrix(1, 4)}, -1, -1, -1, 4));
  ExpectNothingBut(Validate(blocks, -1, -1, -1, /*groups=*/1));
}

TEST(O2PLSCrossValidation, FindsNothingInABlockWithoutVarianceOrSaysSo) {
  const Table X = RandomMatrix<float>(20, 5, 0, 1);
  for (const int columns : {1, 3}) ExpectNothingBut(Validate({X, Table(20, columns, 0.0F)}, -1, -1, -1));
  ExpectNothingBut(Validate({X, Table(20, 3, 0.0F)}, 1, 0, 0));
  EXPECT_EQ(TextOf([&] { Validate({X, Table(20, 1, 0.0F)}, 1, 0, 0); }), "There is no correlation between X and Y");
}

TEST(O2PLSCrossValidation, TakesTheGroupsThatAreGivenAndNothingFromOneWithoutObservations) {
  const FloatBlocks blocks = MakeFloatBlocks({20, 5, 4, 1, 0, 0}, 0.1, 3);
  auto groups = GetDeafultCVGroupsVector(20, 4);
  const auto with = [&](NCIntegralVector<int, -99> given) {
    return CrossValidation(&blocks.X, &blocks.Y, -7, nullptr, &given, kMaxIterations, 1, 1, 1).GetResults();
  };
  const O2PLSCVResults given = with(groups), defaults = Validate(blocks, 1, 1, 1, 4);
  EXPECT_EQ(CellsOf(given.Q2Cum), CellsOf(defaults.Q2Cum));
  for (int i = 1; i <= 20; ++i)
    if (groups[i] == 3) groups(i) = 4;
  const O2PLSCVResults gap = with(groups);  // nobody is in group 3
  EXPECT_EQ(CellsOf(gap.Q2Cum), CellsOf(given.Q2Cum));
  EXPECT_EQ(CellsOf(gap.Q2XSide), CellsOf(given.Q2XSide));
  EXPECT_EQ(gap.SSTable.SizeColumns(), 5);
  EXPECT_EQ(gap.SSTable[1][4], 0.0F);
  EXPECT_EQ(gap.SSTable[2][4], 0.0F);
}

// ---- Signs of the results

TEST(O2PLSCVResults, FlipTheFlaggedRoundsOfEveryComponent) {
  O2PLSCVResults r;
  for (unsigned a = 0; a < 2; ++a) {
    for (auto* set : {&r.TSet, &r.USet}) set->push_back(RandomMatrix<float>(2, 6, 0, 10 * a + 1));
    for (auto* set : {&r.PSet, &r.WSet, &r.CSet, &r.QSet}) set->push_back(RandomMatrix<float>(2, 3, 0, 10 * a + 2));
    r.LambdaSet.push_back(Table(1, 1, 7.0F));
    r.XLambdaSet.push_back(Table(1, 1, 8.0F));
  }
  const O2PLSCVResults before = r;
  r.FlipPredictiveModel({false, false}, {});
  EXPECT_EQ(CellsOf(r.LambdaSet[0]), CellsOf(before.LambdaSet[0])) << "nothing was turned, nothing is computed";
  r.FlipPredictiveModel({false, true}, {true, false});
  for (std::size_t a = 0; a < 2; ++a) {
    const auto expectFlipped = [](const Table& now, Table then, int row) {
      then.MultiplyRow(row, -1.0F);
      EXPECT_EQ(CellsOf(now), CellsOf(then));
    };
    expectFlipped(r.TSet[a], before.TSet[a], 2);
    expectFlipped(r.PSet[a], before.PSet[a], 2);
    expectFlipped(r.WSet[a], before.WSet[a], 2);
    expectFlipped(r.USet[a], before.USet[a], 1);
    expectFlipped(r.CSet[a], before.CSet[a], 1);
    expectFlipped(r.QSet[a], before.QSet[a], 1);
    EXPECT_EQ(CellsOf(r.LambdaSet[a]), CellsOf(r.TSet[a].GetRegressionCoefficients(r.USet[a]))) << "rounds by rounds";
    EXPECT_EQ(CellsOf(r.XLambdaSet[a]), CellsOf(r.USet[a].GetRegressionCoefficients(r.TSet[a])));
  }
}

}  // namespace
