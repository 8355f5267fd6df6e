#include <optional>

#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/InputFile.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "app/options/FigureOptions.h"
#include "kalmia/analysis/chart/ChartResult.h"
#include "kalmia/analysis/figure/ChartSvg.h"
#include "kalmia/analysis/file/ChartLimitsFile.h"
#include "kalmia/analysis/report/ChartReport.h"

namespace kalmia::app {

namespace {

std::vector<FilePlace> OutputsOf(const ChartOptions& options) {
  return Given({{"--save-limits", options.saveLimits}, {"--csv", options.csv}, {"--svg", options.svg}});
}

void WriteFiles(const ChartOptions& options, const ChartResult& result) {
  OutputFiles files;
  if (!options.saveLimits.empty()) files.Stage(options.saveLimits, LimitsText(LimitsOf(result)));
  if (!options.csv.empty()) files.Stage(options.csv, ChartCsv(result, MarksOf(options.csvMarks.Asked())));
  if (!options.svg.empty()) files.Stage(options.svg, ChartSvg(result, options.texts, SizeOf(options.size)));
  files.Commit();
}

}  // namespace

std::string RunCommand(const ChartOptions& options, Notes* notes) {
  CheckPlaces(Given({{"the table", options.table}, {"the limits", options.limitsFrom}}), OutputsOf(options));
  std::optional<StoredLimits> stored;
  if (!options.limitsFrom.empty()) stored = ReadLimits(ReadInput(options.limitsFrom), InputName(options.limitsFrom));
  const StoredLimits* const limits = stored ? &*stored : nullptr;
  CheckChart(options.recipe, limits);  // before the table is read
  const Table table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const ChartResult result = ComputeChart(options.recipe, table, bar.Get(), limits);
  notes->Add(result.notes);
  WriteFiles(options, result);
  return options.json ? ChartJson(result) : ChartText(result) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
