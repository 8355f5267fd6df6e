#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "app/console/TemporaryFolder.h"
#include "kalmia/analysis/cluster/ClusterResult.h"
#include "kalmia/analysis/figure/ClusterSvg.h"
#include "kalmia/analysis/report/ClusterReport.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/support/TempFile.h"

namespace kalmia::app {

namespace {

std::vector<FilePlace> OutputsOf(const ClusterOptions& options) {
  return Given({{"--svg", options.svg},
                {"--merges", options.merges},
                {"--newick", options.newick},
                {"--csv", options.csv}});
}

void CheckOptions(const ClusterOptions& options) {
  if (!options.csv.empty() && !options.recipe.IsCutAsked()) {
    throw BadRequest("--csv writes clusters: give --cut or --height; see kalmia cluster --help");
  }
  CheckPlaces({{"the table", options.table}}, OutputsOf(options));
  if (!options.recipe.temporaryFolder.empty()) CheckTemporaryFolder(options.recipe.temporaryFolder);
}

ClusterResult Compute(const Table& table, const ClusterOptions& options) {
  ClusterRecipe recipe = options.recipe;
  recipe.temporaryFolderName = recipe.temporaryFolder.empty() ? TemporaryDirectory() : recipe.temporaryFolder;
  const TemporaryFolder folder(recipe.temporaryFolderName);
  recipe.temporaryFolder = folder.Path();
  TerminalBar bar;
  return Fit(recipe, table, bar.Get());
}

void WriteFiles(const ClusterOptions& options, const ClusterResult& result) {
  OutputFiles files;
  const CsvMarks marks = MarksOf(options.csvMarks.Asked());
  if (!options.svg.empty()) files.Stage(options.svg, ClusterSvg(result));
  if (!options.merges.empty()) files.Stage(options.merges, MergesCsv(result, marks));
  if (!options.newick.empty()) files.Stage(options.newick, NewickText(result));
  if (!options.csv.empty()) files.Stage(options.csv, ClusterCsv(result, marks));
  files.Commit();
}

}  // namespace

std::string RunCommand(const ClusterOptions& options, Notes* notes) {
  CheckOptions(options);
  const Table table = ReadTable(options.table, options.reading);
  const ClusterResult result = Compute(table, options);
  notes->Add(result.notes);
  WriteFiles(options, result);
  if (options.json) return ClusterJson(table, result, PathsOf(OutputsOf(options)));
  return ClusterText(result) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
