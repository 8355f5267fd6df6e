// How Ctrl-C reaches a calculation. Each test raises it in a process of its own, since the flag stays up.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "app/console/ConsoleProgress.h"
#include "app/console/ExitCode.h"
#include "app/console/Interrupt.h"
#include "kalmia/analysis/fit/internal/PLSExtraction.h"
#include "kalmia/analysis/steps/Steps.h"
#include "kalmia/analysis/steps/internal/WindowStep.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/RandomTables.h"

namespace kalmia::app {
namespace {

/// Ends the process with 0 if the condition holds.
[[noreturn]] void Conclude(bool condition) { std::exit(condition ? 0 : 1); }

void PressCtrlC() {
  CatchSignals();
  std::raise(SIGINT);
}

template <class Call>
bool IsStopped(const Call& call) {
  try {
    call();
  } catch (const Failure& failure) {
    return ExitCodeOf(failure) == ExitCode::Stopped;
  }
  return false;
}

class ConsoleProgressDeathTest : public ::testing::Test {
 protected:
  ConsoleProgressDeathTest() {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
  }  // the library may have started threads
};

TEST_F(ConsoleProgressDeathTest, AnswersThatAFitIsToStop) {
  const auto answers = [] {
    ProgressLine line;
    ConsoleProgress progress(&line);
    progress.SetRange(-10.0F, 0.0F);
    const bool wentOn = progress.SetValue(-5.0F) && !progress.IsBreakPressed() && progress.PushSubRange(0.0F, 1.0F) &&
                        progress.PopSubRange() && progress.NextSpin();
    PressCtrlC();
    progress.SetRange(-10.0F, 0.0F);  // these have no answer
    progress.SetText("text");
    Conclude(wentOn && !progress.SetValue(-4.0F) && progress.IsBreakPressed() && !progress.PushSubRange(0.0F, 1.0F) &&
             !progress.PopSubRange() && !progress.NextSpin());
  };
  EXPECT_EXIT(answers(), ::testing::ExitedWithCode(0), "");
}

TEST_F(ConsoleProgressDeathTest, LeavesACrossValidationFromAnyOfItsCalls) {
  const auto leaves = [] {
    TerminalBar bar;
    WorkProgress work(bar.Get());
    NCProgress& progress = *work.Bar();
    work.BeginRounds("component 1", 7);
    progress.SetText("round 1");
    progress.SetRange(-1.0F, 0.0F);
    PressCtrlC();
    Conclude(IsStopped([&] { progress.SetText("round 2"); }) && IsStopped([&] { progress.SetRange(-1.0F, 0.0F); }) &&
             IsStopped([&] { progress.SetValue(0.0F); }));
  };
  EXPECT_EXIT(leaves(), ::testing::ExitedWithCode(0), "");
}

TEST_F(ConsoleProgressDeathTest, StopsAFitBeforeItsNextComponent) {
  const auto stops = [] {
    PLSTask task;
    task.x = RandomMatrix<float>(20, 5, 0.0, 1);
    task.y = RandomMatrix<float>(20, 2, 0.0, 2);
    task.rounds = 4;
    task.groups = GetDeafultCVGroupsVector(20, 4);
    task.mostComponents = 3;
    TerminalBar bar;
    if (ExtractPLS(task, bar.Get()).kept != 3) Conclude(false);
    PressCtrlC();
    Conclude(IsStopped([&] { ExtractPLS(task, bar.Get()); }));
  };
  EXPECT_EXIT(stops(), ::testing::ExitedWithCode(0), "");
}

TEST_F(ConsoleProgressDeathTest, StopsInTheMiddleOfALongRow) {
  const auto stops = [] {
    CatchSignals();
    LearntStep smooth;
    smooth.step = ParseSteps("smooth:20001:3", "steps").front();
    const NCDataVector<float> cells = RandomMatrix<float>(1, 60000, 0.0, 1)[1];
    std::vector<double> row(cells.begin(), cells.end());
    for (std::size_t c = 49; c < row.size(); c += 100) row[c] = std::nan("");  // a fit for each window: seconds
    std::thread pressing([] {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      std::raise(SIGINT);
    });
    TerminalBar bar;
    WorkProgress work(bar.Get());
    const bool isStopped = IsStopped([&] { WindowStep(smooth).Slid(row, &work); });
    pressing.join();
    Conclude(isStopped);
  };
  EXPECT_EXIT(stops(), ::testing::ExitedWithCode(0), "");
}

TEST_F(ConsoleProgressDeathTest, EndsAtOnceAtTheSecondCtrlC) {
  const auto ends = [] {
    PressCtrlC();
    std::raise(SIGINT);
    Conclude(false);
  };
  EXPECT_EXIT(ends(), ::testing::ExitedWithCode(130), "");
}

TEST_F(ConsoleProgressDeathTest, AHangUpAndARequestToTerminateStopAsCtrlCDoesHoweverOftenTheyCome) {
  for (const int signal : {SIGHUP, SIGTERM}) {
    const auto stops = [signal] {
      CatchSignals();
      if (Interrupted()) Conclude(false);
      std::raise(signal);
      std::raise(SIGHUP);
      std::raise(SIGTERM);
      Conclude(Interrupted() && ExitStatus(ExitCode::Stopped) == 128 + signal && ExitStatus(ExitCode::Files) == 3);
    };
    EXPECT_EXIT(stops(), ::testing::ExitedWithCode(0), "");
  }
}

TEST_F(ConsoleProgressDeathTest, AHangUpThatIsIgnoredStaysIgnored) {
  const auto goesOn = [] {
    std::signal(SIGHUP, SIG_IGN);  // as nohup does
    CatchSignals();
    std::raise(SIGHUP);
    Conclude(!Interrupted());
  };
  EXPECT_EXIT(goesOn(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace kalmia::app
