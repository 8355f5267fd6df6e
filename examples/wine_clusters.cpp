// Do wines of three cultivars fall into three clusters? Scale thirteen chemical measures, build a tree of the wines by
// Ward's criterion, cut it into three clusters, and count which cultivars came into which. The cultivar is not used,
// only counted.
//
//     wine_clusters examples/data/wine.csv
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <list>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "kalmia/kalmia.h"

namespace {

using DendroGram::DendroGramNode;

constexpr std::size_t kClusters = 3;

struct Wines {
  std::vector<std::string> cultivars;  // of each row
  NCDataMatrix<float> x;               // one wine a row, one measure a column
};

// The file has a header line; then, a line: sample, cultivar, measures. An empty field is a missing cell.
Wines ReadWines(const char* path) {
  Wines wines;
  std::ifstream file(path);
  std::string line, field;
  std::getline(file, line);
  while (std::getline(file, line)) {
    NCDataVector<float> cells;
    std::istringstream fields(line);
    std::getline(fields, field, ',');
    std::getline(fields, field, ',');
    wines.cultivars.push_back(field);
    while (std::getline(fields, field, ',')) cells.push_back(field.empty() ? -99.0f : std::stof(field));
    wines.x.push_back(cells);
  }
  return wines;
}

// Cuts the tree by undoing the highest merges. The clusters by the first wine in each.
std::map<int, std::list<int>> Cut(const DendroGramNode& root) {
  std::vector<const DendroGramNode*> tops = {&root};
  while (tops.size() < kClusters) {
    const auto highest = std::max_element(tops.begin(), tops.end(), [](const auto* a, const auto* b) {
      return a->Height() < b->Height();
    });
    std::printf("%zu cluster%s until the merge at height %.2f is undone\n", tops.size(), tops.size() == 1 ? "" : "s",
                static_cast<double>((*highest)->Height()));
    const DendroGramNode* const node = *highest;
    *highest = node->GetLeft();
    tops.push_back(node->GetRight());
  }
  std::map<int, std::list<int>> clusters;
  for (const DendroGramNode* top : tops) {
    std::list<int> wines;
    top->GetLeafs(wines);  // numbers from 1
    clusters[*std::min_element(wines.begin(), wines.end())] = wines;
  }
  return clusters;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::fprintf(stderr, "usage: wine_clusters wine.csv\n");
    return 2;
  }
  Wines wines = ReadWines(argv[1]);
  if (wines.x.SizeRows() < static_cast<int>(kClusters)) {
    std::fprintf(stderr, "wine_clusters: %s does not hold three wines\n", argv[1]);
    return 3;
  }

  NCScale scale(wines.x.SizeColumns());
  for (int j = 1; j <= wines.x.SizeColumns(); ++j) scale.SetType(j, NCScale::ScalingUnitVariance);
  scale.ScaleMatrix(&wines.x, /*newModel=*/true);
  DendroGram::WardDistanceCalculator ward(DendroGram::WardDistanceCalculator::DistanceRootIncrease);
  DendroGramNode* const root = DendroGram::GetDendroGram(wines.x, ward, /*progress=*/nullptr, /*cache=*/nullptr);
  const std::map<int, std::list<int>> clusters = Cut(*root);
  DendroGramNode::Destroy(root);  // the tree is the caller's

  std::map<std::string, int> total;
  for (const std::string& cultivar : wines.cultivars) ++total[cultivar];
  std::printf("\ncluster   wines");
  for (const auto& entry : total) std::printf("   cultivar %s", entry.first.c_str());
  int number = 0, together = 0;
  for (const auto& cluster : clusters) {
    std::map<std::string, int> counts;
    for (const int wine : cluster.second) ++counts[wines.cultivars[static_cast<std::size_t>(wine) - 1]];
    std::printf("\n%7d   %5zu", ++number, cluster.second.size());
    int most = 0;
    for (const auto& entry : total) {
      std::printf("   %10d", counts[entry.first]);
      most = std::max(most, counts[entry.first]);
    }
    together += most;
  }
  std::printf("\n\n%d of %d wines are in a cluster of their own cultivar\n", together, wines.x.SizeRows());
  return 0;
} catch (const Exception& error) {
  std::fprintf(stderr, "wine_clusters: %s\n", static_cast<const char*>(error.GetMessage()));
  return 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "wine_clusters: %s\n", error.what());
  return 1;
}
