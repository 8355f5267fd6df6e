#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "app/ClusterResult.h"
#include "app/ClusterRun.h"
#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/ReadTable.h"

namespace kalmia::app {

namespace {

std::vector<FilePlace> OutputsOf(const ClusterOptions& options) {
  std::vector<FilePlace> places;
  if (!options.svg.empty()) places.push_back({"--svg", options.svg});
  if (!options.merges.empty()) places.push_back({"--merges", options.merges});
  if (!options.newick.empty()) places.push_back({"--newick", options.newick});
  if (!options.csv.empty()) places.push_back({"--csv", options.csv});
  return places;
}

bool IsCutAsked(const ClusterOptions& options) { return options.cut > 0 || options.height.has_value(); }

void CheckOptions(const ClusterOptions& options) {
  if (!options.csv.empty() && !IsCutAsked(options)) {
    throw BadRequest("--csv writes clusters: give --cut or --height; see kalmia cluster --help");
  }
  CheckPlaces({{"the table", options.table}}, OutputsOf(options));
  if (!options.temp.empty()) CheckTemporaryFolder(options.temp);
}

void CheckCut(const CsvTable& table, const ClusterOptions& options) {
  if (options.cut <= table.Rows()) return;
  throw BadData(table.Name() + ": " + Counted(static_cast<std::size_t>(table.Rows()), "row") + " cannot be cut into " +
                std::to_string(options.cut) + " clusters");
}

void CheckHeights(const CsvTable& table, const std::vector<ClusterMerge>& merges) {
  if (std::all_of(merges.begin(), merges.end(), [](const ClusterMerge& m) { return std::isfinite(m.height); })) return;
  throw BadData(table.Name() + ": distances are too large for single precision; try --scale uv");
}

ClusterResult ClusterRows(const CsvTable& table, const ClusterOptions& options, Notes* notes) {
  ProgressLine line;
  line.ShowAtOnce("selecting the columns", 0.0);
  ClusterResult result = {table.Name(), options.method, options.scaling, SelectClusterData(table, options, notes),
                          nullptr, {}, 0.0, 0, options.height, {}};
  NCProgress building(std::make_unique<ConsoleProgress>(&line)), comparing(std::make_unique<ConsoleProgress>(&line));
  result.root = BuildTree(table.Name(), result.data, options, &building, notes);
  result.merges = MergesOf(*result.root);
  CheckHeights(table, result.merges);
  result.copheneticCorrelation = CopheneticCorrelation(result.data.cells, result.merges, &comparing);
  result.keptMerges = static_cast<int>(result.merges.size());
  if (!IsCutAsked(options)) return result;
  result.keptMerges = KeptMerges(result.merges, options);
  result.clusterOf = ClustersOfRows(result.merges, result.keptMerges);
  return result;
}

void NoteFallingHeights(const std::vector<ClusterMerge>& merges, Notes* notes) {
  const std::vector<float> highest = HighestBelow(merges);
  std::size_t lower = 0;
  for (std::size_t k = 0; k < merges.size(); ++k) lower += merges[k].height < highest[k] ? 1 : 0;
  if (lower == 0) return;
  notes->Add(Counted(lower, "merge") + (lower == 1 ? " is" : " are") + " lower than one within its cluster");
}

void WriteFiles(const ClusterOptions& options, const ClusterResult& result) {
  OutputFiles files;
  if (!options.svg.empty()) files.Stage(options.svg, ClusterSvg(result));
  if (!options.merges.empty()) files.Stage(options.merges, MergesCsv(result, MarksOf(options.csvMarks)));
  if (!options.newick.empty()) files.Stage(options.newick, NewickText(result));
  if (!options.csv.empty()) files.Stage(options.csv, ClusterCsv(result, MarksOf(options.csvMarks)));
  files.Commit();
}

}  // namespace

std::string RunCommand(const ClusterOptions& options, Notes* notes) {
  CheckOptions(options);
  const CsvTable table = ReadTable(options.table, options.reading);
  CheckCut(table, options);
  const ClusterResult result = ClusterRows(table, options, notes);
  NoteFallingHeights(result.merges, notes);
  WriteFiles(options, result);
  if (options.json) return ClusterJson(table, result, *notes, OutputsOf(options));
  return ClusterText(result) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
