// What a stop leaves behind: nothing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "O2PLSCase.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using Table = NCDataMatrix<float>;

O2PLSCVResults Validate(const FloatBlocks& blocks, NCProgress* progress) {
  return O2PLSCrossValidation(&blocks.X, &blocks.Y, 3, progress, nullptr, 200, 1, 1, 1).GetResults();
}

/// Every cell of the results, matrix by matrix.
std::vector<std::vector<std::vector<float>>> CellsOf(const O2PLSCVResults& r) {
  std::vector<std::vector<std::vector<float>>> all;
  for (const auto* set : {&r.TSet, &r.USet, &r.PSet, &r.WSet, &r.CSet, &r.QSet, &r.SSet, &r.RSet, &r.ToSet, &r.PoSet,
                          &r.WoSet, &r.UoSet, &r.CoSet, &r.QoSet, &r.LambdaSet, &r.XLambdaSet})
    for (const Table& matrix : *set) all.push_back(CellsOf(matrix));
  for (const Table* matrix : {&r.Q2Var, &r.SSTable}) all.push_back(CellsOf(*matrix));
  all.push_back({CellsOf(r.Q2Cum), CellsOf(r.Q2XSide), CellsOf(r.Q2YSide)});
  return all;
}

/// Who asks the user: the caller's bar, or the bars of the principal components inside.
enum class Asks { kCallersBar, kBarsInside };

/// Whether a stop at that call ended the cross-validation.
bool EndsAtStop(const FloatBlocks& blocks, Asks who, int stopAt) {
  ProgressLog log;
  log.stopAt = stopAt;
  try {
    if (who == Asks::kCallersBar) {
      Validate(blocks, RecordingBar(&log).get());
    } else {
      const RecordOwnBars bars(&log);
      Validate(blocks, nullptr);
    }
  } catch (const NCError&) {
    return true;
  }
  return false;
}

int CallsOf(const FloatBlocks& blocks, Asks who) {
  ProgressLog log;
  if (who == Asks::kCallersBar) {
    Validate(blocks, RecordingBar(&log).get());
  } else {
    const RecordOwnBars bars(&log);
    Validate(blocks, nullptr);
  }
  return static_cast<int>(log.calls.size());
}

TEST(O2PLSCrossValidationStops, LeaveNothingBehindWhereverTheyComeIn) {
  const FloatBlocks blocks = MakeFloatBlocks({16, 5, 4, 1, 1, 1}, 0.1, 3);
  const auto x = CellsOf(blocks.X), y = CellsOf(blocks.Y);
  const auto whole = CellsOf(Validate(blocks, nullptr));
  for (const Asks who : {Asks::kCallersBar, Asks::kBarsInside}) {
    SCOPED_TRACE(who == Asks::kCallersBar ? "the caller's bar" : "the bars inside");
    const int calls = CallsOf(blocks, who);  // what is made once for the whole process is made now
    int ended = 0;
    for (int stopAt = 1; stopAt <= calls; ++stopAt) {
      SCOPED_TRACE("stop at call " + std::to_string(stopAt));
      const PeakBytesDuring meter;
      ended += EndsAtStop(blocks, who, stopAt) ? 1 : 0;
      EXPECT_EQ(meter.GetLiveBytes(), 0);
      ASSERT_EQ(CellsOf(blocks.X), x);
      ASSERT_EQ(CellsOf(blocks.Y), y);
    }
    EXPECT_GT(ended, 12);
    EXPECT_EQ(CellsOf(Validate(blocks, nullptr)), whole) << "another run is as if none had been stopped";
  }
}

}  // namespace
