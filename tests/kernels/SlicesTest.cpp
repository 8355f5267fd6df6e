#include "kalmia/kernels/threads/Slices.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <new>
#include <set>
#include <thread>
#include <vector>

#include "kalmia/kernels/ThreadingControl.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/Threads.h"

namespace {

/// Who took which position, and how often each was taken.
class Ledger {
 public:
  explicit Ledger(int n) : taken_(n + 1) {}

  int Take(int first, int last) {
    for (int i = first; i <= last; ++i) ++taken_[i];
    const std::lock_guard<std::mutex> lock(mutex_);
    threads_.insert(std::this_thread::get_id());
    return last - first + 1;
  }

  bool EachOnce() const {
    for (std::size_t i = 1; i < taken_.size(); ++i)
      if (taken_[i] != 1) return false;
    return true;
  }
  int Threads() const { return static_cast<int>(threads_.size()); }
  bool Includes(std::thread::id id) const { return threads_.count(id) > 0; }

 private:
  std::vector<std::atomic<int>> taken_;
  std::set<std::thread::id> threads_;
  std::mutex mutex_;
};

TEST(Slices, ThrowWhatOneOfThemThrowsWhenAllHaveEnded) {
  for (int team : {1, 2, 3})
    for (int thrower = 1; thrower <= team; ++thrower) {
      const Threads threads(team);
      std::atomic<int> called{0};
      const auto slice = [&](int first, int) -> int {
        ++called;
        if (first == 1 + (thrower - 1) * 30 / team) throw std::bad_alloc();
        return 0;
      };
      EXPECT_THROW(kalmia::ForSlices(30, team, 1, slice), std::bad_alloc) << thrower << " of " << team;
      EXPECT_EQ(called, team);
    }
}

TEST(Slices, TakeEveryPositionOnceForAnyTeamAndGrain) {
  for (int team : {1, 2, 3, 5})
    for (int grain : {1, 16})
      for (int n : {0, 1, 15, 16, 17, 100}) {
        Ledger ledger(n);
        EXPECT_EQ(kalmia::ForSlices(n, team, grain, [&](int first, int last) { return ledger.Take(first, last); }), n);
        EXPECT_TRUE(ledger.EachOnce());
        EXPECT_LE(ledger.Threads(), team);
      }
}

TEST(Slices, StartAtWholeGrains) {
  std::mutex mutex;
  std::set<int> starts;
  kalmia::ForSlices(100, 3, 16, [&](int first, int) {
    const std::lock_guard<std::mutex> lock(mutex);
    starts.insert(first);
    return 0;
  });
  for (int first : starts) EXPECT_EQ((first - 1) % 16, 0);
}

TEST(ForBlocksInTwoSteps, BeginsASecondStepWhenTheWholeTeamHasEndedTheFirst) {
  constexpr int kBlocks = 200;
  for (int team : {1, 2, 3}) {
    const Threads threads(team);
    std::vector<std::atomic<int>> ended(kBlocks);
    std::atomic<int> tooEarly{0};
    const auto first = [&](int block, kalmia::TeamMember me) {
      if (block % 50 == me.number) std::this_thread::sleep_for(std::chrono::milliseconds(2));
      return ++ended[block], 1;
    };
    const auto second = [&](int block, kalmia::TeamMember me) { tooEarly += ended[block] < me.team; };
    EXPECT_EQ(kalmia::ForBlocksInTwoSteps(kBlocks, team, first, second), kBlocks * team);
    EXPECT_EQ(tooEarly, 0);
    for (const auto& count : ended) EXPECT_EQ(count, team);
  }
}

TEST(ForBlocksInTwoSteps, TakesEveryPositionOfABlockOnceInEachStep) {
  for (int team : {1, 2, 3}) {
    const Threads threads(team);
    Ledger rows(100), columns(100);
    const auto first = [&](int block, kalmia::TeamMember me) {
      const auto [begin, end] = me.SliceOf({1 + block * 50, 50 + block * 50}, 16);
      return rows.Take(begin, end);
    };
    const auto second = [&](int block, kalmia::TeamMember me) {
      const auto [begin, end] = me.SliceOf({1, 100}, 16);
      if (block == 0) columns.Take(begin, end);
    };
    EXPECT_EQ(kalmia::ForBlocksInTwoSteps(2, team, first, second), 100);
    EXPECT_TRUE(rows.EachOnce());
    EXPECT_TRUE(columns.EachOnce());
  }
}

TEST(ForBlocksInTwoSteps, CallsNothingWithoutBlocks) {
  const auto first = [](int, kalmia::TeamMember) { return ADD_FAILURE(), 1; };
  const auto second = [](int, kalmia::TeamMember) { ADD_FAILURE(); };
  for (int team : {1, 2}) EXPECT_EQ(kalmia::ForBlocksInTwoSteps(0, team, first, second), 0);
}

/// The most memory that `run` holds at a time.
template <class Run>
std::int64_t PeakBytesOf(const Run& run) {
  const PeakBytesDuring meter;
  run();
  return meter.GetBytes();
}

TEST(Slices, OfARegressionOfColumnsAreTakenByATeamWhereThreadingIsOnAndTheTableIsLarge) {
  // More than 1024 columns take memory for their sums from the heap, and a third of 3000 takes none: this is how a team
  // of three shows from outside.
  constexpr int kColumns = 3000;
  const auto large = RandomMatrix<float>(100, kColumns, 0.05, 1), small = RandomMatrix<float>(5, kColumns, 0.05, 1);
  const auto v = RandomVector<float>(100, 0, 2), shortV = RandomVector<float>(5, 0, 2);
  const auto regressLarge = [&] { large.SpecialNipalsRegressColumnsFix(v); };
  const auto regressSmall = [&] { small.SpecialNipalsRegressColumnsFix(shortV); };
  const Threads three(3);
  const std::int64_t withThree = PeakBytesOf(regressLarge), smallWithThree = PeakBytesOf(regressSmall);
  NCMultiThreading::ThreadingControl::SetThreadingIsOn(false);
  const std::int64_t oneBuffer = kColumns * (2 * sizeof(double) + sizeof(float));
  EXPECT_GE(PeakBytesOf(regressLarge), withThree + oneBuffer);
  EXPECT_EQ(PeakBytesOf(regressSmall), smallWithThree);
}

/// Runs `run` with each of its allocations failing in turn, until none is left to fail.
template <class Run>
void ExpectThatMemoryRunsOutAsAnException(const Run& run) {
  for (int which = 1, failed = 1; failed; ++which) {
    const FailAllocation failing(which);
    try {
      run();
      failed = failing.HasFailed();
    } catch (const std::bad_alloc&) {
    }
    ASSERT_LT(which, 1000);
  }
}

TEST(Slices, MemoryThatRunsOutInAnyOfThemSurfacesAsAnException) {
  const Threads threads(2);  // each with blocks of columns that take memory from the heap
  const auto complete = RandomMatrix<float>(100, 5000, 0, 1), holes = RandomMatrix<float>(100, 5000, 0.1, 2);
  const auto v = RandomVector<float>(100, 0, 3);
  for (const auto* x : {&complete, &holes}) {
    ExpectThatMemoryRunsOutAsAnException([&] { x->RegressColumns(v); });
    ExpectThatMemoryRunsOutAsAnException([&] { x->SpecialNipalsRegressColumnsFix(v); });
    ExpectThatMemoryRunsOutAsAnException([&] { x->SpecialNipalsRegressColumnsFix(v, nullptr, 0); });
    ExpectThatMemoryRunsOutAsAnException([&] { x->PreMultiply(v); });
    ExpectThatMemoryRunsOutAsAnException([&] { x->GetNIPALSStartColumn(); });
  }
}

}  // namespace
