// kalmia cluster: the tree, its cuts and its files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"

namespace {

using kalmia::analysis::Table;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// Four points on a line, 1, 2 and 4 apart.
const char* const kLine = "name,x\na,0\nb,1\nc,3\nd,7\n";

CommandResult RunCluster(const std::string& table, std::vector<std::string> more) {
  more.insert(more.begin(), {"cluster", "-"});
  return RunKalmia(more, table);
}

CommandResult RunOnLine(std::vector<std::string> more) {
  more.insert(more.end(), {"--method", "single", "--scale", "none", "--id", "name"});
  return RunCluster(kLine, more);
}

std::vector<int> ClustersAt(const std::string& path) {
  std::vector<int> clusters;
  for (const double number : NumbersOf(CsvAt(path), "cluster")) clusters.push_back(static_cast<int>(number));
  return clusters;
}

/// The rows of the columns x1 .. xK of a table.
std::vector<std::vector<double>> PointsOf(const std::string& text, int columns) {
  const Table table(text, "t");
  std::vector<std::vector<double>> points(static_cast<std::size_t>(table.Rows()));
  for (int c = 1; c <= columns; ++c) {
    const std::vector<double> column = NumbersOf(table, "x" + std::to_string(c));
    for (std::size_t r = 0; r < points.size(); ++r) points[r].push_back(column[r]);
  }
  return points;
}

double Distance(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0;
  for (std::size_t c = 0; c < a.size(); ++c) {
    const double difference = static_cast<double>(static_cast<float>(a[c])) - static_cast<float>(b[c]);
    sum += difference * difference;
  }
  return std::sqrt(sum);
}

/// The parts of the graph of all pairs that are at most so far apart, numbered by their first rows.
std::vector<int> PartsAt(const std::vector<std::vector<double>>& points, double height) {
  std::vector<int> part(points.size(), 0);
  int number = 0;
  for (std::size_t r = 0; r < points.size(); ++r) {
    if (part[r] != 0) continue;
    part[r] = ++number;
    std::vector<std::size_t> pending = {r};
    while (!pending.empty()) {
      const std::size_t at = pending.back();
      pending.pop_back();
      for (std::size_t other = 0; other < points.size(); ++other) {
        if (part[other] != 0 || Distance(points[at], points[other]) > height) continue;
        part[other] = number;
        pending.push_back(other);
      }
    }
  }
  return part;
}

TEST(Cluster, MergesPointsOnALineFromTheNearestOn) {
  const ScratchFolder folder;
  const std::string merges = folder.Path("m.csv"), newick = folder.Path("t.nwk"), csv = folder.Path("c.csv");
  const CommandResult run = RunOnLine({"--cut", "2", "--merges", merges, "--newick", newick, "--csv", csv});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_EQ(run.error, "");
  EXPECT_EQ(ReadWholeFile(merges), "cluster 1,cluster 2,height,rows\n0,1,1,2\n2,4,2,3\n3,5,4,4\n");
  EXPECT_EQ(ReadWholeFile(newick), "(d:4,(c:2,(a:1,b:1):1):2);\n");
  EXPECT_EQ(ReadWholeFile(csv), "row,cluster\na,1\nb,1\nc,1\nd,2\n");
  // Distances 1 3 7 2 6 4 beside heights 1 2 4 2 4 4: covariance 79/6 - 23/6 * 17/6, and so on.
  const double expected = (79. / 6 - 23. / 6 * 17. / 6) /
                          std::sqrt((115. / 6 - 23. / 6 * 23. / 6) * (57. / 6 - 17. / 6 * 17. / 6));
  char text[64];
  std::snprintf(text, sizeof text, "Cophenetic correlation %.4f\n", expected);
  EXPECT_THAT(run.output, HasSubstr(text));
  EXPECT_THAT(run.output, HasSubstr("Single linkage clusters of standard input: 4 rows, 1 column as it is\n"));
  EXPECT_THAT(run.output, HasSubstr("  clusters  next merge at  of rows\n"
                                    "         2        4.00000    1 + 3\n"
                                    "         3        2.00000    1 + 2\n"
                                    "         4        1.00000    1 + 1\n"));
  EXPECT_THAT(run.output, HasSubstr("Cut into 2 clusters\n\n"
                                    "  cluster  rows  highest merge\n"
                                    "        1     3        2.00000\n"
                                    "        2     1              -\n\n"
                                    "  row  cluster\n"
                                    "  a          1\n  b          1\n  c          1\n  d          2\n"));
  EXPECT_THAT(run.output, HasSubstr("\nWrote " + merges + "\nWrote " + newick + "\nWrote " + csv + "\n"));
}

TEST(Cluster, CutsAtAHeightAboveWhichAllMergesAreUndone) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("c.csv");
  const std::pair<const char*, std::vector<int>> cuts[] = {
      {"0", {1, 2, 3, 4}}, {"0.99", {1, 2, 3, 4}}, {"1", {1, 1, 2, 3}}, {"3.5", {1, 1, 1, 2}}, {"4", {1, 1, 1, 1}}};
  for (const auto& [height, clusters] : cuts) {
    ASSERT_EQ(RunOnLine({"--height", height, "--csv", csv}).exitCode, 0);
    EXPECT_EQ(ClustersAt(csv), clusters) << height;
  }
}

TEST(Cluster, TakesAPrintedHeightForTheMergesOwn) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("c.csv"), merges = folder.Path("m.csv");
  const std::string table = "x\n0\n0.1\n1\n";  // 0.1 in single precision is above 0.1
  ASSERT_EQ(RunCluster(table, {"--method", "single", "--scale", "none", "--merges", merges, "--csv", csv, "--height",
                               "0.1"})
                .exitCode,
            0);
  EXPECT_EQ(ReadWholeFile(merges), "cluster 1,cluster 2,height,rows\n0,1,0.1,2\n2,3,0.9,3\n");
  EXPECT_EQ(ClustersAt(csv), (std::vector<int>{1, 1, 2}));
}

TEST(Cluster, CutsSingleLinkageIntoThePartsOfTheGraphOfNearRows) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("c.csv"), text = UnrelatedTable(40, 3, 1, 7);
  const std::vector<std::vector<double>> points = PointsOf(text, 3);
  for (const char* height : {"0.3", "0.6", "0.9", "1.2", "1.6"}) {
    ASSERT_EQ(
        RunCluster(text, {"--method", "single", "--scale", "none", "--exclude", "y1", "--height", height, "--csv", csv})
            .exitCode,
        0);
    EXPECT_EQ(ClustersAt(csv), PartsAt(points, std::stod(height))) << height;
  }
}

TEST(Cluster, CorrelatesDistancesWithTheHeightsAtWhichRowsMeet) {
  const std::string text = UnrelatedTable(40, 3, 1, 7);
  const std::vector<std::vector<double>> points = PointsOf(text, 3);
  for (const char* method : {"single", "ward"}) {
    const CommandResult run =
        RunCluster(text, {"--method", method, "--scale", "none", "--exclude", "y1", "--json"});
    ASSERT_EQ(run.exitCode, 0) << run.error;
    // Which rows come together at each merge, by the merges alone.
    const nlohmann::json json = run.Json();
    std::vector<std::vector<std::size_t>> members;
    for (std::size_t r = 0; r < points.size(); ++r) members.push_back({r});
    std::vector<double> distances, heights;
    for (const nlohmann::json& merge : json["merges"]) {
      const std::vector<std::size_t> a = members[merge["clusters"][0]], b = members[merge["clusters"][1]];
      for (const std::size_t i : a) {
        for (const std::size_t j : b) {
          distances.push_back(Distance(points[i], points[j]));
          heights.push_back(merge["height"]);
        }
      }
      members.push_back(a);
      members.back().insert(members.back().end(), b.begin(), b.end());
      EXPECT_EQ(members.back().size(), merge["rows"]);
    }
    ASSERT_EQ(distances.size(), 780U);
    const double n = 780, d = std::accumulate(distances.begin(), distances.end(), 0.0) / n,
                 h = std::accumulate(heights.begin(), heights.end(), 0.0) / n;
    double dd = 0, hh = 0, dh = 0;
    for (std::size_t p = 0; p < distances.size(); ++p) {
      dd += (distances[p] - d) * (distances[p] - d);
      hh += (heights[p] - h) * (heights[p] - h);
      dh += (distances[p] - d) * (heights[p] - h);
    }
    // Heights are printed with the digits of a float, 6e-8 of their size.
    EXPECT_NEAR(json["copheneticCorrelation"], dh / std::sqrt(dd * hh), 1e-6) << method;
  }
}

TEST(Cluster, EstimatesDistancesOfRowsWithHolesFromTheirCommonColumns) {
  const ScratchFolder folder;
  const std::string merges = folder.Path("m.csv");
  ASSERT_EQ(RunCluster("a,b,c,d\n0,0,0,0\n3,,4,\n9,9,9,9\n",
                       {"--method", "single", "--scale", "none", "--merges", merges})
                .exitCode,
            0);
  // sqrt((9 + 16) * 4 / 2) = 7.0710678, and sqrt((36 + 25) * 4 / 2) = 11.045361 to the third row.
  EXPECT_EQ(ReadWholeFile(merges), "cluster 1,cluster 2,height,rows\n0,1,7.071068,2\n2,3,11.045361,3\n");
}

TEST(Cluster, WardHeightsAreRootsOfIncreasesInTheSumOfSquares) {
  const ScratchFolder folder;
  const std::string merges = folder.Path("m.csv");
  ASSERT_EQ(RunCluster("x\n0\n2\n10\n", {"--method", "ward", "--scale", "none", "--merges", merges}).exitCode, 0);
  // 0 and 2: 2 * 1^2; then 10 with their mean 1: 81 * 2 / 3.
  EXPECT_EQ(ReadWholeFile(merges), "cluster 1,cluster 2,height,rows\n0,1,1.4142135,2\n2,3,7.3484693,3\n");
}

TEST(Cluster, ScalesToUnitVarianceUnlessToldOtherwise) {
  const std::string table = "x,y\n0,0\n1,3000\n5,1000\n9,2000\n";
  EXPECT_THAT(RunCluster(table, {"--method", "ward"}).output, HasSubstr("2 columns scaled to unit variance\n"));
  EXPECT_EQ(RunCluster(table, {"--method", "ward"}).output,
            RunCluster(table, {"--method", "ward", "--scale", "uv"}).output);
  EXPECT_NE(RunCluster(table, {"--method", "ward"}).output,
            RunCluster(table, {"--method", "ward", "--scale", "pareto"}).output);
}

TEST(Cluster, QuotesNamesInTheNewickFormat) {
  const ScratchFolder folder;
  const std::string newick = folder.Path("t.nwk");
  ASSERT_EQ(RunCluster("name,x\nit's,0\na b,1\n,3\nx_1,7\n\"(1,2):3\",15\n-1.5,31\n\xC3\xA9,63\n",
                       {"--method", "single", "--scale", "none", "--id", "name", "--newick", newick})
                .exitCode,
            0);
  EXPECT_EQ(ReadWholeFile(newick),
            "('\xC3\xA9':32,(-1.5:16,('(1,2):3':8,('x_1':4,(row3:2,('it''s':1,'a b':1):1):2):4):8):16);\n");
}

TEST(Cluster, GivesTheSameTreeFromTemporaryFiles) {
  const ScratchFolder folder, temporary;
  const std::string table = folder.Write("t.csv", UnrelatedTable(150, 4, 1, 3));
  const std::vector<std::string> arguments = {"cluster", table, "--method", "single", "--cut", "4", "--merges",
                                              folder.Path("m.csv")};
  const CommandResult inMemory = RunKalmia(arguments);
  ASSERT_EQ(inMemory.exitCode, 0) << inMemory.error;
  const std::string merges = ReadWholeFile(folder.Path("m.csv"));
  for (const char* memory : {"1200", "4K", "100K"}) {  // of 11175 distances, 131 KiB
    std::vector<std::string> onDisk = arguments;
    onDisk.insert(onDisk.end(), {"--memory", memory, "--temp", temporary.Path(".")});
    const CommandResult run = RunKalmia(onDisk);
    EXPECT_EQ(temporary.Names(), std::vector<std::string>()) << memory;
    EXPECT_EQ(run.exitCode, 0) << run.error;
    EXPECT_EQ(run.output, inMemory.output);
    EXPECT_EQ(ReadWholeFile(folder.Path("m.csv")), merges);
    EXPECT_EQ(run.error, "note: the 11175 distances of 150 rows found no room in memory and were kept in temporary "
                         "files in " + temporary.Path(".") + "\n");
  }
}

TEST(Cluster, LeavesOutColumnsWithoutNumbersOrScaleAndSaysSo) {
  const std::string table = "id,t,k,e,x,y\nr1,u,1,,1,5\nr2,v,1,,2,5.5\nr3,w,1,,4,9\n";
  const CommandResult run = RunCluster(table, {"--method", "ward", "--id", "id", "--exclude", "y", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_EQ(run.error, "note: left out, text columns: t\nnote: left out, constant columns: k\n"
                       "note: left out, empty columns: e\n");
  EXPECT_EQ(run.Json()["x"]["columns"], nlohmann::json({"x"}));
  const CommandResult unscaled = RunCluster(table, {"--method", "ward", "--id", "id", "--scale", "none", "--json"});
  EXPECT_EQ(unscaled.Json()["x"]["columns"], nlohmann::json({"k", "x", "y"}));
  EXPECT_EQ(unscaled.Json()["cut"], nullptr);
}

TEST(Cluster, RowsThatAreAllAlikeMergeAtNothing) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("t.svg"), newick = folder.Path("t.nwk");
  const CommandResult run = RunCluster("x,y\n1,2\n1,2\n1,2\n", {"--method", "ward", "--scale", "none", "--svg", svg,
                                                                "--newick", newick, "--cut", "2"});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("Cophenetic correlation -\n"));
  EXPECT_THAT(ReadWholeFile(newick), HasSubstr(":0);\n"));
  EXPECT_THAT(ReadWholeFile(svg), Not(HasSubstr("-99")));
}

TEST(Cluster, HelpGivesAnExample) {
  const CommandResult run = RunKalmia({"cluster", "--help"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("kalmia cluster wine.csv --method ward --id sample --exclude cultivar --cut 3"));
}

}  // namespace
