// What filling a table reports, and what it leaves when it is stopped.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include "FillingCase.h"
#include "kalmia/o2pls/PLSMissingValueEstimator.h"
#include "kalmia/support/LanguageString.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using namespace filling;


TEST(PLSMissingValueEstimator, OpensABarForEachComponentAndEachCrossValidation) {
  const Tables tables = TwoScores(/*share=*/0.02F, /*weight=*/4.5F);
  ProgressLog log;
  {
    const RecordOwnBars bars(&log);
    Filled(tables.X, tables.Y);
  }
  CString title;
  title.Format(LanguageString::Get(10047), 2);
  EXPECT_EQ(log.Count("open"), 4) << log.Joined();
  EXPECT_THAT(log.Joined(), ::testing::HasSubstr(std::string("open ") + static_cast<const char*>(title)));
  EXPECT_EQ(log.Count("~"), 4);
}

TEST(PLSMissingValueEstimator, IteratesAComponentTwoHundredTimesAtMost) {
  // Two scores at right angles, one of which is nearly as strong as the other: each round takes less than a thousandth
  // of the weaker one away.
  Tables tables{Table(64, 3, 0.0F), Table(64, 2)};
  for (int i = 1; i <= 64; ++i) {
    const float first = i % 2 == 0 ? 1.0F : -1.0F;
    const float second = i / 2 % 2 == 0 ? 1.0F : -1.0F;
    tables.X(i, 1, first);
    tables.X(i, 2, second);
    tables.Y(i, 1, 0.8F * first + 0.6F * 0.9998F * second);
    tables.Y(i, 2, -0.6F * first + 0.8F * 0.9998F * second);
  }
  tables.X(5, 3, kMissing);
  NCPLS model(&tables.X, &tables.Y, 1000);
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  ASSERT_GT(model.GetIterations(), 200);
  ProgressLog log;
  {
    const RecordOwnBars bars(&log);
    Filled(tables.X, tables.Y);
  }
  const auto end = std::find(log.calls.begin(), log.calls.end(), "~");
  const auto isMove = [](const std::string& call) { return call.rfind("SetValue", 0) == 0; };
  const auto moves = std::count_if(log.calls.begin(), end, isMove);
  EXPECT_EQ(moves, 200 - 1) << "the first round opens the bar";
}

TEST(PLSMissingValueEstimator, PassesAStopOnWithTheTableInHandAsItWas) {
  const Tables tables = RelatedTables(20, 5, 3, 2, 0.1F);
  const Table holedX = WithHoles(tables.X, 0.1, 8), holedY = WithHoles(tables.Y, 0.1, 9);
  const Table filledX = Filled(holedX, holedY);
  constexpr int kNone = -1;
  std::vector<int> outcomes;  // per call the level of the error
  bool whileFillingY = false;
  while (outcomes.empty() || outcomes.back() != kNone) {
    SCOPED_TRACE("stop at call " + std::to_string(outcomes.size() + 1));
    ProgressLog log;
    log.stopAt = static_cast<int>(outcomes.size()) + 1;
    const RecordOwnBars bars(&log);
    Table X = holedX, Y = holedY;
    const auto level = LevelOf([&] { PLSMissingValueEstimator(X, Y, /*both=*/true); });
    outcomes.push_back(level ? static_cast<int>(*level) : kNone);
    EXPECT_EQ(log.Count("open"), log.Count("~")) << "every bar is closed";
    if (!level) {  // the last question is over, only bars of the last cross-validation are to come
      EXPECT_EQ(Y.GetNumMisVal(), 0);
      continue;
    }
    EXPECT_TRUE(Y == holedY);
    EXPECT_EQ(Y.GetNumMisVal(), holedY.GetNumMisVal());
    if (X.GetNumMisVal() == 0) whileFillingY = true;
    EXPECT_EQ(CellsOf(X), CellsOf(whileFillingY ? filledX : holedX));
  }
  EXPECT_THAT(outcomes, ::testing::Contains(2)) << "while a component iterates";
  EXPECT_THAT(outcomes, ::testing::Contains(0)) << "at the end of one";
  EXPECT_THAT(outcomes, ::testing::Not(::testing::Contains(1)));
  EXPECT_TRUE(whileFillingY);
}

TEST(PLSMissingValueEstimator, LeavesTheTableAsItWasWheneverMemoryRunsOut) {
  const Tables tables = RelatedTables(8, 3, 1, 1, 0.1F);
  const Table holed = WithHoles(tables.X, 0.1, 8);
  ASSERT_GT(holed.GetNumMisVal(), 0);
  bool failed = true;
  int which = 0;
  while (failed) {
    SCOPED_TRACE("allocation " + std::to_string(++which));
    Table X = holed, Y = tables.Y;
    {
      const FailAllocation failure(which);
      try {
        PLSMissingValueEstimator(X, Y, /*both=*/false);
      } catch (const std::bad_alloc&) {
        EXPECT_TRUE(X == holed);
      }
      failed = failure.HasFailed();
    }
    EXPECT_EQ(X.GetNumMisVal() > 0, failed);
  }
  EXPECT_GT(which, 50) << "there is more to allocate than that";
}

}  // namespace
