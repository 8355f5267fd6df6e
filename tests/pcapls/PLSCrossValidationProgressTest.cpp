#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "CrossValidationCase.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "kalmia/support/LanguageString.h"
#include "testing/AllocationMeter.h"
#include "testing/RecordingProgress.h"

// What a cross-validation shows of itself, and that it ends as a whole or not at all.

namespace {

std::string RoundText(int round, int rounds) {
  CString text;
  text.Format(LanguageString::Get(10163), round, rounds);
  return static_cast<const char*>(text);
}

TEST(PLSCrossValidationProgress, NamesEachRoundAndLeavesTheRangeToItsModel) {
  CrossValidationCase data(9, 3, 1, 0.0);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 2, nullptr);
  ProgressLog log;
  data.Validate(&validation, RecordingBar(&log).get(), /*quiet=*/false);
  EXPECT_EQ(log.Joined(), "SetText " + RoundText(1, 2) + "; SetRange 1 0; SetText " + RoundText(2, 2) +
                              "; SetRange 1 0; ~");
}

TEST(PLSCrossValidationProgress, OpensABarOfItsOwnUnlessQuiet) {
  CrossValidationCase data(9, 3, 1, 0.0);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 2, nullptr);
  ProgressLog log;
  const RecordOwnBars factory(&log);
  data.Validate(&validation, nullptr, /*quiet=*/true);
  EXPECT_EQ(log.Joined(), "");
  data.Validate(&validation, nullptr, /*quiet=*/false);
  EXPECT_EQ(log.Joined(), "open  0 1 0 0 1 null; SetText " + RoundText(1, 2) + "; SetRange 1 0; SetText " +
                              RoundText(2, 2) + "; SetRange 1 0; ~");
}

TEST(PLSCrossValidationProgress, NamesItsRoundsOnAQuietCallersBarToo) {
  CrossValidationCase data(9, 3, 1, 0.0);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 2, nullptr);
  ProgressLog log;
  data.Validate(&validation, RecordingBar(&log).get(), /*quiet=*/true);
  EXPECT_EQ(log.Joined(), "SetText " + RoundText(1, 2) + "; SetText " + RoundText(2, 2) + "; ~");
}

TEST(PLSCrossValidationProgress, RunsToItsEndWhateverTheUserWants) {
  CrossValidationCase data(12, 4, 2, 0.1);
  data.AddComponent();
  PLSCrossValidation watched(data.model.get(), 3, nullptr);
  PLSCrossValidation silent(data.model.get(), 3, nullptr);
  ProgressLog log;
  log.stopAt = 1;
  EXPECT_NO_THROW(data.Validate(&watched, RecordingBar(&log).get(), /*quiet=*/false));
  data.Validate(&silent);
  EXPECT_EQ(Everything(watched), Everything(silent));
}

/// A bar whose user does not wait for an answer.
struct Impatient {};
class ThrowingSink : public NCProgress::Sink {
 public:
  explicit ThrowingSink(int texts) : texts_(texts) {}
  void SetRange(float, float) override {}
  bool SetValue(float) override { return true; }
  void SetText(const char*) override {
    if (--texts_ == 0) throw Impatient();
  }
  bool PushSubRange(float, float) override { return true; }
  bool PopSubRange() override { return true; }
  bool IsBreakPressed() override { return false; }
  bool NextSpin() override { return true; }
  void SpinDone() override {}

 private:
  int texts_;
};

TEST(PLSCrossValidationProgress, StaysAsItWasWhereTheBarThrows) {
  CrossValidationCase data(12, 4, 2, 0.1);
  data.AddComponent();
  PLSCrossValidation validation(data.model.get(), 3, nullptr);
  data.Validate(&validation);
  const std::string before = Everything(validation);
  for (int texts = 1; texts <= 3; ++texts) {
    NCProgress bar(std::make_unique<ThrowingSink>(texts));
    EXPECT_THROW(data.Validate(&validation, &bar, /*quiet=*/false), Impatient);
    EXPECT_EQ(Everything(validation), before);
  }
}

TEST(PLSCrossValidationProgress, StaysAsItWasWheneverMemoryRunsOut) {
  CrossValidationCase data(8, 3, 2, 0.1);
  data.AddComponent();
  const PLSCrossValidation start(data.model.get(), 2, nullptr);
  const std::string before = Everything(start);
  bool failed = true;
  for (int which = 1; failed; ++which) {
    SCOPED_TRACE("allocation " + std::to_string(which));
    PLSCrossValidation validation = start;
    {
      const FailAllocation failure(which);
      try {
        data.Validate(&validation);
      } catch (const std::bad_alloc&) {
      }
      failed = failure.HasFailed();
    }
    ASSERT_TRUE(failed || which > 50) << "there is more to allocate than that";
    EXPECT_EQ(Everything(validation) == before, failed);
  }
}

}  // namespace
