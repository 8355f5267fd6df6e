#include "kalmia/kernels/ParallelTasks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include "testing/Threads.h"

namespace {

using NCMultiThreading::RunTasks;

class ParallelTasks : public ::testing::TestWithParam<int> {
 private:
  const Threads threads_{GetParam()};
};

TEST_P(ParallelTasks, RunEachOfThemOnce) {
  for (const int count : {0, 1, 2, 7, 1000}) {
    std::vector<std::atomic<int>> runs(static_cast<std::size_t>(count));
    RunTasks(count, {}, [&](int k) { ++runs[static_cast<std::size_t>(k)]; });
    for (const auto& run : runs) EXPECT_EQ(run, 1);
  }
}

TEST_P(ParallelTasks, TellTheCallingThreadOfEachThatHasEnded) {
  const std::thread::id caller = std::this_thread::get_id();
  int told = 0;
  std::atomic<int> run{0};
  const auto ended = [&] {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    EXPECT_GE(run, ++told);
  };
  RunTasks(500, ended, [&](int) { ++run; });
  EXPECT_EQ(told, 500);
}

TEST_P(ParallelTasks, ThrowWhatATaskThrowsAndBeginNoneAfterwards) {
  std::atomic<int> begun{0};
  const auto task = [&](int k) {
    ++begun;
    if (k == 3) throw std::runtime_error("the fourth");
    if (k > 3) std::this_thread::sleep_for(std::chrono::milliseconds(1));  // all of them would take minutes
  };
  try {
    RunTasks(100000, {}, task);
    ADD_FAILURE();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "the fourth");
  }
  if (GetParam() == 1) {
    EXPECT_EQ(begun, 4);
  }
  EXPECT_LT(begun, 2000);  // other threads take a second for so many of these
}

TEST_P(ParallelTasks, TellNobodyOfATaskThatHasThrown) {
  int told = 0;
  EXPECT_THROW(RunTasks(
                   1, [&told] { ++told; }, [](int) { throw std::runtime_error("the first"); }),
               std::runtime_error);
  EXPECT_EQ(told, 0);
}

TEST_P(ParallelTasks, StopWhereTheCallerThrows) {
  std::atomic<int> begun{0};
  int told = 0;
  const auto ended = [&told] {
    if (++told == 10) throw std::runtime_error("enough");
  };
  const auto task = [&begun](int k) {
    ++begun;
    if (k > 100) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  };
  EXPECT_THROW(RunTasks(100000, ended, task), std::runtime_error);
  EXPECT_EQ(told, 10);
  if (GetParam() == 1) {
    EXPECT_EQ(begun, 10);
  }
  EXPECT_LT(begun, 2000);
}

constexpr std::chrono::seconds kLongerThanAnyThreadWaits{20};

/// Whether the condition comes true in time.
template <class Condition>
bool Await(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + kLongerThanAnyThreadWaits;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

TEST(ParallelTasksOnTwoThreads, RunAtTheSameTime) {
  const Threads threads(2);
  std::atomic<int> begun{0};
  std::atomic<int> met{0};
  RunTasks(2, {}, [&](int) {
    ++begun;
    if (Await([&] { return begun == 2; })) ++met;
  });
  EXPECT_EQ(met, 2);
}

TEST(ParallelTasksOnTwoThreads, AreToldOfBeforeAllHaveEnded) {
  const Threads threads(2);
  const std::thread::id caller = std::this_thread::get_id();
  std::atomic<int> begun{0};
  std::atomic<int> told{0};
  std::atomic<bool> wasToldOfTheFirst{false};
  RunTasks(2, [&] { ++told; }, [&](int) {
    ++begun;
    if (std::this_thread::get_id() == caller) {
      Await([&] { return begun == 2; });
    } else {
      wasToldOfTheFirst = Await([&] { return told == 1; });
    }
  });
  EXPECT_TRUE(wasToldOfTheFirst);
  EXPECT_EQ(told, 2);
}

INSTANTIATE_TEST_SUITE_P(OnSomeProcessors, ParallelTasks, ::testing::Values(1, 2, 5));

}  // namespace
