// What the bar shows, and how it moves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cmath>
#include <string>

#include "CommandRun.h"
#include "app/DisplayText.h"
#include "app/NestedProgress.h"

namespace kalmia::app {
namespace {

using ::testing::HasSubstr;

TEST(NestedProgress, NeverGoesBackButStartsAnewForAnotherCalculation) {
  const auto bars = [] {
    ProgressLine line;
    NestedProgress progress(&line);
    progress.Begin("first");
    progress.SetRange(0, 10);
    progress.SetValue(8);
    progress.SetValue(5);            // a convergence that becomes worse
    progress.PushSubRange(2, 6);     // a step that was said to be further
    progress.SetValue(NAN);
    progress.PopSubRange();
    progress.SetText("still first");  // drawn at once
    progress.Begin("second");         // this too
  };
  const std::string shown = DoOnTerminal(bars).error;
  EXPECT_THAT(shown, HasSubstr("[################....] still first"));
  EXPECT_THAT(shown, HasSubstr("[....................] second"));
}

TEST(ProgressLine, CutsTextsBetweenWordsWhereTheTerminalIsNarrow) {
  EXPECT_EQ(ShortenedTo(20, "Calculating 10 pairs"), "Calculating 10 pairs");
  EXPECT_EQ(ShortenedTo(19, "Calculating 10 pairs"), "Calculating 10...");
  EXPECT_EQ(ShortenedTo(17, "Calculating 10 pairs"), "Calculating 10...");
  EXPECT_EQ(ShortenedTo(16, "Calculating 10 pairs"), "Calculating...");
  EXPECT_EQ(ShortenedTo(13, "Calculating 10 pairs"), "...");
  EXPECT_EQ(ShortenedTo(2, "Calculating 10 pairs"), "");
  EXPECT_EQ(ShortenedTo(5, "\xc3\xa4\xc3\xb6\xc3\xbc\xc3\xa4\xc3\xb6"), "\xc3\xa4\xc3\xb6\xc3\xbc\xc3\xa4\xc3\xb6");
  const auto bar = [] {
    const winsize narrow = {24, 40, 0, 0};
    ioctl(STDERR_FILENO, TIOCSWINSZ, &narrow);
    ProgressLine().ShowAtOnce("Estimating predictive components", 0.5);
  };
  EXPECT_THAT(DoOnTerminal(bar).error, HasSubstr("[##########..........] Estimating...\r"));
}

}  // namespace
}  // namespace kalmia::app
