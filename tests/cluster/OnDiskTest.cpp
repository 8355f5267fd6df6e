#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "cluster/OnDisk.h"
#include "cluster/PlainClustering.h"
#include "cluster/Stops.h"
#include "kalmia/cluster/SingleLinkageDistanceCalculator.h"
#include "kalmia/cluster/WardDistanceCalculator.h"
#include "kalmia/cluster/internal/DistancesOnDisk.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

// Single linkage where the distances do not fit in memory.

namespace {

using DendroGram::SingleLinkageDistanceCalculator;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// As many files at once as the process may be given.
void AllowManyFiles() {
  rlimit files = {};
  getrlimit(RLIMIT_NOFILE, &files);
  files.rlim_cur = files.rlim_max;
  setrlimit(RLIMIT_NOFILE, &files);
}

TEST_F(OnDisk, MergesAsInMemoryWhateverTheMemory) {
  AllowManyFiles();
  for (const double holes : {0.0, 0.05}) {
    const NCDataMatrix<float> table = RandomMatrix<float>(100, 10, holes, 7);  // 4950 pairs
    const std::vector<PlainMerge> inMemory = Merges(table, 0);
    EXPECT_TRUE(dialogue_.shown.empty());
    for (const std::uint64_t cap : {4949, 1000, 100, 4950 / 400}) {
      EXPECT_TRUE(Merges(table, cap) == inMemory) << cap;
      EXPECT_EQ(dialogue_.shown.size(), 1U);
      dialogue_.shown.clear();
    }
  }
}

TEST_F(OnDisk, GivesTheHeightsAndClustersOfTheMemoryWhereDistancesAreEqual) {
  AllowManyFiles();
  for (unsigned seed = 1; seed <= 4; ++seed) {
    const NCDataMatrix<float> table = WholeNumbers(60, 3, 2 + static_cast<int>(seed), 0, seed);  // 1770 pairs
    const std::vector<PlainMerge> inMemory = Merges(table, 0);
    for (const std::uint64_t cap : {900, 100, 1770 / 400}) {
      const std::vector<PlainMerge> onDisk = Merges(table, cap);
      for (std::size_t k = 0; k < inMemory.size(); ++k) EXPECT_EQ(onDisk[k].height, inMemory[k].height);
      for (std::size_t k = 1; k < inMemory.size(); ++k) {
        if (inMemory[k].height == inMemory[k - 1].height) continue;
        EXPECT_EQ(PartitionAfter(onDisk, k), PartitionAfter(inMemory, k)) << "cap " << cap << ", " << k << " merges";
      }
    }
  }
}

TEST_F(OnDisk, GivesTheVeryMergesOfTheMemoryWhereDistancesAreEqual) {
  AllowManyFiles();
  for (unsigned seed = 1; seed <= 4; ++seed) {
    const NCDataMatrix<float> table = WholeNumbers(60, 3, 1 + static_cast<int>(seed), 0, seed);  // 1770 pairs
    const std::vector<PlainMerge> inMemory = Merges(table, 0);
    for (const std::uint64_t cap : {1769, 900, 100, 1770 / 400}) EXPECT_TRUE(Merges(table, cap) == inMemory) << cap;
  }
}

TEST_F(OnDisk, EqualAndInfiniteDistancesAndNaNsComeToAnEnd) {
  NCDataMatrix<float> equal(20, 1, 1.0F), odd = RandomMatrix<float>(20, 2, 0, 3);
  for (const PlainMerge& merge : Merges(equal, 40)) EXPECT_EQ(merge.height, 0.0F);
  for (const float cell : {kInfinity, kNaN, 3e38F}) {
    for (int r = 1; r <= 20; r += 2) odd(r, 1, r % 4 == 1 ? cell : -cell);
    EXPECT_EQ(Merges(odd, 40).size(), 19U) << cell;
  }
}

TEST_F(OnDisk, TellsTheUserBeforeItStarts) {
  Merges(RandomMatrix<float>(20, 3, 0, 1), 50);
  EXPECT_THAT(dialogue_.questions, ::testing::IsEmpty());
  EXPECT_THAT(dialogue_.shown,
              ElementsAre("When doing cluster analysis, a total of N*(N-1)/2 initial distances are calculated. In this "
                          "case, enough RAM to hold these distances could not be allocated (N=20). The disk ('" +
                          directory_ +
                          "') will be used to temporarily store the calculated distances. The calculations may be "
                          "time-consuming but you can increase the speed by using a fast disk for the temporary "
                          "storage.|Cluster Analysis|854226"));
}

TEST_F(OnDisk, AsksWhereTheDiskIsTooSmall) {
  // 100 rows: 4950 pairs, 118800 bytes, 116.016 kilobytes.
  kalmia::TellOfDisk(100, "/some/where", 118800);
  EXPECT_TRUE(dialogue_.questions.empty());
  kalmia::TellOfDisk(100, "/some/where", 118799);
  ASSERT_EQ(dialogue_.questions.size(), 1U);
  EXPECT_EQ(dialogue_.questions[0],
            "Do you wish to continue?|When doing cluster analysis, a total of N*(N-1)/2 initial distances are "
            "calculated. In this case, enough RAM to hold these distances could not be allocated (N=100). Kalmia can "
            "use your disk to store these numbers but it needs 116.016 Kilobytes of free space on the disk where "
            "Kalmia stores temporary files ('/some/where'). The free space on the disk is currently 116.015 "
            "Kilobytes. Please make sure that there is enough free space on the disk.|Cluster Analysis|5");
  EXPECT_EQ(dialogue_.shown.size(), 2U);
  kalmia::TellOfDisk(100, "/some/where", 1024);  // both in bytes: 1024 is not above 1024
  EXPECT_THAT(dialogue_.questions[1], HasSubstr("needs 118800.000 bytes"));
  EXPECT_THAT(dialogue_.questions[1], HasSubstr("currently 1024.000 bytes"));
  // 65535 rows: 2147385345 pairs, 51537248280 bytes, 47.998 gigabytes.
  kalmia::TellOfDisk(65535, "/some/where", 51537248280);
  EXPECT_EQ(dialogue_.questions.size(), 2U);
  kalmia::TellOfDisk(65535, "/some/where", 51537248279);
  ASSERT_EQ(dialogue_.questions.size(), 3U);
  EXPECT_THAT(dialogue_.questions[2], HasSubstr("needs 47.998 Gigabytes"));
  EXPECT_THAT(dialogue_.questions[2], HasSubstr("currently 47.998 Gigabytes"));
  dialogue_.shown.clear();
  dialogue_.answer = 5;
  EXPECT_EQ(ErrorOf([] { kalmia::TellOfDisk(100, "/some/where", 0); }), "Cluster analysis aborted.");
  EXPECT_TRUE(dialogue_.shown.empty()) << "nothing is shown after a refusal";
}

TEST_F(OnDisk, ARefusalLeavesNoFileAndMakesNoDistances) {
  const NCDataMatrix<float> table = RandomMatrix<float>(20, 3, 0, 1);
  DendroGram::SetMaximumPairsInMemory(50);
  dialogue_.answer = 5;
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  std::string asked;
  const kalmia::FreeSpace full = [&asked](const std::string& directory) {
    asked = directory;
    return std::uint64_t{4559};  // 190 pairs take 4560
  };
  EXPECT_EQ(ErrorOf([&] { kalmia::DistancesOnDisk(table, bar.get(), full); }), "Cluster analysis aborted.");
  EXPECT_EQ(asked, directory_);
  EXPECT_EQ(Files(), 0);
  EXPECT_TRUE(log.calls.empty());
  dialogue_.answer = 0;
  EXPECT_NE(kalmia::DistancesOnDisk(table, nullptr, full), nullptr) << "who goes on does so at his own risk";
  EXPECT_EQ(dialogue_.questions.size(), 2U);
}

TEST_F(OnDisk, StopsAtWhateverAsksAndLeavesNoFile) {
  const NCDataMatrix<float> table = RandomMatrix<float>(7, 3, 0, 1);
  DendroGram::SetMaximumPairsInMemory(10);
  bool stopped = true;
  for (int stopAt = 1; stopped; ++stopAt) {
    ProgressLog log;
    log.stopAt = stopAt;
    const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
    SingleLinkageDistanceCalculator calculator;
    const CString message = ErrorOf([&] {
      calculator.Init(table, bar.get());
      int i = 0, j = 0;
      for (int merge = 1; merge < 7; ++merge) calculator.FindNearestAndMerge(i, j);
    });
    stopped = message != "";
    if (!stopped) continue;
    const auto saving = std::find(log.calls.begin(), log.calls.end(), "SetText Calculating and saving 21 distances");
    const auto saved = std::find(saving, log.calls.end(), "PopSubRange");
    // Calls that ask nothing cannot stop: the one that does comes later in the log.
    const bool whileSaving = saving != log.calls.end() && saved == log.calls.end();
    EXPECT_EQ(message, whileSaving ? "Cluster analysis aborted" : "Cluster analysis aborted.") << log.Joined();
    EXPECT_TRUE(EndsAtItsFirstRefusal(log)) << "stop at call " << stopAt << " of " << log.Joined();
  }
}

TEST_F(OnDisk, TellsHowFarItIs) {
  DendroGram::SetMaximumPairsInMemory(2);
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  SingleLinkageDistanceCalculator calculator;
  calculator.Init(MatrixOf<float>({{0}, {1}, {3}}), bar.get());
  // Three pairs, memory for 3 >> 1 = 1, seven parts; the quantile above the maximum 3, of 6/7, is left out: six files.
  EXPECT_THAT(log.Joined(), ::testing::StartsWith(
                                "SetRange 0 3; SetText Allocating memory; SetRange 0 2; PushSubRange 0 1; "
                                "SetRange 0 1; SetText Calculating and saving 3 distances; IsBreakPressed; "
                                "IsBreakPressed; IsBreakPressed; PopSubRange; PushSubRange 1 2; "
                                "SetText Splitting distances; SetRange 0 1; IsBreakPressed; SetValue 0.1; "
                                "IsBreakPressed; SetValue 0.138889; IsBreakPressed; "));  // (0.7 / 6 + 0.3) / 3
  EXPECT_EQ(log.calls.back(), "PopSubRange");
  log.calls.clear();
  int i = 0, j = 0;
  EXPECT_EQ(calculator.FindNearestAndMerge(i, j), 1.0F);
  EXPECT_EQ(log.Joined(), "SetText Loading distances; SetText Sorting; SetText Merging clusters");
}

TEST_F(OnDisk, ADirectoryThatIsNotThereIsAnErrorThatSaysSo) {
  setenv("TMPDIR", (directory_ + "/absent").c_str(), 1);
  EXPECT_EQ(ErrorOf([] { Merges(RandomMatrix<float>(20, 3, 0, 1), 50); }),
            CString(("The temporary file " + directory_ + "/absent/kal-XXXXXX.clu could not be opened").c_str()));
  ASSERT_EQ(dialogue_.shown.size(), 1U);
  EXPECT_THAT(dialogue_.shown[0], HasSubstr("The disk ('" + directory_ + "/absent') will be used"));
}

TEST_F(OnDisk, WardDoesNotGoThere) {
  DendroGram::SetMaximumPairsInMemory(10);
  DendroGram::WardDistanceCalculator ward(DendroGram::WardDistanceCalculator::DistanceIncrease);
  EXPECT_THROW(ward.Init(RandomMatrix<float>(20, 3, 0, 1), nullptr), DendroGram::ClusterAllocationError);
  EXPECT_TRUE(dialogue_.shown.empty());
}

TEST_F(OnDisk, ACopyOfACalculatorWithFilesStartsUninitialised) {
  const NCDataMatrix<float> table = RandomMatrix<float>(20, 3, 0, 1);
  DendroGram::SetMaximumPairsInMemory(50);
  SingleLinkageDistanceCalculator calculator;
  calculator.Init(table, nullptr);
  EXPECT_GT(Files(), 0);
  SingleLinkageDistanceCalculator copy(calculator);
  int i = 0, j = 0;
  EXPECT_THROW(copy.FindNearestAndMerge(i, j), NCError);
  EXPECT_TRUE(MergesOf(copy, table) == MergesOf(calculator, table)) << "both go on for themselves";
  calculator.Init(table, nullptr);
  calculator = SingleLinkageDistanceCalculator();
  copy = calculator;
}

}  // namespace
