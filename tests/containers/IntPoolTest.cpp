#include "kalmia/containers/IntPool.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <thread>
#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "testing/AllocationMeter.h"

namespace {

constexpr int kCellsPerBlock = 16384;

TEST(IntPool, TheLastCellReleasedComesOutFirst) {
  int* a = IntPool::GetInt();
  int* b = IntPool::GetInt();
  IntPool::ReleaseInt(a);
  IntPool::ReleaseInt(b);
  EXPECT_EQ(IntPool::GetInt(), b);
  EXPECT_EQ(IntPool::GetInt(), a);
  IntPool::ReleaseInt(b);
  IntPool::ReleaseInt(a);
}

TEST(IntPool, AfterABlockfulOfReleasesTheLastOneComesOutFirst) {
  std::vector<int*> cells;
  for (int i = 0; i < kCellsPerBlock; ++i) cells.push_back(IntPool::GetInt());
  for (int* cell : cells) IntPool::ReleaseInt(cell);
  EXPECT_EQ(IntPool::GetInt(), cells.back());
  IntPool::ReleaseInt(cells.back());
}

TEST(IntPool, HandsOutEachCellOnceOverManyBlocks) {
  std::set<int*> distinct;
  std::vector<int*> cells;
  for (int i = 0; i < 3 * kCellsPerBlock + 1; ++i) {
    cells.push_back(IntPool::GetInt());
    *cells.back() = i;
    distinct.insert(cells.back());
  }
  EXPECT_EQ(distinct.size(), cells.size());
  for (int i = 0; i < static_cast<int>(cells.size()); ++i) EXPECT_EQ(*cells[static_cast<std::size_t>(i)], i);
  for (int* cell : cells) IntPool::ReleaseInt(cell);
}

TEST(IntPool, TakesTheHeapOnceForEachBlockfulOfCells) {
  std::vector<int*> cells;
  cells.reserve(100 * kCellsPerBlock);
  const auto takesTheHeap = [&cells] {
    const PeakBytesDuring meter;
    cells.push_back(IntPool::GetInt());
    // A block of 65536 bytes and a place for each of its cells; 4096 for the list of blocks and what the heap adds.
    EXPECT_LE(meter.GetBytes(), 65536 + kCellsPerBlock * static_cast<int>(sizeof(int*)) + 4096);
    return meter.GetBytes() > 0;
  };
  while (!takesTheHeap()) ASSERT_LT(cells.size(), cells.capacity());
  for (int block = 0; block < 3; ++block) {  // the cell that has just come is the first of a block
    for (int i = 1; i < kCellsPerBlock; ++i) ASSERT_FALSE(takesTheHeap()) << "cell " << i << " of its block";
    ASSERT_TRUE(takesTheHeap());
  }
  const PeakBytesDuring meter;
  for (int* cell : cells) IntPool::ReleaseInt(cell);
  EXPECT_EQ(meter.GetBytes(), 0);
  EXPECT_EQ(meter.GetLiveBytes(), 0);  // blocks stay
}

TEST(IntPool, KeepsWhatWasInACell) {
  int* cell = IntPool::GetInt();
  *cell = 12345;
  IntPool::ReleaseInt(cell);
  ASSERT_EQ(IntPool::GetInt(), cell);
  EXPECT_EQ(*cell, 12345);
  IntPool::ReleaseInt(cell);
}

TEST(IntPool, GivesNoCellTwiceToThreadsAtWork) {
  constexpr int kThreads = 4, kRounds = 20000;
  bool clashed[kThreads] = {};
  std::vector<std::thread> threads;
  for (int id = 0; id < kThreads; ++id)
    threads.emplace_back([id, &clashed] {
      for (int round = 0; round < kRounds; ++round) {
        int* first = IntPool::GetInt();
        int* second = IntPool::GetInt();
        *first = id;
        *second = id + kThreads;
        clashed[id] = clashed[id] || first == second || *first != id || *second != id + kThreads;
        IntPool::ReleaseInt(first);
        IntPool::ReleaseInt(second);
      }
    });
  for (std::thread& thread : threads) thread.join();
  for (bool clash : clashed) EXPECT_FALSE(clash);
}

// Vectors in static storage: made while the program loads, released while it unloads. Under the leak check a block that
// nobody frees, or a count touched after the blocks went, ends this program in failure.
NCDataVector<float> staticVector(3, 1.5f);
std::vector<NCDataVector<double>> staticList;

TEST(IntPool, ServesVectorsInStaticStorage) {
  EXPECT_EQ(staticVector.GetSum(), 4.5);
  staticList.assign(3, NCDataVector<double>(2, 1.0));
  EXPECT_EQ(staticList.back().GetSum(), 2);
}

}  // namespace
