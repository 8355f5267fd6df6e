#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "app/options/FigureOptions.h"
#include "kalmia/analysis/chart/SpectrumResult.h"
#include "kalmia/analysis/figure/SpectrumSvg.h"
#include "kalmia/analysis/report/SpectrumReport.h"

namespace kalmia::app {

namespace {

std::vector<FilePlace> OutputsOf(const SpectrumOptions& options) {
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, SpectrumCsvFileNames());
  places.push_back({"--svg", options.svg});
  return Given(places);
}

void WriteFiles(const SpectrumOptions& options, const SpectrumResult& result) {
  OutputFiles files;
  if (!options.csvFolder.empty()) {
    files.MakeFolder(options.csvFolder);
    for (const CsvFile& file : SpectrumCsvFiles(result, MarksOf(options.csvMarks.Asked()))) {
      files.Stage(options.csvFolder + "/" + file.name, file.bytes);
    }
  }
  if (!options.svg.empty()) files.Stage(options.svg, SpectrumSvg(result, SizeOf(options.size)));
  files.Commit();
}

}  // namespace

std::string RunCommand(const SpectrumOptions& options, Notes* notes) {
  CheckSpectrum(options.recipe);  // before the table is read
  CheckPlaces({{"the table", options.table}}, OutputsOf(options));
  const Table table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const SpectrumResult result = ComputeSpectrum(options.recipe, table, bar.Get());
  notes->Add(result.notes);
  WriteFiles(options, result);
  return options.json ? SpectrumJson(result) : SpectrumText(result) + WrittenText(OutputsOf(options));
}

}  // namespace kalmia::app
