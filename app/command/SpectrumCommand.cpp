#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/chart/SpectrumResult.h"
#include "kalmia/analysis/figure/SpectrumSvg.h"
#include "kalmia/analysis/report/SpectrumReport.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

using namespace analysis;

namespace {

void CheckSegment(int segment) {
  if (segment == 0 || IsSegment(segment)) return;
  throw BadRequest("spectrum: --segment takes a power of two, such as " + std::to_string(PowerOfTwoUpTo(segment)) +
                   ", not " + std::to_string(segment) + "; see kalmia spectrum --help");
}

/// What --lags and --segment take of a table of so many rows. A single row, which does not vary, is refused later.
void CheckRows(const CsvTable& table, const SpectrumRecipe& recipe) {
  RequireColumn(table, recipe.column);
  const int rows = table.Rows();
  const auto refuse = [&](const std::string& what) {
    throw BadData(table.Name() + ": the column " + Quoted(recipe.column) + " has " + std::to_string(rows) +
                  " rows: " + what);
  };
  if (rows < 2) return;
  if (recipe.lags > rows) {
    refuse("--lags takes 0 to " + std::to_string(rows) + ", not " + std::to_string(recipe.lags));
  }
  if (recipe.segment > LargestSegment(rows)) {
    refuse("--segment takes a power of two from 2 to " + std::to_string(LargestSegment(rows)) + ", not " +
           std::to_string(recipe.segment));
  }
}

std::vector<FilePlace> OutputsOf(const SpectrumOptions& options) {
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, SpectrumCsvFileNames());
  if (!options.svg.empty()) places.push_back({"--svg", options.svg});
  return places;
}

void WriteFiles(const SpectrumOptions& options, const SpectrumResult& result) {
  OutputFiles files;
  if (!options.csvFolder.empty()) {
    files.MakeFolder(options.csvFolder);
    for (const CsvFile& file : SpectrumCsvFiles(result, MarksOf(options.csvMarks.Asked()))) {
      files.Stage(options.csvFolder + "/" + file.name, file.bytes);
    }
  }
  if (!options.svg.empty()) files.Stage(options.svg, SpectrumSvg(result));
  files.Commit();
}

}  // namespace

std::string RunCommand(const SpectrumOptions& options, Notes* notes) {
  CheckSegment(options.recipe.segment);
  CheckPlaces({{"the table", options.table}}, OutputsOf(options));
  const CsvTable table = ReadTable(options.table, options.reading);
  CheckRows(table, options.recipe);
  TerminalBar bar;
  const SpectrumResult result = ComputeSpectrum(table, options.recipe, notes, bar.Get());
  WriteFiles(options, result);
  return options.json ? SpectrumJson(result, *notes) : SpectrumText(result) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
