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
  EXPECT_THROW(RunTasks(100000, {}, task), std::runtime_error);
  EXPECT_LT(begun, 100000);
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
  EXPECT_LT(begun, 100000);
}

INSTANTIATE_TEST_SUITE_P(OnSomeProcessors, ParallelTasks, ::testing::Values(1, 2, 5));

}  // namespace
