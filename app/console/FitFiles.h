#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/Analysis.h"
#include "app/console/OutputFiles.h"
#include "app/options/Options.h"
#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/steps/GivenSteps.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::app {

/// A cross-validation to be stored, of the kinds of model that can go on from one.
struct CrossValidationOutput {
  std::string path;  ///< empty: it is not stored
  std::function<std::string()> bytes;
};

/// CheckPlaces for a fit: it writes none of its files over the table, the steps file or another one of its own, and can
/// write them all. `csvNames` are the names of those that --csv writes, `saveCv` that of --save-cv or empty.
void CheckFitPlaces(const FitOptions& options, const std::vector<std::string>& csvNames,
                    const std::string& saveCv = "");

/// The steps that the options name, read as ReadSteps does; nothing where they name none.
std::optional<GivenSteps> ReadFitSteps(const FitOptions& options);

/// Writes the stored model, the cross-validation, the CSV files, the drawings of the figures and the page that
/// the options ask for, all of them or, with a BadFile, none. `progress` may be null.
FitFiles WriteFitFiles(const FitOptions& options, const std::function<std::string()>& modelBytes,
                       const std::function<std::vector<CsvFile>()>& csvFiles, NCProgress* progress,
                       const CrossValidationOutput& crossValidation = {}, const std::vector<Figure>& figures = {},
                       const std::function<std::string()>& page = {});

/// Stages the drawings of the figures in the folder of --svg, if there is one; their paths.
std::vector<std::string> StageDrawings(const FigureOptions& options, const std::vector<Figure>& figures,
                                       OutputFiles* files);

/// Writes the page of --report alone, where the options ask for one: of a fit that has no model to store.
void WriteReport(const FitOptions& options, const std::function<std::string()>& page, FitFiles* written);

/// Notes the files in the folder of --csv that are called as a fit of some family calls its own, but were not written
/// this time: they tell of another model.
void NoteOlderFiles(const FitOptions& options, const FitFiles& written, Notes* notes);

}  // namespace kalmia::app
