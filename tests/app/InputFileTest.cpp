#include "app/InputFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "CommandRun.h"
#include "app/Failure.h"
#include "testing/RecordingProgress.h"

namespace kalmia::app {
namespace {

TEST(ReadInput, TellsTheShareOfTheBytesThatItHasRead) {
  const ScratchFolder folder;
  const std::string bytes(1000000, 'x');
  const std::string file = folder.Write("t", bytes);
  ProgressLog log;
  const auto progress = RecordingBar(&log);
  EXPECT_EQ(ReadInput(file, progress.get()), bytes);
  ASSERT_GE(log.calls.size(), 4U);
  EXPECT_EQ(log.calls.front(), "SetValue 0");
  EXPECT_EQ(log.calls.back(), "SetValue 1");
  const auto share = [](const std::string& call) { return std::stod(call.substr(9)); };
  for (std::size_t i = 1; i < log.calls.size(); ++i) EXPECT_GT(share(log.calls[i]), share(log.calls[i - 1]));
}

TEST(ReadInput, StopsAtEveryQuestion) {
  const ScratchFolder folder;
  const std::string file = folder.Write("t", std::string(1000000, 'x'));
  for (int stopAt = 1; stopAt <= 4; ++stopAt) {
    ProgressLog log;
    log.stopAt = stopAt;
    const auto progress = RecordingBar(&log);
    EXPECT_THROW(ReadInput(file, progress.get()), Failure);
    EXPECT_EQ(log.Count("SetValue"), stopAt);
  }
}

}  // namespace
}  // namespace kalmia::app
