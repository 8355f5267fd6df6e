// Where a block has no more dimensions of its own.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "O2PLSCase.h"
#include "PlainO2PLS.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "testing/RandomTables.h"

namespace {

using Table = NCDataMatrix<float>;
using Refusal = NCO2PLSDimensionalityException;

constexpr int kMaxIterations = 200;

template <class Call>
std::optional<Refusal> RefusalOf(const Call& call) {
  try {
    call();
  } catch (const Refusal& refusal) {
    return refusal;
  }
  return std::nullopt;
}

void ExpectRefusal(const std::optional<Refusal>& refusal, int type, int predictive, int xLimit, int yLimit) {
  ASSERT_TRUE(refusal.has_value());
  EXPECT_EQ(refusal->Type, type);
  EXPECT_EQ(refusal->PredictiveComponents, predictive);
  EXPECT_EQ(refusal->XLimit, xLimit);
  EXPECT_EQ(refusal->YLimit, yLimit);
}

TEST(NCO2PLSDimensionalityException, SaysHowManyDimensionsThereAre) {
  const struct {
    int type, xLimit, yLimit;
    const char* text;
  } cases[] = {
      {0, 1, 1, "More components can not be calculated."},
      {1, 0, 5, "There are no dimensions in X that are unrelated to Y.\nMore components can not be calculated."},
      {1, 1, 5, "There is only 1 dimension in X that is unrelated to Y.\nMore components can not be calculated."},
      {1, 2, 5, "There are only 2 dimensions in X that are unrelated to Y.\nMore components can not be calculated."},
      {2, 5, 0, "There are no dimensions in Y that are unrelated to X.\nMore components can not be calculated."},
      {2, 5, 1, "There is only 1 dimension in Y that is unrelated to X.\nMore components can not be calculated."},
      {2, 5, 3, "There are only 3 dimensions in Y that are unrelated to X.\nMore components can not be calculated."},
      {3, 1, 12,
       "There is only 1 dimension in X that is unrelated to Y.\n"
       "There are only 12 dimensions in Y that are unrelated to X.\nMore components can not be calculated."}};
  for (const auto& c : cases) {
    const Refusal refusal(c.type, 4, c.xLimit, c.yLimit);
    EXPECT_STREQ(static_cast<const char*>(refusal.GetMessage()), c.text);
    EXPECT_EQ(refusal.GetLevel(), NCError::Level0);
  }
}

TEST(NCO2PLSDimensionalityException, StaysWhatItIsWhenCloned) {
  const Refusal refusal(3, 2, 1, 4);
  const std::unique_ptr<NCError> clone(static_cast<const NCError&>(refusal).Clone());
  const auto* same = dynamic_cast<const Refusal*>(clone.get());
  ASSERT_NE(same, nullptr);
  ExpectRefusal(*same, 3, 2, 1, 4);
  EXPECT_STREQ(static_cast<const char*>(same->GetMessage()), static_cast<const char*>(refusal.GetMessage()));
}

// ---- Sizes

TEST(NCO2PLSLimits, RefuseTheFourthOrthogonalComponentOfThreeVariables) {
  const Table X = RandomMatrix<float>(10, 3, 0, 1), Y = RandomMatrix<float>(10, 4, 0, 2);
  NCO2PLS model(X, Y, /*checkDimensions=*/true, kMaxIterations);
  for (int i = 1; i <= 3; ++i) EXPECT_NO_THROW(model.NextOrthogonalComponent(/*xSide=*/true, 1));
  const auto before = Everything(model);
  ExpectRefusal(RefusalOf([&] { model.NextOrthogonalComponent(/*xSide=*/true, 1); }), 1, 1, 3, 0);
  EXPECT_EQ(Everything(model), before);

  NCO2PLS other(Y, X, /*checkDimensions=*/true, kMaxIterations);
  for (int i = 1; i <= 3; ++i) EXPECT_NO_THROW(other.NextOrthogonalComponent(/*xSide=*/false, 1));
  ExpectRefusal(RefusalOf([&] { other.NextOrthogonalComponent(/*xSide=*/false, 1); }), 2, 1, 0, 3);
}

TEST(NCO2PLSLimits, CountThePredictiveComponentsAndTheObservations) {
  // min(K + 1, N) = 5 of five observations: with two predictive components three of the X side's can be made.
  const Table X = RandomMatrix<float>(5, 9, 0, 1), Y = RandomMatrix<float>(5, 9, 0, 2);
  NCO2PLS model(X, Y, /*checkDimensions=*/true, kMaxIterations);
  EXPECT_NO_THROW(model.NextOrthogonalComponent(/*xSide=*/false, 2)) << "the other side does not count";
  for (int i = 1; i <= 3; ++i) EXPECT_NO_THROW(model.NextOrthogonalComponent(/*xSide=*/true, 2));
  ExpectRefusal(RefusalOf([&] { model.NextOrthogonalComponent(/*xSide=*/true, 2); }), 1, 2, 3, 1);
}

TEST(NCO2PLSLimits, ARefusalClearsTheWorkingBlocks) {
  const Table X = RandomMatrix<float>(10, 3, 0, 1), Y = RandomMatrix<float>(10, 4, 0, 2);
  NCO2PLS model(X, Y, /*checkDimensions=*/true, kMaxIterations);
  model.InitPredCompCalculation();
  EXPECT_TRUE(RefusalOf([&] { model.NextOrthogonalComponent(/*xSide=*/true, 4); }).has_value());
  EXPECT_EQ(TextOf([&] { model.NextPredictiveComp(); }),
            "Internal error in NCO2PLS::NextPredictiveComp.\nFunction call out of sequence.");
}

TEST(NCO2PLSLimits, DoNotApplyUnlessAskedFor) {
  const Table X = RandomMatrix<float>(10, 3, 0, 1), Y = RandomMatrix<float>(10, 2, 0, 2);
  NCO2PLS model(X, Y, /*checkDimensions=*/false, kMaxIterations);
  EXPECT_NO_THROW(model.Fit(1, 6, 5)) << "more than the rank: components of rounding";
  EXPECT_EQ(model.GetS().SizeRows(), 6);
  EXPECT_EQ(model.GetR().SizeRows(), 5);
}

// ---- How much orthogonal components explain of the other block

/// The share of a block that the first `count` of the scores explain, of which the first `observations` count; each
/// step in float.
float Share(const Table& block, const Table& scores, const Table& loadings, int count, int observations) {
  float sum = 0.0F;
  for (int a = 1; a <= count; ++a)
    for (int j = 1; j <= block.SizeColumns(); ++j)
      for (int n = 1; n <= observations; ++n) {
        const float cell = loadings[a][j] * scores[a][n];
        const float square = cell * cell;
        sum += square;
      }
  return sum / static_cast<float>(block.GetSS());
}

struct Limits {
  int type, x, y;
};

/// What the shares of a model that was fitted without limits say.
Limits LimitsOf(const NCO2PLS& model) {
  const int observations = model.GetX().SizeRows();
  Limits limits{0, model.SizeXSideOrthoComps(), model.SizeYSideOrthoComps()};
  for (int i = model.SizeYSideOrthoComps(); i >= 1; --i)
    if (Share(model.GetX(), model.GetUo(), model.GetR(), i, observations - 1) > 0.05) {
      limits.type |= 2;
      limits.y = i - 1;
    }
  for (int i = model.SizeXSideOrthoComps(); i >= 1; --i)
    if (Share(model.GetY(), model.GetTo(), model.GetS(), i, observations) > 0.05) {
      limits.type |= 1;
      limits.x = i - 1;
    }
  return limits;
}

TEST(NCO2PLSLimits, RefuseOrthogonalComponentsThatAreRelatedToTheOtherBlock) {
  // Tables of nothing but noise, of different lengths: the fewer observations, the more two scores have in common by
  // chance. All four outcomes occur.
  const std::pair<int, int> sides[] = {{3, 1}, {1, 3}, {3, 3}};
  int outcomes[4] = {};
  for (int rows = 8; rows <= 120; rows += 8)
    for (unsigned seed = 1; seed <= 6; ++seed) {
      SCOPED_TRACE(std::to_string(rows) + " rows, seed " + std::to_string(seed));
      const auto [ofX, ofY] = sides[seed % 3];
      const Table X = RandomMatrix<float>(rows, 6, 0, seed), Y = RandomMatrix<float>(rows, 5, 0, seed + 100);
      NCO2PLS unlimited(X, Y, /*checkDimensions=*/false, kMaxIterations);
      unlimited.Fit(1, ofX, ofY);
      const Limits expected = LimitsOf(unlimited);
      ++outcomes[expected.type];
      NCO2PLS model(X, Y, /*checkDimensions=*/true, kMaxIterations);
      const auto refusal = RefusalOf([&] { model.Fit(1, sides[seed % 3].first, sides[seed % 3].second); });
      ASSERT_EQ(refusal.has_value(), expected.type != 0);
      if (!refusal) continue;
      ExpectRefusal(refusal, expected.type, 1, expected.x, expected.y);
      EXPECT_EQ(model.GetS().SizeRows(), expected.type & 1 ? expected.x + 1 : ofX);
      EXPECT_EQ(model.GetR().SizeRows(), expected.type & 2 ? expected.y + 1 : ofY);
      EXPECT_EQ(CellsOf(model.GetLambda()), CellsOf(unlimited.GetLambda())) << "what was computed stays";
      EXPECT_EQ(model.SizeXSideOrthoComps(), ofX);
    }
  for (int type = 0; type < 4; ++type) EXPECT_GT(outcomes[type], 0) << "type " << type;
}

TEST(NCO2PLSLimits, ARefusalAtTheEndLeavesTheWorkingBlocks) {
  const Table X = RandomMatrix<float>(8, 6, 0, 1), Y = RandomMatrix<float>(8, 5, 0, 101);
  NCO2PLS model(X, Y, /*checkDimensions=*/true, kMaxIterations);
  ASSERT_TRUE(RefusalOf([&] { model.Fit(1, 3, 3); }).has_value());
  EXPECT_NO_THROW(model.NextPredictiveComp());
  EXPECT_NO_THROW(model.Fit(1, 0, 0)) << "another fit starts from the beginning";
  EXPECT_EQ(model.SizeXSideOrthoComps(), 0);
  EXPECT_EQ(model.GetS().SizeRows(), 0);
}

/// Blocks whose common score lies in the first rows, while in the last one X and Y both hold something of their own
/// that the other has by chance too. It is `size` there.
FloatBlocks RelatedInTheLastObservation(float size) {
  FloatBlocks blocks{Table(9, 2, 0.0F), Table(9, 2, 0.0F)};
  for (int i = 1; i <= 8; ++i) {
    const float common = i % 2 == 0 ? 1.0F : -1.0F;
    blocks.X(i, 1, common);
    blocks.Y(i, 1, common);
  }
  blocks.X(9, 2, size);
  blocks.Y(9, 2, size);
  blocks.X(9, 1, 0.1F);  // what is unique lies over what is common: an orthogonal component takes it
  blocks.Y(9, 1, 0.1F);
  return blocks;
}

TEST(NCO2PLSLimits, DoNotCountTheLastObservationOfYsScores) {
  // The orthogonal scores of either block have nothing but the last observation to speak of, and there they explain
  // more than a twentieth of the other block.
  const FloatBlocks blocks = RelatedInTheLastObservation(1.2F);
  NCO2PLS unlimited(blocks.X, blocks.Y, /*checkDimensions=*/false, kMaxIterations);
  unlimited.Fit(1, 1, 1);
  const Table R = unlimited.GetR(), S = unlimited.GetS(), To = unlimited.GetTo(), Uo = unlimited.GetUo();
  ASSERT_GT(Share(blocks.X, Uo, R, 1, 9), 0.05F);
  ASSERT_LT(Share(blocks.X, Uo, R, 1, 8), 0.05F);
  ASSERT_GT(Share(blocks.Y, To, S, 1, 9), 0.05F);
  ASSERT_LT(Share(blocks.Y, To, S, 1, 8), 0.05F);
  NCO2PLS model(blocks.X, blocks.Y, /*checkDimensions=*/true, kMaxIterations);
  EXPECT_NO_THROW(model.Fit(1, 0, 1)) << "Y's side leaves the last observation out";
  ExpectRefusal(RefusalOf([&] { model.Fit(1, 1, 1); }), 1, 1, 0, 1);
}

TEST(NCO2PLSLimits, GoByTheSumsOfSquaresOfTheModelThatIsAssigned) {
  // By sums of 0 any orthogonal component would be too much, by those of tables a thousand times as large none.
  const FloatBlocks blocks = RelatedInTheLastObservation(1.2F);
  const NCO2PLS refused(blocks.X, blocks.Y, /*checkDimensions=*/true, kMaxIterations);
  const Table X = RandomMatrix<float>(120, 6, 0, 1), Y = RandomMatrix<float>(120, 5, 0, 101);
  const NCO2PLS accepted(X * 1000.0L, Y * 1000.0L, /*checkDimensions=*/true, kMaxIterations);
  NCO2PLS model;
  model = accepted;
  EXPECT_NO_THROW(model.Fit(1, 1, 1));
  model = refused;
  ExpectRefusal(RefusalOf([&] { model.Fit(1, 1, 1); }), 1, 1, 0, 1);
}

/// Share, but for the sum, which is in double.
double ExactShare(const Table& block, const Table& scores, const Table& loadings) {
  double sum = 0.0;
  for (int j = 1; j <= block.SizeColumns(); ++j)
    for (int n = 1; n <= block.SizeRows(); ++n) sum += std::pow(static_cast<double>(loadings[1][j] * scores[1][n]), 2);
  return sum / static_cast<double>(block.GetSS());
}

TEST(NCO2PLSLimits, AddUpInFloat) {
  // Y has something of what is unique to X, just so much that a sum of thousands of squares in float and one in double
  // lie on two sides of a twentieth.
  constexpr int kRows = 3000;
  const Table noise = RandomMatrix<float>(kRows, 3, 0, 5);
  int decided = 0;
  double low = 0.1, high = 0.6;
  for (int step = 0; step < 40; ++step) {
    const double size = 0.5 * (low + high);
    Table X(kRows, 2), Y(kRows, 2);
    for (int i = 1; i <= kRows; ++i) {
      X(i, 1, 3.0F * noise[i][1]);
      X(i, 2, noise[i][2]);
      Y(i, 1, 3.0F * noise[i][1]);
      Y(i, 2, static_cast<float>(size * 3.0) * noise[i][2] + 0.1F * noise[i][3]);
    }
    NCO2PLS unlimited(X, Y, /*checkDimensions=*/false, kMaxIterations);
    unlimited.Fit(1, 1, 0);
    const float share = Share(Y, unlimited.GetTo(), unlimited.GetS(), 1, kRows);
    const double exact = ExactShare(Y, unlimited.GetTo(), unlimited.GetS());
    (exact > 0.05 ? high : low) = size;
    if ((static_cast<double>(share) > 0.05) == (exact > 0.05)) continue;
    ++decided;
    NCO2PLS model(X, Y, /*checkDimensions=*/true, kMaxIterations);
    EXPECT_EQ(RefusalOf([&] { model.Fit(1, 1, 0); }).has_value(), static_cast<double>(share) > 0.05) << size;
  }
  EXPECT_GT(decided, 0);
}

TEST(NCO2PLSLimits, AddUpTheComponentsOfASide) {
  // Some model has components none of which explains a twentieth of Y by itself, but together they do.
  int found = 0;
  for (unsigned seed = 1; seed <= 40 && found == 0; ++seed) {
    const Table X = RandomMatrix<float>(60, 6, 0, seed), Y = RandomMatrix<float>(60, 5, 0, seed + 100);
    NCO2PLS unlimited(X, Y, /*checkDimensions=*/false, kMaxIterations);
    unlimited.Fit(1, 3, 0);
    const Table S = unlimited.GetS(), To = unlimited.GetTo();
    bool eachIsSmall = true;
    for (int i = 1; i <= 3; ++i)
      if (Share(Y, To.GetRowSubMatrix(i, i), S.GetRowSubMatrix(i, i), 1, 60) > 0.05F) eachIsSmall = false;
    if (!eachIsSmall || Share(Y, To, S, 3, 60) <= 0.05F) continue;
    ++found;
    NCO2PLS model(X, Y, /*checkDimensions=*/true, kMaxIterations);
    EXPECT_TRUE(RefusalOf([&] { model.Fit(1, 3, 0); }).has_value());
  }
  EXPECT_EQ(found, 1);
}

TEST(NCO2PLSLimits, LeaveNoOrthogonalComponentToOneObservation) {
  const Table X = MatrixOf<float>({{1, 2, 3}}), Y = MatrixOf<float>({{2, 1}});
  NCO2PLS model(X, Y, /*checkDimensions=*/true, kMaxIterations);
  model.CalculatePredictiveComps(1);
  EXPECT_NO_THROW(model.Finalise());
  ExpectRefusal(RefusalOf([&] { model.NextOrthogonalComponent(/*xSide=*/false, 1); }), 2, 1, 0, 0);
}

}  // namespace
