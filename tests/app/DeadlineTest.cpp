// What Ctrl-C does where the work does not come round to stopping.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include "CommandRun.h"
#include "app/Interrupt.h"
#include "app/OutputFiles.h"

namespace kalmia::app {
namespace {

using ::testing::HasSubstr;

/// Looks at nothing, until the alarm of the test ends it.
[[noreturn]] void WorkDeaf() {
  for (volatile unsigned i = 0;; i = i + 1) {
  }
}

TEST(Deadline, EndsDeafWorkAndRemovesWhatItHadBegunToWrite) {
  const ScratchFolder folder;
  folder.Write("old", "what was there");
  const CommandResult run = DoOnTerminal([&folder] {
    CatchSignalsWithDeadline();
    OutputFiles files;
    files.MakeFolder(folder.Path("new"));
    files.Stage(folder.Path("new/a"), "first");
    files.Stage(folder.Path("old"), "second");
    std::raise(SIGINT);
    WorkDeaf();
  });
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_THAT(run.error, HasSubstr("kalmia: stopped\r\n"));
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"old"});
  EXPECT_EQ(ReadWholeFile(folder.Path("old")), "what was there");
}

TEST(Deadline, ExitsWithTheNumberOfTheSignal) {
  const CommandResult run = DoOnTerminal([] {
    CatchSignalsWithDeadline();
    std::raise(SIGTERM);
    WorkDeaf();
  });
  EXPECT_EQ(run.exitCode, 128 + SIGTERM);
}

TEST(Deadline, WaitsForAStepThatMustNotBeLeftHalfDone) {
  const CommandResult run = DoOnTerminal([] {
    CatchSignalsWithDeadline();
    std::raise(SIGINT);
    {
      const DeadlineHold hold;
      for (int i = 0; i < 40; ++i) usleep(10000);  // each ends early where the timer's signal comes
      const std::string whole = "the step is whole\n";
      EXPECT_EQ(write(STDERR_FILENO, whole.data(), whole.size()), static_cast<ssize_t>(whole.size()));
    }
    WorkDeaf();
  });
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_LT(run.error.find("the step is whole"), run.error.find("kalmia: stopped"));
}

TEST(Deadline, IsOffOnceTheStopHasCome) {
  const CommandResult run = DoOnTerminal([] {
    CatchSignalsWithDeadline();
    std::raise(SIGINT);
    CancelDeadline();
    for (int i = 0; i < 40; ++i) usleep(10000);
    _exit(7);
  });
  EXPECT_EQ(run.exitCode, 7);
  EXPECT_EQ(run.error, "");
}

TEST(Deadline, LeavesFilesThatAreThereAlready) {
  const ScratchFolder folder;
  const CommandResult run = DoOnTerminal([&folder] {
    CatchSignalsWithDeadline();
    OutputFiles files;
    files.MakeFolder(folder.Path("new"));
    files.Stage(folder.Path("new/a"), "first");
    files.Commit();
    std::raise(SIGINT);
    WorkDeaf();
  });
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_EQ(ReadWholeFile(folder.Path("new/a")), "first");
}

}  // namespace
}  // namespace kalmia::app
