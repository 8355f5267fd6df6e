#include "kalmia/o2pls/NCYOrthogonalPLS.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "O2PLSCase.h"
#include "PlainO2PLS.h"
#include "kalmia/o2pls/OSCPLSComponentValidator.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/LanguageString.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using Table = NCDataMatrix<float>;
using Model = NCYOrthogonalPLS;

constexpr int kMaxIterations = 200;

/// X and Y of random cells, which have what they have in common by chance.
FloatBlocks Noise(int rows, int xVariables, int yVariables, double holes = 0.0) {
  return {RandomMatrix<float>(rows, xVariables, holes, 1), RandomMatrix<float>(rows, yVariables, holes, 2)};
}

Model ModelOf(const FloatBlocks& blocks, int components, int maxPLSComponents = 0) {
  Model model(&blocks.X, &blocks.Y, kMaxIterations, maxPLSComponents);
  for (int a = 0; a < components; ++a) model.NextComponent(/*showProgress=*/false);
  return model;
}

/// All that a model shows.
std::vector<std::vector<std::vector<float>>> Everything(const Model& model) {
  return {CellsOf(*model.GetPprim()), CellsOf(*model.GetWprim()), CellsOf(*model.GetTprim()),
          CellsOf(*model.GetXResiduals())};
}

const char* CannotGoOn() { return LanguageString::Get(10124); }

double RelativeGap(const Table& a, const Table& b) {
  return std::sqrt(static_cast<double>((a - b).GetSS() / b.GetSS()));
}

// ---- The search, against a twin

/// v without its projection on the columns of Y.
plain::Vector OutsideOf(const plain::Table& Y, const plain::Vector& v) {
  const plain::Table squares = plain::Product(plain::Transposed(Y), Y);
  const plain::Vector shares = plain::Product(plain::Inverse(squares), plain::TransposedProduct(Y, v));
  const plain::Vector inside = plain::Product(Y, shares);
  plain::Vector outside = v;
  for (std::size_t i = 0; i < v.size(); ++i) outside[i] -= inside[i];
  return outside;
}

/// The coefficients of a PLS model of one y, of `most` components or until a ten-thousandth of X is left.
plain::Vector PLSCoefficients(plain::Table X, plain::Vector y, int most) {
  const double limit = 0.0001 * plain::SquaresOf(X);
  plain::Table W, P;
  plain::Vector c;
  for (int a = 0; a < most && limit <= plain::SquaresOf(X); ++a) {
    plain::Vector w = plain::TransposedProduct(X, y);
    plain::Normalise(&w);
    const plain::Vector t = plain::Product(X, w);
    plain::Vector p = plain::TransposedProduct(X, t);
    for (double& cell : p) cell /= plain::Dot(t, t);
    c.push_back(plain::Dot(y, t) / plain::Dot(t, t));
    plain::AddOuter(&X, t, p, -1.0);
    for (std::size_t i = 0; i < y.size(); ++i) y[i] -= c.back() * t[i];
    W.push_back(w);
    P.push_back(p);
  }
  return plain::TransposedProduct(W, plain::Product(plain::Inverse(plain::Product(P, plain::Transposed(W))), c));
}

/// The weights after so many rounds.
plain::Vector WeightsOfTwin(const plain::Table& X, const plain::Table& Y, int rounds, int mostPLS) {
  plain::Vector w = plain::FirstLoading(X);
  for (int i = 0; i < rounds; ++i) {
    w = PLSCoefficients(X, OutsideOf(Y, plain::Product(X, w)), mostPLS);
    plain::Normalise(&w);
  }
  return w;
}

struct Shape {
  const char* name;
  int rows, xVariables, yVariables, cap, mostPLS;
};

class NCYOrthogonalPLSOnTables : public ::testing::TestWithParam<Shape> {};

const Shape kShapes[] = {{"OneY", 30, 6, 1, 0, 3},
                         {"ThreeY", 30, 6, 3, 0, 3},
                         {"CappedAtTwo", 30, 8, 2, 2, 2},
                         {"CappedByTheSide", 30, 5, 2, 20, 4},
                         {"Wide", 12, 20, 2, 0, 6}};

INSTANTIATE_TEST_SUITE_P(, NCYOrthogonalPLSOnTables, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

TEST_P(NCYOrthogonalPLSOnTables, FindsTheWeightsOfAPlainTwinInAsManyRounds) {
  const Shape& s = GetParam();
  const FloatBlocks blocks = Noise(s.rows, s.xVariables, s.yVariables);
  ProgressLog log;
  const RecordOwnBars bars(&log);
  const Model model = ModelOf(blocks, 1, s.cap);
  const int rounds = log.Count("SpinDone");
  EXPECT_GE(rounds, 2);
  // The first direction is that of an iteration that ends at a change of 1e-5; no round magnifies it ten times.
  const plain::Vector expected = WeightsOfTwin(plain::TableOf(blocks.X), plain::TableOf(blocks.Y), rounds, s.mostPLS);
  EXPECT_LT(plain::SineOfAngle(plain::TableOf(*model.GetWprim())[0], expected), 1e-4);
}

/// What the spinner was told at the end of each round: the call behind SpinDone.
std::vector<double> ValuesOfRounds(const ProgressLog& log) {
  std::vector<double> values;
  for (std::size_t i = 1; i < log.calls.size(); ++i)
    if (log.calls[i - 1] == "SpinDone") values.push_back(std::stod(log.calls[i].substr(sizeof "SetValue")));
  return values;
}

TEST_P(NCYOrthogonalPLSOnTables, GoesOnUntilTheWeightsMoveByATenMillionthAndSaysHowFarThatIs) {
  const Shape& s = GetParam();
  const FloatBlocks blocks = Noise(s.rows, s.xVariables, s.yVariables);
  ProgressLog log;
  const RecordOwnBars bars(&log);
  ModelOf(blocks, 1, s.cap);
  const std::vector<double> values = ValuesOfRounds(log);
  ASSERT_GE(values.size(), 2U);
  for (std::size_t i = 0; i + 1 < values.size(); ++i) EXPECT_LT(values[i], 0.0) << "round " << i + 1;
  EXPECT_TRUE(values.back() >= 0.0 || values.size() == kMaxIterations) << values.back();
  // The first round's move by the twin: -(log10 d + 7) * 10, d being the squared change over the squares. Its weights
  // are right to 1e-4 and move a good deal further.
  const plain::Table X = plain::TableOf(blocks.X), Y = plain::TableOf(blocks.Y);
  const plain::Vector first = WeightsOfTwin(X, Y, 0, s.mostPLS), second = WeightsOfTwin(X, Y, 1, s.mostPLS);
  double change = 0.0;
  const double sign = plain::Dot(first, second) < 0.0 ? -1.0 : 1.0;  // coefficients of Xw point the way of w
  for (std::size_t k = 0; k < first.size(); ++k) change += std::pow(second[k] - sign * first[k], 2);
  EXPECT_NEAR(values[0], -(std::log10(change) + 7.0) * 10.0, 0.05);
}

TEST_P(NCYOrthogonalPLSOnTables, HasScoresOfItsWeightsAndTakesThemOutByTheirLoadings) {
  const Shape& s = GetParam();
  const FloatBlocks blocks = Noise(s.rows, s.xVariables, s.yVariables, 0.05);
  Model model(&blocks.X, &blocks.Y, kMaxIterations, s.cap);
  for (int a = 1; a <= 2; ++a) {
    Table before = *model.GetXResiduals();
    model.NextComponent(/*showProgress=*/false);
    const NCDataVector<float>& w = (*model.GetWprim())[a];
    EXPECT_NEAR(static_cast<double>(w.GetSS()), 1.0, 1e-6) << "unit length, to the rounding of its cells";
    const NCDataVector<float> t = before.RegressRows(w), p = before.RegressColumns(t);
    EXPECT_EQ(CellsOf((*model.GetTprim())[a]), CellsOf(t)) << "over what is there, nothing held up";
    EXPECT_EQ(CellsOf((*model.GetPprim())[a]), CellsOf(p));
    before.AddVprimV(t, p, -1.0F);
    EXPECT_EQ(CellsOf(*model.GetXResiduals()), CellsOf(before));
    EXPECT_EQ(model.GetComponents(), a);
  }
  EXPECT_TRUE(HasExactCounts(*model.GetXResiduals()));
}

TEST_P(NCYOrthogonalPLSOnTables, WStarGivesTheScoresFromTheTableAsItCame) {
  const Shape& s = GetParam();
  const FloatBlocks blocks = Noise(s.rows, s.xVariables, s.yVariables);
  const Model model = ModelOf(blocks, 2, s.cap);
  const Table scores = model.GetWStarPrim().MatrixMultiply(blocks.X, false, true);
  EXPECT_LT(RelativeGap(scores, *model.GetTprim()), 1e-5) << "float cells, in sums of twenty";
}

TEST_P(NCYOrthogonalPLSOnTables, FiltersTheTableItWasMadeFromToItsOwnResiduals) {
  const Shape& s = GetParam();
  const FloatBlocks blocks = Noise(s.rows, s.xVariables, s.yVariables, 0.05);
  const Model model = ModelOf(blocks, 2, s.cap);
  Table filtered = blocks.X;
  model.CalculateResiduals(&filtered);
  EXPECT_EQ(CellsOf(filtered), CellsOf(*model.GetXResiduals()));
}

// ---- Taking back, filtering

TEST(NCYOrthogonalPLS, TakesNoComponentBackWhereThereIsNone) {
  const FloatBlocks blocks = Noise(12, 5, 2);
  Model model = ModelOf(blocks, 0);
  model.RemoveComponent();
  EXPECT_EQ(model.GetComponents(), 0);
  EXPECT_EQ(CellsOf(*model.GetXResiduals()), CellsOf(blocks.X));
}

TEST(NCYOrthogonalPLS, HasTheTableBackAfterTakingAComponentBack) {
  const FloatBlocks blocks = Noise(12, 5, 2, 0.05);
  Model model = ModelOf(blocks, 1);
  const auto one = Everything(model);
  const Table before = *model.GetXResiduals();
  model.NextComponent(/*showProgress=*/false);
  model.RemoveComponent();
  EXPECT_EQ(model.GetComponents(), 1);
  EXPECT_EQ(CellsOf(*model.GetPprim()), one[0]);
  EXPECT_EQ(CellsOf(*model.GetWprim()), one[1]);
  EXPECT_EQ(CellsOf(*model.GetTprim()), one[2]);
  EXPECT_LT(RelativeGap(*model.GetXResiduals(), before), 1e-6) << "two roundings of each cell";
  model.RemoveComponent();
  EXPECT_EQ(model.GetPprim()->SizeRows(), 0);
  EXPECT_LT(RelativeGap(*model.GetXResiduals(), blocks.X), 1e-6);
}

TEST(NCYOrthogonalPLS, LeavesATableAsItIsWithoutComponents) {
  Table table = RandomMatrix<float>(4, 5, 0.1, 9);
  const auto before = CellsOf(table);
  ModelOf(Noise(12, 5, 2), 0).CalculateResiduals(&table);
  EXPECT_EQ(CellsOf(table), before);
}

TEST(NCYOrthogonalPLS, LeavesTheTablesAsTheyAre) {
  const FloatBlocks blocks = Noise(12, 5, 2);
  const auto x = CellsOf(blocks.X), y = CellsOf(blocks.Y);
  ModelOf(blocks, 2);
  EXPECT_EQ(CellsOf(blocks.X), x);
  EXPECT_EQ(CellsOf(blocks.Y), y);
}

TEST(NCYOrthogonalPLS, TakesOutWhatIsUniqueToXAndLeavesWhatIsInCommon) {
  const FloatBlocks blocks = MakeFloatBlocks({60, 10, 4, 1, 1, 0}, 0.01, 5);
  const Model model = ModelOf(blocks, 1);
  const plain::Vector t = plain::TableOf(*model.GetTprim())[0];
  const plain::Vector outside = OutsideOf(plain::TableOf(blocks.Y), t);
  // The model inside stops short of all of t, so something of Y comes in again; the loading of the score in common has
  // a length of 10, that of the unique one 8, so that without the search it would be most of t.
  EXPECT_GT(plain::Dot(outside, outside), 0.9 * plain::Dot(t, t));
  EXPECT_LT(model.GetXResiduals()->GetSS(), 0.75L * blocks.X.GetSS());
}

// ---- Rounds and progress

TEST(NCYOrthogonalPLS, RunsOneRoundWhereOneIsAllowed) {
  const FloatBlocks blocks = Noise(12, 5, 2);
  ProgressLog log;
  const RecordOwnBars bars(&log);
  Model model(&blocks.X, &blocks.Y, /*maxIterations=*/1, 0);
  model.NextComponent(/*showProgress=*/false);
  EXPECT_EQ(log.Count("SpinDone"), 1);
  EXPECT_EQ(model.GetComponents(), 1) << "the limit is no failure";
}

TEST(NCYOrthogonalPLS, OpensASpinnerThatSaysWhetherItIsToBeSeen) {
  const FloatBlocks blocks = Noise(12, 5, 2);
  for (const bool show : {false, true}) {
    ProgressLog log;
    const RecordOwnBars bars(&log);
    Model model = ModelOf(blocks, 1);
    model.NextComponent(show);
    CString title;
    title.Format(LanguageString::Get(10123), 2);
    const std::string line =
        "open " + std::string(static_cast<const char*>(title)) + " -1 0 " + (show ? "1 1 1" : "1 0 1") + " null";
    EXPECT_THAT(log.calls, ::testing::Contains(line)) << log.Joined().substr(0, 600);
    EXPECT_EQ(log.Count("open"), log.Count("~"));
  }
}

TEST(NCYOrthogonalPLS, AppendsNothingWheneverTheUserStops) {
  const FloatBlocks blocks = Noise(8, 4, 2);
  const Model whole = ModelOf(blocks, 1);
  bool stopped = true;
  int stops = 0, ownStops = 0, stopsOfY = 0;
  for (int stopAt = 1; stopped; ++stopAt) {
    SCOPED_TRACE("stop at call " + std::to_string(stopAt));
    Model model(&blocks.X, &blocks.Y, kMaxIterations, 0);
    const auto before = Everything(model);
    bool isYLost = false;
    {
      ProgressLog log;
      log.stopAt = stopAt;
      const RecordOwnBars bars(&log);
      const auto text = TextOf([&] { model.NextComponent(/*showProgress=*/true); });
      stopped = text.has_value();
      EXPECT_EQ(log.Count("open"), log.Count("~"));
      ownStops += text == CannotGoOn() ? 1 : 0;
      isYLost = !model.GetY() && text == LanguageString::Get(10147);  // a stop of a principal component, and not of X
      stopsOfY += isYLost ? 1 : 0;
    }
    if (!stopped) break;
    ++stops;
    ASSERT_EQ(Everything(model), before);
    ASSERT_EQ(model.GetComponents(), 0);
    const auto again = TextOf([&] { model.NextComponent(/*showProgress=*/false); });
    if (isYLost)
      ASSERT_EQ(again, CannotGoOn());
    else
      ASSERT_EQ(Everything(model), Everything(whole)) << "it can go on afterwards";
  }
  EXPECT_GT(stopsOfY, 0);
  EXPECT_GT(stops, ownStops) << "the models inside stop too";
  EXPECT_GT(ownStops, 1);
}

// ---- Failures

TEST(NCYOrthogonalPLS, RefusesTablesThatDoNotBelongTogetherOrHaveEmptyRows) {
  const Table whole = RandomMatrix<float>(6, 3, 0, 1), longer = RandomMatrix<float>(7, 3, 0, 1);
  Table second = whole, third = whole;
  for (int j = 1; j <= 3; ++j) {
    second(2, j, kMissing);
    third(3, j, kMissing);
  }
  const char* const rows = "Internal error in NCYOrthogonalPLS::NCYOrthogonalPLS";
  const char* const emptyX = "The X matrix contains at least one row with only missing values.";
  const char* const emptyY = "The Y matrix contains at least one row with only missing values.";
  const struct {
    const char* what;
    const Table &X, &Y;
    const char* text;
  } cases[] = {{"X longer", longer, whole, rows},        {"Y longer", second, longer, rows},
               {"an empty row of X", second, whole, emptyX}, {"an empty row of Y", whole, second, emptyY},
               {"both in one row", second, second, emptyX},  {"Y's row before X's", third, second, emptyY},
               {"X's row before Y's", second, third, emptyX}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(TextOf([&] { Model(&c.X, &c.Y, 10, 0); }), c.text);
  }
}

TEST(NCYOrthogonalPLS, CannotStartFromAYWithoutVariance) {
  const FloatBlocks blocks{RandomMatrix<float>(10, 4, 0, 1), Table(10, 2, 0.0F)};
  Model model(&blocks.X, &blocks.Y, kMaxIterations, 0);
  const auto next = [&] { model.NextComponent(/*showProgress=*/false); };
  EXPECT_EQ(TextOf(next), CannotGoOn());
  EXPECT_EQ(model.GetY(), nullptr);
  EXPECT_EQ(TextOf(next), CannotGoOn());
  EXPECT_EQ(model.GetComponents(), 0);
  const NCDataVector<float> v = RandomVector<float>(10, 0, 3);
  EXPECT_EQ(TextOf([&] { model.GetYAngle(&v); }), CannotGoOn());
}

TEST(NCYOrthogonalPLS, HasNoYAnyMoreOnceItsComponentsHaveFailed) {
  const Table X = RandomMatrix<float>(10, 4, 0, 1);
  const NCDataVector<float> v = RandomVector<float>(10, 0, 3);
  for (const float cell : {1e30F, std::numeric_limits<float>::infinity()}) {  // of squares beyond a float
    Table Y = RandomMatrix<float>(10, 2, 0, 2);
    Y(3, 1, cell);
    Model model(&X, &Y, kMaxIterations, 0);
    EXPECT_EQ(TextOf([&] { model.NextComponent(/*showProgress=*/false); }), LanguageString::Get(10374));
    EXPECT_EQ(model.GetY(), nullptr);
    EXPECT_EQ(TextOf([&] { model.NextComponent(/*showProgress=*/false); }), CannotGoOn());
    EXPECT_EQ(TextOf([&] { model.GetYAngle(&v); }), CannotGoOn());
    EXPECT_EQ(model.GetComponents(), 0);
  }
}

TEST(NCYOrthogonalPLS, PassesOnThatThereIsNoFirstComponentInside) {
  // All of X lies in the space of Y: what is projected away is all that there is.
  const Table X = MatrixOf<float>({{1, 0}, {0, 1}, {1, 0}, {0, 1}});
  Model model(&X, &X, kMaxIterations, 0);
  NCError::Level level = NCError::Level0;
  try {
    model.NextComponent(/*showProgress=*/false);
    FAIL() << "a component of nothing";
  } catch (const NCError& error) {
    level = error.GetLevel();
  }
  EXPECT_EQ(level, NCError::Level1);
  EXPECT_EQ(model.GetComponents(), 0);
  EXPECT_EQ(CellsOf(*model.GetXResiduals()), CellsOf(X));
}

/// Patterns of +1 and -1 over eight rows, at right angles to each other: which = 1, 2, 4.
float Pattern(int which, int row) { return (row - 1) / which % 2 == 0 ? 1.0F : -1.0F; }

TEST(NCYOrthogonalPLS, SwallowsThatTheModelInsideHasNoSecondComponent) {
  // All scores of the first direction are unrelated to Y, and the model inside reproduces them with one component. A
  // fifth of X is left then, so that it is asked for a second one, for which there is nothing to reproduce.
  Table X(8, 2), Y(8, 1);
  for (int i = 1; i <= 8; ++i) {
    X(i, 1, Pattern(1, i));
    X(i, 2, 0.5F * Pattern(2, i));
    Y(i, 1, Pattern(4, i));
  }
  const NCDataVector<float> t = X.GetColumn(1);
  NCPLS inside(&X, &t, kMaxIterations);
  OSCPLSComponentValidator validator(&inside, /*maxComponents=*/2);
  inside.NextComponent(nullptr, nullptr, /*quiet=*/false, /*strict=*/true);
  inside.CalculateResiduals();
  ASSERT_TRUE(validator.IsValid()) << "a second component is asked for";
  EXPECT_TRUE(TextOf([&] { inside.NextComponent(nullptr, nullptr, /*quiet=*/false, /*strict=*/true); }).has_value());

  Model model(&X, &Y, kMaxIterations, /*maxPLSComponents=*/2);
  model.NextComponent(/*showProgress=*/false);
  EXPECT_EQ(CellsOf(*model.GetWprim()), (std::vector<std::vector<float>>{{1.0F, 0.0F}}));
  EXPECT_EQ(CellsOf(*model.GetPprim()), (std::vector<std::vector<float>>{{1.0F, 0.0F}}));
  EXPECT_EQ(CellsOf(model.GetXResiduals()->GetColumn(2)), CellsOf(X.GetColumn(2)));
}

TEST(NCYOrthogonalPLS, GoesOnWithTheComponentsThatTheModelInsideCanHave) {
  // X has rank one, and y nothing to do with it; the model inside has a first component and no second.
  Table X(8, 3), Y(8, 1);
  for (int i = 1; i <= 8; ++i) {
    for (int j = 1; j <= 3; ++j) X(i, j, i % 2 == 0 ? 1.0F : -1.0F);
    Y(i, 1, i <= 4 ? 1.0F : -1.0F);
  }
  Model model(&X, &Y, kMaxIterations, 0);
  model.NextComponent(/*showProgress=*/false);
  for (int j = 1; j <= 3; ++j) EXPECT_NEAR(std::abs((*model.GetWprim())[1][j]), 1 / std::sqrt(3.0), 1e-6);
  EXPECT_LT(model.GetXResiduals()->GetSS(), 1e-10L);
}

// ---- The angle to Y

TEST(NCYOrthogonalPLS, MeasuresTheAngleOfAVectorToTheSpaceOfY) {
  constexpr double kPi = 3.14159265358979323846;
  Table X = RandomMatrix<float>(8, 3, 0, 1), Y(8, 1);
  NCDataVector<float> y(8), z(8);
  for (int i = 1; i <= 8; ++i) {
    y(i, i % 2 == 0 ? 1.0F : -1.0F);
    z(i, i <= 4 ? 1.0F : -1.0F);
    Y(i, 1, y[i]);
  }
  const Model model(&X, &Y, kMaxIterations, 0);
  EXPECT_NE(model.GetY(), nullptr);
  EXPECT_EQ(model.GetYAngle(&z), 90.0) << "nothing of it in the space of Y: the cosine is 1 exactly";
  EXPECT_EQ(model.GetY(), nullptr) << "its scores have taken its place";
  for (const double angle : {0.1, 0.5, 1.0, 1.5}) {
    const NCDataVector<float> v = y * std::cos(angle) + z * std::sin(angle);
    // The cosine, sin(angle), comes of sums rounded to float: 2^-22. Its arc is a good deal more sensitive towards 1.
    const double expected = 90.0 - 90.0 * std::acos(std::sin(angle)) / kPi;
    EXPECT_NEAR(model.GetYAngle(&v), expected, angle > 1.2 ? 2e-3 : 1e-4) << angle;
  }
  const NCDataVector<float> almost = y + z * 1e-3;
  EXPECT_NEAR(model.GetYAngle(&almost), 45.0, 0.05);
}

TEST(NCYOrthogonalPLS, CountsDirectionsOfYThatHoldMoreThanAThousandth) {
  const Table X = RandomMatrix<float>(8, 3, 0, 1);
  for (const double share : {0.0011, 0.0009}) {
    Table Y(8, 2);
    NCDataVector<float> v(8);
    for (int i = 1; i <= 8; ++i) {
      Y(i, 1, Pattern(1, i));
      Y(i, 2, static_cast<float>(std::sqrt(share)) * Pattern(2, i));
      v(i, Pattern(2, i) + 0.01F * Pattern(4, i));
    }
    const Model model(&X, &Y, kMaxIterations, 0);
    // A hundredth of v lies outside of both: the arc cosine of 0.01 is 0.57 degrees off a right angle, here half that.
    EXPECT_NEAR(model.GetYAngle(&v), share > 0.001 ? 45.29 : 90.0, 0.01) << share;
  }
}

// ---- Copies

TEST(NCYOrthogonalPLS, CopiesOfAModelGoTheirOwnWays) {
  const FloatBlocks blocks = Noise(12, 5, 2);
  Model model = ModelOf(blocks, 1);
  const auto one = Everything(model);
  Model copy(model), assigned;
  assigned = model;
  copy.NextComponent(/*showProgress=*/false);
  EXPECT_EQ(Everything(model), one);
  assigned.NextComponent(/*showProgress=*/false);
  EXPECT_EQ(Everything(assigned), Everything(copy));
  const Model fresh(&blocks.X, &blocks.Y, kMaxIterations, 0);
  Model copyOfFresh(fresh);
  copyOfFresh.NextComponent(/*showProgress=*/false);
  EXPECT_NE(fresh.GetY(), nullptr) << "Y is copied too";
  EXPECT_EQ(Everything(copyOfFresh), one);
}

}  // namespace
