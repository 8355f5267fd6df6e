#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "OPLSCase.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

class OPLSCrossValidationProgress : public ::testing::Test {
 protected:
  OPLSCrossValidation Fresh(NCProgress* progress = nullptr) const {
    return OPLSCrossValidation(&tables_.X, &tables_.Y, 2, 2, progress, nullptr);
  }

  const Tables tables_ = RelatedTables(12, 5, 2, 0.0, 1);
};

TEST_F(OPLSCrossValidationProgress, NestsTheModelsOfTheFirstRoundsAndNothingInLaterOnes) {
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  OPLSCrossValidation validation = Fresh(bar.get());
  const std::string block = "SetRange 0 10; PushSubRange 0 9; SetRange 0 1; PopSubRange; SetValue 10; PopSubRange; ";
  EXPECT_EQ(log.Joined(), "SetRange 0 2; PushSubRange 0 0.95; " + block + "PushSubRange 1 1.95; " + block +
                              "SetValue 2");
  log.calls.clear();
  validation.NextComponent(bar.get());
  EXPECT_EQ(log.Joined(),
            "SetRange 0 2; PushSubRange 0 0.95; PopSubRange; PushSubRange 1 1.95; PopSubRange; SetValue 2");
}

/// Stops `work` at each call in turn; which text is expected tells `inRound` from the call at which it stopped.
void ExpectEveryStopThrows(const std::function<void(NCProgress*)>& work, bool roundsReport) {
  int stops = 0;
  for (int stopAt = 1; stopAt < 1000; ++stopAt) {
    SCOPED_TRACE("stopped at call " + std::to_string(stopAt));
    ProgressLog log;
    log.stopAt = stopAt;
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    try {
      work(bar.get());
      EXPECT_LT(static_cast<int>(log.calls.size()), stopAt) << "went on although it was stopped";
      break;
    } catch (const NCError& error) {
      ++stops;
      EXPECT_EQ(error.GetLevel(), NCError::Level2);
      const int depth = log.Count("PushSubRange") - log.Count("PopSubRange");
      const std::string& last = log.calls.back();
      // Inside a round are its own nested stretch, opened or closed, and the value at its end.
      const bool inRound = roundsReport && (last == "PushSubRange 0 9" || last == "SetValue 10" ||
                                            (last == "PopSubRange" && depth == 1));
      EXPECT_STREQ(error.GetMessage(), inRound ? "OPLS component aborted." : "OPLS cross validation aborted.")
          << log.Joined();
    }
  }
  EXPECT_GT(stops, 4);
}

TEST_F(OPLSCrossValidationProgress, EveryStopOfANewOneThrowsInsideARoundWithTheTextOfTheModel) {
  const auto x = CellsOf(tables_.X), y = CellsOf(tables_.Y);
  ExpectEveryStopThrows([this](NCProgress* bar) { Fresh(bar); }, /*roundsReport=*/true);
  EXPECT_EQ(CellsOf(tables_.X), x);
  EXPECT_EQ(CellsOf(tables_.Y), y);
}

TEST_F(OPLSCrossValidationProgress, EveryStopOfAFurtherComponentThrowsAndAFreshOneGivesTheSameBits) {
  OPLSCrossValidation expected = Fresh();
  expected.NextComponent(nullptr);
  const std::string everything = Everything(expected);
  ExpectEveryStopThrows(
      [this, &everything](NCProgress* bar) {
        OPLSCrossValidation validation = Fresh();
        try {
          validation.NextComponent(bar);
        } catch (const NCError&) {
          validation = Fresh();  // what was stopped can be assigned over
          validation.NextComponent(nullptr);
          EXPECT_EQ(Everything(validation), everything);
          throw;
        }
      },
      /*roundsReport=*/false);
}

}  // namespace
