// What the bar shows, and how it moves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "CommandRun.h"
#include "app/console/ConsoleProgress.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::app {
namespace {

using ::testing::HasSubstr;

TEST(ConsoleProgress, NeverGoesBackButStartsAnewWithAnotherRange) {
  const auto bars = [] {
    ProgressLine line;
    ConsoleProgress progress(&line);
    progress.SetText("first");
    progress.SetRange(0, 10);
    progress.SetValue(8);
    progress.SetValue(5);            // a convergence that becomes worse
    progress.PushSubRange(2, 6);     // a step that was said to be further
    progress.SetValue(NAN);
    progress.PopSubRange();
    progress.SetText("still first");  // drawn at once
    progress.SetRange(0, 1);
    progress.SetText("second");       // this too
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

TEST(ConsoleProgress, DrawsTheFirstTextsOfASecondAtOnceAndAllOthersAsThereIsTime) {
  const auto texts = [] {
    ProgressLine line;
    ConsoleProgress progress(&line);
    for (int i = 1; i <= 2000; ++i) progress.SetText(("text " + std::to_string(i)).c_str());
  };
  const std::string shown = DoOnTerminal(texts).error;
  for (const char* text : {"text 1\r", "text 2\r", "text 20\r"}) EXPECT_THAT(shown, HasSubstr(text));
  // Some machine takes a second for what lasts a millisecond: 32 texts, and twenty more in each second.
  const auto drawn = std::count(shown.begin(), shown.end(), '[') / 2;  // one of the bar, one of the wipe before it
  EXPECT_LT(drawn, 500);
}

}  // namespace
}  // namespace kalmia::app
