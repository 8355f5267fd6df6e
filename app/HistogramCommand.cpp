#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/HistogramReport.h"
#include "app/HistogramResult.h"
#include "app/HistogramSvg.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/ReadTable.h"

namespace kalmia::app {

namespace {

std::vector<FilePlace> OutputsOf(const HistogramOptions& options) {
  std::vector<FilePlace> places;
  if (!options.csv.empty()) places.push_back({"--csv", options.csv});
  if (!options.svg.empty()) places.push_back({"--svg", options.svg});
  return places;
}

}  // namespace

std::string RunCommand(const HistogramOptions& options, Notes* notes) {
  CheckPlaces({{"the table", options.table}}, OutputsOf(options));
  const CsvTable table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const HistogramResult histogram = ComputeHistogram(table, options.column, notes, bar.Get());
  OutputFiles files;
  if (!options.csv.empty()) files.Stage(options.csv, HistogramCsv(histogram, MarksOf(options.csvMarks.Asked())));
  if (!options.svg.empty()) files.Stage(options.svg, HistogramSvg(histogram, options.texts));
  files.Commit();
  return options.json ? HistogramJson(histogram, *notes) : HistogramText(histogram) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
