#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cluster/Trees.h"
#include "kalmia/cluster/DendroGram.h"
#include "kalmia/support/MD5.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/StreamAttacks.h"

// Trees that are kept in a cache of streams.

namespace {

using DendroGram::SingleLinkageDistanceCalculator;
using DendroGram::WardDistanceCalculator;

constexpr float kMiss = kHole<float>;

/// A cache in memory, which counts the streams that it lent and did not get back.
class Cache : public VexStreamSource {
 public:
  std::istream* OpenInput(const char* name) override {
    asked.push_back(name);
    const auto found = entries.find(name);
    return found == entries.end() ? nullptr : new Input(found->second, &lent);
  }
  std::ostream* OpenOutput(const char* name) override {
    ++outputs;
    return isReadOnly ? nullptr : new Output(&entries[name], &lent);
  }

  std::map<std::string, std::string> entries;
  std::vector<std::string> asked;
  int outputs = 0;
  int lent = 0;
  bool isReadOnly = false;

 private:
  struct Loan {
    explicit Loan(int* loans) : count(loans) { ++*count; }
    ~Loan() { --*count; }
    int* count;
  };
  struct Input : std::istringstream {
    Input(const std::string& entry, int* loans) : std::istringstream(entry), loan(loans) {}
    Loan loan;
  };
  struct Output : std::ostringstream {
    Output(std::string* entry, int* loans) : target(entry), loan(loans) {}
    ~Output() override { *target = str(); }
    std::string* target;
    Loan loan;
  };
};

Tree Analyse(const NCDataMatrix<float>& data, DendroGram::ClusterDistanceCalculator& calculator, Cache& cache,
             NCProgress* progress = nullptr) {
  return Tree(DendroGram::GetDendroGram(data, calculator, progress, &cache));
}

TEST(CachedTree, StoresTheTreeAndReturnsItUnseenTheNextTime) {
  const NCDataMatrix<float> table = RandomMatrix<float>(6, 3, 0, 5);
  Cache cache;
  SingleLinkageDistanceCalculator first;
  const Tree tree = Analyse(table, first, cache);
  ASSERT_EQ(cache.entries.size(), 1U);
  EXPECT_EQ(cache.entries.begin()->second, StreamOf(*tree));
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  SingleLinkageDistanceCalculator untouched;
  const Tree again = Analyse(table, untouched, cache, bar.get());
  EXPECT_TRUE(*again == *tree);
  EXPECT_TRUE(log.calls.empty());
  EXPECT_EQ(cache.outputs, 1);
  EXPECT_EQ(cache.lent, 0);
  int i = 0, j = 0;
  EXPECT_THROW(untouched.FindNearestAndMerge(i, j), NCError) << "it was never initialised";
}

TEST(CachedTree, AStoredTreeIsReturnedEvenForATableThatTheRulesRefuse) {
  const NCDataMatrix<float> table = MatrixOf<float>({{kMiss, kMiss, 1}, {1, 2, 3}});
  Cache cache;
  SingleLinkageDistanceCalculator calculator;
  EXPECT_THROW(Analyse(table, calculator, cache), NCError);
  ASSERT_EQ(cache.asked.size(), 1U) << "the cache is asked before everything";
  cache.entries[cache.asked[0]] = StreamOf(*FiveLeafs());
  EXPECT_TRUE(*Analyse(table, calculator, cache) == *FiveLeafs());
}

TEST(CachedTree, ADamagedEntryIsComputedAfreshAndStoredAgain) {
  const NCDataMatrix<float> table = RandomMatrix<float>(6, 3, 0, 5);
  Cache cache;
  SingleLinkageDistanceCalculator first;
  const Tree tree = Analyse(table, first, cache);
  std::string& entry = cache.entries.begin()->second;
  const std::string good = entry;
  for (const std::size_t length : {std::size_t{0}, std::size_t{5}, good.size() - 1}) {
    entry.resize(length);
    SingleLinkageDistanceCalculator calculator;
    EXPECT_TRUE(*Analyse(table, calculator, cache) == *tree);
    EXPECT_EQ(entry, good);
    EXPECT_EQ(cache.lent, 0);
  }
}

TEST(CachedTree, ACacheThatTakesNothingIsNoFailure) {
  Cache cache;
  cache.isReadOnly = true;
  SingleLinkageDistanceCalculator calculator;
  EXPECT_EQ(Analyse(RandomMatrix<float>(6, 3, 0, 5), calculator, cache)->SizeLeafs(), 6);
  EXPECT_EQ(cache.outputs, 1);
}

TEST(CachedTree, TheNameOfAnEntryIsThatOfTableAndCalculator) {
  NCDataMatrix<float> table = MatrixOf<float>({{1, 2}, {3, kMiss}, {5, 6}});
  Cache cache;
  const auto nameFor = [&](DendroGram::ClusterDistanceCalculator&& calculator) {
    Analyse(table, calculator, cache);
    return cache.asked.back();
  };
  const std::string ward = nameFor(WardDistanceCalculator(WardDistanceCalculator::DistanceIncrease));
  // md5sum of the six cells as little-endian floats and of the text "WardDistanceCalculator0" behind them.
  EXPECT_EQ(ward, "Dendro_3_2_8ee0554acfade8fb10e576fd570da5ef");
  EXPECT_EQ(nameFor(WardDistanceCalculator(WardDistanceCalculator::DistanceIncrease)), ward);
  EXPECT_NE(nameFor(WardDistanceCalculator(WardDistanceCalculator::DistanceRootIncrease)), ward);
  EXPECT_NE(nameFor(SingleLinkageDistanceCalculator()), ward);
  table(3, 2, 6.5F);
  EXPECT_NE(nameFor(WardDistanceCalculator(WardDistanceCalculator::DistanceIncrease)), ward);
}

TEST(CachedTree, AsksWhileTheNameOfALargeTableIsMade) {
  const int columns = (1 << 20) + 5;  // the first question comes within the first row
  const NCDataMatrix<float> table(2, columns, 1.5F);
  Cache cache;
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> stopping = RecordingBar(&log);
  SingleLinkageDistanceCalculator calculator;
  try {
    Analyse(table, calculator, cache, stopping.get());
    ADD_FAILURE() << "not stopped";
  } catch (const NCError& error) {
    EXPECT_EQ(error.GetMessage(), "Cluster analysis aborted.");
  }
  EXPECT_EQ(log.Joined(), "IsBreakPressed");
  EXPECT_TRUE(cache.asked.empty());

  Analyse(table, calculator, cache);
  MD5 digest;
  for (int r = 1; r <= 2; ++r) digest.Update(table[r].begin(), sizeof(float) * columns);
  digest.Update(calculator.GetId());
  digest.Finalize();
  EXPECT_EQ(cache.asked.back(), "Dendro_2_1048581_" + std::string(digest.GetDigest())) << "pieces do not show";
}

}  // namespace
