#include "kalmia/kernels/threads/Team.h"

#include <gtest/gtest.h>

#include "kalmia/kernels/ThreadingControl.h"
#include "testing/Threads.h"

using kalmia::TeamSize;

namespace {

constexpr std::int64_t kSmall = 20 * 10;          // over long before a team has started
constexpr std::int64_t kLarge = 2000LL * 5000LL;  // milliseconds

TEST(TeamSize, IsOneForAPassThatIsShorterThanAFork) {
  const Threads three(3);
  EXPECT_EQ(TeamSize(0), 1);
  EXPECT_EQ(TeamSize(kSmall), 1);
}

TEST(TeamSize, IsWhatOpenMPMayUseForALargeTable) {
  for (int threads = 1; threads <= 3; ++threads) {
    const Threads some(threads);
    EXPECT_EQ(TeamSize(kLarge), threads);
    EXPECT_EQ(TeamReallyGot(kLarge), threads);
  }
}

TEST(TeamSize, DoesNotGrowWithTheTableBeyondTheThreads) {
  const Threads two(2);
  EXPECT_EQ(TeamSize(2147483647LL * 2147483647LL), 2);
}

TEST(TeamSize, IsOneWhereThreadingIsOff) {
  const Threads two(2);
  NCMultiThreading::ThreadingControl::SetThreadingIsOn(false);
  EXPECT_EQ(TeamSize(kLarge), 1);
  EXPECT_EQ(TeamReallyGot(kLarge), 1);
}

}  // namespace
