#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "cluster/PlainClustering.h"
#include "cluster/Stops.h"
#include "cluster/Trees.h"
#include "kalmia/cluster/DendroGram.h"
#include "kalmia/cluster/internal/CommonColumns.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using DendroGram::SingleLinkageDistanceCalculator;
using DendroGram::WardDistanceCalculator;

constexpr float kMiss = kHole<float>;

/// Merges what it is told to, and counts its calls.
class ScriptedCalculator : public DendroGram::ClusterDistanceCalculator {
 public:
  explicit ScriptedCalculator(std::vector<PlainMerge> script) : script_(std::move(script)) {}
  void Init(const NCDataMatrix<float>&, NCProgress*) override { ++inits; }
  float FindNearestAndMerge(int& i, int& j) override {
    const PlainMerge merge = script_.at(static_cast<std::size_t>(merges++));
    i = merge.i;
    j = merge.j;
    return merge.height;
  }
  CString GetId() override { return "Scripted"; }

  int inits = 0;
  int merges = 0;

 private:
  std::vector<PlainMerge> script_;
};

Tree Analyse(const NCDataMatrix<float>& data, DendroGram::ClusterDistanceCalculator& calculator,
             NCProgress* progress = nullptr) {
  return Tree(DendroGram::GetDendroGram(data, calculator, progress, nullptr));
}

CString ErrorOf(const NCDataMatrix<float>& data) {
  SingleLinkageDistanceCalculator calculator;
  try {
    Analyse(data, calculator);
  } catch (const NCError& error) {
    return error.GetMessage();
  }
  return "";
}

const char* const kTooManyHoles =
    "Cluster analysis can not be performed on data that has rows with more than 50% missing values";
const char* const kTooLittleInCommon =
    "Cluster analysis can not be performed on data where two rows have less than\nthe square root of the number of "
    "columns common non-missing elements.";

TEST(GetDendroGram, PutsTheLowerPositionLeftAndThenTheSmallerClusterLeft) {
  // ((1 3) 2) and then 4, all told with the positions the wrong way round once.
  ScriptedCalculator calculator({{2, 0, 1}, {0, 1, 2}, {1, 0, 3}});
  const Tree tree = Analyse(RandomMatrix<float>(4, 2, 0, 1), calculator);
  EXPECT_EQ(Text(*tree), "(4 (2 (1 3):1):2):3");
  EXPECT_TRUE(HasSoundLinks(*tree));
  EXPECT_EQ(calculator.inits, 1);
  EXPECT_EQ(calculator.merges, 3);
}

TEST(GetDendroGram, TakesNearRowsTogether) {
  const NCDataMatrix<float> table = MatrixOf<float>({{0}, {10}, {1}, {14}});
  SingleLinkageDistanceCalculator single;
  EXPECT_EQ(Text(*Analyse(table, single)), "((1 3):1 (2 4):4):9");
  WardDistanceCalculator ward(WardDistanceCalculator::DistanceIncrease);
  EXPECT_EQ(Text(*Analyse(table, ward)), "((1 3):0.5 (2 4):8):132.25");
}

TEST(GetDendroGram, OfOneRowIsALeaf) {
  SingleLinkageDistanceCalculator single;
  WardDistanceCalculator ward(WardDistanceCalculator::DistanceIncrease);
  EXPECT_EQ(Text(*Analyse(MatrixOf<float>({{3, 4}}), single)), "1");
  EXPECT_EQ(Text(*Analyse(MatrixOf<float>({{3, 4}}), ward)), "1");
}

TEST(GetDendroGram, RefusesTablesWithoutRowsOrColumns) {
  const char* const text = "Cluster analysis can not be performed on data without rows or columns.";
  EXPECT_EQ(ErrorOf(NCDataMatrix<float>()), text);
  EXPECT_EQ(ErrorOf(NCDataMatrix<float>(3, 0)), text);
}

TEST(GetDendroGram, RefusesARowWithMoreThanHalfOfItsCellsMissing) {
  EXPECT_EQ(ErrorOf(MatrixOf<float>({{1, 2, kMiss, kMiss}, {1, 2, 3, 4}})), "");
  EXPECT_EQ(ErrorOf(MatrixOf<float>({{1, 2, 3, 4, 5}, {1, 2, kMiss, kMiss, kMiss}})), kTooManyHoles);
  EXPECT_EQ(ErrorOf(MatrixOf<float>({{kMiss, kMiss}})), kTooManyHoles) << "one row alone";
  NCDataMatrix<float> wide(2, 100, 1.0F);
  for (int c = 1; c <= 50; ++c) wide(1, c, kMiss);
  EXPECT_EQ(ErrorOf(wide), "");
  wide(1, 51, kMiss);
  EXPECT_EQ(ErrorOf(wide), kTooManyHoles);
}

TEST(GetDendroGram, RefusesRowsThatHaveTooFewColumnsInCommon) {
  EXPECT_EQ(ErrorOf(MatrixOf<float>({{1, 2, kMiss, kMiss}, {1, 2, kMiss, kMiss}})), "");
  EXPECT_EQ(ErrorOf(MatrixOf<float>({{1, 2, kMiss, kMiss}, {1, kMiss, 3, kMiss}})), kTooLittleInCommon);
  EXPECT_EQ(ErrorOf(MatrixOf<float>({{1, kMiss}, {kMiss, 2}})), kTooLittleInCommon);  // 1 of 2 needed
}

TEST(GetDendroGram, NeedsTheRoundedRootOfTheColumnsInCommon) {
  struct Row {
    int columns, needed;
  };
  // With half of the cells missing at most, rows of 3, 6 and 7 columns share 1, 0 and 1 columns at least.
  for (const Row& row : {Row{2, 1}, Row{3, 2}, Row{4, 2}, Row{6, 2}, Row{7, 3}, Row{12, 3}, Row{13, 4}}) {
    const int half = row.columns / 2;
    for (int common = std::max(0, row.columns - 2 * half); common <= row.columns; ++common) {
      // Row 1 misses the last `half` columns, row 2 as many from the first ones as leave so many in common.
      NCDataMatrix<float> table(2, row.columns, 1.0F);
      const int missingOfOne = std::min(half, row.columns - common);
      for (int c = 0; c < missingOfOne; ++c) table(1, row.columns - c, kMiss);
      for (int c = 1; c <= row.columns - common - missingOfOne; ++c) table(2, c, kMiss);
      EXPECT_EQ(ErrorOf(table), common < row.needed ? kTooLittleInCommon : "")
          << row.columns << " columns, " << common << " in common";
    }
  }
}

TEST(GetDendroGram, NamesTheFirstTwoRowsThatHaveTooFewColumnsInCommon) {
  // Of 150 columns, three words of bits, twelve are needed. Rows 3 and 5 share eleven, the last of them in the third
  // word; so do 4 and 5.
  NCDataMatrix<float> table(6, 150, 1.0F);
  for (int c = 1; c <= 70; ++c) table(3, c, kMiss);
  for (int c = 1; c <= 70; ++c) table(4, c, kMiss);
  for (int c = 71; c <= 139; ++c) table(5, c, kMiss);
  SingleLinkageDistanceCalculator calculator;
  try {
    Analyse(table, calculator);
    ADD_FAILURE() << "eleven columns";
  } catch (const DendroGram::CommonColumnsError& error) {
    EXPECT_EQ(error.firstRow, 3);
    EXPECT_EQ(error.secondRow, 5);
    EXPECT_EQ(error.commonColumns, 11);
    EXPECT_EQ(error.GetMessage(), kTooLittleInCommon);
    const std::unique_ptr<NCError> clone(error.Clone());
    EXPECT_EQ(dynamic_cast<DendroGram::CommonColumnsError&>(*clone).secondRow, 5);
  }
  table(5, 100, 1.0F);
  EXPECT_EQ(ErrorOf(table), "");
}

TEST(PresentCells, CountTheColumnsThatTwoRowsShare) {
  for (const int columns : {1, 63, 64, 65, 128, 200}) {
    const NCDataMatrix<float> table = RandomMatrix<float>(6, columns, 0.4, static_cast<unsigned>(columns));
    const kalmia::PresentCells present(table);
    for (int a = 1; a <= 6; ++a)
      for (int b = 1; b <= 6; ++b) {
        int common = 0;
        for (int c = 1; c <= columns; ++c) common += table[a][c] != kMiss && table[b][c] != kMiss ? 1 : 0;
        EXPECT_EQ(present.Common(a, b, columns + 1), common);
        EXPECT_GE(present.Common(a, b, 3), std::min(3, common)) << "at least so many";
        EXPECT_LE(present.Common(a, b, 3), common);
      }
  }
}

/// A table of which no two rows can be passed by counting their holes alone.
NCDataMatrix<float> HalfMissing(int rows) {
  NCDataMatrix<float> table(rows, 16, 1.0F);
  for (int r = 1; r <= rows; ++r)
    for (int c = 1; c <= 8; ++c) table(r, c, kMiss);
  return table;
}

TEST(GetDendroGram, AsksWhileItLooksForRowsWithoutCommonColumns) {
  ScriptedCalculator calculator({});
  const NCDataMatrix<float> table = HalfMissing(3000);  // 4.5 million pairs of one word
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  EXPECT_THROW(Analyse(table, calculator, bar.get()), std::out_of_range);  // there is no script
  const auto text = std::find(log.calls.begin(), log.calls.end(), "SetText Comparing missing cells");
  ASSERT_NE(text, log.calls.end());
  const auto end = std::find(text, log.calls.end(), "PopSubRange");
  // A pair and its word are two pieces of work, of which a million come with each question.
  EXPECT_EQ(std::count(text, end, "IsBreakPressed"), 2 * 4498500 / 1048576);
  log.calls.clear();
  log.stopAt = 4;  // the range, the sub-range, the text and this
  ScriptedCalculator stopped({});
  EXPECT_THROW(Analyse(table, stopped, bar.get()), NCError);
  EXPECT_EQ(stopped.inits, 0);
  EXPECT_TRUE(EndsAtItsFirstRefusal(log));
}

/// How often the user is asked once the merges have begun.
std::ptrdiff_t QuestionsWhileMerging(const NCDataMatrix<float>& table,
                                     DendroGram::ClusterDistanceCalculator&& calculator) {
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  Analyse(table, calculator, bar.get());
  const auto merging = std::find(log.calls.begin(), log.calls.end(), "SetText Merging clusters");
  return std::count(merging, log.calls.end(), "IsBreakPressed");
}

TEST(GetDendroGram, AsksDuringAMergeThatPassesOverManyPairs) {
  // Two rows of equally spaced points, far apart: 998 merges take the nearest pairs, the last one passes over all
  // others within the two, 248502.
  NCDataMatrix<float> table(1000, 1);
  for (int r = 1; r <= 1000; ++r) table(r, 1, static_cast<float>(r <= 500 ? r : r + 1000000));
  EXPECT_EQ(QuestionsWhileMerging(table, SingleLinkageDistanceCalculator()), 999 + 248502 / 65536);
}

TEST(GetDendroGram, AsksDuringAMergeThatComputesManyDistancesAnew) {
  // Points that come twice: after 500 merges the 124750 distances of all clusters are stale.
  NCDataMatrix<float> table(1000, 1);
  for (int r = 1; r <= 1000; ++r) table(r, 1, static_cast<float>((r - 1) / 2));
  EXPECT_GE(QuestionsWhileMerging(table, WardDistanceCalculator(WardDistanceCalculator::DistanceIncrease)),
            999 + 2 * (124750 / 8192));
}

TEST(GetDendroGram, TellsHowFarItIs) {
  std::vector<PlainMerge> script(12, {0, 1, 1});
  ScriptedCalculator calculator(script);
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  Analyse(RandomMatrix<float>(13, 2, 0, 1), calculator, bar.get());
  std::string expected = "SetRange 0 10; PushSubRange 0 5; PopSubRange; PushSubRange 5 10; SetText Merging clusters; "
                         "SetRange 0 13";
  for (int merge = 1; merge <= 12; ++merge) {
    if (merge == 10) expected += "; SetValue 10";
    expected += "; IsBreakPressed";
  }
  EXPECT_EQ(log.Joined(), expected) << "the second sub-range stays open";
}

TEST(GetDendroGram, StopsAtWhateverAsksAndLeavesNothingBehind) {
  const NCDataMatrix<float> table = RandomMatrix<float>(12, 3, 0.05, 3);
  for (int stopAt = 1;; ++stopAt) {
    ProgressLog log;
    log.stopAt = stopAt;
    log.calls.reserve(1000);
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    Tree tree;
    CString message;
    SingleLinkageDistanceCalculator calculator;
    try {
      tree = Analyse(table, calculator, bar.get());
    } catch (const NCError& error) {
      message = error.GetMessage();
    }
    if (tree) {
      EXPECT_LT(static_cast<int>(log.calls.size()), stopAt);
      break;
    }
    EXPECT_EQ(message, "Cluster analysis aborted.");
    EXPECT_TRUE(EndsAtItsFirstRefusal(log)) << "stop at call " << stopAt << " of " << log.Joined();
    ASSERT_LT(stopAt, 1000);
  }
}

TEST(GetDendroGram, AStopDuringTheSortComesBeforeAnyMerge) {
  const NCDataMatrix<float> table = RandomMatrix<float>(12, 3, 0, 3);
  ProgressLog whole;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&whole);
  SingleLinkageDistanceCalculator calculator;
  Analyse(table, calculator, bar.get());
  const auto sorting = std::find(whole.calls.begin(), whole.calls.end(), "SetText Sorting");
  ASSERT_EQ(*(sorting + 1), "IsBreakPressed");
  ProgressLog log;
  log.stopAt = static_cast<int>(sorting - whole.calls.begin()) + 2;
  const std::unique_ptr<NCProgress> stopping = RecordingBar(&log);
  const PeakBytesDuring meter;
  {
    SingleLinkageDistanceCalculator stopped;
    EXPECT_THROW(Analyse(table, stopped, stopping.get()), NCError);
    std::vector<std::string>().swap(log.calls);
  }
  EXPECT_EQ(meter.GetLiveBytes(), 0);
}

TEST(GetDendroGram, DestroysItsNodesWhenTheCalculatorFails) {
  const NCDataMatrix<float> table = RandomMatrix<float>(5, 2, 0, 1);
  const PeakBytesDuring meter;
  {
    ScriptedCalculator tooShort({{0, 1, 1}, {0, 1, 2}});
    EXPECT_THROW(Analyse(table, tooShort), std::out_of_range);
    for (const PlainMerge& wrong : {PlainMerge{0, 0, 1}, PlainMerge{0, 5, 1}, PlainMerge{-1, 2, 1}}) {
      ScriptedCalculator calculator({{0, 1, 1}, wrong});
      EXPECT_THROW(Analyse(table, calculator), NCError);
    }
  }
  EXPECT_EQ(meter.GetLiveBytes(), 0);
}

TEST(GetDendroGram, OfATypeWithoutDistancesIsAnErrorThatNamesItAndLeavesNoLeaf) {
  const NCDataMatrix<float> table = RandomMatrix<float>(5, 2, 0, 1);
  const PeakBytesDuring meter;
  {
    WardDistanceCalculator calculator(static_cast<WardDistanceCalculator::DistanceType>(2));
    try {
      Analyse(table, calculator);
      ADD_FAILURE() << "there are no distances";
    } catch (const NCError& error) {
      EXPECT_EQ(error.GetMessage(), "Cluster analysis: 2 is no type of Ward's distance.");
    }
  }
  EXPECT_EQ(meter.GetLiveBytes(), 0);
}

TEST(GetDendroGram, LeavesNothingBehindWhereMemoryRunsOut) {
  const NCDataMatrix<float> table = RandomMatrix<float>(40, 8, 0.05, 1);  // 780 pairs: a list of several blocks
  bool failed = true;
  for (int which = 1; failed; which += 7) {
    const PeakBytesDuring meter;
    {
      WardDistanceCalculator calculator(WardDistanceCalculator::DistanceIncrease);
      const FailAllocation failure(which);
      try {
        Analyse(table, calculator);
      } catch (const std::bad_alloc&) {
      } catch (const DendroGram::ClusterAllocationError&) {  // where it was the list
      }
      failed = failure.HasFailed();
    }
    ASSERT_TRUE(which == 1 || meter.GetLiveBytes() <= 0) << "allocation " << which;  // the first keeps buffers
  }
}

}  // namespace
