#include "kalmia/signal/SignalLength.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

TEST(SignalLength, IsAPowerOfTwoAtOrAboveTheNumberOfCells) {
  const struct {
    std::int64_t n;
    int levels, power;
  } kLengths[] = {{-5, 0, 1}, {0, 0, 1}, {1, 0, 1}, {2, 1, 2}, {3, 2, 4}, {4, 2, 4}, {5, 3, 8}, {1000, 10, 1024}};
  for (const auto& length : kLengths) {
    EXPECT_EQ(kalmia::Levels(length.n), length.levels) << length.n;
    EXPECT_EQ(kalmia::PowerLength(length.n), length.power) << length.n;
  }
}

TEST(SignalLength, Is0WhereNoIntHoldsThePower) {
  EXPECT_EQ(kalmia::PowerLength(std::int64_t{1} << 30), 1 << 30);
  EXPECT_EQ(kalmia::PowerLength((std::int64_t{1} << 30) + 1), 0);
  EXPECT_EQ(kalmia::PowerLength(2 * std::int64_t{2147483647}), 0);  // a signal and as many lags
  EXPECT_EQ(kalmia::PowerLength(std::numeric_limits<std::int64_t>::max()), 0);
}

TEST(SignalLength, KnowsPowersOfTwo) {
  for (const int power : {1, 2, 4, 1024, 1 << 30}) EXPECT_TRUE(kalmia::IsPowerOfTwo(power)) << power;
  for (const int other : {-2147483647 - 1, -2, -1, 0, 3, 6, 1023, 2147483647})
    EXPECT_FALSE(kalmia::IsPowerOfTwo(other)) << other;
}

}  // namespace
