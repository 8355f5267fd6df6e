// What the filter passes on, and what it rounds.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <sstream>
#include <vector>

#include "O2PLSCase.h"
#include "kalmia/o2pls/NCYOrthogonalPLS.h"
#include "kalmia/support/LanguageString.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using Table = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

constexpr int kMaxIterations = 200;

/// The call, from 1, by which the second component of the first PLS model inside asks whether to go on; 0: none.
int QuestionOfASecondComponent(const ProgressLog& log) {
  int spins = 0;
  for (std::size_t i = 0; i < log.calls.size(); ++i) {
    if (log.calls[i] == "SpinDone") return 0;
    if (log.calls[i] == "NextSpin") ++spins;
    if (spins == 2 && log.calls[i] == "IsBreakPressed") return static_cast<int>(i) + 1;
  }
  return 0;
}

TEST(NCYOrthogonalPLSExact, PassesAStopOfTheModelInsideOnWhateverComponentsThatHas) {
  const Table X = RandomMatrix<float>(30, 8, 0.05, 1), Y = RandomMatrix<float>(30, 2, 0.05, 2);
  ProgressLog whole;
  {
    const RecordOwnBars bars(&whole);
    NCYOrthogonalPLS model(&X, &Y, kMaxIterations, 0);
    model.NextComponent(/*showProgress=*/false);
  }
  ProgressLog log;
  log.stopAt = QuestionOfASecondComponent(whole);
  ASSERT_GT(log.stopAt, 0);
  const RecordOwnBars bars(&log);
  NCYOrthogonalPLS model(&X, &Y, kMaxIterations, 0);
  EXPECT_EQ(TextOf([&] { model.NextComponent(/*showProgress=*/false); }), LanguageString::Get(10161))
      << "the model's own text, not that of the next question";
}

/// The scalar product as it goes into the angle.
double Rounded(const Vector& a, const Vector& b) { return static_cast<double>(static_cast<float>(a * b)); }

TEST(NCYOrthogonalPLSExact, TheAngleIsThatOfScalarProductsRoundedToFloat) {
  constexpr double kPi = 3.14159265358979323846;
  const Table X = RandomMatrix<float>(8, 3, 0, 1);
  Table Y(8, 1);
  for (int i = 1; i <= 8; ++i) Y(i, 1, i % 2 == 0 ? 1.0F : -1.0F);
  const Vector y = Y.GetColumn(1);  // of which the scores are a copy, up to the sign, and y'y is 8
  const NCYOrthogonalPLS model(&X, &Y, kMaxIterations, 0);
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const Vector v = RandomVector<float>(8, 0, seed);
    Vector outside(8);
    const float share = 0.125F * static_cast<float>(y * v);
    for (int i = 1; i <= 8; ++i) outside(i, v[i] - y[i] * share);
    const double cosine = Rounded(v, outside) / std::sqrt(Rounded(outside, outside) * Rounded(v, v));
    EXPECT_EQ(model.GetYAngle(&v), 90.0 - 90.0 * std::acos(cosine) / kPi);
  }
}

// ---- The limit of the components of the PLS model inside

using Cells = std::vector<std::vector<float>>;

Cells NextWeightsOf(NCYOrthogonalPLS model) {
  model.NextComponent(/*showProgress=*/false);
  return CellsOf(*model.GetWprim());
}

TEST(NCYOrthogonalPLSExact, TakesItsLimitAlongAndKeepsItWhereItReads) {
  const Table X = RandomMatrix<float>(30, 8, 0, 1), Y = RandomMatrix<float>(30, 2, 0, 2);
  NCYOrthogonalPLS capped(&X, &Y, kMaxIterations, 1), free(&X, &Y, kMaxIterations, 0);
  ASSERT_NE(NextWeightsOf(capped), NextWeightsOf(free)) << "by copies that know the limit of theirs";
  NCYOrthogonalPLS assigned;
  assigned = capped;
  capped.NextComponent(/*showProgress=*/false);
  free.NextComponent(/*showProgress=*/false);
  EXPECT_EQ(NextWeightsOf(assigned), CellsOf(*capped.GetWprim()));

  // The limit is not stored: the model that reads has its own for what follows.
  std::stringstream stored;
  stored << free;
  NCYOrthogonalPLS reads(&X, &Y, kMaxIterations, 1), readsWithout;
  ASSERT_TRUE(stored >> reads);
  std::stringstream again(stored.str());
  ASSERT_TRUE(again >> readsWithout);
  EXPECT_EQ(NextWeightsOf(readsWithout), NextWeightsOf(free));
  EXPECT_NE(NextWeightsOf(reads), NextWeightsOf(free));
}

}  // namespace
