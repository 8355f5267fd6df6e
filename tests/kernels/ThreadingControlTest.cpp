#include "kalmia/kernels/ThreadingControl.h"

#include <gtest/gtest.h>
#include <omp.h>

using NCMultiThreading::ThreadingControl;

namespace {

/// Leaves threading as the load-time initialiser did.
class ThreadingControlTest : public testing::Test {
 protected:
  ~ThreadingControlTest() override { ThreadingControl::Reset(); }
};

/// A test of its own process when ctest runs it: nothing but the load-time initialiser has run before.
TEST(ThreadingControlAtLoad, TakesAllProcessorsOfTheMachine) {
  EXPECT_EQ(ThreadingControl::GetNumberOfProcessors(), omp_get_num_procs());
  EXPECT_EQ(ThreadingControl::IsThreadingOn(), omp_get_num_procs() > 1);
  EXPECT_EQ(omp_get_max_threads(), omp_get_num_procs());
  EXPECT_NE(omp_get_dynamic(), 0);
}

TEST_F(ThreadingControlTest, ResetTakesAllProcessorsOfTheMachine) {
  ThreadingControl::SetNumberOfProcessors(7);
  ThreadingControl::SetThreadingIsOn(false);
  omp_set_dynamic(0);
  ThreadingControl::Reset();
  EXPECT_EQ(ThreadingControl::GetNumberOfProcessors(), omp_get_num_procs());
  EXPECT_EQ(ThreadingControl::IsThreadingOn(), omp_get_num_procs() > 1);
  EXPECT_EQ(omp_get_max_threads(), omp_get_num_procs());
  EXPECT_NE(omp_get_dynamic(), 0);
}

TEST_F(ThreadingControlTest, SwitchingOffGivesOpenMPOneThreadAndSwitchingOnAllOfThem) {
  ThreadingControl::SetNumberOfProcessors(3);
  ThreadingControl::SetThreadingIsOn(false);
  EXPECT_FALSE(ThreadingControl::IsThreadingOn());
  EXPECT_EQ(omp_get_max_threads(), 1);
  ThreadingControl::SetThreadingIsOn(true);
  EXPECT_TRUE(ThreadingControl::IsThreadingOn());
  EXPECT_EQ(omp_get_max_threads(), 3);
}

TEST_F(ThreadingControlTest, SettingTheNumberOfProcessorsLeavesTheCountOfOpenMP) {
  const int before = omp_get_max_threads();
  ThreadingControl::SetNumberOfProcessors(before + 2);
  EXPECT_EQ(ThreadingControl::GetNumberOfProcessors(), before + 2);
  EXPECT_EQ(omp_get_max_threads(), before);
  ThreadingControl::SetThreadingIsOn(true);
  EXPECT_EQ(omp_get_max_threads(), before + 2);
}

TEST_F(ThreadingControlTest, FewerProcessorsThanOneCountAsOne) {
  for (const int n : {0, -3}) {
    ThreadingControl::SetNumberOfProcessors(n);
    ThreadingControl::SetThreadingIsOn(true);
    EXPECT_EQ(omp_get_max_threads(), 1);
  }
}

}  // namespace
