#include "app/console/InputFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "CommandRun.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"

namespace kalmia::app {
namespace {

TEST(ReadText, TellsTheShareOfTheBytesThatItHasRead) {
  const ScratchFolder folder;
  const std::string bytes(1000000, 'x');
  const std::string file = folder.Write("t", bytes);
  ProgressLog log;
  const auto progress = RecordingBar(&log);
  EXPECT_EQ(ReadText(file, progress.get()).View(), bytes);
  ASSERT_GE(log.calls.size(), 4U);
  EXPECT_EQ(log.calls.front(), "SetValue 0");
  EXPECT_EQ(log.calls.back(), "SetValue 1");
  const auto share = [](const std::string& call) { return std::stod(call.substr(9)); };
  for (std::size_t i = 1; i < log.calls.size(); ++i) EXPECT_GT(share(log.calls[i]), share(log.calls[i - 1]));
}

TEST(ReadText, StopsAtEveryQuestion) {
  const ScratchFolder folder;
  const std::string file = folder.Write("t", std::string(1000000, 'x'));
  for (int stopAt = 1; stopAt <= 4; ++stopAt) {
    ProgressLog log;
    log.stopAt = stopAt;
    const auto progress = RecordingBar(&log);
    EXPECT_THROW(ReadText(file, progress.get()), Failure);
    EXPECT_EQ(log.Count("SetValue"), stopAt);
  }
}

TEST(ReadText, ReadsALargeFileInPiecesOnAllThreads) {
  const ScratchFolder folder;
  std::string bytes(9'000'001, ' ');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>('0' + i % 77);
  const std::string file = folder.Write("t", bytes);
  for (const int count : {1, 2, 5}) {
    const Threads threads(count);
    ProgressLog log;
    const auto progress = RecordingBar(&log);
    EXPECT_TRUE(ReadText(file, progress.get()).View() == bytes);
    EXPECT_EQ(log.Count("SetValue"), 5) << "one for each piece of 2 MiB";
    EXPECT_EQ(log.calls.back(), "SetValue 1");
    ProgressLog stopped;
    stopped.stopAt = 2;
    const auto stopping = RecordingBar(&stopped);
    EXPECT_THROW(ReadText(file, stopping.get()), Failure);
    EXPECT_EQ(stopped.Count("SetValue"), 2);
  }
}

TEST(ReadText, ReadsASmallFileAndOneWithoutASizeToItsEnd) {
  const ScratchFolder folder;
  EXPECT_EQ(ReadText(folder.Write("t", "a,b\n")).View(), "a,b\n");
  EXPECT_EQ(ReadText(folder.Write("e", "")).View(), "");
  EXPECT_NE(ReadText("/proc/self/status").View().find("Name:"), std::string_view::npos);
  EXPECT_EQ(ReadInput(folder.Write("t", "a,b\n")), "a,b\n");
}

TEST(ReadText, ReadsAPipeOfAnyLength) {
  std::string text = "a,b\n";
  while (text.size() < 3'000'000) text += "1,2\n";
  EXPECT_EQ(RunKalmia({"describe", "-", "--json"}, text).Json()["rows"], text.size() / 4 - 1);
}

}  // namespace
}  // namespace kalmia::app
