#include "kalmia/containers/IntPool.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "testing/AllocationMeter.h"
#include "testing/StreamAttacks.h"

namespace {

constexpr int kCellsAtLoad = 16384, kCellsPerBlock = 2048;

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

TEST(IntPool, AfterManyReleasesTheLastOneComesOutFirst) {
  std::vector<int*> cells;
  for (int i = 0; i < kCellsAtLoad; ++i) cells.push_back(IntPool::GetInt());
  for (int* cell : cells) IntPool::ReleaseInt(cell);
  EXPECT_EQ(IntPool::GetInt(), cells.back());
  IntPool::ReleaseInt(cells.back());
}

TEST(IntPool, HandsOutEachCellOnceOverManyBlocks) {
  std::set<int*> distinct;
  std::vector<int*> cells;
  for (int i = 0; i < 3 * kCellsAtLoad + 1; ++i) {
    cells.push_back(IntPool::GetInt());
    *cells.back() = i;
    distinct.insert(cells.back());
  }
  EXPECT_EQ(distinct.size(), cells.size());
  for (int i = 0; i < static_cast<int>(cells.size()); ++i) EXPECT_EQ(*cells[static_cast<std::size_t>(i)], i);
  for (int* cell : cells) IntPool::ReleaseInt(cell);
}

/// Takes a cell; whether the pool took the heap for it, which makes that cell the first of a block.
bool TakesTheHeap(std::vector<int*>* cells) {
  const PeakBytesDuring meter;
  cells->push_back(IntPool::GetInt());
  return meter.GetBytes() > 0;
}

/// Holds cells such that the next one that is asked for takes the heap.
class DryPool {
 public:
  DryPool() {
    cells_.reserve(100 * kCellsAtLoad);
    while (!TakesTheHeap(&cells_)) {
      if (cells_.size() == cells_.capacity()) throw std::runtime_error("the pool never runs dry");
    }
    for (int i = 1; i < kCellsPerBlock; ++i) cells_.push_back(IntPool::GetInt());
  }
  DryPool(const DryPool&) = delete;
  DryPool& operator=(const DryPool&) = delete;
  ~DryPool() {
    for (int* cell : cells_) IntPool::ReleaseInt(cell);
  }

 private:
  std::vector<int*> cells_;
};

TEST(IntPool, TakesTheHeapOnceForEachBlockfulOfCells) {
  const DryPool dry;
  std::vector<int*> cells;
  cells.reserve(3 * kCellsPerBlock);
  for (int block = 0; block < 3; ++block) {
    const PeakBytesDuring meter;
    ASSERT_TRUE(TakesTheHeap(&cells));
    for (int i = 1; i < kCellsPerBlock; ++i) ASSERT_FALSE(TakesTheHeap(&cells)) << "cell " << i << " of its block";
    // A block and a place for each of its cells; 4096 for the list of blocks and what the heap adds.
    EXPECT_LE(meter.GetBytes(), kCellsPerBlock * static_cast<int>(sizeof(int) + sizeof(int*)) + 4096);
  }
  const PeakBytesDuring meter;
  for (int* cell : cells) IntPool::ReleaseInt(cell);
  EXPECT_EQ(meter.GetBytes(), 0);
  EXPECT_EQ(meter.GetLiveBytes(), 0);  // blocks stay
}

template <class Object>
void ExpectToBeReadFromADryPool(const Object& object) {
  const DryPool dry;
  EXPECT_TRUE(StreamAttacks<Object>().Read(StreamOf(object)));
}

TEST(IntPool, GrowsWithinTheMemoryThatTheReaderOfASmallStreamMayTake) {
  ExpectToBeReadFromADryPool(NCDataVector<float>(3, 1.5f));
  ExpectToBeReadFromADryPool(NCDataVector<double>());
  ExpectToBeReadFromADryPool(NCDataMatrix<float>(2, 3, 1.5f));
  ExpectToBeReadFromADryPool(NCDataMatrix<double>(kCellsPerBlock + 1, 0));
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

TEST(IntPool, GivesNoCellTwiceToThreadsThatMakeItGrow) {
  constexpr int kThreads = 4, kCells = 4 * kCellsPerBlock;
  std::vector<std::vector<int*>> taken(kThreads);
  std::vector<std::thread> threads;
  for (auto& cells : taken)
    threads.emplace_back([&cells] {
      for (int i = 0; i < kCells; ++i) cells.push_back(IntPool::GetInt());
    });
  for (std::thread& thread : threads) thread.join();
  std::set<int*> distinct;
  for (const auto& cells : taken) distinct.insert(cells.begin(), cells.end());
  EXPECT_EQ(distinct.size(), static_cast<std::size_t>(kThreads) * kCells);
  for (int* cell : distinct) IntPool::ReleaseInt(cell);
}

TEST(IntPool, GoesOnAfterThereWasNoMemoryForABlock) {
  const DryPool dry;
  bool hadEnough = false;
  for (int which = 1; !hadEnough; ++which) {
    ASSERT_LT(which, 10);
    const FailAllocation failure(which);
    try {
      IntPool::ReleaseInt(IntPool::GetInt());
      hadEnough = true;
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(failure.HasFailed());
    }
  }
  std::vector<int*> cells;
  cells.reserve(kCellsPerBlock);
  for (int i = 0; i < kCellsPerBlock; ++i) EXPECT_FALSE(TakesTheHeap(&cells)) << "the block that came in the end";
  for (int* cell : cells) IntPool::ReleaseInt(cell);
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
