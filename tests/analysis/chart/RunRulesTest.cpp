#include "kalmia/analysis/chart/RunRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr RunZones kZones = {0.0, -3.0, 3.0};  ///< sigma 1 about 0
constexpr double kHole = std::numeric_limits<double>::quiet_NaN();

/// The points, from 1, at which rule `number` of the set is broken.
std::vector<int> Broken(const std::string& set, int number, const std::vector<double>& values) {
  std::vector<int> points;
  for (const RunSignal& signal : FindRuns(values, kZones, RunRulesOfWord(set))) {
    if (signal.rule->number == number) points.push_back(static_cast<int>(signal.point) + 1);
  }
  return points;
}

std::vector<int> Sides(const std::string& set, int number, const std::vector<double>& values) {
  std::vector<int> sides;
  for (const RunSignal& signal : FindRuns(values, kZones, RunRulesOfWord(set))) {
    if (signal.rule->number == number) sides.push_back(signal.side);
  }
  return sides;
}

TEST(RunRules, OnePointBeyondThreeSigmaIsTheFirstOfEachSet) {
  const std::vector<double> values = {0, 3, 3.001, -3, -3.001, 2};  // a point on a limit is within
  for (const char* set : {"", "western-electric", "nelson"}) {
    EXPECT_THAT(Broken(set, 1, values), ElementsAre(3, 5)) << set;
    EXPECT_THAT(Sides(set, 1, values), ElementsAre(1, -1)) << set;
  }
}

TEST(RunRules, TwoOfThreeBeyondTwoSigmaAreJudgedAtTheSecondOfThem) {
  for (const auto& [set, number] : {std::make_pair("western-electric", 2), std::make_pair("nelson", 5)}) {
    // 2.1 at 2 and 4: among 2 to 4. 5 lies within, so the pair has been judged already. 7 and 10 are four apart.
    EXPECT_THAT(Broken(set, number, {0, 2.1, 0, 2.1, 0, 0, 2.1, 0, 0, 2.1}), ElementsAre(4));
    EXPECT_THAT(Broken(set, number, {2.1, -2.1, 2, 0, -2.1, -2.1}), ElementsAre(6));  // one side; 2 is not beyond 2
    EXPECT_THAT(Broken(set, number, {2.1, 3.5}), ElementsAre(2));  // two will do, and the limit is beyond 2 sigma too
    EXPECT_THAT(Broken(set, number, {2.1, 0, kHole, 2.1}), IsEmpty());
  }
}

TEST(RunRules, FourOfFiveBeyondOneSigmaAreJudgedAtTheFourthOfThem) {
  for (const auto& [set, number] : {std::make_pair("western-electric", 3), std::make_pair("nelson", 6)}) {
    EXPECT_THAT(Broken(set, number, {1.1, 1.1, -2, 1.1, 1.1}), ElementsAre(5));  // the fifth may lie anywhere
    EXPECT_THAT(Broken(set, number, {1.1, 1.1, 1.1, 1.1, 0, 1.1}), ElementsAre(4, 6));
    EXPECT_THAT(Broken(set, number, {1.1, 1.1, 0, 0, 1.1, 1.1, 1, 1.1}), IsEmpty());  // 1 is not beyond 1
    EXPECT_THAT(Sides(set, number, {-1.1, -1.1, -1.1, -1.1}), ElementsAre(-1));
  }
}

std::vector<double> Repeated(int count, double value) {
  return std::vector<double>(static_cast<std::size_t>(count), value);
}

TEST(RunRules, RunOnOneSideIsEightPointsForWesternElectricAndNineForNelson) {
  EXPECT_THAT(Broken("western-electric", 4, Repeated(9, 0.1)), ElementsAre(8, 9));
  EXPECT_THAT(Broken("nelson", 2, Repeated(9, -0.1)), ElementsAre(9));
  EXPECT_THAT(Sides("nelson", 2, Repeated(9, -0.1)), ElementsAre(-1));
  std::vector<double> touching = Repeated(12, 0.1);
  touching[5] = 0.0;  // on the line is on neither side: the run begins again
  EXPECT_THAT(Broken("western-electric", 4, touching), IsEmpty());
  touching[5] = kHole;
  EXPECT_THAT(Broken("western-electric", 4, touching), IsEmpty());
}

TEST(RunRules, SixPointsRisingOrFallingAreATrend) {
  EXPECT_THAT(Broken("nelson", 3, {0, .1, .2, .3, .4, .5, .6, .55}), ElementsAre(6, 7));
  EXPECT_THAT(Broken("nelson", 3, {0, .1, .2, .2, .3, .4, .5}), IsEmpty());  // five with a step, then a rest
  EXPECT_THAT(Sides("nelson", 3, {.5, .4, .3, .2, .1, 0}), ElementsAre(-1));
}

TEST(RunRules, FourteenPointsUpAndDownInTurnAreAnAlternation) {
  std::vector<double> values;
  for (int i = 0; i < 15; ++i) values.push_back(i % 2 == 0 ? 0.5 : 0.5 + 0.01 * i);
  EXPECT_THAT(Broken("nelson", 4, values), ElementsAre(14, 15));
  EXPECT_THAT(Sides("nelson", 4, values), ElementsAre(0, 0));
  values[7] = values[6];  // a step of 0 is neither
  EXPECT_THAT(Broken("nelson", 4, values), IsEmpty());
}

TEST(RunRules, FifteenPointsWithinOneSigmaHugTheCentreLine) {
  std::vector<double> values;
  for (int i = 0; i < 16; ++i) values.push_back(i % 3 == 0 ? -0.9 : 0.9);
  EXPECT_THAT(Broken("nelson", 7, values), ElementsAre(15, 16));
  values[3] = 1.0;  // on the line is not within
  EXPECT_THAT(Broken("nelson", 7, values), IsEmpty());
}

TEST(RunRules, EightPointsOnBothSidesWithNoneWithinOneSigmaAvoidTheCentreLine) {
  EXPECT_THAT(Broken("nelson", 8, {1.1, -1.1, 1.1, 1.1, -1.1, 1.1, 1.1, 1.1, -1.1}), ElementsAre(8, 9));
  EXPECT_THAT(Broken("nelson", 8, Repeated(9, 1.1)), IsEmpty());  // one side only: rule 6 has told it before
  EXPECT_THAT(Broken("nelson", 8, {1.1, -1.1, 1.1, 1.0, -1.1, 1.1, 1.1, 1.1, -1.1}), IsEmpty());
}

TEST(RunRules, OneProcessAtRestBreaksNone) {
  const RunZones flat = {5.0, 5.0, 5.0};
  EXPECT_THAT(FindRuns(Repeated(30, 5.0), flat, RunRulesOfWord("nelson")), IsEmpty());
}

TEST(RunRules, RulesOfOnePointComeInTheirOrder) {
  std::vector<double> values = Repeated(9, 2.5);
  values.back() = 4;
  std::vector<int> numbers;
  for (const RunSignal& signal : FindRuns(values, kZones, RunRulesOfWord("nelson"))) {
    if (signal.point == 8) numbers.push_back(signal.rule->number);
  }
  EXPECT_THAT(numbers, ElementsAre(1, 2, 5, 6));
}

/// Normal numbers that are the same everywhere: Box and Muller's method on the generator's own integers.
class NormalNumbers {
 public:
  double Next() {
    const double radius = std::sqrt(-2.0 * std::log(Uniform()));
    return radius * std::cos(2.0 * std::acos(-1.0) * Uniform());
  }

 private:
  double Uniform() { return (static_cast<double>(random_() >> 11U) + 0.5) * 0x1p-53; }
  std::mt19937_64 random_{1987};
};

/// The first point of a process under control at which one of the first `counts` rules is broken, for each row of
/// kSets.
using RunLengths = std::array<int, 5>;
constexpr std::array<const char*, 5> kSets = {"1", "12", "13", "14", "1234"};

RunLengths FirstSignals(NormalNumbers* numbers) {
  const std::vector<RunRule>& rules = RunRulesOfWord("western-electric");
  RunLengths lengths = {};
  std::vector<double> window;
  for (int point = 1; lengths[0] == 0 || lengths[1] == 0 || lengths[2] == 0 || lengths[3] == 0; ++point) {
    window.push_back(numbers->Next());
    if (window.size() > 8) window.erase(window.begin());
    for (const RunSignal& signal : FindRuns(window, kZones, rules)) {
      if (signal.point + 1 != window.size()) continue;
      for (std::size_t i = 0; i < kSets.size(); ++i) {
        const bool isIn = std::string(kSets[i]).find(std::to_string(signal.rule->number)) != std::string::npos;
        if (isIn && lengths[i] == 0) lengths[i] = point;
      }
    }
  }
  return lengths;
}

TEST(RunRules, FalseAlarmsOfWesternElectricComeAsOftenAsPublished) {
  // Average run lengths without a shift: C. W. Champ and W. H. Woodall, Technometrics 29 (1987) 393-399, table 1.
  const std::array<double, 5> published = {370.40, 225.44, 166.05, 152.73, 91.75};
  constexpr int kRuns = 4000;
  std::array<double, 5> sums = {};
  NormalNumbers numbers;
  for (int run = 0; run < kRuns; ++run) {
    const RunLengths lengths = FirstSignals(&numbers);
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += lengths[i];
  }
  for (std::size_t i = 0; i < sums.size(); ++i) {
    // Run lengths are all but geometric, so that their standard deviation is below their mean: three standard errors.
    EXPECT_NEAR(sums[i] / kRuns, published[i], 3 * published[i] / std::sqrt(kRuns)) << "rules " << kSets[i];
  }
}

}  // namespace
}  // namespace kalmia::analysis
