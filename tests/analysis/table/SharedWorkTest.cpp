// Tasks on all threads: each runs once, and the first exception ends them.

#include "kalmia/analysis/table/SharedWork.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace kalmia::analysis {
namespace {

TEST(ShareWork, RunsEachTaskOnceAndReportsEachToTheCallingThread) {
  constexpr std::size_t kTasks = 1000;
  std::vector<std::atomic<int>> runs(kTasks);
  const std::thread::id caller = std::this_thread::get_id();
  std::size_t reports = 0;
  double share = 0.0;
  const auto proceed = [&](double done) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    EXPECT_GE(done, share);
    share = done;
    ++reports;
  };
  ShareWork(kTasks, proceed, [&](std::size_t task) { ++runs[task]; });
  for (const std::atomic<int>& run : runs) EXPECT_EQ(run, 1);
  EXPECT_EQ(reports, kTasks);
  EXPECT_EQ(share, 1.0);
}

TEST(ShareWork, EndsWithTheExceptionOfATask) {
  const auto task = [](std::size_t number) {
    if (number == 3) throw std::runtime_error("the third");
  };
  EXPECT_THROW(ShareWork(100, [](double) {}, task), std::runtime_error);
}

TEST(ShareWork, EndsWithTheExceptionOfProceed) {
  const auto stop = [](double) { throw std::runtime_error("stopped"); };
  EXPECT_THROW(ShareWork(100, stop, [](std::size_t) {}), std::runtime_error);
}

TEST(ShareWork, OfNoTasksDoesNothing) {
  ShareWork(0, [](double) {}, [](std::size_t) { ADD_FAILURE(); });
}

}  // namespace
}  // namespace kalmia::analysis
