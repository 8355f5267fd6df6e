// What signals do where the work does not come round to stopping.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "CommandRun.h"
#include "app/console/Interrupt.h"
#include "app/console/OutputFiles.h"
#include "kalmia/analysis/text/Failure.h"

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

TEST(Deadline, ComesThoughItsSignalWasBlockedByTheStarter) {
  const CommandResult run = DoOnTerminal([] {
    sigset_t blocked = {};
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGVTALRM);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    CatchSignalsWithDeadline();
    std::raise(SIGINT);
    WorkDeaf();
  });
  EXPECT_EQ(run.exitCode, 130);
}

TEST(Deadline, SaysNothingIntoAPipeThatNobodyEmpties) {
  const CommandResult run = DoOnTerminal([] {
    int ends[2] = {};
    EXPECT_EQ(pipe(ends), 0);
    const std::string full(1U << 16U, 'x');  // what a pipe holds
    EXPECT_EQ(write(ends[1], full.data(), full.size()), static_cast<ssize_t>(full.size()));
    dup2(ends[1], STDERR_FILENO);
    CatchSignalsWithDeadline();
    std::raise(SIGINT);
    WorkDeaf();
  });
  EXPECT_EQ(run.exitCode, 130);
}

TEST(SecondCtrlC, EndsDeafWorkAtOnceAndRemovesWhatItHadBegunToWrite) {
  const ScratchFolder folder;
  folder.Write("old", "what was there");
  const CommandResult run = DoOnTerminal([&folder] {
    CatchSignals();  // no deadline that could do it
    OutputFiles files;
    files.MakeFolder(folder.Path("new"));
    files.Stage(folder.Path("new/a"), "first");
    files.Stage(folder.Path("old"), "second");
    std::raise(SIGINT);
    std::raise(SIGINT);
    _exit(7);
  });
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"old"});
  EXPECT_EQ(ReadWholeFile(folder.Path("old")), "what was there");
}

TEST(SecondCtrlC, WaitsForAStepThatMustNotBeLeftHalfDoneAndForNothingBehindIt) {
  const CommandResult run = DoOnTerminal([] {
    CatchSignals();
    {
      const DeadlineHold hold;
      std::raise(SIGINT);
      std::raise(SIGINT);
      const std::string whole = "the step is whole\n";
      EXPECT_EQ(write(STDERR_FILENO, whole.data(), whole.size()), static_cast<ssize_t>(whole.size()));
    }
    _exit(7);
  });
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_LT(run.error.find("the step is whole"), run.error.find("kalmia: stopped"));
}

/// From here on the system sends Ctrl-C to this process with each file that is renamed in the folder. False where it
/// cannot.
bool PressCtrlCWithEachMove(const std::string& folder) {
  const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);  // for good
  return fcntl(file, F_SETOWN, getpid()) == 0 && fcntl(file, F_SETSIG, SIGINT) == 0 &&
         fcntl(file, F_NOTIFY, DN_RENAME | DN_MULTISHOT) == 0;
}

TEST(SecondCtrlC, LeavesACommitWholeThatHasBegun) {
  constexpr int kCannotPress = 9;
  const ScratchFolder folder;
  const std::vector<std::string> names = {"a", "b", "c", "d"};
  for (const std::string& name : names) folder.Write(name, "old");
  const CommandResult run = DoOnTerminal([&] {
    CatchSignals();
    OutputFiles files;
    for (const std::string& name : names) files.Stage(folder.Path(name), "new");
    if (!PressCtrlCWithEachMove(folder.Path("."))) _exit(kCannotPress);
    files.Commit();
  });
  if (run.exitCode == kCannotPress) GTEST_SKIP() << "the system does not tell of moves";
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_EQ(folder.Names(), names);
  for (const std::string& name : names) EXPECT_EQ(ReadWholeFile(folder.Path(name)), "new") << name;
}

TEST(Signals, WakeTheMainThreadWhicheverThreadTheyComeTo) {
  const CommandResult run = DoOnTerminal([] {
    CatchSignals();
    int ends[2] = {};
    EXPECT_EQ(pipe(ends), 0);
    std::thread meeting([] {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));  // by then the main thread waits
      std::raise(SIGTERM);                                          // to this thread alone
    });
    char byte = 0;
    const bool woke = read(ends[0], &byte, 1) < 0 && errno == EINTR && Interrupted();  // until the alarm otherwise
    meeting.join();
    _exit(woke ? 7 : 8);
  });
  EXPECT_EQ(run.exitCode, 7);
}

}  // namespace
}  // namespace kalmia::app
