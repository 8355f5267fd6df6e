#include "kalmia/cluster/MegaDistances.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "cluster/OnDisk.h"
#include "cluster/Stops.h"
#include "kalmia/cluster/internal/PairSort.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

// The store of pairs by itself.

namespace {

using DendroGram::DistanceAndIndex;
using DendroGram::DistanceFile;
using DendroGram::MegaDistances;
using ::testing::ElementsAre;

class MegaDistancesOnDisk : public OnDisk {};

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST_F(MegaDistancesOnDisk, AStoreGivesItsPairsByRisingDistanceAndThenAnError) {
  for (const std::size_t size : {1, 3, 10, 60}) {
    std::vector<DistanceAndIndex> memory(size);
    MegaDistances store(memory, nullptr, 60);
    EXPECT_TRUE(memory.empty());
    for (int k = 0; k < 60; ++k) store.AddDistance({static_cast<float>((k * 37) % 60), k, k + 1});
    EXPECT_EQ(Files(), 1);
    store.SplitDistances();
    for (int k = 0; k < 60; ++k) {
      ASSERT_EQ(store.GetNearest().distance, static_cast<float>(k));
      store.RemoveNearest();
    }
    EXPECT_EQ(Files(), 0) << "each file goes when it is loaded";
    EXPECT_EQ(ErrorOf([&] { store.GetNearest(); }), "Internal error in MegaDistances::LoadNextSegment.");
    EXPECT_EQ(ErrorOf([&] { store.RemoveNearest(); }), "Internal error in MegaDistances::LoadNextSegment.");
  }
}

TEST_F(MegaDistancesOnDisk, AStoreKeepsTheRowsOfAPairWhateverTheyAre) {
  std::vector<DistanceAndIndex> memory(10);
  MegaDistances store(memory, nullptr, 40);
  for (int k = 0; k < 40; ++k) store.AddDistance({static_cast<float>(k), 1000000 + k, 2147483647 - k});
  store.SplitDistances();
  for (int k = 0; k < 40; ++k, store.RemoveNearest()) {
    ASSERT_EQ(store.GetNearest().i, 1000000 + k);
    ASSERT_EQ(store.GetNearest().j, 2147483647 - k);
  }
}

TEST_F(MegaDistancesOnDisk, IsSplitIntoThreePartsAlsoWhereAllFits) {
  std::vector<DistanceAndIndex> memory(60);
  MegaDistances store(memory, nullptr, 60);
  for (int k = 0; k < 60; ++k) store.AddDistance({static_cast<float>(k), 1, 2});
  store.SplitDistances();
  EXPECT_EQ(Files(), 3);
}

TEST_F(MegaDistancesOnDisk, ARecordGoesIntoTheFirstFileWhoseLimitItReaches) {
  DistanceFile source;
  source.minimum = 0.5F;
  const float distances[] = {1, 2, 3, 4, kNaN, 0.75F, 2, kInfinity};
  for (const float distance : distances) {
    const DistanceAndIndex pair = {distance, 1, 2};
    source.Append(&pair, 1);
    ++source.count;
  }
  std::vector<float> limits = {2, 9, 5, 3};
  std::vector<DistanceAndIndex> buffer;
  buffer.reserve(3);
  const DendroGram::DistanceFiles files = DendroGram::DistributeDistances(source, limits, buffer, 8, nullptr);
  EXPECT_THAT(limits, ElementsAre(9, 5, 3, 2));
  ASSERT_EQ(files.size(), 4U);
  EXPECT_TRUE(buffer.empty());
  EXPECT_GE(buffer.capacity(), 3U);
  const std::uint32_t counts[] = {1, 2, 2, 3};  // inf; 3 4; 2 2; 1 0.75 and the NaN
  const float minima[] = {5, 3, 2, 0.5F}, maxima[] = {9, 5, 3, 2};
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_EQ(files[k]->count, counts[k]);
    EXPECT_EQ(files[k]->minimum, minima[k]);
    EXPECT_EQ(files[k]->maximum, maxima[k]);
  }
  std::vector<float> few = {100, 50, 9};
  EXPECT_EQ(DendroGram::DistributeDistances(*files[1], few, buffer, 2, nullptr).size(), 1U) << "empty files go at once";
  EXPECT_EQ(Files(), 5);
}

TEST_F(MegaDistancesOnDisk, RecordsOfAFileKeepTheOrderInWhichTheyWereWritten) {
  DistanceFile source;
  for (int k = 0; k < 100; ++k) {
    const DistanceAndIndex pair = {static_cast<float>(k % 3), k, k + 1};
    source.Append(&pair, 1);
    ++source.count;
  }
  std::vector<float> limits = {2, 1};
  std::vector<DistanceAndIndex> buffer;
  buffer.reserve(7);
  const DendroGram::DistanceFiles files = DendroGram::DistributeDistances(source, limits, buffer, 100, nullptr);
  ASSERT_EQ(files.size(), 2U);
  for (const auto& file : files) {
    std::vector<DistanceAndIndex> read(file->count);
    file->SeekTo(0);
    ASSERT_TRUE(file->Read(read.data(), read.size()));
    for (std::size_t k = 1; k < read.size(); ++k) EXPECT_LT(read[k - 1].i, read[k].i);
  }
}

TEST_F(MegaDistancesOnDisk, ABufferWithoutRoomIsAnErrorAndMakesNoFile) {
  DistanceFile source;
  const DistanceAndIndex pair = {1, 1, 2};
  source.Append(&pair, 1);
  ++source.count;
  std::vector<float> limits = {2, 1};
  std::vector<DistanceAndIndex> buffer;
  EXPECT_EQ(ErrorOf([&] { DendroGram::DistributeDistances(source, limits, buffer, 1, nullptr); }),
            "Cluster analysis: a buffer without room cannot distribute distances.");
  EXPECT_EQ(Files(), 1);
  EXPECT_EQ(ErrorOf([&] { MegaDistances(buffer, nullptr, 1); }),
            "Cluster analysis: distances on disk take memory for one of them at least.");
  EXPECT_EQ(Files(), 1);
}

TEST_F(MegaDistancesOnDisk, EqualDistancesComeFromTheLatestRowsOnWhateverTheMemory) {
  for (const std::size_t size : {1, 7, 50, 300}) {
    std::vector<DistanceAndIndex> memory(size), inMemory;
    MegaDistances store(memory, nullptr, 300);
    for (int i = 1; i < 25; ++i)
      for (int j = i + 1; j <= 25; ++j) inMemory.push_back({static_cast<float>((i * j) % 4 < 3), i, j});
    for (const DistanceAndIndex& pair : inMemory) store.AddDistance(pair);
    store.SplitDistances();
    std::sort(inMemory.begin(), inMemory.end(), kalmia::ComesBefore);
    for (; !inMemory.empty(); inMemory.pop_back(), store.RemoveNearest()) {
      ASSERT_EQ(store.GetNearest().distance, inMemory.back().distance) << size;
      ASSERT_EQ(store.GetNearest().i, inMemory.back().i) << size;
      ASSERT_EQ(store.GetNearest().j, inMemory.back().j) << size;
    }
  }
}

/// The calls of a bar from a text on.
std::vector<std::string> CallsFrom(const ProgressLog& log, const std::string& text) {
  return {std::find(log.calls.begin(), log.calls.end(), text), log.calls.end()};
}

TEST_F(MegaDistancesOnDisk, AsksWhileItDealsOutAndLoadsAndSortsWhatIsLarge) {
  const int pairs = 400000;
  std::vector<DistanceAndIndex> memory(pairs);
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  MegaDistances store(memory, bar.get(), pairs);
  for (int k = 0; k < pairs; ++k) store.AddDistance({static_cast<float>(k % 5 == 0 ? k : 1), 1 + k / 60000, 60001});
  log.calls.clear();
  store.SplitDistances();
  // 400000 records are seven runs of 65536 at most; each is read, and written to each of the files.
  EXPECT_EQ(log.Count("IsBreakPressed"), 7 * (1 + Files()));
  log.calls.clear();
  EXPECT_EQ(store.GetNearest().distance, 0);
  const std::vector<std::string> calls = CallsFrom(log, "SetText Loading distances");
  const auto sorting = std::find(calls.begin(), calls.end(), "SetText Sorting");
  const auto merging = std::find(calls.begin(), calls.end(), "SetText Merging clusters");
  ASSERT_NE(merging, calls.end());
  // The first segment holds the ones, 320000, and some more: five runs at least, four questions in between.
  EXPECT_GE(std::count(calls.begin(), sorting, "IsBreakPressed"), 4);
  EXPECT_GE(std::count(sorting, merging, "IsBreakPressed"), std::lgamma(320001.0) / std::log(2.0) / 65536);
}

TEST_F(MegaDistancesOnDisk, ASegmentWhoseLoadingIsStoppedIsLoadedAgain) {
  for (int stopAt = 1;; ++stopAt) {
    std::vector<DistanceAndIndex> memory(60);
    ProgressLog log;
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    MegaDistances store(memory, bar.get(), 60);
    for (int k = 0; k < 60; ++k) store.AddDistance({static_cast<float>((k * 37) % 60), k, k + 1});
    store.SplitDistances();
    log.calls.clear();
    log.stopAt = stopAt;
    const bool stopped = ErrorOf([&] { store.GetNearest(); }) == "Cluster analysis aborted.";
    EXPECT_EQ(EndsAtItsFirstRefusal(log), stopped);
    log.stopAt = 0;
    for (int k = 0; k < 60; ++k, store.RemoveNearest()) ASSERT_EQ(store.GetNearest().distance, static_cast<float>(k));
    if (!stopped) break;
  }
}

/// A store with memory for ten of 400 pairs: one is far out, so that the segment of the others is divided twice before
/// it can be loaded, the second time by the range of what it holds.
std::unique_ptr<MegaDistances> StoreToDivideAgain(NCProgress* progress) {
  std::vector<DistanceAndIndex> memory(10);
  auto store = std::make_unique<MegaDistances>(memory, progress, 400);
  store->AddDistance({1e6F, 1, 2});
  for (int k = 0; k < 399; ++k) store->AddDistance({static_cast<float>((k * 100) % 399), k, k + 1});
  store->SplitDistances();
  return store;
}

TEST_F(MegaDistancesOnDisk, ASegmentWhoseDivisionIsStoppedWhereverItIsIsDividedAgain) {
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  // The range is read in 40 steps: one in 31 calls meets it, and each of the divisions, which ask for each file.
  int stopAt = 1;
  for (bool stopped = true; stopped; stopAt += 31) {
    const std::unique_ptr<MegaDistances> store = StoreToDivideAgain(bar.get());
    log.calls.clear();
    log.stopAt = stopAt;
    stopped = ErrorOf([&] { store->GetNearest(); }) == "Cluster analysis aborted.";
    log.stopAt = 0;
    if (!stopped) {
      EXPECT_EQ(std::count(log.calls.begin(), log.calls.end(), "SetText Re-partitioning"), 2);
    }
    for (int k = 0; k < 400; ++k, store->RemoveNearest())
      ASSERT_EQ(store->GetNearest().distance, k < 399 ? static_cast<float>(k) : 1e6F) << "stopped at " << stopAt;
    EXPECT_EQ(Files(), 0);
  }
  EXPECT_GE(stopAt, 3 * 40);
}

TEST_F(MegaDistancesOnDisk, ABufferThatWasLentComesBackEmptyAlsoAfterAStop) {
  DistanceFile source;
  const DistanceAndIndex pairs[] = {{1, 1, 2}, {2, 1, 3}, {3, 2, 3}};
  source.Append(pairs, 3);
  source.count = 3;
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  std::vector<float> limits = {3, 2};
  std::vector<DistanceAndIndex> buffer;
  buffer.reserve(2);
  EXPECT_EQ(ErrorOf([&] { DendroGram::DistributeDistances(source, limits, buffer, 3, bar.get()); }),
            "Cluster analysis aborted.");
  EXPECT_TRUE(buffer.empty());
  EXPECT_GE(buffer.capacity(), 2U);
}

TEST_F(MegaDistancesOnDisk, AsksSeldomWhileItSortsASmallSegment) {
  std::vector<DistanceAndIndex> memory(30000);
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  MegaDistances store(memory, bar.get(), 30000);
  for (int k = 0; k < 30000; ++k)
    store.AddDistance({static_cast<float>((k * 7919) % 30000), k / 200 + 1, 300 + k % 200});
  store.SplitDistances();
  log.calls.clear();
  EXPECT_EQ(store.GetNearest().distance, 0);
  // Three passes over up to 30000 pairs, each asking for 8192; there are some 400000 comparisons.
  EXPECT_LE(log.Count("IsBreakPressed"), 30);
}

TEST_F(MegaDistancesOnDisk, AFileBeyondFourGigabytesIsReadWhereItsRecordIs) {
  DistanceFile file;
  const std::uint32_t number = 400000000;  // 4.8 GB; nothing is written in front of it
  const DistanceAndIndex pair = {0.5F, 17, 65535};
  file.stream.seekp(std::streamoff{12} * number);
  file.Append(&pair, 1);
  DistanceAndIndex read[2] = {};
  file.SeekTo(number - 1);
  ASSERT_TRUE(file.Read(read, 2));
  EXPECT_EQ(read[0].j, 0) << "a record that was left out";
  EXPECT_EQ(read[1].distance, 0.5F);
  EXPECT_EQ(read[1].j, 65535);
}

TEST_F(MegaDistancesOnDisk, TheBarMovesAtEveryTenThousandthRecord) {
  std::vector<DistanceAndIndex> memory(10);
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  MegaDistances store(memory, bar.get(), 40000);
  for (int k = 1; k <= 20001; ++k) store.AddDistance({1, 1, 2});
  EXPECT_EQ(log.Count("SetValue"), 2);
  EXPECT_EQ(log.Count("IsBreakPressed"), 20001);
  EXPECT_EQ(log.calls[2 + 9999], "SetValue 0.25") << "before the poll of the same record";
}

TEST_F(MegaDistancesOnDisk, AStopToldByTheBarWhileSavingIsHeardBeforeThePoll) {
  std::vector<DistanceAndIndex> memory(10);
  ProgressLog log;
  log.stopAt = 2 + 10000;  // the range and the text, a poll for each of 9999 records, then this
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  MegaDistances store(memory, bar.get(), 40000);
  for (int k = 1; k < 10000; ++k) store.AddDistance({1, 1, 2});
  EXPECT_EQ(ErrorOf([&] { store.AddDistance({1, 1, 2}); }), "Cluster analysis aborted");
  EXPECT_EQ(log.calls.back(), "SetValue 0.25");
  EXPECT_TRUE(EndsAtItsFirstRefusal(log));
}

TEST_F(MegaDistancesOnDisk, WithoutPairsHasNoNearestOne) {
  std::vector<DistanceAndIndex> memory(3);
  MegaDistances store(memory, nullptr, 0);
  EXPECT_EQ(ErrorOf([&] { store.GetNearest(); }), "Internal error in MegaDistances::LoadNextSegment.");
  EXPECT_EQ(ErrorOf([&] { store.RemoveNearest(); }), "Internal error in MegaDistances::LoadNextSegment.");
  EXPECT_EQ(ErrorOf([&] { store.LoadNextSegment(); }), "Internal error in MegaDistances::LoadNextSegment.");
}

/// Takes 399 distances from 0 to 1, equally spaced, and `odd` through a store with memory for ten; returns how often it
/// divided a segment again.
int DivisionsBeside(float odd) {
  std::vector<DistanceAndIndex> memory(10);
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  MegaDistances store(memory, bar.get(), 400);
  store.AddDistance({odd, 1, 2});
  for (int k = 0; k < 399; ++k) store.AddDistance({static_cast<float>(k) / 398, k, k + 1});
  store.SplitDistances();
  int next = 0;
  for (int k = 0; k < 400; ++k, store.RemoveNearest()) {
    const float distance = store.GetNearest().distance;
    if (std::isnan(odd) && std::isnan(distance)) continue;
    EXPECT_EQ(distance, next < 399 ? static_cast<float>(next) / 398 : odd);
    ++next;
  }
  return static_cast<int>(std::count(log.calls.begin(), log.calls.end(), "SetText Re-partitioning"));
}

TEST_F(MegaDistancesOnDisk, OneDistanceFarOutDoesNotKeepTheOthersFromBeingDivided) {
  // All but one fall into the segment up to 0.02 of their root mean square, 50000, and of its 41 parts into the first;
  // then they are divided by their own limits, 41 parts of nine or ten.
  EXPECT_EQ(DivisionsBeside(1e6F), 2);
  // The limits are infinite: first it is set apart, then the others are found to lie from 0 to 1, and divided.
  EXPECT_EQ(DivisionsBeside(kInfinity), 3);
  // The NaN is the eleventh in the part of the smallest, 0 to 0.024, which is divided again, and then stands alone.
  EXPECT_LE(DivisionsBeside(kNaN), 3);
}

TEST_F(MegaDistancesOnDisk, DistancesWhoseWidthIsNoNumberAreSetApartOneByOne) {
  std::vector<DistanceAndIndex> memory(2);
  MegaDistances store(memory, nullptr, 8);
  const float distances[] = {3e38F, -3e38F, kInfinity, kNaN, -kInfinity, 3e38F, 1, kNaN};
  for (const float distance : distances) store.AddDistance({distance, 1, 2});
  store.SplitDistances();
  std::vector<float> numbers;
  for (int k = 0; k < 8; ++k, store.RemoveNearest())
    if (!std::isnan(store.GetNearest().distance)) numbers.push_back(store.GetNearest().distance);
  EXPECT_THAT(numbers, ElementsAre(-kInfinity, -3e38F, 1, 3e38F, 3e38F, kInfinity));
}

TEST_F(MegaDistancesOnDisk, LeavesNoFileAndNothingElseWhereMemoryRunsOut) {
  const NCDataMatrix<float> table = RandomMatrix<float>(16, 3, 0, 1);
  bool failed = true;
  for (int which = 1; failed; ++which) {
    const PeakBytesDuring meter;
    {
      DendroGram::SetMaximumPairsInMemory(30);
      DendroGram::SingleLinkageDistanceCalculator calculator;
      int i = 0, j = 0;
      const FailAllocation failure(which);
      try {
        calculator.Init(table, nullptr);
        for (int merge = 1; merge < 16; ++merge) calculator.FindNearestAndMerge(i, j);
      } catch (const std::bad_alloc&) {
      }
      failed = failure.HasFailed();
    }
    dialogue_.shown.clear();
    dialogue_.shown.shrink_to_fit();
    ASSERT_EQ(Files(), 0) << "allocation " << which;
    ASSERT_TRUE(which == 1 || meter.GetLiveBytes() <= 0) << "allocation " << which;  // the first keeps buffers
  }
}

TEST(DistanceFile, CountsRecordsInWritingSeekingAndReading) {
  DistanceFile file;
  const DistanceAndIndex pairs[] = {{1, 1, 2}, {2, 1, 3}, {3, 2, 3}};
  file.Append(pairs, 2);
  file.Append(pairs + 2, 1);
  DistanceAndIndex read[3] = {};
  file.SeekTo(1);
  ASSERT_TRUE(file.Read(read, 2));
  EXPECT_EQ(read[0].distance, 2);
  EXPECT_EQ(read[1].j, 3);
  EXPECT_FALSE(file.Read(read, 1)) << "there is no fourth";
  file.SeekTo(2);
  EXPECT_FALSE(file.Read(read, 2)) << "one record is left";
  file.SeekTo(3);
  EXPECT_FALSE(file.Read(read, 1));
  file.SeekTo(0);
  EXPECT_TRUE(file.Read(read, 3)) << "failures are forgotten";
  EXPECT_EQ(file.count, 0U) << "the caller's";
}

}  // namespace
