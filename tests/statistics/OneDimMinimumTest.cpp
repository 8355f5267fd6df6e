#include "kalmia/statistics/OneDimMinimum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "testing/RecordingProgress.h"

namespace {

struct Function : OneDimMinimum::CallBack {
  explicit Function(std::function<float(float)> f) : of(std::move(f)) {}
  float Evaluate(float x) override {
    ++calls;
    return of(x);
  }
  std::function<float(float)> of;
  int calls = 0;
};

struct Bracket {
  float a, b, c, fa = 0, fb = 0, fc = 0;
  Bracket(Function* f, float from, float to) : a(from), b(to), c(0) {
    OneDimMinimum::BracketMinimum(f, &a, &b, &c, &fa, &fb, &fc);
  }
};

float Parabola(float x) { return (x - 3) * (x - 3) + 1; }

class Brackets : public ::testing::TestWithParam<std::pair<float, float>> {};

TEST_P(Brackets, EncloseTheMinimumWhateverTheStartPoints) {
  const std::function<float(float)> functions[] = {
      Parabola, [](float x) { return std::fabs(x - 3); }, [](float x) { return -std::exp(-(x - 3) * (x - 3) / 200); },
      [](float x) { return std::cosh((x - 3) / 50); }, [](float x) { return (x - 3) * (x - 3) * (x - 3) * (x - 3); }};
  for (const auto& function : functions) {
    Function f(function);
    const Bracket found(&f, GetParam().first, GetParam().second);
    EXPECT_LE(found.fb, found.fa);
    EXPECT_LE(found.fb, found.fc);
    EXPECT_EQ(found.fa, function(found.a));
    EXPECT_EQ(found.fb, function(found.b));
    EXPECT_EQ(found.fc, function(found.c));
    EXPECT_TRUE((found.a <= found.b && found.b <= found.c) || (found.c <= found.b && found.b <= found.a));
    // The functions fall towards 3 from both sides and are flat nowhere else within float's resolution.
    EXPECT_LE(std::min(found.a, found.c), 3.0F);
    EXPECT_GE(std::max(found.a, found.c), 3.0F);
  }
}

INSTANTIATE_TEST_SUITE_P(OneDimMinimum, Brackets,
                         ::testing::Values(std::pair(0.0F, 1.0F), std::pair(1.0F, 0.0F), std::pair(10.0F, 9.0F),
                                           std::pair(2.0F, 4.0F), std::pair(-20.0F, -19.9F), std::pair(3.0F, 8.0F)));

TEST(OneDimMinimum, BracketWalksDownhillFromSwappedStartPoints) {
  Function f([](float x) { return (x - 0.9F) * (x - 0.9F); });
  const Bracket found(&f, 1.0F, 2.0F);  // f(1) < f(2): walks from 2 over 1 to 1 - 1.618034
  EXPECT_EQ(found.a, 2.0F);
  EXPECT_EQ(found.b, 1.0F);
  EXPECT_EQ(found.c, static_cast<float>(1.0 + 1.618034 * (1.0 - 2.0)));
  EXPECT_EQ(f.calls, 3);
}

TEST(OneDimMinimum, BracketTakesTheVertexOfTheParabolaThatLiesInside) {
  Function f(Parabola);
  // From 0 over 1.8 to 1.8 + 1.618034 * 1.8 = 4.7124612: f falls to (1.7124612)^2 + 1 there, above f(1.8) = 2.44.
  const Bracket first(&f, 0.0F, 1.8F);
  EXPECT_EQ(f.calls, 3);
  EXPECT_EQ(first.b, 1.8F);
  // From 0 over 1.2 to 3.1416408, lower than f(1.2): the vertex of the exact parabola, 3, lies between the two.
  f.calls = 0;
  const Bracket second(&f, 0.0F, 1.2F);
  EXPECT_EQ(f.calls, 4);
  EXPECT_EQ(second.a, 1.2F);
  // The vertex is computed in float from differences of values near 3: some units in their last place.
  EXPECT_NEAR(second.b, 3.0F, 2e-6F);
}

TEST(OneDimMinimum, BracketOfAFlatFunctionEndsAtOnce) {
  Function f([](float) { return 7.0F; });
  const Bracket found(&f, 0.0F, 1.0F);
  EXPECT_EQ(f.calls, 3);
  EXPECT_EQ(found.fb, 7.0F);
}

TEST(OneDimMinimum, BracketEndsWhereTheFunctionGivesNaN) {
  Function f([](float x) { return x > 2 ? std::numeric_limits<float>::quiet_NaN() : -x; });
  const Bracket found(&f, 0.0F, 1.0F);
  EXPECT_TRUE(std::isnan(found.fc));
  EXPECT_EQ(f.calls, 3);
}

TEST(OneDimMinimum, BracketOfAFallingFunctionGoesOnUntilTheCallerThrows) {
  int calls = 0;
  Function f([&calls](float x) -> float {
    if (++calls == 40) throw std::runtime_error("enough");
    return -std::atan(x / 1e30F);  // falls over the whole range of floats
  });
  EXPECT_THROW(Bracket(&f, 0.0F, 1.0F), std::runtime_error);
}

TEST(OneDimMinimum, ParabolicStepsAreAtMostAHundredTimesTheLastStep) {
  // Three values on a line whose second difference is tiny: the vertex lies far beyond the limit b + 100 (c - b).
  std::vector<float> places;
  Function f([&places](float x) -> float {
    places.push_back(x);
    return x < 200 ? -x + 1e-6F * x * x : 1e9F;
  });
  const Bracket found(&f, 0.0F, 1.0F);
  ASSERT_GE(places.size(), 4U);
  const float c = places[2];
  EXPECT_EQ(places[3], static_cast<float>(1.0F + 100.0 * (c - 1.0F)));
}

TEST(OneDimMinimum, BracketOfAStraightLineGoesOnByTheGoldenRatio) {
  // r = q = 1.618034 exactly: the denominator is negative then, and the vertex far behind, where it is of no use.
  std::vector<float> places;
  Function f([&places](float x) -> float {
    places.push_back(x);
    return places.size() < 4 ? -x : 1e9F;
  });
  const Bracket found(&f, 0.0F, 1.0F);
  ASSERT_EQ(places.size(), 4U);
  EXPECT_EQ(found.b, places[2]);
  EXPECT_EQ(found.c, places[3]);
  EXPECT_EQ(places[3], static_cast<float>(places[2] + 1.618034 * (places[2] - 1.0F)));
}

TEST(OneDimMinimum, BracketGoesOnFromAVertexBeyondTheLastPointThatIsLower) {
  Function f([](float x) { return (x - 10) * (x - 10); });
  const Bracket found(&f, 0.0F, 1.0F);  // 2.618034 comes next, then the vertex, 10, and a golden step from there
  EXPECT_EQ(f.calls, 5);
  EXPECT_EQ(found.a, static_cast<float>(1.0 + 1.618034 * 1.0));
  EXPECT_NEAR(found.b, 10.0F, 1e-4F);  // from differences of values near 100, each rounded to 4e-6
  EXPECT_EQ(found.c, static_cast<float>(found.b + 1.618034 * (found.b - found.a)));
}

TEST(OneDimMinimum, BracketEndsAtAVertexBeyondTheLastPointThatIsHigher) {
  std::vector<float> places;
  Function f([&places](float x) {
    places.push_back(x);
    return x < 5 ? (x - 10) * (x - 10) : 1000.0F;
  });
  const Bracket found(&f, 0.0F, 1.0F);
  EXPECT_EQ(f.calls, 4);
  EXPECT_EQ(found.a, 1.0F);
  EXPECT_EQ(found.b, places[2]);
  EXPECT_EQ(found.c, places[3]);
  EXPECT_EQ(found.fc, 1000.0F);
}

float Search(Function* f, float a, float b, float c, float tolerance, float* place) {
  return OneDimMinimum::GoldenSectionSearch(f, a, b, c, tolerance, place);
}

TEST(OneDimMinimum, GoldenSectionFindsKnownMinima) {
  float place = 0;
  Function parabola(Parabola);
  const float smallest = Search(&parabola, 0.0F, 2.0F, 10.0F, 1e-3F, &place);
  EXPECT_EQ(smallest, Parabola(place));
  // The loop ends with all points within tolerance * (|x1| + |x2|) = 6e-3 of each other.
  EXPECT_NEAR(place, 3.0F, 6.1e-3F);
  Function kink([](float x) { return std::fabs(x + 5); });
  Search(&kink, -10.0F, -6.0F, 10.0F, 1e-5F, &place);
  EXPECT_NEAR(place, -5.0F, 1.1e-4F);
  Function cosine([](float x) { return std::cos(x); });
  Search(&cosine, 2.0F, 3.0F, 4.0F, 1e-3F, &place);
  EXPECT_NEAR(place, 3.14159265F, 6.5e-3F);
}

TEST(OneDimMinimum, GoldenSectionAcceptsABracketInDescendingOrder) {
  float place = 0;
  Function f(Parabola);
  Search(&f, 10.0F, 2.0F, 0.0F, 1e-3F, &place);
  EXPECT_NEAR(place, 3.0F, 6.1e-3F);
}

TEST(OneDimMinimum, GoldenSectionPlacesItsFirstPointInTheLongerPart) {
  std::vector<float> places;
  Function f([&places](float x) {
    places.push_back(x);
    return Parabola(x);
  });
  float place = 0;
  Search(&f, 0.0F, 2.0F, 10.0F, 10.0F, &place);  // so wide a tolerance needs no round at all
  EXPECT_EQ(places, (std::vector<float>{2.0F, static_cast<float>(2.0 + 0.38196601 * 8.0)}));
  places.clear();
  Search(&f, 0.0F, 8.0F, 10.0F, 10.0F, &place);
  EXPECT_EQ(places, (std::vector<float>{static_cast<float>(8.0 - 0.38196601 * 8.0), 8.0F}));
}

TEST(OneDimMinimum, EqualValuesKeepTheLowerPartAndGiveTheUpperInnerPoint) {
  std::vector<float> places;
  Function f([&places](float x) {
    places.push_back(x);
    return 1.0F;
  });
  float place = 0;
  EXPECT_EQ(Search(&f, 0.0F, 4.0F, 10.0F, 0.5F, &place), 1.0F);
  ASSERT_GE(places.size(), 3U);
  for (std::size_t i = 2; i < places.size(); ++i) EXPECT_LT(places[i], places[0]) << "the upper part is dropped";
  EXPECT_EQ(place, places[places.size() - 2]) << "the former lower point is the upper one now";
}

TEST(OneDimMinimum, ToleranceOfZeroEndsWhenNothingMovesAnyMore) {
  float place = 0;
  Function f(Parabola);
  Search(&f, 0.0F, 2.0F, 10.0F, 0.0F, &place);
  EXPECT_LT(f.calls, 200);
  // Below a distance of sqrt(2^-24) from the minimum, 1 + d^2 rounds to 1.
  EXPECT_NEAR(place, 3.0F, 3e-4F);
}

TEST(OneDimMinimum, IntervalThatClosesOnZeroEnds) {
  float place = 1;
  Function f([](float x) { return std::fabs(x); });
  Search(&f, -1.0F, 0.25F, 1.0F, 1e-6F, &place);
  EXPECT_LT(f.calls, 1000);
  EXPECT_NEAR(place, 0.0F, 1e-30F);  // the interval shrinks by 0.618 a round until the spacing of floats ends it
}

TEST(OneDimMinimum, GoldenSectionEndsWhereTheFunctionGivesNaN) {
  float place = 0;
  Function f([](float) { return std::numeric_limits<float>::quiet_NaN(); });
  EXPECT_TRUE(std::isnan(Search(&f, 0.0F, 4.0F, 10.0F, 1e-3F, &place)));
  EXPECT_LT(f.calls, 1000);  // closes on the lower end, 0, where no relative tolerance is met before float runs out
}

TEST(OneDimMinimum, GoldenSectionOpensABarOfItsOwnAndMovesItBeforeEachEvaluation) {
  ProgressLog log;
  float place = 0;
  Function f(Parabola);
  {
    RecordOwnBars record(&log);
    Search(&f, 0.0F, 2.0F, 10.0F, 1e-2F, &place);
  }
  ASSERT_FALSE(log.calls.empty());
  EXPECT_EQ(log.calls.front().rfind("open Golden Section Search 4.60517", 0), 0U) << log.calls.front();
  EXPECT_NE(log.calls.front().find("0 1 1 null"), std::string::npos) << log.calls.front();
  EXPECT_EQ(log.Count("SetValue"), f.calls - 2);
  EXPECT_EQ(log.calls.back(), "~");
}

TEST(OneDimMinimum, StopReturnsTheBestSoFarAndReleasesTheBar) {
  for (int stopAt = 1; stopAt <= 5; ++stopAt) {
    ProgressLog log;
    log.stopAt = stopAt + 1;  // the opening is a call as well
    float place = 0;
    Function f(Parabola);
    float value = 0;
    {
      RecordOwnBars record(&log);
      value = Search(&f, 0.0F, 2.0F, 10.0F, 1e-6F, &place);
    }
    EXPECT_EQ(f.calls, 2 + log.Count("SetValue") - 1) << "no evaluation after the stop";
    EXPECT_EQ(value, Parabola(place));
    EXPECT_EQ(log.calls.back(), "~");
  }
}

TEST(OneDimMinimum, ExceptionOfTheFunctionPassesThroughAndReleasesTheBar) {
  ProgressLog log;
  RecordOwnBars record(&log);
  float place = 0;
  Function f([](float x) -> float { throw std::runtime_error(std::to_string(x)); });
  EXPECT_THROW(Search(&f, 0.0F, 2.0F, 10.0F, 1e-6F, &place), std::runtime_error);
  EXPECT_EQ(log.calls.back(), "~");
}

}  // namespace
