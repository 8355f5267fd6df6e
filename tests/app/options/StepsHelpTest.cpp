// What --help says of the steps of preprocessing, and that it is so.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CommandRun.h"
#include "kalmia/analysis/steps/StepChain.h"
#include "kalmia/analysis/steps/Steps.h"
#include "kalmia/analysis/text/Failure.h"

namespace {

using kalmia::analysis::CellRows;
using kalmia::analysis::Failure;
using kalmia::analysis::LearnChain;
using kalmia::analysis::Notes;
using kalmia::analysis::ParseSteps;
using kalmia::analysis::Signals;
using kalmia::analysis::StepsHelp;
using ::testing::HasSubstr;

TEST(StepsHelp, HasEachStepWithFormRangesDefaultsAndLimits) {
  const std::string help = StepsHelp();
  for (const char* part :
       {"\n  linear[:a[:b]]\n      a x + b\n      a: a number (1); b: a number (0)\n",
        "\n  log[:a[:b]]\n      log10(a x + b)\n      a: a number (1); b: a number (0)\n"
        "      takes cells with a x + b above 0\n",
        "\n  neglog[:a[:b]]\n", "\n  logit[:a[:b]]\n      log10((x - a) / (b - x)), a < x < b\n",
        "      takes cells above a and below b; a lies below b\n", "\n  exp[:a[:b]]\n      exp(a x + b)\n",
        "      takes cells with a x + b from -708 to 88.7\n",
        "\n  power:c[:a[:b]]\n      (a x + b)^c\n      c: a number; a: a number (1); b: a number (0)\n"
        "      takes cells with a x + b above 0; below 0 too where c is whole, 0 where c is not negative\n",
        "\n  snv\n", "      takes rows in which two cells differ, and rows without a cell\n",
        "\n  detrend[:MODE]\n", "      mode: mean or linear (linear)\n", "\n  smooth[:WINDOW[:POLYNOMIAL]]\n",
        "      window: an odd number from 3 to 100001 (11); polynomial: a whole number from 2 to 3 (2)\n"
        "      the window is wider than the polynomial's order, and at most as wide as the signals\n",
        "\n  derivative[:ORDER[:WINDOW[:POLYNOMIAL]]]\n", "      order: a whole number from 1 to 3 (1); window: ",
        "      the window as for smooth; order 3 takes polynomial 3\n", "\n  wavelet-denoise[:FAMILY[:FILTER]]\n",
        "\n  wavelet-compress:COUNT[:FAMILY[:FILTER]]\n",
        "      the count is at most that of the channels, rounded up to a power of two\n", "\n  wavelet-restore\n",
        "\nNumbers, those that come out too, are below 3.4e38 in size.\n", "\nMissing cells stay missing up to detrend",
        "daubechies: 4, 6, 8, 10, 12, 20 or 50"}) {
    EXPECT_THAT(help, HasSubstr(part));
  }
}

TEST(StepsHelp, IsInTheHelpOfTheCommand) {
  const std::string help = RunKalmia({"preprocess", "--help"}).output;
  for (const char* step : {"linear", "log", "neglog", "logit", "exp", "power:c", "snv", "detrend", "smooth",
                           "derivative", "wavelet-denoise", "wavelet-compress:COUNT", "wavelet-restore"}) {
    EXPECT_THAT(help, HasSubstr("\n  " + std::string(step)));
  }
  EXPECT_THAT(help, HasSubstr("order 3 takes polynomial 3"));
}

/// Whether a row of so many channels, all with this cell but for the last one, which is 0.5, goes through the step.
bool Takes(const std::string& step, float cell, int channels = 2) {
  Signals signals{"t", {"row 1"}, {}, {}, CellRows(1, channels)};
  for (int c = 1; c <= channels; ++c) {
    signals.cells.Row(0)[c - 1] = c < channels ? cell : 0.5;
    signals.names.push_back(std::to_string(c));
  }
  Notes notes;
  try {
    LearnChain(ParseSteps(step, "steps"), &signals, &notes);
  } catch (const Failure&) {
    return false;
  }
  return true;
}

TEST(StepsHelp, SaysWhichCellsAStepTakes) {
  const struct {
    const char* step;
    float cell;
    bool isTaken;
  } rows[] = {{"log", 1e-38F, true},        {"log", 0.0F, false},         {"neglog:1:1", -0.99F, true},
              {"neglog:1:1", -1.0F, false}, {"logit", 0.01F, true},       {"logit", 0.0F, false},
              {"logit", 1.0F, false},       {"exp", 88.7F, true},         {"exp", 88.8F, false},
              {"exp", -708.0F, true},       {"exp", -709.0F, false},      {"power:0.5", 0.0F, true},
              {"power:0.5", -1.0F, false},  {"power:-0.5", 0.0F, false},  {"power:-0.5", 1.0F, true},
              {"power:-3", -2.0F, true},    {"power:3", 0.0F, true},      {"power:-3", 0.0F, false},
              {"snv", 1.0F, true},          {"snv", 0.5F, false},         {"linear:1", 3.4e38F, true},
              {"linear:2", 3.4e38F, false}, {"linear:2", -3.4e38F, false}};
  for (const auto& row : rows) EXPECT_EQ(Takes(row.step, row.cell), row.isTaken) << row.step << ' ' << row.cell;
}

TEST(StepsHelp, SaysHowParametersGoTogetherWithOneAnotherAndTheChannels) {
  const struct {
    const char* step;
    int channels;
    bool isTaken;
  } rows[] = {{"smooth:3:2", 9, true},          {"smooth:3:3", 9, false},         {"smooth:9", 9, true},
              {"smooth:11", 9, false},          {"derivative:3:5:3", 9, true},    {"derivative:3:5:2", 9, false},
              {"derivative:2:5:2", 9, true},    {"derivative:1:11", 9, false},    {"wavelet-compress:16", 9, true},
              {"wavelet-compress:17", 9, false}, {"wavelet-compress:8", 8, true}, {"wavelet-compress:9", 8, false}};
  for (const auto& row : rows) EXPECT_EQ(Takes(row.step, 1.0F, row.channels), row.isTaken) << row.step;
}

}  // namespace
