#include <optional>

#include "app/ChartLimitsFile.h"
#include "app/ChartReport.h"
#include "app/ChartResult.h"
#include "app/ChartSvg.h"
#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/Failure.h"
#include "app/InputFile.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/ReadTable.h"

namespace kalmia::app {

namespace {

std::vector<FilePlace> OutputsOf(const ChartOptions& options) {
  std::vector<FilePlace> places;
  if (!options.saveLimits.empty()) places.push_back({"--save-limits", options.saveLimits});
  if (!options.csv.empty()) places.push_back({"--csv", options.csv});
  if (!options.svg.empty()) places.push_back({"--svg", options.svg});
  return places;
}

void CheckFiles(const ChartOptions& options) {
  std::vector<FilePlace> inputs = {{"the table", options.table}};
  if (!options.limitsFrom.empty()) inputs.push_back({"the limits", options.limitsFrom});
  CheckPlaces(inputs, OutputsOf(options));
}

void WriteFiles(const ChartOptions& options, const ChartResult& result) {
  OutputFiles files;
  if (!options.saveLimits.empty()) files.Stage(options.saveLimits, LimitsText(LimitsOf(result)));
  if (!options.csv.empty()) files.Stage(options.csv, ChartCsv(result, MarksOf(options.csvMarks.Asked())));
  if (!options.svg.empty()) files.Stage(options.svg, ChartSvg(result, options.texts));
  files.Commit();
}

/// What is wrong with the recipe is known before the table is read.
void CheckRecipe(const ChartRecipe& recipe, const StoredLimits* limits) try {
  CheckChart(recipe, limits);
} catch (const BadRequest& failure) {
  throw BadRequest(std::string(failure.what()) + "; see kalmia chart --help");
}

}  // namespace

std::string RunCommand(const ChartOptions& options, Notes* notes) {
  CheckFiles(options);
  std::optional<StoredLimits> stored;
  if (!options.limitsFrom.empty()) stored = ReadLimits(ReadInput(options.limitsFrom), InputName(options.limitsFrom));
  const StoredLimits* const limits = stored ? &*stored : nullptr;
  CheckRecipe(options.recipe, limits);
  const CsvTable table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const ChartResult result = ComputeChart(table, options.recipe, limits, notes, bar.Get());
  WriteFiles(options, result);
  return options.json ? ChartJson(result, *notes) : ChartText(result) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
