// kalmia cluster where Ward's heights fall towards the root.

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using kalmia::analysis::Table;

/// The clusters after so many of the merges at the path, numbered in the order of their first rows.
std::vector<double> ClustersAfter(std::size_t count, const std::string& path) {
  const Table merges = CsvAt(path);
  const std::vector<double> first = NumbersOf(merges, "cluster 1"), second = NumbersOf(merges, "cluster 2");
  const std::size_t rows = first.size() + 1;
  std::vector<std::size_t> top(rows);  // of each row the largest cluster so far
  std::iota(top.begin(), top.end(), 0U);
  for (std::size_t k = 0; k < count; ++k) {
    for (std::size_t& cluster : top) {
      const double number = static_cast<double>(cluster);
      if (number == first[k] || number == second[k]) cluster = rows + k;
    }
  }
  std::vector<double> clusters;
  std::vector<std::size_t> met;
  for (const std::size_t cluster : top) {
    const auto found = std::find(met.begin(), met.end(), cluster);
    clusters.push_back(static_cast<double>(found - met.begin()) + 1);
    if (found == met.end()) met.push_back(cluster);
  }
  return clusters;
}

TEST(ClusterOfFallingHeights, EveryNumberOfClustersCanBeHadByUndoingTheLastMerges) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("c.csv"), merges = folder.Path("m.csv");
  const std::string table = UnrelatedTable(60, 5, 1, 13);  // one of few on which Ward's heights fall
  for (const int k : {1, 2, 3, 5, 10, 30, 58, 59, 60}) {
    const CommandResult run = RunKalmia({"cluster", "-", "--method", "ward", "--scale", "none", "--cut",
                                         std::to_string(k), "--csv", csv, "--merges", merges},
                                        table);
    ASSERT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.error, "note: 1 merge is lower than one within its cluster\n");
    const std::vector<double> clusters = NumbersOf(CsvAt(csv), "cluster");
    EXPECT_EQ(*std::max_element(clusters.begin(), clusters.end()), k);
    EXPECT_EQ(clusters, ClustersAfter(static_cast<std::size_t>(60 - k), merges)) << "the last k - 1 merges are undone";
  }
  const std::vector<double> heights = NumbersOf(CsvAt(merges), "height");
  EXPECT_FALSE(std::is_sorted(heights.begin(), heights.end()));
}

}  // namespace
