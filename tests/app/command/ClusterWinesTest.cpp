// What docs/clusters.md says of the wines, by the command and by SciPy 1.10.1 (data/scipy_wine.py).

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using Counts = std::array<int, 3>;  ///< wines of the cultivars 1, 2 and 3

class ClusterOfWines : public ::testing::Test {
 protected:
  CommandResult Cluster(const std::string& method) const {
    return RunKalmia({"cluster", wine_, "--method", method, "--id", "cultivar", "--exclude", "sample", "--cut", "3",
                      "--svg", folder_.Path("tree.svg"), "--csv", folder_.Path("clusters.csv"), "--merges",
                      folder_.Path("merges.csv"), "--json"});
  }
  std::vector<double> Column(const std::string& file, const std::string& name) const {
    return NumbersOf(CsvAt(folder_.Path(file)), name);
  }

  const ScratchFolder folder_;
  const std::string wine_ = folder_.Write("wine.csv", ReadWholeFile(ExampleTable("wine.csv")));
  const std::vector<double> cultivars_ = NumbersOf(CsvAt(wine_), "cultivar");
};

TEST_F(ClusterOfWines, HasTheHeightsTheCorrelationAndTheDrawingOfThePage) {
  const CommandResult run = Cluster("ward");
  ASSERT_EQ(run.exitCode, 0) << run.error;
  const std::vector<double> heights = Column("merges.csv", "height");
  ASSERT_EQ(heights.size(), 177U);
  // To the digits of the page.
  EXPECT_NEAR(heights[176], 25.0, 0.05);
  EXPECT_NEAR(heights[175], 19.4, 0.05);
  EXPECT_NEAR(heights[174], 9.2, 0.05);
  EXPECT_NEAR(run.Json()["copheneticCorrelation"], 0.66, 0.005);
  std::string drawing = ReadWholeFile(folder_.Path("tree.svg"));
  for (std::size_t at = drawing.find(wine_); at != std::string::npos; at = drawing.find(wine_)) {
    drawing.replace(at, wine_.size(), "wine.csv");
  }
  EXPECT_TRUE(drawing == ReadWholeFile(KALMIA_SCHEMA_DIR "/../wine_tree.svg"));
}

TEST_F(ClusterOfWines, IsOneOf174AndTwoSmallOnesBySingleLinkage) {
  ASSERT_EQ(Cluster("single").exitCode, 0);
  std::vector<int> sizes(3, 0);
  for (const double cluster : Column("clusters.csv", "cluster")) ++sizes.at(static_cast<std::size_t>(cluster) - 1);
  EXPECT_THAT(sizes, ::testing::UnorderedElementsAre(174, 3, 1));
}

TEST_F(ClusterOfWines, HasOtherHeightsThanExactWardAt64Merges) {
  ASSERT_EQ(Cluster("ward").exitCode, 0);
  const std::vector<double> ours = Column("merges.csv", "height");
  const std::vector<double> exact = NumbersOf(CsvAt(KALMIA_OLD_FILES_DIR "/scipy_wine.csv"), "height");
  ASSERT_EQ(ours.size(), exact.size());
  int others = 0;
  for (std::size_t k = 0; k < exact.size(); ++k) {
    // Cells, increases and roots are floats here: a few 1e-7 apart. The least of the real differences is 3e-4.
    if (std::abs(ours[k] * std::sqrt(2.0) - exact[k]) > 1e-5 * exact[k]) ++others;
  }
  EXPECT_EQ(others, 64);
}

TEST_F(ClusterOfWines, AreByExactWardTheThreeOfThePage) {
  const auto exact = CsvAt(KALMIA_OLD_FILES_DIR "/scipy_wine.csv");
  const std::vector<double> a = NumbersOf(exact, "a"), b = NumbersOf(exact, "b");
  std::vector<Counts> counts(cultivars_.size(), Counts());
  for (std::size_t row = 0; row < cultivars_.size(); ++row) {
    counts[row][static_cast<std::size_t>(cultivars_[row]) - 1] = 1;
  }
  std::vector<bool> isOnTop(counts.size(), true);
  for (std::size_t k = 0; k + 2 < a.size(); ++k) {  // all but the last two merges: three clusters are left
    Counts merged = {};
    for (const double part : {a[k], b[k]}) {
      const std::size_t cluster = static_cast<std::size_t>(part);
      isOnTop[cluster] = false;
      for (std::size_t c = 0; c < 3; ++c) merged[c] += counts[cluster][c];
    }
    counts.push_back(merged);
    isOnTop.push_back(true);
  }
  std::vector<Counts> clusters;
  for (std::size_t k = 0; k < counts.size(); ++k) {
    if (isOnTop[k]) clusters.push_back(counts[k]);
  }
  EXPECT_THAT(clusters, ::testing::UnorderedElementsAre(Counts{59, 5, 0}, Counts{0, 58, 0}, Counts{0, 8, 48}));
}

}  // namespace
