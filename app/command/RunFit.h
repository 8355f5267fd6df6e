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

/// Fits the model that the options ask for to one table, and reports it. A model without components writes no files.
template <class Options, class Result>
std::string RunFit(const Options& options, const FitReport<Result>& report, Notes* notes) {
  CheckFitPlaces(options, report.csvFileNames());
  auto recipe = options.recipe;
  recipe.steps = ReadFitSteps(options);
  const Table table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const Result result = Fit(recipe, table, bar.Get());
  notes->Add(result.notes);
  FitFiles files;
  if (result.AnyKept()) {
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(result.model, options.Parts()); },
        [&] { return report.csvFiles(result, MarksOf(options.csvMarks.Asked())); }, bar.Get());
    if (!files.csv.empty()) NoteNoDistances(result.model, result.model.Components(), notes);
  }
  return options.json ? report.json(table, result, *notes, files) : report.text(result, files);
}

/// The same of a fit that is judged as the options say.
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
