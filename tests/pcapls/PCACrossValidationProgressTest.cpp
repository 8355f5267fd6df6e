// What cross-validation reports, and what it leaves when it is stopped.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "PCAValidationCase.h"
#include "kalmia/support/LanguageString.h"
#include "testing/AllocationMeter.h"
#include "testing/RecordingProgress.h"
#include "testing/StreamAttacks.h"

namespace {

std::string RoundText(unsigned id, int round, int rounds) {
  CString text;
  text.Format(LanguageString::Get(id), round, rounds);
  return static_cast<const char*>(text);
}

/// The calls without the convergence of the models, whose numbers are theirs.
std::vector<std::string> OwnCalls(const ProgressLog& log) {
  std::vector<std::string> calls;
  bool ofModel = false;
  for (const std::string& call : log.calls) {
    if (call.rfind("PopSubRange", 0) == 0) ofModel = false;
    if (!ofModel) calls.push_back(call);
    if (call.rfind("PushSubRange", 0) == 0) ofModel = true;
  }
  return calls;
}

TEST(PCACrossValidation, NamesEachHalfOfARoundAndGivesItARangeOfItsOwn) {
  PCAValidationCase data(8, 4, 0.0);
  data.AddComponent();
  const std::vector<std::string> halves = {"SetRange 0 2",
                                           "SetText " + RoundText(10157, 1, 2),
                                           "PushSubRange 0 0.5",
                                           "PopSubRange",
                                           "SetText " + RoundText(10158, 1, 2),
                                           "PushSubRange 0.5 1",
                                           "PopSubRange",
                                           "SetText " + RoundText(10157, 2, 2),
                                           "PushSubRange 1 1.5",
                                           "PopSubRange",
                                           "SetText " + RoundText(10158, 2, 2),
                                           "PushSubRange 1.5 2",
                                           "PopSubRange",
                                           "~"};
  PCACrossValidation validation(data.model.get(), 2, nullptr, nullptr);
  ProgressLog callers;
  data.Validate(&validation, RecordingBar(&callers).get());
  EXPECT_EQ(OwnCalls(callers), halves);

  std::vector<std::string> withOpening = halves;
  withOpening.insert(withOpening.begin(), "open  0 1 0 0 1 null");
  ProgressLog own;
  {
    const RecordOwnBars factory(&own);
    data.Validate(&validation, nullptr);
  }
  EXPECT_EQ(OwnCalls(own), withOpening) << "the models report to it, too";
}

/// A bar that says "stop" where a range is opened or closed, and nowhere else.
class StopAtRanges : public NCProgress::Sink {
 public:
  void SetRange(float, float) override {}
  bool SetValue(float) override { return true; }
  void SetText(const char*) override {}
  bool PushSubRange(float, float) override { return false; }
  bool PopSubRange() override { return false; }
  bool IsBreakPressed() override { return true; }
  bool NextSpin() override { return false; }
  void SpinDone() override {}
};

TEST(PCACrossValidation, PassesOverAStopWhereARangeIsOpenedOrClosed) {
  PCAValidationCase data(12, 5, 0.1);
  data.AddComponent();
  PCACrossValidation watched(data.model.get(), 4, nullptr, nullptr), silent(data.model.get(), 4, nullptr, nullptr);
  NCProgress bar(std::make_unique<StopAtRanges>());
  EXPECT_NO_THROW(data.Validate(&watched, &bar));
  data.Validate(&silent);
  EXPECT_EQ(Everything(watched), Everything(silent));
}

TEST(PCACrossValidation, StopsAtAnyCallWithItsCumulatedValuesUnchanged) {
  PCAValidationCase data(12, 5, 0.1);
  data.AddComponent();
  PCACrossValidation start(data.model.get(), 3, nullptr, nullptr);
  data.Validate(&start);
  data.model->CalculateResiduals();
  data.AddComponent();
  PCACrossValidation whole = start;
  ProgressLog log;
  data.Validate(&whole, RecordingBar(&log).get());
  const int calls = static_cast<int>(log.calls.size()) - 1;  // all but the end of the bar
  const std::string before = Judgement(start), model = StreamOf(*data.model);
  int stops = 0;
  for (const bool own : {false, true})
    for (int stopAt = 1; stopAt <= calls; ++stopAt) {
      SCOPED_TRACE("stop at call " + std::to_string(stopAt) + (own ? " of its own bar" : ""));
      PCACrossValidation validation = start;
      ProgressLog stopped;
      stopped.stopAt = own ? stopAt + 1 : stopAt;  // opening its own bar is a call
      std::optional<std::string> message;
      {
        const RecordOwnBars factory(&stopped);
        const std::unique_ptr<NCProgress> bar = own ? nullptr : RecordingBar(&stopped);
        message = MessageOf([&] { data.Validate(&validation, bar.get()); });
      }
      EXPECT_EQ(StreamOf(*data.model), model);
      EXPECT_EQ(stopped.calls.back(), "~");
      if (!message) {  // after the last value nobody is asked any more
        EXPECT_EQ(Everything(validation), Everything(whole));
        continue;
      }
      ++stops;
      EXPECT_EQ(*message, LanguageString::Get(10147));
      EXPECT_EQ(Judgement(validation), before);
      // Rounds that were over stay in the sets; every half that was begun and ended closed its range.
      EXPECT_EQ(validation.GetPSet()->SizeRows() + validation.GetTSet()->SizeRows(), stopped.Count("PopSubRange"));
      for (int r = 1; r <= validation.GetPSet()->SizeRows(); ++r)
        EXPECT_TRUE((*validation.GetPSet())[r] == (*whole.GetPSet())[r]);
    }
  EXPECT_GT(stops, calls / 2);
}

TEST(PCACrossValidation, KeepsItsCumulatedValuesWheneverMemoryRunsOut) {
  PCAValidationCase data(8, 4, 0.1);
  data.AddComponent();
  const PCACrossValidation start(data.model.get(), 2, nullptr, nullptr);
  const std::string before = Judgement(start);
  bool failed = true;
  int which = 0;
  while (failed) {
    SCOPED_TRACE("allocation " + std::to_string(++which));
    PCACrossValidation validation = start;
    {
      const FailAllocation failure(which);
      try {
        data.Validate(&validation);
      } catch (const std::bad_alloc&) {
      }
      failed = failure.HasFailed();
    }
    EXPECT_EQ(Judgement(validation) == before, failed);
  }
  EXPECT_GT(which, 50) << "there is more to allocate than that";
}

}  // namespace
