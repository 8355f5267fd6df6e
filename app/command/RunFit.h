#pragma once

#include <string>
#include <vector>

#include "app/Analysis.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/FitFiles.h"
#include "app/console/ReadTable.h"
#include "app/options/ValidationOptions.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::app {

/// The report of one kind of fit.
template <class Result>
struct FitReport {
  std::string (*text)(const Result&, const FitFiles&);
  std::string (*json)(const Table&, const Result&, const Notes&, const FitFiles&);
  std::vector<CsvFile> (*csvFiles)(const Result&, const CsvMarks&);
  std::vector<std::string> (*csvFileNames)();
};

/// Fits the model that the options ask for to one table, judged as they say, and reports it. One that is not usable
/// writes no files.
template <class Options, class Analysis>
std::string RunAnalysis(const Options& options, const FitReport<Analysis>& report, Notes* notes) {
  CheckFitPlaces(options, report.csvFileNames());
  auto recipe = options.recipe;
  recipe.steps = ReadFitSteps(options);
  const Table table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const Analysis analysis = Analyse(recipe, table, RecipeOf(options.validation), bar.Get());
  notes->Add(analysis.fit.notes);
  FitFiles files;
  if (analysis.fit.IsUsable()) {
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(analysis.fit.model, options.Parts()); },
        [&] { return report.csvFiles(analysis, MarksOf(options.csvMarks.Asked())); }, bar.Get());
    if (!files.csv.empty()) NoteNoDistances(analysis.fit.model, analysis.fit.model.Components(), notes);
  }
  return options.json ? report.json(table, analysis, *notes, files) : report.text(analysis, files);
}

}  // namespace kalmia::app
