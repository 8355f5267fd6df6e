#include "kalmia/analysis/validation/JackKnife.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

using ::testing::IsNan;

// data/jack_knife.R: R 4.2.2, pls 2.8-1; coefficients of five columns in the model and in seven rounds
const std::vector<double> kOfModel = {-53.722315884384, -0.295266453873, -30.055500349571, -7.088053799404,
                                      -0.192746030308};
const std::vector<std::vector<double>> kOfRounds = {
    {-51.3314903871, -0.085400629095, -33.5792335026, -6.89307357911, -0.214073923124},
    {-54.7894458361, 0.527145551408, -30.2626422769, -12.98915522196, 0.555789490730},
    {-61.8634034207, -1.355690487370, -19.6949776605, -5.12002531153, -0.305140594133},
    {-52.2758433569, -1.347439898185, -26.4386770696, -6.98962976559, -0.238501129549},
    {-45.4974249364, 0.676295429470, -43.4635693832, -7.17417701038, -0.233635373187},
    {-54.0349672028, 0.741385670406, -38.5055099073, -8.10310202830, -0.250375032688},
    {-52.0492409390, -0.511777149010, -27.0204513245, -6.34946615894, -0.204816173143}};

JackKnife Filled(int repeats) {
  JackKnife jackKnife(kOfModel, 7);
  for (int repeat = 0; repeat < repeats; ++repeat) {
    for (const std::vector<double>& round : kOfRounds) jackKnife.AddRound(round);
  }
  return jackKnife;
}

TEST(JackKnife, HasTheStandardErrorsAndPValuesOfThePackagePls) {
  const std::vector<double> errors = {11.177918168008, 2.073801945280, 18.360017354356, 5.879292269526, 0.705463434899};
  const std::vector<double> p = {0.00298205853609, 0.89144120387959, 0.15274357032407, 0.27335580855888,
                                 0.79384574887104};
  const JackKnifeResult result = Filled(1).Result();
  EXPECT_EQ(result.degrees, 6);
  for (std::size_t k = 0; k < kOfModel.size(); ++k) {
    // Twelve digits of each number; the second column loses one in its differences.
    EXPECT_NEAR(result.standardErrors[k] / errors[k], 1.0, 1e-10);
    EXPECT_NEAR(result.p[k] / p[k], 1.0, 1e-9);
    EXPECT_NEAR(result.lower[k], kOfModel[k] - 2.44691185114 * errors[k], 1e-9);
    EXPECT_NEAR(result.upper[k], kOfModel[k] + 2.44691185114 * errors[k], 1e-9);
  }
}

TEST(JackKnife, AveragesTheVariancesOfRepeats) {
  JackKnife jackKnife({1.0}, 2);
  for (const double b : {0.0, 2.0, 4.0, 4.0}) jackKnife.AddRound({b});
  const JackKnifeResult result = jackKnife.Result();
  EXPECT_EQ(result.degrees, 1);  // of the groups, however often they are drawn
  EXPECT_DOUBLE_EQ(result.standardErrors[0], std::sqrt((0.5 * 2.0 + 0.5 * 18.0) / 2.0));
  const JackKnifeResult once = Filled(1).Result(), twice = Filled(2).Result();
  for (std::size_t k = 0; k < kOfModel.size(); ++k) {
    EXPECT_NEAR(twice.standardErrors[k] / once.standardErrors[k], 1.0, 1e-14);  // a sum of 14 numbers
  }
}

TEST(JackKnife, OfNumbersThatNeverMoveIsTheNumberAlone) {
  JackKnife jackKnife({0.0, -3.0}, 3);
  for (int round = 0; round < 3; ++round) jackKnife.AddRound({0.0, -3.0});
  const JackKnifeResult result = jackKnife.Result();
  for (const std::size_t k : {0U, 1U}) {
    EXPECT_EQ(result.standardErrors[k], 0.0);
    EXPECT_EQ(result.lower[k], k == 0 ? 0.0 : -3.0);
    EXPECT_EQ(result.upper[k], result.lower[k]);
    EXPECT_THAT(result.p[k], IsNan());
  }
}

TEST(JackKnife, CutsIntervalsOfNumbersThatCannotBeNegative) {
  JackKnife jackKnife({1.0, 10.0}, 2);
  jackKnife.AddRound({0.0, 10.1});
  jackKnife.AddRound({2.0, 9.9});
  const JackKnifeResult result = jackKnife.Result(0.95, /*least=*/0.0);
  // s = 1 and 0.1, t = 12.706204736174698 of one degree, by scipy 1.10.1
  EXPECT_EQ(result.lower[0], 0.0);
  EXPECT_NEAR(result.upper[0], 13.706204736174698, 1e-9);
  EXPECT_NEAR(result.lower[1], 10.0 - 1.2706204736174698, 1e-9);
}

TEST(IntervalsOf, AreThoseOfTheJackKnifeThatGaveTheStandardErrors) {
  const JackKnifeResult result = Filled(1).Result(), again = IntervalsOf(kOfModel, result.standardErrors, 6);
  EXPECT_EQ(again.lower, result.lower);
  EXPECT_EQ(again.upper, result.upper);
  EXPECT_EQ(again.p, result.p);
  EXPECT_THAT(IntervalsOf({HUGE_VAL, NAN}, {HUGE_VAL, 1.0}, 6).p, ::testing::Each(IsNan()));
}

TEST(JackKnife, StopsWhenTheBarWantsTo) {
  ProgressLog log;
  log.stopAt = 2;
  const auto bar = RecordingBar(&log);
  JackKnife jackKnife(std::vector<double>(2000, 1.0), 2);
  for (int round = 0; round < 2; ++round) jackKnife.AddRound(std::vector<double>(2000, 0.5));
  EXPECT_THROW(jackKnife.Result(0.95, 0.0, bar.get()), Stopped);
}

}  // namespace
}  // namespace kalmia::analysis
