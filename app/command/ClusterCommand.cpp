#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <system_error>

#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/Interrupt.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "app/console/TemporaryPath.h"
#include "kalmia/analysis/cluster/ClusterResult.h"
#include "kalmia/analysis/figure/ClusterSvg.h"
#include "kalmia/analysis/report/ClusterReport.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/support/TempFile.h"

namespace kalmia::app {

using namespace analysis;

namespace {

std::vector<FilePlace> OutputsOf(const ClusterOptions& options) {
  std::vector<FilePlace> places;
  if (!options.svg.empty()) places.push_back({"--svg", options.svg});
  if (!options.merges.empty()) places.push_back({"--merges", options.merges});
  if (!options.newick.empty()) places.push_back({"--newick", options.newick});
  if (!options.csv.empty()) places.push_back({"--csv", options.csv});
  return places;
}

/// Makes a folder of its own in this one; empty, with errno, where none can be made.
std::string MakeFolderIn(const std::string& parent) {
  std::string path = parent + "/.kalmia-XXXXXX";
  return mkdtemp(path.data()) == nullptr ? "" : path;
}

/// Throws BadFile if no temporary files can be made in the folder.
void CheckTemporaryFolder(const std::string& parent) {
  const DeadlineHold untilItIsGone;
  const std::string path = MakeFolderIn(parent);
  if (path.empty()) {
    throw BadFile("cannot make temporary files in " + OneLine(parent) + ": " + std::generic_category().message(errno));
  }
  rmdir(path.c_str());
}

/// A folder for temporary files in the one that is named: whatever is in it goes with the object, by a signal too.
/// Where none can be made it is the one that is named: the calculation meets the same trouble, if it needs files.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::string& parent) : path_(parent) {
    const DeadlineHold untilItIsNoted;
    const std::string own = MakeFolderIn(parent);
    if (own.empty()) return;
    own_.emplace(own, TemporaryPath::Kind::FolderWithFiles);
    path_ = own;
  }

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
  std::optional<TemporaryPath> own_;
};

void CheckOptions(const ClusterOptions& options) {
  if (!options.csv.empty() && !options.recipe.IsCutAsked()) {
    throw BadRequest("--csv writes clusters: give --cut or --height; see kalmia cluster --help");
  }
  CheckPlaces({{"the table", options.table}}, OutputsOf(options));
  if (!options.recipe.temporaryFolder.empty()) CheckTemporaryFolder(options.recipe.temporaryFolder);
}

ClusterResult Compute(const CsvTable& table, const ClusterOptions& options) {
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
  const CsvTable table = ReadTable(options.table, options.reading);
  const ClusterResult result = Compute(table, options);
  notes->Add(result.notes);
  WriteFiles(options, result);
  if (options.json) return ClusterJson(table, result, *notes, PathsOf(OutputsOf(options)));
  return ClusterText(result) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
