#include "kalmia/cluster/internal/PairMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <thread>

#include "cluster/PlainClustering.h"
#include "cluster/Trees.h"
#include "kalmia/cluster/DendroGram.h"
#include "kalmia/cluster/SingleLinkageDistanceCalculator.h"
#include "kalmia/cluster/WardDistanceCalculator.h"
#include "kalmia/kernels/ThreadingControl.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/Threads.h"

// How many pairs may be in memory, and that what is set aside for all else is enough.

namespace {

using DendroGram::ClusterDistanceCalculator;
using DendroGram::SingleLinkageDistanceCalculator;
using DendroGram::WardDistanceCalculator;
using kalmia::BytesBesidePairs;
using kalmia::kNeedsOfBuffer;
using kalmia::kNeedsOfList;
using kalmia::kNeedsOfWard;
using kalmia::PairCount;
using kalmia::PairsThatFitIn;

TEST(PairsThatFit, LeaveRoomForTheTableAndASixteenthOfTheRest) {
  for (const int rows : {2, 500, 65535})
    for (const int columns : {1, 20000}) {
      const std::uint64_t list = BytesBesidePairs(rows, columns, kNeedsOfList);
      const std::uint64_t ward = BytesBesidePairs(rows, columns, kNeedsOfWard);
      // The table's cells as floats once more, at least.
      EXPECT_GT(list, 4U * static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(columns));
      EXPECT_EQ(PairsThatFitIn(0, rows, columns, kNeedsOfList), 0U);
      EXPECT_EQ(PairsThatFitIn(list, rows, columns, kNeedsOfList), 0U);
      EXPECT_EQ(PairsThatFitIn(list + 16 * 12, rows, columns, kNeedsOfList), 15U);
      EXPECT_EQ(PairsThatFitIn(ward + 16 * 12 * std::uint64_t{1000000000}, rows, columns, kNeedsOfWard), 15000000000U);
    }
}

// 20000 rows of 10000 columns: the table's copy in tiles takes 0.8 GB. It is there when the buffer is made.
TEST(PairsThatFit, OnDiskDoNotLeaveRoomForTheTableAgain) {
  const std::uint64_t free = 700000000;
  EXPECT_EQ(PairsThatFitIn(free, 20000, 10000, kNeedsOfList), 0U);
  EXPECT_GT(PairsThatFitIn(free, 20000, 10000, kNeedsOfBuffer), free / 2 / sizeof(DendroGram::DistanceAndIndex));
}

TEST(PairsThatFit, AreNotFewerForProcessorsThatNobodyHas) {
  using NCMultiThreading::ThreadingControl;
  ThreadingControl::SetNumberOfProcessors(2000000000);
  ThreadingControl::SetThreadingIsOn(true);
  const std::uint64_t beside = BytesBesidePairs(10, 3, kNeedsOfList);
  ThreadingControl::Reset();
  // A megabyte for each of 64 threads, or of the machine's own where these are more.
  EXPECT_LE(beside, std::uint64_t{1 << 20} * std::max(64U, std::thread::hardware_concurrency()) + 100000);
  EXPECT_GE(beside, std::uint64_t{1 << 20} * 64);
}

TEST(PairsThatFit, AreCountedIn64Bits) {
  EXPECT_EQ(PairCount(50000), 1249975000);
  EXPECT_EQ(PairCount(65535), 2147385345);  // beyond 2^31 - 1
}

TEST(PairsThatFit, AreCappedByWhatTheCallerSets) {
  const std::uint64_t fit = kalmia::PairsThatFit(10, 3, kNeedsOfList);
  ASSERT_GT(fit, 100U);
  DendroGram::SetMaximumPairsInMemory(100);
  EXPECT_EQ(kalmia::PairsThatFit(10, 3, kNeedsOfList), 100U);
  DendroGram::SetMaximumPairsInMemory(std::uint64_t{1} << 60);
  EXPECT_LT(kalmia::PairsThatFit(10, 3, kNeedsOfList), std::uint64_t{1} << 60) << "more than there is";
  DendroGram::SetMaximumPairsInMemory(0);
}

/// Rows that come twice: when all those are merged, all distances of a Ward list are stale at once, a quarter of all,
/// and each cluster of two rows has sums of its own.
NCDataMatrix<float> Twins(int rows, int columns, double holes) {
  const NCDataMatrix<float> half = RandomMatrix<float>(rows / 2, columns, holes, 3);
  NCDataMatrix<float> table(0, columns);
  for (int r = 0; r < rows; ++r) table.push_back(half[1 + r / 2]);
  return table;
}

/// What the analysis takes at its peak, in bytes, beside what it needs for its pairs.
std::int64_t BytesBeside(const NCDataMatrix<float>& table, ClusterDistanceCalculator&& calculator,
                         const kalmia::MemoryNeeds& needs) {
  const PeakBytesDuring meter;
  const Tree tree(DendroGram::GetDendroGram(table, calculator, nullptr, nullptr));
  return meter.GetBytes() - static_cast<std::int64_t>(needs.perPair) * PairCount(table.SizeRows());
}

TEST(PairsThatFit, LeaveRoomForAllElseThatAnAnalysisTakes) {
  for (const int threads : {1, 2}) {
    const Threads team(threads);
    const NCDataMatrix<float> tables[] = {
        RandomMatrix<float>(2000, 3, 0, 1),    RandomMatrix<float>(300, 300, 0.1, 1),
        RandomMatrix<float>(40, 5000, 0.1, 1), RandomMatrix<float>(2, 20000, 0, 1),
        Twins(2000, 3, 0),                     Twins(60, 5000, 0.1),
        WholeNumbers(1000, 3, 3, 0, 1),        WholeNumbers(1000, 8, 2, 0, 1)};
    for (const NCDataMatrix<float>& table : tables) {
      SCOPED_TRACE(std::to_string(table.SizeRows()) + " x " + std::to_string(table.SizeColumns()));
      const auto setAside = [&table](const kalmia::MemoryNeeds& needs) {
        return static_cast<std::int64_t>(BytesBesidePairs(table.SizeRows(), table.SizeColumns(), needs));
      };
      EXPECT_LE(BytesBeside(table, SingleLinkageDistanceCalculator(), kNeedsOfList), setAside(kNeedsOfList));
      for (const auto type : {WardDistanceCalculator::DistanceIncrease, WardDistanceCalculator::DistanceRootIncrease})
        EXPECT_LE(BytesBeside(table, WardDistanceCalculator(type), kNeedsOfWard), setAside(kNeedsOfWard));
    }
  }
}

}  // namespace
