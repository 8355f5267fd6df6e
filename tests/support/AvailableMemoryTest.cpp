#include "kalmia/support/AvailableMemory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

TEST(AvailableMemory, IsSomeMemoryAndNoMoreThanTheMachineHas) {
  std::ifstream file("/proc/meminfo");
  std::string word;
  std::uint64_t kilobytes = 0;
  while (file >> word && word != "MemTotal:") {
  }
  ASSERT_TRUE(file >> kilobytes);
  EXPECT_GT(kalmia::AvailableMemory(), std::uint64_t{1} << 20);
  EXPECT_LE(kalmia::AvailableMemory(), kilobytes * 1024);
}

}  // namespace
