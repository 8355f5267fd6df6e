// The progress bar, and Ctrl-C through it.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <random>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// Components of this table take the iteration limit or come near it, and each of its 400 rounds fits one anew: far
/// longer than it takes to press Ctrl-C.
std::string LongWork() { return UnrelatedTable(400, 60, 12, 11); }

TEST(Progress, ShowsABarOnATerminalAndWipesItAway) {
  const ScratchFolder folder;
  const CommandResult run =
      RunOnTerminal({"pls", folder.Write("t.csv", LinearTable(30, 5, 1)), "--y", "y", "--id", "name"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.error, HasSubstr("component 1"));
  EXPECT_THAT(run.error, HasSubstr("[....."));
  const std::string wipe = "\r\x1b[K";
  const std::size_t last = run.error.rfind(wipe);
  ASSERT_NE(last, std::string::npos);
  EXPECT_THAT(run.error.substr(last + wipe.size(), 6), "PLS of");
}

TEST(Progress, ShowsNothingInAPipe) {
  const CommandResult run = RunKalmia({"pls", "-", "--y", "y", "--id", "name"}, LinearTable(30, 5, 1));
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.error, "");
}

TEST(Interrupt, StopsARunningCrossValidationAndLeavesNothingBehind) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LongWork());
  const CommandResult run =
      RunOnTerminal({"pls", table, "--exclude", "x60", "--y", "y1,y2,y3,y4,y5,y6,y7,y8,y9,y10,y11,y12", "--groups",
                     "400", "--components", "15", "--validation", "component", "--save", folder.Path("m"), "--csv", folder.Path("d")},
                    " of 400");
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
  EXPECT_THAT(run.error, Not(HasSubstr("RMSEE")));
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
}

TEST(Progress, ShowsABarForPrincipalComponentsToo) {
  const ScratchFolder folder;
  const CommandResult run =
      RunOnTerminal({"pca", folder.Write("t.csv", UnrelatedTable(60, 40, 1, 1)), "--components", "2"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.error, HasSubstr("component 1"));
  EXPECT_THAT(run.error, HasSubstr("PCA of 41 columns"));
}

TEST(Progress, OfAClusterAnalysisRunsOverAllItsStepsWithATextForEach) {
  const ScratchFolder folder;
  const CommandResult run = RunOnTerminal(
      {"cluster", folder.Write("t.csv", UnrelatedTable(2000, 4, 1, 1)), "--method", "single", "--memory", "1M"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.error, HasSubstr("Calculating and saving 1999000 distances"));
  const std::string wipe = "\r\x1b[K";
  std::size_t before = 0;
  for (std::size_t at = run.error.find(wipe + "["); at != std::string::npos; at = run.error.find(wipe + "[", at + 1)) {
    const std::string bar = run.error.substr(at + wipe.size() + 1, 20);
    if (run.error.compare(at + wipe.size() + 23, 9, "Comparing") == 0) break;  // has a bar of its own
    const auto filled = static_cast<std::size_t>(std::count(bar.begin(), bar.end(), '#'));
    EXPECT_GE(filled, before);
    before = filled;
  }
  EXPECT_GE(before, 5U);  // the distances alone are a quarter: half of the first of two halves
}

TEST(Interrupt, StopsPrincipalComponentsInTheirFitAndInTheirCrossValidation) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LongWork());
  for (const char* at : {"component 1", " of 72"}) {
    const CommandResult run = RunOnTerminal(
        {"pca", table, "--groups", "400", "--components", "15", "--validation", "component", "--save",
         folder.Path("m"), "--csv", folder.Path("d")},
        at);
    EXPECT_EQ(run.exitCode, 130) << at;
    EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
    EXPECT_THAT(run.error, Not(HasSubstr("R2X")));
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
  }
}

TEST(Progress, ShowsTheStagesOfO2PLS) {
  const ScratchFolder folder;
  const TwoBlocks blocks = SharedBlocks(60, 1);
  const std::vector<std::string> search = {"o2pls", folder.Write("x.csv", blocks.x), folder.Write("y.csv", blocks.y),
                                           "--id", "name"};
  const CommandResult found = RunOnTerminal(search);
  EXPECT_EQ(found.exitCode, 0);
  for (const char* stage : {"Estimating predictive components", "Calculating initial Q2",
                            "Estimating Y-orthogonal components", "Estimating X-orthogonal components",
                            "Calculating CV results", "Saving CV results", "fitting the model"}) {
    EXPECT_THAT(found.error, HasSubstr(stage));
  }
  std::vector<std::string> given = search;
  given.insert(given.end(), {"--joint", "1", "--x-unique", "1", "--y-unique", "1", "--validation", "component"});
  EXPECT_THAT(RunOnTerminal(given).error, HasSubstr("Final estimation of components")) << "as there are Y-unique ones";
}

TEST(Progress, ShowsPredictionsAndTheWritingOfResults) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(30, 5, 1)), model = folder.Path("m");
  EXPECT_THAT(RunOnTerminal({"pls", table, "--y", "y", "--id", "name", "--save", model}).error,
              HasSubstr("writing the results"));
  EXPECT_THAT(RunOnTerminal({"predict", model, table}).error, HasSubstr("predicting"));
  EXPECT_THAT(RunOnTerminal({"preprocess", table, "--id", "name", "--steps", "snv", "--out", folder.Path("o")}).error,
              HasSubstr("writing the table"));
}

/// Expects that the command stops at Ctrl-C, pressed once the text has appeared, prints nothing, and leaves nothing but
/// the table t.csv. What the terminal showed.
std::string ExpectStop(const std::vector<std::string>& arguments, const std::string& text,
                       const ScratchFolder& folder) {
  const CommandResult run = RunOnTerminal(arguments, text);
  EXPECT_THAT(run.error, HasSubstr(text));
  EXPECT_EQ(run.exitCode, 130) << text;
  EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
  EXPECT_THAT(run.error, Not(HasSubstr("R2X"))) << text;
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"}) << text;
  return run.error;
}

/// How many of its twenty places the bar filled that was drawn last.
std::ptrdiff_t FilledAtTheEnd(const std::string& shown) {
  const std::string bar = shown.substr(shown.rfind("\r\x1b[K[") + 1, 25);
  return std::count(bar.begin(), bar.end(), '#');
}

TEST(Interrupt, StopsOPLSInEachCrossValidationAndLeavesNothingBehind) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LongWork());
  for (const char* text : {"component 1: cross-validation", "component 13: cross-validation"}) {
    const std::string shown = ExpectStop(
        {"opls", table, "--x", "x1..x60", "--y", "y1,y2,y3,y4,y5,y6,y7,y8,y9,y10,y11,y12", "--predictive", "12",
         "--orthogonal", "1", "--groups", "400", "--save", folder.Path("m"), "--save-cv", folder.Path("v"), "--csv",
         folder.Path("d")},
        text, folder);
    // The 400 rounds take long enough to press a key in the first of them. Their last bar, drawn no longer than 50 ms
    // before the end, would be nearly full.
    EXPECT_LT(FilledAtTheEnd(shown), 15) << shown;
  }
}

/// A fit takes some milliseconds: its Ctrl-C is noticed there or where its cross-validation begins.
TEST(Interrupt, StopsOPLSBehindEachFitAtTheLatest) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LongWork());
  for (const char* text : {"component 1", "component 13"}) {
    const std::string shown =
        ExpectStop({"opls", table, "--x", "x1..x60", "--y", "y1,y2,y3,y4,y5,y6,y7,y8,y9,y10,y11,y12", "--predictive",
                    "12", "--orthogonal", "1", "--groups", "400", "--validation", "component", "--save",
                    folder.Path("m")},
                   text, folder);
    EXPECT_LT(FilledAtTheEnd(shown), 15) << shown;
  }
}

TEST(Interrupt, StopsEveryStageOfO2PLSThatLastsAndLeavesNothingBehind) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", WithHoles(LongWork(), 11));
  const std::vector<std::string> arguments = {"o2pls", table, table, "--x", "x1..x60", "--y", "y1..y12", "--fill",
                                              "--groups", "400", "--joint", "2", "--x-unique", "1", "--y-unique", "1",
                                              "--validation", "component", "--save", folder.Path("m"), "--csv",
                                              folder.Path("d")};
  // Those that are over in some milliseconds are left at the latest in the next one.
  for (const char* stage : {"estimating missing cells", "fitting the model"}) ExpectStop(arguments, stage, folder);
  const char* const stages[] = {"Estimating predictive components",
                                "Calculating initial Q2",
                                "Estimating Y-orthogonal components",
                                "Estimating X-orthogonal components",
                                "Final estimation of components",
                                "Calculating CV results",
                                "Saving CV results"};  // too short to press a key in
  for (std::size_t i = 0; i + 1 < std::size(stages); ++i)
    EXPECT_THAT(ExpectStop(arguments, stages[i], folder), Not(HasSubstr(stages[i + 1])));
}

TEST(Interrupt, StopsWhileScoresOfRowsWithHolesAreEstimated) {
  const ScratchFolder folder;
  const std::string model = folder.Path("m");
  ASSERT_EQ(RunKalmia({"pca", folder.Write("t.csv", LinearTable(60, 40, 1)), "--id", "name", "--exclude", "y",
                       "--components", "15", "--save", model})
                .exitCode,
            0);
  // Each of the rows has holes, and is a regression of its own.
  const std::string table = folder.Write("n.csv", WithHoles(LinearTable(20000, 40, 2), 31));
  const CommandResult run = RunOnTerminal({"predict", model, table, "--csv", folder.Path("d")}, " of 20000");
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"m", "n.csv", "t.csv"}));
}

TEST(Interrupt, StopsPreprocessingBetweenRowsBehindABar) {
  const ScratchFolder folder;
  // Every window has holes, and so a fit of its own: seconds for all rows.
  const std::string table = folder.Write("t.csv", WithHoles(UnrelatedTable(400, 800, 1, 3), 7));
  const CommandResult run = RunOnTerminal({"preprocess", table, "--steps", "linear,smooth:501:3", "--out",
                                           folder.Path("o"), "--save", folder.Path("s")},
                                          "step 2, smooth:501:3");
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
  EXPECT_THAT(run.error, Not(HasSubstr("[####################]")));
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
}

/// Rows of 200 cells that miss one of each of 95 pairs of them: only a look at each two rows tells that they have
/// enough columns in common, some 57.
std::string RowsToCompare(int rows) {
  std::mt19937 random(1);
  std::string table;
  for (int c = 1; c <= 200; ++c) table += (c == 1 ? "x" : ",x") + std::to_string(c);
  table += "\n";
  for (int r = 1; r <= rows; ++r) {
    for (int pair = 1; pair <= 100; ++pair) {
      const std::string cell = std::to_string(random() % 10);
      const char* const comma = pair == 1 ? "" : ",";
      table += pair > 95 ? comma + cell + "," + cell : random() % 2 == 0 ? comma + cell + "," : comma + ("," + cell);
    }
    table += "\n";
  }
  return table;
}

TEST(Interrupt, StopsEachStepOfAClusterAnalysisAndLeavesNothingBehind) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", RowsToCompare(3000));
  const std::vector<std::string> inMemory = {"cluster", table, "--method", "ward", "--scale", "none", "--svg",
                                             folder.Path("s")};
  for (const char* text : {"Comparing missing cells", "Calculating 4498500 distances", "Sorting", "Merging clusters",
                           "Comparing heights with distances"})
    ExpectStop(inMemory, text, folder);
  const std::vector<std::string> onDisk = {"cluster", table, "--method", "single", "--scale", "none", "--memory", "10M",
                                           "--temp", folder.Path("."), "--svg", folder.Path("s")};
  // Each lasts long enough to be drawn; the short steps behind them are stopped in the tests of the library.
  for (const char* text : {"Calculating and saving 4498500 distances", "Splitting distances"})
    ExpectStop(onDisk, text, folder);
}

TEST(Interrupt, StopsWhileInputIsAwaited) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  const std::string model = folder.Path("m");
  ASSERT_EQ(RunKalmia({"pls", table, "--y", "y", "--id", "name", "--save", model}).exitCode, 0);
  const CommandResult run = InterruptWaiting({"predict", model, "-"});
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_EQ(run.error, "kalmia: stopped\n");
  EXPECT_EQ(run.output, "");
}

/// A pipe with a name in the folder.
std::string MakePipe(const ScratchFolder& folder) {
  const std::string pipe = folder.Path("pipe");
  EXPECT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  return pipe;
}

TEST(Interrupt, StopsEveryCommandThatWaitsForSomebodyToOpenAPipe) {
  const ScratchFolder folder;
  const std::string pipe = MakePipe(folder);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"describe", pipe}, {"pls", pipe, "--y", "y"}, {"cluster", pipe, "--method", "ward"},
        {"info", pipe}, {"predict", pipe, "-"}, {"chart", pipe, "--column", "x", "--type", "individual"}}) {
    const CommandResult run = InterruptWaiting(arguments);
    EXPECT_EQ(run.exitCode, 130) << arguments[0];
    EXPECT_EQ(run.error, "kalmia: stopped\n");
    EXPECT_EQ(run.output, "");
  }
}

TEST(Interrupt, StopsEveryCommandThatWaitsForSomebodyToOpenThePipeItWritesTo) {
  const ScratchFolder folder;
  const std::string pipe = MakePipe(folder), table = folder.Write("t.csv", LinearTable(20, 4, 1));
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"histogram", table, "--column", "y", "--svg", folder.Path("s"), "--csv", pipe},
        {"pls", table, "--y", "y", "--id", "name", "--csv", folder.Path("d"), "--save", pipe},
        {"fill", table, "--id", "name", "--out", pipe}}) {
    const CommandResult run = InterruptWaiting(arguments);
    EXPECT_EQ(run.exitCode, 130) << arguments[0];
    EXPECT_EQ(run.error, "kalmia: stopped\n");
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"pipe", "t.csv"}));
  }
}

TEST(Interrupt, StopsWhereNobodyEmptiesThePipeThatIsWrittenTo) {
  const ScratchFolder folder;
  const std::string pipe = MakePipe(folder);
  const int reader = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  const CommandResult run =
      InterruptWaiting({"chart", folder.Write("t.csv", LinearTable(20000, 1, 1)), "--column", "y", "--type",
                        "individual", "--csv", pipe, "--svg", folder.Path("s")});
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"pipe", "t.csv"}));
  close(reader);
}

TEST(Interrupt, StopsWhileTheRestOfATableIsAwaited) {
  const ScratchFolder folder;
  const std::string pipe = MakePipe(folder);
  const int writer = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  const std::string begun = "a,b\n1,2\n";
  ASSERT_EQ(write(writer, begun.data(), begun.size()), static_cast<ssize_t>(begun.size()));
  const CommandResult run = InterruptWaiting({"describe", pipe});
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_EQ(run.output, "");
  close(writer);
}

TEST(Progress, ShowsABarWhereReadingTakesLongAndStopsThere) {
  const ScratchFolder folder;
  const std::string pipe = MakePipe(folder);
  const int writer = open(pipe.c_str(), O_RDWR | O_CLOEXEC);  // nothing comes: longer than a moment
  const CommandResult run = RunOnTerminal({"describe", pipe}, "] reading " + pipe.substr(0, 10));
  EXPECT_THAT(run.error, HasSubstr("] reading "));
  EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
  EXPECT_EQ(run.exitCode, 130);
  close(writer);
}

TEST(Progress, ShowsNoBarForATableThatIsReadAtOnce) {
  const ScratchFolder folder;
  const CommandResult run = RunOnTerminal({"describe", folder.Write("t.csv", LinearTable(30, 5, 1))});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.error, Not(HasSubstr("reading")));
}

}  // namespace
