#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "app/options/FigureOptions.h"
#include "kalmia/analysis/chart/HistogramResult.h"
#include "kalmia/analysis/figure/HistogramSvg.h"
#include "kalmia/analysis/report/HistogramReport.h"
#include "kalmia/analysis/table/Table.h"

namespace kalmia::app {

namespace {

std::vector<FilePlace> OutputsOf(const HistogramOptions& options) {
  return Given({{"--csv", options.csv}, {"--svg", options.svg}});
}

}  // namespace

std::string RunCommand(const HistogramOptions& options, Notes* notes) {
  CheckPlaces({{"the table", options.table}}, OutputsOf(options));
  const Table table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const HistogramResult histogram = ComputeHistogram(options.recipe, table, bar.Get());
  notes->Add(histogram.notes);
  OutputFiles files;
  if (!options.csv.empty()) files.Stage(options.csv, HistogramCsv(histogram, MarksOf(options.csvMarks.Asked())));
  if (!options.svg.empty()) files.Stage(options.svg, HistogramSvg(histogram, options.texts, SizeOf(options.size)));
  files.Commit();
  return options.json ? HistogramJson(histogram) : HistogramText(histogram) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
