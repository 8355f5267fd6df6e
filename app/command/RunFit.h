#pragma once

#include <string>
#include <utility>
#include <vector>

#include "app/Analysis.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/FitFiles.h"
#include "app/console/ReadTable.h"
#include "app/console/Remedies.h"
#include "app/console/ReportFiles.h"
#include "app/options/ValidationOptions.h"
#include "kalmia/analysis/figure/FigureJson.h"
#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/FitContributions.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/ModelPages.h"
#include "kalmia/analysis/report/ResidualsReport.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/TableRows.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::app {

/// The report of one kind of fit.
template <class Result>
struct FitReport {
  std::string (*text)(const Result&, const FitFiles&, const std::vector<RowContributions>&);
  std::string (*json)(const Table&, const Result&, const Notes&, const FitFiles&, const std::vector<RowContributions>&);
  std::vector<CsvFile> (*csvFiles)(const Result&, const CsvMarks&);
  std::vector<std::string> (*csvFileNames)();
  ReportPage (*page)(const Table&, const Result&, const Notes&, const FigureRecipe&,
                     const std::vector<RowContributions>&);
};

/// What pages are drawn with, where --report asks for one: it is missed before the work, and not after it.
inline ReportAssets AssetsFor(const FitOptions& options) {
  return options.figures.report.empty() ? ReportAssets{} : ReadReportAssets();
}

/// The file of --report.
inline std::string PageText(ReportPage page, const FitOptions& options, const ReportAssets& assets) {
  page.command = options.commandLine;
  return HtmlText(std::move(page), assets);
}

/// The names of CSV files, with that of residuals where they are asked for.
inline std::vector<std::string> WithResiduals(std::vector<std::string> names, const FitOptions& options) {
  if (options.columns.residuals) names.push_back(kResidualsFile);
  return names;
}

/// The same of the files. `progress` may be null.
template <class Fit>
std::vector<CsvFile> WithResiduals(std::vector<CsvFile> files, const Fit& fit, const FitOptions& options,
                                   NCProgress* progress) {
  if (!options.columns.residuals) return files;
  files.push_back(ResidualsCsv(fit.data.rowNames, fit.data.xNames, XResiduals(fit.model, fit.data.x, progress),
                               MarksOf(options.csvMarks.Asked())));
  return files;
}

/// The rows of the table that --contributions names, from 0; `id` is the column that names the rows, or empty.
inline std::vector<int> RowsToTell(const Table& table, const std::string& id, const FitOptions& options) {
  const std::vector<std::string>& asked = options.columns.contributions;
  if (asked.empty()) return {};
  return RequireRows(table, RowNames(table, id.empty() ? -1 : RequireColumn(table, id)), asked);
}

/// Fits the model that the options ask for to one table, judged as they say, and reports it. One that is not usable
/// writes no files.
template <class Options, class Analysis>
std::string RunAnalysis(const Options& options, const FitReport<Analysis>& report, Notes* notes) {
  CheckFitPlaces(options, WithResiduals(report.csvFileNames(), options));
  const ReportAssets assets = AssetsFor(options);
  auto recipe = options.recipe;
  recipe.steps = ReadFitSteps(options);
  const Table table = ReadTable(options.table, options.reading);
  const std::vector<int> rows = RowsToTell(table, recipe.id, options);
  TerminalBar bar;
  const Analysis analysis = Analyse(recipe, table, RecipeOf(options.validation), bar.Get());
  notes->Add(WithRemedies(analysis.fit.notes));
  const std::vector<RowContributions> contributions = Contributions(analysis.fit, table, rows, notes);
  const auto page = [&] {
    return PageText(report.page(table, analysis, *notes, RecipeOf(options.figures), contributions), options, assets);
  };
  FitFiles files;
  std::vector<Figure> figures;
  if (analysis.fit.IsUsable()) {
    if (options.figures.AreAsked()) figures = Figures(analysis, RecipeOf(options.figures), contributions);
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(analysis.fit.model, options.Parts()); },
        [&] {
          return WithResiduals(report.csvFiles(analysis, MarksOf(options.csvMarks.Asked())), analysis.fit, options,
                               bar.Get());
        },
        bar.Get(), {}, figures, page);
    NoteOlderFiles(options, files, notes);
    if (!files.csv.empty()) NoteNoDistances(analysis.fit.model, analysis.fit.model.Components(), notes);
  } else {
    WriteReport(options, page, &files);
  }
  if (!options.json) return report.text(analysis, files, contributions);
  const std::string json = report.json(table, analysis, *notes, files, contributions);
  return options.figures.inJson ? JsonWithFigures(json, figures) : json;
}

}  // namespace kalmia::app
