#include "kalmia/analysis/cluster/ClusterResult.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/cluster/internal/ClusterRun.h"
#include "kalmia/analysis/cluster/internal/ClusterTree.h"
#include "kalmia/analysis/cluster/internal/SelectClusterData.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"

namespace kalmia::analysis {

namespace {

void CheckRecipe(const Table& table, const ClusterRecipe& recipe) {
  if (recipe.method != "ward" && recipe.method != "single") {
    throw BadRequest("there is no clustering by the method " + Quoted(recipe.method) + ": take ward or single");
  }
  if (recipe.cut < 0 || (recipe.height && !(*recipe.height >= 0.0))) {
    throw BadRequest("a tree is cut into one cluster or more, or at a height from 0 on");
  }
  if (recipe.cut <= table.Rows()) return;
  throw BadData(table.Name() + ": " + Counted(static_cast<std::size_t>(table.Rows()), "row") + " cannot be cut into " +
                std::to_string(recipe.cut) + " clusters");
}

void CheckHeights(const Table& table, const std::vector<ClusterMerge>& merges) {
  if (std::all_of(merges.begin(), merges.end(), [](const ClusterMerge& m) { return std::isfinite(m.height); })) return;
  throw BadData(table.Name() + ": distances are too large for single precision; try scaling to unit variance");
}

void NoteFallingHeights(const std::vector<ClusterMerge>& merges, Notes* notes) {
  const std::vector<float> highest = HighestBelow(merges);
  std::size_t lower = 0;
  for (std::size_t k = 0; k < merges.size(); ++k) lower += merges[k].height < highest[k] ? 1 : 0;
  if (lower == 0) return;
  notes->Add(Counted(lower, "merge") + (lower == 1 ? " is" : " are") + " lower than one within its cluster");
}

ClusterResult Compute(const ClusterRecipe& recipe, const Table& table, NCProgress* progress) {
  Notes notes;
  WorkProgress(progress).Begin("selecting the columns");
  ClusterResult result = {table.Name(), recipe.method, recipe.scaling, SelectClusterData(table, recipe, &notes),
                          nullptr, {}, 0.0, 0, recipe.height, {}, {}};
  result.root = BuildTree(table.Name(), result.data, recipe, progress, &notes);
  result.merges = MergesOf(*result.root);
  CheckHeights(table, result.merges);
  NoteFallingHeights(result.merges, &notes);
  result.copheneticCorrelation = CopheneticCorrelation(result.data.cells, result.merges, progress);
  result.notes = std::move(notes);
  result.keptMerges = static_cast<int>(result.merges.size());
  if (!recipe.IsCutAsked()) return result;
  result.keptMerges = KeptMerges(result.merges, recipe);
  result.clusterOf = ClustersOfRows(result.merges, result.keptMerges);
  return result;
}

}  // namespace

std::string ClusterResult::Title() const {
  return (method == "ward" ? "Ward" : "Single linkage") + std::string(" clusters of ") + OneLine(table);
}

std::vector<ClusterSummary> SummariesOf(const ClusterResult& result) {
  std::vector<ClusterSummary> summaries(static_cast<std::size_t>(result.Clusters()));
  for (const int cluster : result.clusterOf) ++summaries[static_cast<std::size_t>(cluster) - 1].rows;
  std::vector<int> clusterOf = result.clusterOf;  // of rows, and of the merges made so far
  for (int k = 0; k < result.keptMerges; ++k) {
    const ClusterMerge& merge = result.merges[static_cast<std::size_t>(k)];
    clusterOf.push_back(clusterOf[static_cast<std::size_t>(merge.left)]);
    float& highest = summaries[static_cast<std::size_t>(clusterOf.back()) - 1].highest;
    highest = std::max(highest, merge.height);
  }
  return summaries;
}

ClusterResult Fit(const ClusterRecipe& recipe, const Table& table, NCProgress* progress) {
  CheckRecipe(table, recipe);
  return WithoutLibraryErrors([&] { return Compute(recipe, table, progress); });
}

}  // namespace kalmia::analysis
