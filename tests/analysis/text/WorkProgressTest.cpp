#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "FailureOf.h"
#include "kalmia/analysis/fit/internal/FillScaled.h"
#include "kalmia/analysis/fit/internal/FilterExtraction.h"
#include "kalmia/analysis/fit/internal/O2PLSExtraction.h"
#include "kalmia/analysis/fit/internal/OPLSExtraction.h"
#include "kalmia/analysis/fit/internal/PCAExtraction.h"
#include "kalmia/analysis/fit/internal/PLSExtraction.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

bool IsStopped(const std::function<void()>& call) {
  try {
    call();
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(), "stopped");
    return Is<kalmia::analysis::Stopped>(failure);
  }
  return false;
}

/// What was said to the bar, without the questions.
std::vector<std::string> Said(const ProgressLog& log) {
  std::vector<std::string> said;
  for (const std::string& call : log.calls)
    if (call != "IsBreakPressed") said.push_back(call);
  return said;
}

TEST(WorkProgress, GivesEachStepItsNameAndABarOfItsOwn) {
  ProgressLog log;
  const auto bar = RecordingBar(&log);
  WorkProgress work(bar.get());
  work.Begin("first");
  work.MoveTo(0.5);
  work.Begin("second", 0.25);
  work.MoveToPart(3, 4);
  EXPECT_THAT(Said(log), ElementsAre("SetRange 0 1", "SetValue 0", "SetText first", "SetValue 0.5", "SetRange 0 1",
                                     "SetValue 0.25", "SetText second", "SetValue 0.5"));
}

TEST(WorkProgress, ForwardsTheTextsAndTheRangesWithinRangesOfACalculationAndNeverGoesBack) {
  ProgressLog log;
  const auto bar = RecordingBar(&log);
  WorkProgress work(bar.get());
  work.Begin("step");
  log.calls.clear();
  work.Bar()->SetRange(0, 8);
  work.Bar()->SetText("stage");
  EXPECT_TRUE(work.Bar()->SetValue(2));
  EXPECT_TRUE(work.Bar()->PushSubRange(4, 8));
  work.Bar()->SetRange(-2, 0);  // a convergence
  EXPECT_TRUE(work.Bar()->SetValue(-1));
  EXPECT_TRUE(work.Bar()->SetValue(-2));  // that becomes worse
  EXPECT_TRUE(work.Bar()->SetValue(NAN));
  EXPECT_TRUE(work.Bar()->PopSubRange());
  EXPECT_TRUE(work.Bar()->PopSubRange());  // one too many closes nothing
  EXPECT_TRUE(work.Bar()->SetValue(3));
  EXPECT_TRUE(work.Bar()->SetValue(8));
  EXPECT_THAT(Said(log), ElementsAre("SetText stage", "SetValue 0.25", "SetValue 0.5", "SetValue 0.75",
                                     "SetValue 0.75", "SetValue 0.75", "SetValue 0.75", "SetValue 1"));
}

TEST(WorkProgress, ShowsRoundsBehindTheNameOfTheStepAndNothingOfWhatIsInside) {
  ProgressLog log;
  const auto bar = RecordingBar(&log);
  WorkProgress work(bar.get());
  work.BeginRounds("component 1", 4);
  log.calls.clear();
  for (const char* text : {"round 1", "round 2"}) {
    work.Bar()->SetText(text);
    work.Bar()->SetRange(-10, 0);
    work.Bar()->SetValue(-5);
    work.Bar()->PushSubRange(0, 1);
    work.Bar()->PopSubRange();
  }
  EXPECT_THAT(Said(log), ElementsAre("SetValue 0", "SetText component 1: round 1", "SetValue 0.25",
                                     "SetText component 1: round 2"));
}

TEST(WorkProgress, ShowsNothingOnTheSilentBarButAsks) {
  ProgressLog log;
  const auto bar = RecordingBar(&log);
  WorkProgress work(bar.get());
  NCProgress& silent = *work.SilentBar();
  silent.SetRange(0, 5);
  silent.SetText("text");
  EXPECT_TRUE(silent.SetValue(1) && silent.PushSubRange(0, 1) && silent.PopSubRange() && silent.NextSpin());
  EXPECT_FALSE(silent.IsBreakPressed());
  silent.SpinDone();
  EXPECT_EQ(log.calls.size(), 7U);
  EXPECT_THAT(log.calls, Each("IsBreakPressed"));
}

TEST(WorkProgress, IsLeftFromEveryCallOnceTheCallersBarWantsToStop) {
  ProgressLog log;
  log.stopAt = 1;
  const auto bar = RecordingBar(&log);
  WorkProgress work(bar.get());
  const std::vector<std::function<void()>> own = {[&] { work.Begin("step"); }, [&] { work.BeginRounds("step", 2); },
                                                  [&] { work.MoveTo(0.5); }, [&] { work.MoveToPart(1, 2); },
                                                  [&] { work.Ask(); }};
  for (std::size_t i = 0; i < own.size(); ++i) EXPECT_TRUE(IsStopped(own[i])) << i;
  for (NCProgress* library : {work.Bar(), work.SilentBar()}) {
    const std::vector<std::function<void()>> calls = {
        [=] { library->SetRange(0, 1); },     [=] { library->SetValue(1); }, [=] { library->SetText("text"); },
        [=] { library->PushSubRange(0, 1); }, [=] { library->PopSubRange(); }, [=] { library->IsBreakPressed(); },
        [=] { library->NextSpin(); }};
    for (std::size_t i = 0; i < calls.size(); ++i) EXPECT_TRUE(IsStopped(calls[i])) << i;
  }
}

TEST(WorkProgress, WithoutABarOfTheCallerGoesOn) {
  WorkProgress work(nullptr);
  work.Begin("step", 0.5);
  work.BeginRounds("step", 2);
  work.MoveToPart(1, 2);
  work.Ask();
  for (NCProgress* library : {work.Bar(), work.SilentBar()}) {
    library->SetText("text");
    library->SetRange(0, 1);
    EXPECT_TRUE(library->SetValue(1) && library->PushSubRange(0, 1) && library->PopSubRange() && library->NextSpin());
    EXPECT_FALSE(library->IsBreakPressed());
  }
}

/// Every fit of the same tables, of which X has holes where the fit takes them.
struct Fit {
  const char* what;
  std::function<void(NCProgress*)> run;
};

template <class Task>
Task TaskOn(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y) {
  Task task;
  task.x = x;
  if constexpr (!std::is_same_v<Task, PCATask>) task.y = y;
  task.rounds = 4;
  task.groups = GetDeafultCVGroupsVector(x.SizeRows(), task.rounds);
  return task;
}

std::vector<Fit> Fits() {
  const NCDataMatrix<float> x = RandomMatrix<float>(24, 6, 0.0, 1);
  NCDataMatrix<float> y(24, 2);
  for (int r = 1; r <= 24; ++r)
    for (int c = 1; c <= 2; ++c) y(r, c, x[r][c] + 0.3F * x[r][c + 2]);
  const NCDataMatrix<float> holed = RandomMatrix<float>(24, 6, 0.1, 1);
  return {{"PLS",
           [=](NCProgress* bar) {
             PLSTask task = TaskOn<PLSTask>(x, y);
             task.mostComponents = 2;
             ExtractPLS(task, bar);
           }},
          {"PCA",
           [=](NCProgress* bar) {
             PCATask task = TaskOn<PCATask>(x, y);
             task.mostComponents = 2;
             ExtractPCA(task, bar);
           }},
          {"OPLS",
           [=](NCProgress* bar) {
             OPLSTask task = TaskOn<OPLSTask>(x, y);
             task.mostComponents = 1;
             ExtractOPLS(task, bar);
           }},
          {"O2PLS",
           [=](NCProgress* bar) {
             O2PLSTask task = TaskOn<O2PLSTask>(x, y);
             task.numbers = O2PLSNumbers{1, 1, 0};
             Notes notes;
             ExtractO2PLS(task, &notes, bar);
           }},
          {"the filter", [=](NCProgress* bar) { ExtractFilter(x, y, 1, bar); }},
          {"the filling", [=](NCProgress* bar) {
             FillModel model;
             FillScaled(holed, 2, &model, bar);
           }}};
}

TEST(EveryFit, ShowsItsStepsOnTheBarItIsHandedAndOpensNone) {
  for (const Fit& fit : Fits()) {
    SCOPED_TRACE(fit.what);
    ProgressLog given, own;
    const RecordOwnBars bars(&own);
    fit.run(RecordingBar(&given).get());
    EXPECT_GT(given.Count("SetText"), 0);
    fit.run(nullptr);
    EXPECT_THAT(own.calls, IsEmpty());
  }
}

/// A calculation may pass over the answer to any question, but none is answered in vain here.
TEST(EveryFit, StopsAtWhicheverCallTheBarWantsItTo) {
  for (const Fit& fit : Fits()) {
    SCOPED_TRACE(fit.what);
    ProgressLog whole;
    fit.run(RecordingBar(&whole).get());
    const int calls = static_cast<int>(whole.calls.size()) - 1;  // the last one closes the bar
    ASSERT_GT(calls, 20);
    for (int stopAt = 1; stopAt < calls; stopAt += 1 + calls / 50) {
      ProgressLog log;
      log.stopAt = stopAt;
      EXPECT_TRUE(IsStopped([&] { fit.run(RecordingBar(&log).get()); })) << "at call " << stopAt;
      EXPECT_LE(static_cast<int>(log.calls.size()), stopAt + 8) << "goes on after " << stopAt;
    }
  }
}

}  // namespace
}  // namespace kalmia::analysis
