#include "kalmia/support/AvailableMemory.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

// The machine itself, and made-up machines: folders with the files that Linux would show.

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMiB = std::uint64_t{1} << 20;

class AvailableMemoryOf : public ::testing::Test {
 protected:
  AvailableMemoryOf() {
    root_ = (fs::temp_directory_path() / "kalmia-test-XXXXXX").string();
    if (!mkdtemp(root_.data())) throw fs::filesystem_error("mkdtemp", root_, {});
    root_ += '/';
  }
  ~AvailableMemoryOf() override { fs::remove_all(root_); }

  void Write(const std::string& path, const std::string& text) const {
    fs::create_directories(fs::path(root_ + path).parent_path());
    std::ofstream(root_ + path) << text;
  }
  /// A machine with so much available, whose process is in the groups of the lines.
  void WriteMachine(std::uint64_t available, const std::string& groups) const {
    Write("proc/meminfo", "MemTotal:       99999999 kB\nMemFree:   17 kB\nMemAvailable:   " +
                              std::to_string(available / 1024) + " kB\nBuffers:   18 kB\n");
    Write("proc/self/cgroup", groups);
  }
  void WriteGroup2(const std::string& group, const std::string& limit, std::uint64_t used) const {
    Write("sys/fs/cgroup" + group + "/memory.max", limit + "\n");
    Write("sys/fs/cgroup" + group + "/memory.current", std::to_string(used) + "\n");
  }
  void WriteGroup1(const std::string& group, std::uint64_t limit, std::uint64_t used) const {
    Write("sys/fs/cgroup/memory" + group + "/memory.limit_in_bytes", std::to_string(limit) + "\n");
    Write("sys/fs/cgroup/memory" + group + "/memory.usage_in_bytes", std::to_string(used) + "\n");
  }
  std::uint64_t Available() const { return kalmia::AvailableMemoryBelow(root_); }

  std::string root_;
};

TEST(AvailableMemory, IsSomeMemoryAndNoMoreThanTheMachineHas) {
  std::ifstream file("/proc/meminfo");
  std::string word;
  std::uint64_t kilobytes = 0;
  while (file >> word && word != "MemTotal:") {
  }
  ASSERT_TRUE(file >> kilobytes);
  EXPECT_GT(kalmia::AvailableMemory(), kMiB);
  EXPECT_LE(kalmia::AvailableMemory(), kilobytes * 1024);
}

TEST_F(AvailableMemoryOf, AMachineWithoutAnythingToReadIsUnlimited) {
  EXPECT_EQ(Available(), std::numeric_limits<std::uint64_t>::max());
}

TEST_F(AvailableMemoryOf, AMachineWithoutLimitsIsWhatItHasAvailable) {
  WriteMachine(900 * kMiB, "0::/user/me\n");
  EXPECT_EQ(Available(), 900 * kMiB);
  WriteGroup2("/user/me", "max", 5 * kMiB);
  EXPECT_EQ(Available(), 900 * kMiB) << "a group without a limit";
}

TEST_F(AvailableMemoryOf, AGroupIsWhatItsLimitLeaves) {
  WriteMachine(900 * kMiB, "0::/user/me\n");
  WriteGroup2("/user/me", std::to_string(300 * kMiB), 100 * kMiB);
  EXPECT_EQ(Available(), 200 * kMiB);
  WriteMachine(150 * kMiB, "0::/user/me\n");
  EXPECT_EQ(Available(), 150 * kMiB) << "the machine has less than the group may take";
  WriteGroup2("/user/me", std::to_string(300 * kMiB), 301 * kMiB);
  EXPECT_EQ(Available(), 0U) << "over its limit";
}

TEST_F(AvailableMemoryOf, AGroupIsAlsoBoundByThoseAroundIt) {
  WriteMachine(900 * kMiB, "0::/a/b/c\n");
  WriteGroup2("/a/b/c", std::to_string(500 * kMiB), 0);
  WriteGroup2("/a/b", "max", 80 * kMiB);
  WriteGroup2("/a", std::to_string(250 * kMiB), 90 * kMiB);
  EXPECT_EQ(Available(), 160 * kMiB) << "the outermost group";
  WriteGroup2("/a/b", std::to_string(100 * kMiB), 80 * kMiB);
  EXPECT_EQ(Available(), 20 * kMiB) << "the one between";
}

TEST_F(AvailableMemoryOf, AContainerIsTheGroupAtTheRootOfWhatItSees) {
  WriteMachine(900 * kMiB, "0::/\n");
  WriteGroup2("", std::to_string(64 * kMiB), 24 * kMiB);
  EXPECT_EQ(Available(), 40 * kMiB);
  WriteMachine(900 * kMiB, "0::/system/not-to-be-seen-from-inside\n");
  EXPECT_EQ(Available(), 40 * kMiB);
}

TEST_F(AvailableMemoryOf, FileCachesThatCanBeGivenUpAreAvailable) {
  WriteMachine(900 * kMiB, "0::/me\n3:cpu,memory:/me\n");
  WriteGroup2("/me", std::to_string(300 * kMiB), 250 * kMiB);
  Write("sys/fs/cgroup/me/memory.stat", "anon 1\nactive_file 5242880\ninactive_file 104857600\n");
  EXPECT_EQ(Available(), 150 * kMiB);
  Write("sys/fs/cgroup/me/memory.stat", "inactive_file 1048576000\n");
  EXPECT_EQ(Available(), 300 * kMiB) << "more cache than is in use: nothing is in use";
  WriteGroup1("/me", 200 * kMiB, 190 * kMiB);
  Write("sys/fs/cgroup/memory/me/memory.stat", "inactive_file 104857600\ntotal_inactive_file 31457280\n");
  EXPECT_EQ(Available(), 40 * kMiB);
}

TEST_F(AvailableMemoryOf, TheMemoryControllerOfVersionOneHasAFolderOfItsOwn) {
  WriteMachine(900 * kMiB, "12:cpuset:/c\n7:memory:/box/one\n1:name=systemd:/s\nno line of a group\n");
  WriteGroup1("/box/one", 9223372036854771712U, 70 * kMiB);  // what the kernel shows where there is no limit
  EXPECT_EQ(Available(), 900 * kMiB);
  WriteGroup1("/box", 120 * kMiB, 70 * kMiB);
  EXPECT_EQ(Available(), 50 * kMiB);
  WriteGroup1("", 100 * kMiB, 70 * kMiB);
  EXPECT_EQ(Available(), 30 * kMiB);
  WriteGroup2("/box/one", std::to_string(kMiB), 0);
  EXPECT_EQ(Available(), 30 * kMiB) << "not a folder of version one";
}

TEST_F(AvailableMemoryOf, AGroupWithoutAPathIsTheRoot) {
  WriteMachine(900 * kMiB, "0::\n7:memory:odd\n");
  WriteGroup2("", std::to_string(300 * kMiB), 0);
  EXPECT_EQ(Available(), 300 * kMiB);
}

}  // namespace
