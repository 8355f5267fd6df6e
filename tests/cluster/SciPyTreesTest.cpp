#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "cluster/PlainClustering.h"
#include "kalmia/cluster/SingleLinkageDistanceCalculator.h"
#include "kalmia/cluster/WardDistanceCalculator.h"
#include "testing/RandomTables.h"

// The calculators against trees of SciPy 1.10.1, which data/scipy_trees.py wrote.

namespace {

using DendroGram::SingleLinkageDistanceCalculator;
using DendroGram::WardDistanceCalculator;

struct SciPyMerge {
  int a, b;  ///< clusters: rows from 0, then the merges
  double height;
};

struct SciPyTree {
  std::string method, cells;
  int rows = 0, columns = 0;
  unsigned seed = 0;
  std::vector<SciPyMerge> merges;

  NCDataMatrix<float> Table() const {
    return cells == "whole" ? WholeNumbers(rows, columns, 4, 0, seed) : RandomMatrix<float>(rows, columns, 0, seed);
  }
  std::string Name() const { return method + ", " + cells + ", " + std::to_string(rows) + " rows"; }
};

std::vector<std::string> Words(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; std::getline(stream, word, ',');) words.push_back(word);
  return words;
}

std::vector<SciPyTree> TreesOf(const std::string& method) {
  std::ifstream file(KALMIA_CLUSTER_DATA_DIR "/scipy_trees.csv");
  std::vector<SciPyTree> trees;
  for (std::string line; std::getline(file, line);) {
    const std::vector<std::string> words = Words(line);
    if (words.size() == 5)
      trees.push_back({words[0], words[1], std::stoi(words[2]), std::stoi(words[3]),
                       static_cast<unsigned>(std::stoul(words[4])), {}});
    if (words.size() == 3)
      trees.back().merges.push_back({std::stoi(words[0]), std::stoi(words[1]), std::stod(words[2])});
  }
  std::vector<SciPyTree> some;
  for (const SciPyTree& tree : trees)
    if (tree.method == method) some.push_back(tree);
  return some;
}

/// For each row the first row of its cluster, after so many of SciPy's merges.
std::vector<int> PartitionOf(const SciPyTree& tree, std::size_t count) {
  std::vector<std::vector<int>> clusters(static_cast<std::size_t>(tree.rows));
  for (std::size_t row = 0; row < clusters.size(); ++row) clusters[row] = {static_cast<int>(row)};
  std::vector<int> first(clusters.size());
  std::iota(first.begin(), first.end(), 0);
  for (std::size_t k = 0; k < count; ++k) {
    std::vector<int> rows = clusters[static_cast<std::size_t>(tree.merges[k].a)];
    const std::vector<int>& others = clusters[static_cast<std::size_t>(tree.merges[k].b)];
    rows.insert(rows.end(), others.begin(), others.end());
    const int lowest = *std::min_element(rows.begin(), rows.end());
    for (const int row : rows) first[static_cast<std::size_t>(row)] = lowest;
    clusters.push_back(rows);
  }
  return first;
}

TEST(SciPyTrees, OfSingleLinkageHaveTheHeightsAndClustersOfTheCalculator) {
  const std::vector<SciPyTree> trees = TreesOf("single");
  ASSERT_EQ(trees.size(), 8U);
  for (const SciPyTree& tree : trees) {
    SCOPED_TRACE(tree.Name());
    const std::size_t merges = static_cast<std::size_t>(tree.rows) - 1;
    ASSERT_EQ(tree.merges.size(), merges);
    SingleLinkageDistanceCalculator calculator;
    const std::vector<PlainMerge> found = MergesOf(calculator, tree.Table());
    for (std::size_t k = 0; k < merges; ++k) {
      // Whole numbers have exact sums, whose root is rounded to float once. Elsewhere five squares and their sum are
      // rounded to float, 2^-24 each, which a root halves, and then the root itself.
      const double height = tree.merges[k].height;
      EXPECT_NEAR(static_cast<double>(found[k].height), height, height * (tree.cells == "whole" ? 0x1p-24 : 0x1p-23));
      if (k == 0 || found[k].height == found[k - 1].height) continue;
      EXPECT_EQ(PartitionAfter(found, k), PartitionOf(tree, k)) << "after " << k << " merges";
    }
  }
}

TEST(SciPyTrees, OfWardHaveTheHeightsOfTheCalculatorWhereNoNearerPairIsPassedOver) {
  const std::vector<SciPyTree> trees = TreesOf("ward");
  ASSERT_EQ(trees.size(), 36U);
  int exact = 0;
  for (const SciPyTree& tree : trees) {
    SCOPED_TRACE(tree.Name() + ", table " + std::to_string(tree.seed));
    ASSERT_EQ(tree.merges.size(), static_cast<std::size_t>(tree.rows) - 1);
    WardCounts counts;
    PlainWard(tree.Table(), false, &counts);
    WardDistanceCalculator calculator(WardDistanceCalculator::DistanceIncrease);
    const std::vector<PlainMerge> found = MergesOf(calculator, tree.Table());
    exact += counts.passedOver == 0;
    // The first merge is always that of the nearest two rows.
    const std::size_t compared = counts.passedOver == 0 ? found.size() : 1;
    for (std::size_t k = 0; k < compared; ++k) {
      // SciPy's height is the root of twice the increase. Cells of up to 3: sums of squares of up to a thousand, which
      // double takes to 1e-12, cancel; the float rounds once, and the first distances add squares that are floats.
      const double increase = tree.merges[k].height * tree.merges[k].height / 2;
      EXPECT_NEAR(static_cast<double>(found[k].height), increase, 0x1p-22 * increase + 1e-12) << "merge " << k;
    }
  }
  EXPECT_GE(exact, 18) << "half of such tables have no such pair";
}

}  // namespace
