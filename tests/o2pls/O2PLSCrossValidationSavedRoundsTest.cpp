// What the cross-validation keeps of the models of all rounds.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "O2PLSCase.h"
#include "O2PLSTwin.h"
#include "PlainO2PLS.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "kalmia/pcapls/PCACrossValidation.h"

namespace {

using Table = NCDataMatrix<float>;
using Set = std::vector<Table>;

constexpr int kRows = 40, kXVariables = 9, kYVariables = 8, kGroups = 5;

/// The iterations inside end at a change of 1e-5; a component rests on up to six of them, and those of small components
/// magnify what the larger ones before left wrong, by the ratio of their sizes.
constexpr double kTolerance = 1e-3;

struct Numbers {
  const char* name;
  int predictive, xOrthogonal, yOrthogonal;
};

class O2PLSCrossValidationSaves : public ::testing::TestWithParam<Numbers> {
 protected:
  O2PLSCrossValidationSaves()
      : blocks_(MakeFloatBlocks({kRows, kXVariables, kYVariables, 2, 2, 2}, 0.05, 7)),
        results_(O2PLSCrossValidation(&blocks_.X, &blocks_.Y, kGroups, nullptr, nullptr, 500, GetParam().predictive,
                                      GetParam().xOrthogonal, GetParam().yOrthogonal)
                     .GetResults()) {}

  FloatBlocks blocks_;
  O2PLSCVResults results_;
};

INSTANTIATE_TEST_SUITE_P(, O2PLSCrossValidationSaves,
                         ::testing::Values(Numbers{"PredictiveOnly", 2, 0, 0}, Numbers{"OneOfEach", 1, 1, 1},
                                           Numbers{"TwoOfEach", 2, 2, 2}, Numbers{"XSide", 1, 2, 0},
                                           Numbers{"YSide", 1, 0, 2}),
                         [](const ::testing::TestParamInfo<Numbers>& info) { return info.param.name; });

plain::Vector RowOf(const Table& table, std::size_t row) { return plain::TableOf(table)[row]; }

/// -1 where the vectors point away from each other, otherwise 1.
double SignOf(const plain::Vector& a, const plain::Vector& b) { return plain::Dot(a, b) < 0.0 ? -1.0 : 1.0; }

void Turn(plain::Vector* v, double sign) {
  for (double& cell : *v) cell *= sign;
}

/// The twin's model with the signs of the saved round.
plain::O2PLS WithSignsOf(const O2PLSCVResults& r, std::size_t round, plain::O2PLS m) {
  for (std::size_t a = 0; a < m.P.size(); ++a) {
    const double x = SignOf(RowOf(r.PSet[a], round), m.P[a]), y = SignOf(RowOf(r.CSet[a], round), m.C[a]);
    for (plain::Table* rows : {&m.T, &m.P, &m.W}) Turn(&(*rows)[a], x);
    for (plain::Table* rows : {&m.U, &m.C, &m.Q}) Turn(&(*rows)[a], y);
    for (std::size_t b = 0; b < m.P.size(); ++b) {  // row a belongs to t_a, column b to u_b, and the other way round
      m.Lambda[a][b] *= x;
      m.Lambda[b][a] *= y;
      m.XLambda[a][b] *= y;
      m.XLambda[b][a] *= x;
    }
  }
  for (std::size_t o = 0; o < m.Po.size(); ++o) {
    const double sign = SignOf(RowOf(r.PoSet[o], round), m.Po[o]);
    for (plain::Table* rows : {&m.To, &m.Wo, &m.Po, &m.S}) Turn(&(*rows)[o], sign);
  }
  for (std::size_t o = 0; o < m.Co.size(); ++o) {
    const double sign = SignOf(RowOf(r.CoSet[o], round), m.Co[o]);
    for (plain::Table* rows : {&m.Uo, &m.Qo, &m.Co, &m.R}) Turn(&(*rows)[o], sign);
  }
  return m;
}

/// `size` is that of what the row is computed from.
void ExpectClose(const plain::Vector& row, const plain::Vector& expected, double size) {
  ASSERT_EQ(row.size(), expected.size());
  double squares = 0.0;
  for (std::size_t i = 0; i < row.size(); ++i) squares += (row[i] - expected[i]) * (row[i] - expected[i]);
  EXPECT_LT(std::sqrt(squares), kTolerance * size);
}

double Length(const plain::Vector& v) { return std::sqrt(plain::Dot(v, v)); }

/// Row `round` of each table of the set, against the rows of a model.
void ExpectRows(const Set& set, std::size_t round, const plain::Table& expected, const char* what) {
  SCOPED_TRACE(what);
  ASSERT_EQ(set.size(), expected.size());
  for (std::size_t a = 0; a < set.size(); ++a) {
    SCOPED_TRACE("component " + std::to_string(a + 1));
    ASSERT_EQ(set[a].SizeRows(), kGroups);
    ExpectClose(RowOf(set[a], round), expected[a], Length(expected[a]));
  }
}

/// The same of regressions of a block on scores, whose size is that of the block over that of the scores: what is left
/// of them may be a small part of it.
void ExpectRegressions(const Set& set, std::size_t round, const plain::Table& expected, const plain::Table& block,
                       const plain::Table& scores, const char* what) {
  SCOPED_TRACE(what);
  ASSERT_EQ(set.size(), expected.size());
  for (std::size_t a = 0; a < set.size(); ++a)
    ExpectClose(RowOf(set[a], round), expected[a], std::sqrt(plain::SquaresOf(block)) / Length(scores[a]));
}

/// The inner relation of one round; its largest cell is of the order of 1.
void ExpectRelation(const Table& relation, const plain::Table& expected, const char* what) {
  SCOPED_TRACE(what);
  ASSERT_EQ(static_cast<std::size_t>(relation.SizeRows()), expected.size());
  for (std::size_t a = 0; a < expected.size(); ++a) ExpectClose(RowOf(relation, a), expected[a], 1.0);
}

/// Fitted and predicted scores in the order of the observations.
plain::Table InOrder(const plain::Table& fitted, const plain::Table& predicted, int round) {
  const auto groups = GetDeafultCVGroupsVector(kRows, kGroups);
  plain::Table scores(fitted.size());
  for (std::size_t a = 0; a < fitted.size(); ++a) {
    std::size_t f = 0, p = 0;
    for (int i = 1; i <= kRows; ++i)
      scores[a].push_back(groups[i] == round ? predicted[a][p++] : fitted[a][f++]);
  }
  return scores;
}

TEST_P(O2PLSCrossValidationSaves, TheComponentsOfEveryRound) {
  const Numbers& n = GetParam();
  const O2PLSCVResults& s = results_;
  const O2PLSTwin twin(blocks_, kGroups);
  ASSERT_EQ(s.LambdaSet.size(), static_cast<std::size_t>(kGroups));
  ASSERT_EQ(s.XLambdaSet.size(), static_cast<std::size_t>(kGroups));
  ASSERT_EQ(s.PSet.size(), static_cast<std::size_t>(n.predictive));
  ASSERT_EQ(s.PoSet.size(), static_cast<std::size_t>(n.xOrthogonal));
  ASSERT_EQ(s.CoSet.size(), static_cast<std::size_t>(n.yOrthogonal));
  for (std::size_t g = 0; g < kGroups; ++g) {
    SCOPED_TRACE("round " + std::to_string(g));
    const int round = static_cast<int>(g);
    const TwinRound& r = twin.rounds[g];
    const plain::O2PLS m = WithSignsOf(
        s, g, plain::FitO2PLS(r.trainX, r.trainY, n.predictive, n.xOrthogonal, n.yOrthogonal));
    const plain::Prediction ofY = plain::PredictY(r.testX, m, kYVariables),
                            ofX = plain::PredictY(r.testY, plain::Swapped(m), kXVariables);
    ExpectRows(s.TSet, g, InOrder(m.T, ofY.scores, round), "T");
    ExpectRows(s.USet, g, InOrder(m.U, ofX.scores, round), "U");
    ExpectRows(s.PSet, g, m.P, "P");
    ExpectRows(s.WSet, g, m.W, "W");
    ExpectRows(s.CSet, g, m.C, "C");
    ExpectRows(s.QSet, g, m.Q, "Q");
    ExpectRows(s.ToSet, g, InOrder(m.To, ofY.orthogonalScores, round), "To");
    ExpectRows(s.PoSet, g, m.Po, "Po");
    ExpectRows(s.WoSet, g, m.Wo, "Wo");
    ExpectRegressions(s.SSet, g, m.S, r.trainY, m.To, "S");
    ExpectRows(s.UoSet, g, InOrder(m.Uo, ofX.orthogonalScores, round), "Uo");
    ExpectRows(s.QoSet, g, m.Qo, "Qo");
    ExpectRows(s.CoSet, g, m.Co, "Co");
    ExpectRegressions(s.RSet, g, m.R, r.trainX, m.Uo, "R");
    ExpectRelation(s.LambdaSet[g], m.Lambda, "Lambda");
    ExpectRelation(s.XLambdaSet[g], m.XLambda, "XLambda");
  }
}

TEST_P(O2PLSCrossValidationSaves, LoadingsThatPointTheWayOfTheFirstRound) {
  for (const Set* set : {&results_.PSet, &results_.CSet, &results_.PoSet, &results_.CoSet})
    for (const Table& rounds : *set)
      for (int g = 1; g <= kGroups; ++g) EXPECT_GT(rounds[g] * rounds[1], 0.0L) << "round " << g - 1;
}

}  // namespace
